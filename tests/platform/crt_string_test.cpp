// The runtime locale's queries, and the Microsoft C-runtime string functions
// in qx::crt: classification, reversal, wcstok, _wtoi and _wtol, and
// _vswprintf's reading of a wide format and its buffer's bound. Case folding
// and comparison are fuzz/unicode_case_fuzz.cpp's.
#include "platform/crt_locale.h"
#include "platform/crt_string.h"
#include "platform/crt_wprintf.h"

#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr wchar_t kSentinel = 0x7777;

using qx::platform::CrtDecimalPoint;
using qx::platform::CrtLocaleIsC;
using qx::platform::CrtLocaleName;
using qx::platform::CrtNumericLocaleIsC;
using qx::platform::IsCLocaleName;
using qx::platform::SetThreadNumericLocaleOverride;

TEST(CrtLocale, OneRuleForTheCLocale) {
  const struct {
    const char* name;
    bool isC;
  } cases[] = {{nullptr, true},  {"C", true},      {"POSIX", true},       {"C.UTF-8", false},
               {"c", false},     {"posix", false}, {"", false},           {"CC", false},
               {"de_DE", false}, {"C ", false},    {"POSIX.UTF-8", false}};
  for (const auto& c : cases) {
    EXPECT_EQ(IsCLocaleName(c.name), c.isC) << (c.name ? c.name : "(null)");
    if (!c.name)
      continue;
    // The numeric locale of a thread reads the same name by the same rule.
    SetThreadNumericLocaleOverride(c.name, L',');
    EXPECT_EQ(CrtNumericLocaleIsC(), c.isC) << c.name;
    EXPECT_EQ(CrtDecimalPoint(), L',') << c.name;
    SetThreadNumericLocaleOverride(nullptr, 0);
  }
}

TEST(CrtLocale, CategoriesAreReadSeparately) {
  ASSERT_TRUE(CrtNumericLocaleIsC());
  ASSERT_TRUE(CrtLocaleIsC());
  {
    qxtest::ScopedRuntimeLocale numeric("C.UTF-8", LC_NUMERIC);
    ASSERT_TRUE(numeric.ok());
    EXPECT_FALSE(CrtNumericLocaleIsC());
    EXPECT_TRUE(CrtLocaleIsC());
    EXPECT_EQ(CrtDecimalPoint(), L'.');
  }
  {
    qxtest::ScopedRuntimeLocale numeric("POSIX", LC_NUMERIC);
    EXPECT_TRUE(CrtNumericLocaleIsC());
  }
  qxtest::ScopedRuntimeLocale ctype("C.UTF-8");
  char name[4];
  EXPECT_EQ(CrtLocaleName(name, sizeof name), 7u); // the full length
  EXPECT_STREQ(name, "C.U");                       // cut to fit
  EXPECT_FALSE(CrtLocaleIsC());
  EXPECT_TRUE(CrtNumericLocaleIsC());
}

TEST(CrtLocale, ReadsFromManyThreadsAtOnce) {
  // The runtime keeps one copy of these answers for the process (and
  // rewrites them on each localeconv call): every read goes through the lock.
  constexpr int kThreads = 4, kRounds = 2000;
  std::vector<std::thread> threads;
  std::vector<int> wrong(kThreads, 0);
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([t, &wrong] {
      for (int i = 0; i < kRounds; ++i) {
        char name[16];
        bool right = CrtNumericLocaleIsC() && CrtLocaleIsC() && CrtDecimalPoint() == L'.' &&
                     CrtLocaleName(name, sizeof name) == 1 && name[0] == 'C';
        wrong[t] += !right;
      }
    });
  for (std::thread& t : threads)
    t.join();
  for (int t = 0; t < kThreads; ++t)
    EXPECT_EQ(wrong[t], 0) << "thread " << t;
}

struct ClassCase {
  uint32_t c;
  const char* classes; // 'a' iswalpha, 'n' iswalnum, 'p' iswprint, 's' iswspace
};

