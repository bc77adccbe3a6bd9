// Number parsing: the integer parsers' 32-bit contracts, StringToDouble in
// both runtime-locale paths (in the "C" locale exactly as glibc's wcstod on
// adversarial texts; fuzz/number_parse_fuzz.cpp compares random ones), and
// the FmtCtl variants through UI text.
#include "common/locale_support.h"
#include "qxutil/locale.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

using qxtest::OnPinnedThread;
using qxtest::RuntimeNumericLocale;

namespace {

constexpr long kNoEnd = -1; // the end pointer must be null
const double kInf = std::numeric_limits<double>::infinity();

struct IntCase {
  const wchar_t* text;
  bool ok;
  long long value;
  long end; // offset of the end pointer, or kNoEnd
};

template <class T, class Parse> void CheckInts(std::initializer_list<IntCase> cases, Parse parse) {
  for (const IntCase& c : cases) {
    T value = static_cast<T>(99);
    wchar_t* end = reinterpret_cast<wchar_t*>(1);
    const char* text = c.text ? "" : "(null) ";
    EXPECT_EQ(parse(c.text, &value, &end), c.ok) << text << c.value;
    EXPECT_EQ(static_cast<long long>(value), c.value) << text << c.value;
    EXPECT_EQ(end, c.end == kNoEnd ? nullptr : c.text + c.end) << text << c.value;
  }
}

TEST(IntegerParsers, StringToIntHasThe32BitRange) {
  // Base 10 (the x of "0x10" ends it); Unicode digits and white space count.
  CheckInts<int>({{L"12abc", true, 12, 2},
                  {L"abc", false, 0, kNoEnd},
                  {L"  -2147483648", true, INT_MIN, 13},
                  {L"2147483647", true, INT_MAX, 10},
                  {L"2147483648", false, 0, kNoEnd},
                  {L"-2147483649", false, 0, kNoEnd},
                  {L"+7 ", true, 7, 2},
                  {L"\t\n 42", true, 42, 5},
                  {L"0x10", true, 0, 1},
                  {L"-", false, 0, kNoEnd},
                  {L"", false, 0, kNoEnd},
                  {L"\u0661\u0662", true, 12, 2},
                  {L"\uFF15\uFF10", true, 50, 2},
                  {L"\u3000 9", true, 9, 3},
                  {nullptr, false, 0, kNoEnd}},
                 [](const wchar_t* t, int* v, wchar_t** e) { return StringToInt(t, v, e); });
}

TEST(IntegerParsers, ShortLongAndUnsignedCheckTheirBounds) {
  CheckInts<short>({{L"32768", false, 0, kNoEnd},
                    {L"-32768", true, -32768, 6},
                    {L"32767x", true, 32767, 5},
                    {L"99999999999", false, 0, kNoEnd}},
                   [](const wchar_t* t, short* v, wchar_t** e) { return StringToShort(t, v, e); });
  CheckInts<long>(
      {{L"5", true, 5, 1},
       {L"11", false, 0, kNoEnd},
       {L"-1", false, 0, kNoEnd},
       {L"0", true, 0, 1},
       {L"10", true, 10, 2}},
      [](const wchar_t* t, long* v, wchar_t** e) { return StringToLong(t, v, e, 0, 10); });
  // Negatives wrap; overflow is refused.
  CheckInts<unsigned int>(
      {{L"4294967295", true, 4294967295LL, 10},
       {L"4294967296", false, 0, kNoEnd},
       {L"-1", true, 4294967295LL, 2},
       {L"-4294967295", true, 1, 11},
       {L"-4294967296", false, 0, kNoEnd}},
      [](const wchar_t* t, unsigned int* v, wchar_t** e) { return StringToUnsignedInt(t, v, e); });
}

TEST(IntegerParsers, RadixRules) {
  struct {
    const wchar_t* text;
    int radix;
    bool ok;
    unsigned long value;
    long end;
  } cases[] = {
      {L"0x1F", 16, true, 31, 4},     {L"1f", 16, true, 31, 2},
      {L"0x", 16, false, 0, kNoEnd}, // the prefix alone is no number
      {L"0xg", 16, false, 0, kNoEnd}, {L"010", 0, true, 8, 3},
      {L"0x10", 0, true, 16, 4},      {L"19", 0, true, 19, 2},
      {L"zz", 36, true, 1295, 2},     {L"102", 2, true, 2, 2},
      {L"5", 37, false, 0, kNoEnd},   {L"5", 1, false, 0, kNoEnd},
      {L"5", -2, false, 0, kNoEnd},
  };
  for (const auto& c : cases) {
    unsigned long value = 7;
    wchar_t* end = nullptr;
    EXPECT_EQ(StringToUnsignedLong(c.text, &value, &end, c.radix), c.ok) << c.radix;
    EXPECT_EQ(value, c.value);
    EXPECT_EQ(end, c.end == kNoEnd ? nullptr : const_cast<wchar_t*>(c.text) + c.end);
  }
  unsigned long v = 0;
  EXPECT_TRUE(StringToUnsignedLong16(L"ffffffff", &v));
  EXPECT_EQ(v, 4294967295UL);
  EXPECT_FALSE(StringToUnsignedLong16(L"100000000", &v));
  EXPECT_EQ(v, 0UL);
}

TEST(IntegerParsers, SixtyFourBitParsersSaturateAndSucceed) {
  long long v = 0;
  EXPECT_TRUE(StringToInt64(L"99999999999999999999", &v));
  EXPECT_EQ(v, LLONG_MAX);
  EXPECT_TRUE(StringToInt64(L"-99999999999999999999", &v));
  EXPECT_EQ(v, LLONG_MIN);
  EXPECT_TRUE(StringToInt64(L"-9223372036854775808", &v));
  EXPECT_EQ(v, LLONG_MIN);
  EXPECT_FALSE(StringToInt64(L"x1", &v));
  EXPECT_EQ(v, 0);
  unsigned long long u = 0;
  EXPECT_TRUE(StringToUnsignedInt64(L"-1", &u));
  EXPECT_EQ(u, UINT64_MAX);
  EXPECT_TRUE(StringToUnsignedInt64(L"18446744073709551616", &u));
  EXPECT_EQ(u, UINT64_MAX);
  EXPECT_FALSE(StringToUnsignedInt64(nullptr, &u));
  EXPECT_EQ(u, 0u);
}

struct DoubleCase {
  const wchar_t* text;
  bool ok;
  double value;
  long end;
};

void CheckDoubles(std::initializer_list<DoubleCase> cases) {
  for (const DoubleCase& c : cases) {
    std::wstring text = c.text; // writable, as the own scan requires
    double value = 99;
    wchar_t* end = reinterpret_cast<wchar_t*>(1);
    EXPECT_EQ(StringToDouble(text.data(), &value, &end), c.ok) << c.value;
    if (std::isnan(c.value))
      EXPECT_TRUE(std::isnan(value)) << c.value;
    else
      EXPECT_EQ(value, c.value) << c.value;
    EXPECT_EQ(end, c.end == kNoEnd ? nullptr : text.data() + c.end) << c.value;
    EXPECT_EQ(text, c.text) << c.value; // restored
  }
}

TEST(StringToDouble, CRuntimeLocaleReadsExactlyAsWcstod) {
  // Overflow, underflow to zero and an inexact denormal are range errors.
  CheckDoubles({{L"1.5", true, 1.5, 3},
                {L"1.5d3", true, 1.5, 3},
                {L"  -2.5e-3x", true, -2.5e-3, 9},
                {L"0x1.8p3", true, 12.0, 7},
                {L"inf", true, kInf, 3},
                {L"-Infinity", true, -kInf, 9},
                {L"nan", true, std::nan(""), 3},
                {L"1e400", false, 0, kNoEnd},
                {L"1e-400", false, 0, kNoEnd},
                {L"4.9406564584124654e-324", false, 0, kNoEnd},
                {L"0e999999", true, 0, 8},
                {L"abc", false, 0, kNoEnd},
                {L".", false, 0, kNoEnd},
                {L"1,5", true, 1, 1},
                {L"0.1", true, 0.1, 3},
                {L"1e", true, 1, 1}});
  double v = 5;
  EXPECT_FALSE(StringToDouble(nullptr, &v, nullptr));
  EXPECT_EQ(v, 0.0);
  // The runtime locale is "C" here (tests never call setlocale), so the
  // whole wcstod syntax is compared: value bits, end pointer, range error.
  // clang-format off
  const char* edges[] = {
      "0", "-0", "+0.0e-999999", "1e308", "1.7976931348623157e308", "1.7976931348623158e308",
      "1.7976931348623159e308", "1e309", "-1e400", "1e-400", "2.2250738585072011e-308",
      "2.2250738585072014e-308", "2.2250738585072012e-308", "4.9406564584124654e-324",
      "2.4703282292062327e-324", "2.4703282292062328e-324", "5e-324", "1e-323", "0x1.8p3",
      "0X.8P-2", "0x", "0xg", "0x1p-1074", "0x1p-1075", "0x1.fffffffffffffp1023", "0x1p1024",
      "-0x0", "inf", "INFINITY", "-Inf", "infinit", "nan", "NaN(123)", "nan(abc_1)", "nan(",
      " \t+1", "+-1", "- 1", "\xe3", ".", "e5", "1e", "1e+", "1.e5", ".e5", ".5", "5.",
      "00000000000000000000000000001", "1e+0000000000000000000001", "0e999999999999999999",
      "1e99999999999999999999", "1e-99999999999999999999", "9007199254740993",
      "9007199254740992.5", "1.00000000000000011102230246251565404",
      "123456789012345678901234567890e-30", "0.000000000000000000000000000001e30",
  };
  // clang-format on
  for (const char* edge : edges) {
    const std::wstring text(edge, edge + std::strlen(edge));
    wchar_t *end = nullptr, *refEnd = nullptr;
    errno = 0;
    const double ref = std::wcstod(text.c_str(), &refEnd);
    const bool refOk = refEnd != text.c_str() && errno != ERANGE;
    double value = 0;
    const bool ok = StringToDouble(text.c_str(), &value, &end);
    EXPECT_EQ(ok, refOk) << edge;
    if (ok && refOk) {
      EXPECT_EQ(std::memcmp(&value, &ref, sizeof value), 0) << edge;
      EXPECT_EQ(end, refEnd) << edge;
    }
  }
}

TEST(StringToDouble, OtherRuntimeLocaleScansWithTheFullStop) {
  // With a comma as the runtime's point, its own decimal point is not read;
  // no hexadecimal and no words in the own scan.
  OnPinnedThread(1033, [] {
    RuntimeNumericLocale comma("de_DE.UTF-8", L',');
    CheckDoubles({{L"1.5", true, 1.5, 3},
                  {L"1,5", true, 1, 1},
                  {L"1.5d3", true, 1.5, 3},
                  {L" +.5e1z", true, 5.0, 6},
                  {L"-12.25E-2", true, -0.1225, 9},
                  {L"0x10", true, 0, 1},
                  {L"inf", false, 0, kNoEnd},
                  {L".", false, 0, kNoEnd},
                  {L".e1", false, 0, kNoEnd},
                  {L"1e400", false, 0, kNoEnd},
                  {L"7.", true, 7, 2},
                  {L"\u3000 3.25", true, 3.25, 6}});
  });
  OnPinnedThread(1033, [] {
    RuntimeNumericLocale utf8("C.UTF-8", L'.');
    CheckDoubles({{L"2.75", true, 2.75, 4}, {L"0x1p3", true, 0, 1}, {L"1.5D+2", true, 1.5, 3}});
  });
}

bool AskNeutral() { return true; }

TEST(FmtCtl, UiTextIsDeformattedFirst) {
  OnPinnedThread(1031, [] { // de-DE: "." thousands, "," decimal
    double d = 0;
    int i = 0;
    short s = 5;
    long l = 0;
    unsigned long ul = 0;
    long long ll = 0;
    unsigned long long ull = 0;
    const std::wstring huge(2000, L'1'); // beyond the working buffer
    EXPECT_TRUE(StringToDoubleFmtCtl(L"1.234,5", &d, true));
    EXPECT_EQ(d, 1234.5);
    EXPECT_TRUE(StringToDoubleFmtCtl(L"1.234,5", &d, false));
    EXPECT_EQ(d, 1.234);
    EXPECT_TRUE(StringToIntFmtCtl(L"1.234.567", &i, true));
    EXPECT_EQ(i, 1234567);
    EXPECT_FALSE(StringToShortFmtCtl(L"40.000", &s, true));
    EXPECT_EQ(s, 0);
    EXPECT_TRUE(StringToShortFmtCtl(L"-32.768", &s, true));
    EXPECT_EQ(s, -32768);
    EXPECT_FALSE(StringToLongFmtCtl(L"1.001", &l, true, 0, 1000));
    EXPECT_TRUE(StringToLongFmtCtl(L"1.000", &l, true, 0, 1000));
    EXPECT_EQ(l, 1000);
    EXPECT_TRUE(StringToUnsignedLongFmtCtl(L"4.294.967.295", &ul, true));
    EXPECT_EQ(ul, 4294967295UL);
    EXPECT_TRUE(StringToInt64FmtCtl(L"-9.000.000.000", &ll, true));
    EXPECT_EQ(ll, -9000000000LL);
    EXPECT_TRUE(StringToUnsignedInt64FmtCtl(L"18.446.744.073.709.551.615", &ull, true));
    EXPECT_EQ(ull, UINT64_MAX);
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
