// Number parsing: the integer parsers' digits and radixes, StringToDouble in
// another runtime locale, the FmtCtl variants (ranges and the "C" locale:
// number_parse_fuzz).
#include "common/frame_call_table.h"
#include "common/locale_support.h"
#include "qxutil/locale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>

using qxtest::ExpectCalls;
using qxtest::OnPinnedThread;
using qxtest::RuntimeNumericLocale;

namespace {

// Parser - a parser of the family seen through long long (or double): the
// text, the value read, the end pointer.
template <class V> using Parser = std::function<bool(const wchar_t*, V*, wchar_t**)>;
template <class T, class V = long long, class F> Parser<V> Through(F parse) {
  return [parse](const wchar_t* text, V* value, wchar_t** end) {
    T v = static_cast<T>(99);
    bool ok = parse(text, &v, end);
    *value = static_cast<V>(v);
    return ok;
  };
}

template <class V> struct Read {
  const wchar_t* text;
  V value;
  long end; // offset of the end pointer
};

// Reads - each text is read as its value, ending at its offset, and is
// left as it was.
template <class V> void Reads(const Parser<V>& parse, std::initializer_list<Read<V>> cases) {
  for (const Read<V>& c : cases) {
    std::wstring text = c.text; // writable, as the own scan requires
    V value = 99;
    wchar_t* end = nullptr;
    EXPECT_TRUE(parse(text.data(), &value, &end)) << c.value;
    EXPECT_EQ(value, c.value) << c.value;
    EXPECT_EQ(end, text.data() + c.end) << c.value;
    EXPECT_EQ(text, c.text) << c.value;
  }
}

// Refuses - each text fails with the value 0 and a null end.
template <class V>
void Refuses(const Parser<V>& parse, std::initializer_list<const wchar_t*> texts) {
  for (const wchar_t* text : texts) {
    std::wstring copy = text ? text : L"";
    V value = 99;
    wchar_t* end = reinterpret_cast<wchar_t*>(1);
    EXPECT_FALSE(parse(text ? copy.data() : nullptr, &value, &end)) << copy;
    EXPECT_EQ(value, 0) << copy;
    EXPECT_EQ(end, nullptr) << copy;
  }
}

const auto kInt = Through<int>(StringToInt);
const auto kUnsigned = Through<unsigned int>(StringToUnsignedInt);
const auto kDouble = Through<double, double>(StringToDouble);
Parser<long long> Radix(int radix) {
  return Through<unsigned long>([radix](const wchar_t* t, unsigned long* v, wchar_t** e) {
    return StringToUnsignedLong(t, v, e, radix);
  });
}

TEST(IntegerParsers, UnicodeDigitsAndWhiteSpace) {
  // Base 10 (the x of "0x10" ends it); Unicode digits and white space count.
  Reads(kInt, {{L"0x10", 0, 1}, {L"\u0661\u0662", 12, 2}, {L"\uFF15\uFF10", 50, 2}});
  Reads(kInt, {{L"\u3000 9", 9, 3}});
  Refuses(kInt, {nullptr});
  Refuses(kUnsigned, {nullptr});
}

TEST(IntegerParsers, RadixRules) {
  // A prefix alone is no number; radix 0 reads the C prefixes.
  Reads(Radix(16), {{L"0x1F", 31, 4}, {L"1f", 31, 2}});
  Refuses(Radix(16), {L"0x", L"0xg"});
  Reads(Radix(0), {{L"010", 8, 3}, {L"0x10", 16, 4}, {L"19", 19, 2}});
  Reads(Radix(36), {{L"zz", 1295, 2}});
  Reads(Radix(2), {{L"102", 2, 2}});
  for (int radix : {37, 1, -2})
    Refuses(Radix(radix), {L"5"});
  unsigned long v = 0;
  EXPECT_TRUE(StringToUnsignedLong16(L"ffffffff", &v));
  EXPECT_EQ(v, 4294967295UL);
  EXPECT_FALSE(StringToUnsignedLong16(L"100000000", &v));
  EXPECT_EQ(v, 0UL);
}

// Got - what `parse` read from `text` (its other arguments after it), or
// kRefused when it failed and left 0.
constexpr long long kRefused = -777;
template <class T, class... A>
long long Got(bool (*parse)(const wchar_t*, T*, A...), const wchar_t* text,
              std::type_identity_t<A>... more) {
  T v = static_cast<T>(99);
  const bool ok = parse(text, &v, more...);
  return ok ? static_cast<long long>(v) : v == 0 ? kRefused : 99;
}

TEST(StringToDouble, OtherRuntimeLocaleScansWithTheFullStop) {
  // With a comma as the runtime's point, its own decimal point is not read;
  // no hexadecimal and no words in the own scan.
  OnPinnedThread(1033, [] {
    RuntimeNumericLocale comma("de_DE.UTF-8", L',');
    Reads(kDouble, {{L"1.5", 1.5, 3}, {L"1,5", 1, 1}, {L"1.5d3", 1.5, 3}, {L" +.5e1z", 5.0, 6}});
    Reads(kDouble, {{L"-12.25E-2", -0.1225, 9}, {L"0x10", 0, 1}, {L"7.", 7, 2}});
    Reads(kDouble, {{L"\u3000 3.25", 3.25, 6}});
    Refuses(kDouble, {L"inf", L".", L".e1", L"1e400"});
  });
  OnPinnedThread(1033, [] {
    RuntimeNumericLocale utf8("C.UTF-8", L'.');
    Reads(kDouble, {{L"2.75", 2.75, 4}, {L"0x1p3", 0, 1}, {L"1.5D+2", 1.5, 3}});
  });
  Refuses(kDouble, {nullptr});
}

bool AskNeutral() { return true; }

TEST(FmtCtl, UiTextIsDeformattedFirst) {
  OnPinnedThread(1031, [] {              // de-DE: "." thousands, "," decimal
    const std::wstring huge(2000, L'1'); // beyond the working buffer
    ExpectCalls(
        {CALL(Got(StringToIntFmtCtl, L"1.234.567", true), 1234567),
         CALL(Got(StringToShortFmtCtl, L"40.000", true), kRefused),
         CALL(Got(StringToShortFmtCtl, L"-32.768", true), -32768),
         CALL(Got(StringToLongFmtCtl, L"1.001", true, 0, 1000), kRefused),
         CALL(Got(StringToLongFmtCtl, L"1.000", true, 0, 1000), 1000),
         CALL(Got(StringToUnsignedLongFmtCtl, L"4.294.967.295", true), 4294967295LL),
         CALL(Got(StringToInt64FmtCtl, L"-9.000.000.000", true), -9000000000LL),
         CALL(Got(StringToUnsignedInt64FmtCtl, L"18.446.744.073.709.551.615", true), UINT64_MAX)});
    double d = 0;
    EXPECT_TRUE(StringToDoubleFmtCtl(L"1.234,5", &d, true));
    EXPECT_EQ(d, 1234.5);
    EXPECT_TRUE(StringToDoubleFmtCtl(L"1.234,5", &d, false));
    EXPECT_EQ(d, 1.234);
    EXPECT_FALSE(StringToDoubleFmtCtl(nullptr, &d, true));
    EXPECT_FALSE(StringToDoubleFmtCtl(huge.c_str(), &d, true));
    EXPECT_EQ(d, 0.0);
    // The number callback makes UI text neutral.
    SetNumberFormatCallback(AskNeutral);
    EXPECT_TRUE(StringToDoubleFmtCtl(L"1,234.5", &d, true));
    EXPECT_EQ(d, 1234.5);
  });
}

} // namespace