// clang-format off
const ClassCase kClassCases[] = {
    {0xB5, "anp"}, {0xDF, "anp"}, {0x4E00, "anp"}, {0xFFFF, ""}, {WEOF, ""},
    {0x85, ""},      // next line: a control only
    {0xA0, "ps"},    // no-break space
    {0xAD, "p"},     // soft hyphen: Latin-1 punctuation
    {0xB2, "np"},    // superscript two is a digit
    {0xD7, "p"},     // multiplication sign
    {0x0345, ""},    // a combining mark has no print class
    {0x0660, "np"},  // Arabic-Indic zero: a digit
    {0x20AC, ""},    // euro sign: symbols above U+00FF are not printable
    {0x2028, "s"},   // line separator
    {0x3000, "ps"},  // ideographic space
    {0x0378, ""},    // unassigned
    {0x10041, ""},   // outside the BMP
};
// clang-format on

TEST(CrtClass, MicrosoftClassification) {
  for (const ClassCase& t : kClassCases) {
    SCOPED_TRACE(testing::Message() << "U+" << std::hex << t.c);
    EXPECT_EQ(qx::crt::iswalpha(t.c) != 0, std::strchr(t.classes, 'a') != nullptr);
    EXPECT_EQ(qx::crt::iswalnum(t.c) != 0, std::strchr(t.classes, 'n') != nullptr);
    EXPECT_EQ(qx::crt::iswprint(t.c) != 0, std::strchr(t.classes, 'p') != nullptr);
    EXPECT_EQ(qx::crt::iswspace(t.c) != 0, std::strchr(t.classes, 's') != nullptr);
  }
  // The results are the runtime's class bits.
  EXPECT_EQ(qx::crt::iswalpha(L'a'), 0x102); // _LOWER | _ALPHA
  EXPECT_EQ(qx::crt::iswalpha(L'A'), 0x101); // _UPPER | _ALPHA
  EXPECT_EQ(qx::crt::iswalnum(L'7'), 0x004); // _DIGIT
  EXPECT_EQ(qx::crt::iswspace(L' '), 0x008); // _SPACE
  EXPECT_EQ(qx::crt::iswprint(L' '), 0x040); // _BLANK
  EXPECT_EQ(qx::crt::iswprint(L'!'), 0x010); // _PUNCT
}

TEST(CrtReverse, ReversesUnitsInPlace) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {{L"", L""},
                                                             {L"a\u0301b", L"b\u0301a"}};
  for (const auto& [text, reversed] : cases) {
    qxtest::Guarded<wchar_t> buf(8, kSentinel);
    wmemcpy(buf.data(), text, wcslen(text) + 1);
    EXPECT_EQ(qx::crt::_wcsrev(buf.data()), buf.data());
    EXPECT_STREQ(buf.data(), reversed);
    EXPECT_TRUE(buf.UntouchedFrom(wcslen(text) + 1));
  }
  errno = 0;
  EXPECT_EQ(qx::crt::_wcsrev(nullptr), nullptr);
  EXPECT_EQ(errno, EINVAL);
}

TEST(CrtTokens, TwoArgumentWcstok) {
  wchar_t text[] = L"  a,,b;c  ";
  const wchar_t* delims = L" ,;";
  EXPECT_EQ(std::wstring(qx::crt::wcstok(text, delims)), L"a");
  EXPECT_EQ(text[3], 0);    // the comma after "a" became the terminator
  EXPECT_EQ(text[4], L','); // the next delimiter is left for the next call
  EXPECT_EQ(std::wstring(qx::crt::wcstok(nullptr, delims)), L"b");
  EXPECT_EQ(std::wstring(qx::crt::wcstok(nullptr, delims)), L"c");
  EXPECT_EQ(qx::crt::wcstok(nullptr, delims), nullptr);
  EXPECT_EQ(qx::crt::wcstok(nullptr, delims), nullptr); // stays at the end
  EXPECT_EQ(text[9], L' ');                             // only the first blank after c changed
  // Nothing but delimiters, or nothing at all: no token.
  wchar_t empty[] = L"", only[] = L",,,";
  EXPECT_EQ(qx::crt::wcstok(empty, L","), nullptr);
  EXPECT_EQ(qx::crt::wcstok(only, L","), nullptr);
  // No delimiters: one token.
  wchar_t whole[] = {L'a', L' ', L'b', 0, kSentinel};
  EXPECT_EQ(qx::crt::wcstok(whole, L""), whole);
  EXPECT_EQ(whole[1], L' ');
  EXPECT_EQ(qx::crt::wcstok(nullptr, L""), nullptr);
  EXPECT_EQ(whole[4], kSentinel);
  // Null delimiters: null, and the position is kept.
  wchar_t two[] = L"x y";
  EXPECT_EQ(std::wstring(qx::crt::wcstok(two, L" ")), L"x");
  EXPECT_EQ(qx::crt::wcstok(nullptr, nullptr), nullptr);
  EXPECT_EQ(std::wstring(qx::crt::wcstok(nullptr, L" ")), L"y");
}

TEST(CrtTokens, PositionIsPerThread) {
  wchar_t mine[] = L"x y";
  EXPECT_EQ(std::wstring(qx::crt::wcstok(mine, L" ")), L"x");
  std::wstring seen;
  bool freshThreadHadNoPosition = false;
  std::thread([&] {
    freshThreadHadNoPosition = qx::crt::wcstok(nullptr, L" ") == nullptr;
    wchar_t theirs[] = L"p q";
    for (wchar_t* t = qx::crt::wcstok(theirs, L" "); t; t = qx::crt::wcstok(nullptr, L" "))
      seen += t;
  }).join();
  EXPECT_TRUE(freshThreadHadNoPosition);
  EXPECT_EQ(seen, L"pq");
  EXPECT_EQ(std::wstring(qx::crt::wcstok(nullptr, L" ")), L"y");
}

// The digit scripts (which wcstol shares); fuzz/crt_integer_fuzz.cpp holds
// _wtoi and _wtol to wcstol's reading in base 10, the range's ends included.
TEST(CrtToInt, DigitScripts) {
  const std::pair<const wchar_t*, int> cases[] = {
      {L"1\u0968", 12},                       // ASCII then Devanagari
      {L"\u1811", 1},                         // Mongolian
      {L"7:", 7},       {L"\u0669\u066a", 9}, // the unit after a 9 is no digit
      {L"\u19d1", 0},   {L"\u00b9", 0},       // neither New Tai Lue digits nor superscripts
  };
  for (const auto& [text, value] : cases) {
    errno = 0;
    EXPECT_EQ(qx::crt::_wtoi(text), value) << testing::PrintToString(text);
    EXPECT_EQ(qx::crt::_wtol(text), value) << testing::PrintToString(text);
    EXPECT_EQ(errno, 0);
  }
}

TEST(CrtWprintf, TranslatesTheMicrosoftSizes) {
  const struct {
    const wchar_t *format, *translated;
  } cases[] = {
      {L"%s|%c", L"%ls|%lc"},    {L"%S|%C", L"%s|%c"},
      {L"%hs|%hc", L"%s|%c"},    {L"%ls|%wc|%ws", L"%ls|%lc|%ls"},
      {L"%-10.3s", L"%-10.3ls"}, {L"%I64d %I64u %I32d", L"%lld %llu %d"},
      {L"%Iu", L"%zu"},          {L"%lld %hhd %ld %5.2f", L"%lld %hhd %ld %5.2f"},
      {L"100%% %", L"100%% %"},  {L"", L""},
  };
  for (const auto& c : cases) {
    wchar_t out[64];
    std::fill(std::begin(out), std::end(out), L'#');
    ASSERT_TRUE(qx::crt::TranslateFormat(c.format, out, 64)) << testing::PrintToString(c.format);
    EXPECT_STREQ(out, c.translated);
  }
  wchar_t small[4];
  EXPECT_FALSE(qx::crt::TranslateFormat(L"%s%s", small, 4)) << "does not fit";
}

int Format(wchar_t* out, size_t count, const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  int n = qx::crt::_vswprintf(out, count, format, args);
  va_end(args);
  return n;
}

TEST(CrtWprintf, KeepsToItsBuffer) {
  wchar_t out[8];
  std::fill(std::begin(out), std::end(out), L'#');
  EXPECT_EQ(Format(out, 6, L"%s-%hs", L"ab", "cd"), 5);
  EXPECT_STREQ(out, L"ab-cd");
  EXPECT_EQ(out[6], L'#');
  EXPECT_EQ(Format(out, 6, L"%s", L"abcdef"), -1) << "too long";
  EXPECT_EQ(out[5], 0);
  EXPECT_EQ(out[6], L'#') << "nothing past the count";
  EXPECT_EQ(qx::crt::_vswprintf(nullptr, 4, L"x", nullptr), -1);
}

} // namespace
