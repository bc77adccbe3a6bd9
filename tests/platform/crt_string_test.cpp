// Tests of the Microsoft C-runtime string functions: classification, case
// folding in the "C" and a changed runtime locale, comparison, reversal,
// tokens and integer reading.
#include "platform/crt_string.h"

#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <string>
#include <thread>

namespace {

constexpr wchar_t kSentinel = 0x7777;

using CrtLocale = qxtest::ScopedRuntimeLocale;

struct ClassCase {
  uint32_t c;
  bool alpha;
  bool alnum;
  bool print;
  bool space;
};

const ClassCase kClassCases[] = {
    {L'a', true, true, true, false},
    {L'5', false, true, true, false},
    {L'_', false, false, true, false},
    {L'$', false, false, true, false},  // an ASCII symbol is punctuation
    {L' ', false, false, true, true},   // blank: printable
    {L'\t', false, false, false, true}, // TAB is white space, not printable
    {L'\v', false, false, false, true},
    {0x7F, false, false, false, false},
    {0x1C, false, false, false, false}, // file separator: not white space here
    {0x85, false, false, false, false}, // next line: a control only
    {0xA0, false, false, true, true},   // no-break space
    {0xAD, false, false, true, false},  // soft hyphen: Latin-1 punctuation
    {0xB2, false, true, true, false},   // superscript two is a digit
    {0xB5, true, true, true, false},
    {0xD7, false, false, true, false}, // multiplication sign
    {0xDF, true, true, true, false},
    {0x0345, false, false, false, false}, // a combining mark has no print class
    {0x0660, false, true, true, false},   // Arabic-Indic zero: a digit
    {0x20AC, false, false, false, false}, // euro sign: symbols above U+00FF are not printable
    {0x2028, false, false, false, true},  // line separator
    {0x3000, false, false, true, true},   // ideographic space
    {0x4E00, true, true, true, false},
    {0x0378, false, false, false, false}, // unassigned
    {0xFFFF, false, false, false, false},
    {0x10041, false, false, false, false}, // outside the BMP
    {WEOF, false, false, false, false},
};

TEST(CrtClass, MicrosoftClassification) {
  for (const ClassCase& t : kClassCases) {
    SCOPED_TRACE(testing::Message() << "U+" << std::hex << t.c);
    EXPECT_EQ(qx::crt::iswalpha(t.c) != 0, t.alpha);
    EXPECT_EQ(qx::crt::iswalnum(t.c) != 0, t.alnum);
    EXPECT_EQ(qx::crt::iswprint(t.c) != 0, t.print);
    EXPECT_EQ(qx::crt::iswspace(t.c) != 0, t.space);
  }
}

TEST(CrtClass, ResultsAreTheRuntimeClassBits) {
  EXPECT_EQ(qx::crt::iswalpha(L'a'), 0x102); // _LOWER | _ALPHA
  EXPECT_EQ(qx::crt::iswalpha(L'A'), 0x101); // _UPPER | _ALPHA
  EXPECT_EQ(qx::crt::iswalnum(L'7'), 0x004); // _DIGIT
  EXPECT_EQ(qx::crt::iswspace(L' '), 0x008); // _SPACE
  EXPECT_EQ(qx::crt::iswprint(L' '), 0x040); // _BLANK
  EXPECT_EQ(qx::crt::iswprint(L'!'), 0x010); // _PUNCT
}

// The whole ASCII range against the runtime's well-known ASCII classes,
// whatever the runtime locale.
TEST(CrtClass, AsciiRangeInAnyLocale) {
  for (const char* name : {"C", "C.UTF-8"}) {
    CrtLocale locale(name);
    ASSERT_TRUE(locale.ok()) << name;
    for (wint_t c = 0; c < 0x80; ++c) {
      bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
      bool digit = c >= '0' && c <= '9';
      ASSERT_EQ(qx::crt::iswalpha(c) != 0, letter) << c;
      ASSERT_EQ(qx::crt::iswalnum(c) != 0, letter || digit) << c;
      ASSERT_EQ(qx::crt::iswprint(c) != 0, c >= 0x20 && c <= 0x7E) << c;
      ASSERT_EQ(qx::crt::iswspace(c) != 0, (c >= 9 && c <= 13) || c == ' ') << c;
    }
  }
}

TEST(CrtCase, CLocaleFoldsAsciiOnly) {
  CrtLocale locale("C");
  ASSERT_TRUE(locale.ok());
  EXPECT_EQ(qx::crt::towupper(L'a'), static_cast<wint_t>(L'A'));
  EXPECT_EQ(qx::crt::towlower(L'Z'), static_cast<wint_t>(L'z'));
  EXPECT_EQ(qx::crt::towupper(0xE9), 0xE9u);
  EXPECT_EQ(qx::crt::towlower(0xC9), 0xC9u);
  EXPECT_EQ(qx::crt::towlower(0xFF21), 0xFF21u);
  EXPECT_EQ(qx::crt::towlower(WEOF), WEOF);
}

TEST(CrtCase, ChangedLocaleUsesTheTables) {
  CrtLocale locale("C.UTF-8");
  ASSERT_TRUE(locale.ok());
  EXPECT_EQ(qx::crt::towupper(0xE9), 0xC9u);
  EXPECT_EQ(qx::crt::towlower(0xC9), 0xE9u);
  EXPECT_EQ(qx::crt::towlower(0xFF21), 0xFF41u);
  EXPECT_EQ(qx::crt::towupper(0x131), 0x131u); // no Turkish rule
  EXPECT_EQ(qx::crt::towlower(0x130), 0x130u);
  EXPECT_EQ(qx::crt::towupper(0x10041), 0x10041u);
  EXPECT_EQ(qx::crt::towlower(WEOF), WEOF);
}

struct CompareCase {
  const wchar_t* a;
  const wchar_t* b;
  int expected; // Microsoft's value: the difference of the folded units
};

// The unchanged "C" locale: ASCII A-Z fold to lower case, nothing else.
const CompareCase kCLocaleCases[] = {
    {L"abc", L"ABC", 0},
    {L"_", L"A", '_' - 'a'}, // lower-case folding: '_' sorts before letters
    {L"A", L"_", 'a' - '_'},
    {L"[", L"a", '[' - 'a'},
    {L"abc", L"ABD", 'c' - 'd'},
    {L"abc", L"ab", 'c'},
    {L"", L"a", -'a'},
    {L"", L"", 0},
    {L"\u00e9", L"\u00c9", 0xE9 - 0xC9}, // accented letters do not fold
    {L"\uff21", L"\uff41", 0xFF21 - 0xFF41},
    {L"STRA\u00dfE", L"strasse", 0xDF - 's'},
    {L"\uffff", L"a", 0xFFFF - 'a'}, // units compare unsigned
};

// A changed runtime locale: Windows' simple case mapping, still to lower case.
const CompareCase kChangedLocaleCases[] = {
    {L"abc", L"ABC", 0},
    {L"_", L"A", '_' - 'a'},
    {L"\u00e9t\u00e9", L"\u00c9T\u00c9", 0},
    {L"\uff21", L"\uff41", 0},
    {L"\u0131", L"I", 0x131 - 'i'},        // dotless i does not fold to i
    {L"\u03a3", L"\u03c2", 0x3C3 - 0x3C2}, // capital sigma folds to sigma, not final sigma
    {L"\u00b5", L"\u039c", 0xB5 - 0x3BC},  // micro sign is not Greek mu
    {L"\u00ff", L"\u0178", 0},
    {L"STRA\u00dfE", L"strasse", 0xDF - 's'},
};

// Checks _wcsicmp and an unbounded _wcsnicmp on every case under one
// runtime locale.
template <size_t N> void ExpectCompares(const char* localeName, const CompareCase (&cases)[N]) {
  CrtLocale locale(localeName);
  ASSERT_TRUE(locale.ok()) << localeName;
  for (const CompareCase& t : cases) {
    SCOPED_TRACE(testing::Message() << localeName << " case " << (&t - cases));
    EXPECT_EQ(qx::crt::_wcsicmp(t.a, t.b), t.expected);
    EXPECT_EQ(qx::crt::_wcsnicmp(t.a, t.b, 100), t.expected);
  }
}

TEST(CrtCompare, WcsicmpInTheCLocale) { ExpectCompares("C", kCLocaleCases); }

TEST(CrtCompare, WcsicmpInAChangedLocale) { ExpectCompares("C.UTF-8", kChangedLocaleCases); }

struct CountCase {
  const wchar_t* a;
  const wchar_t* b;
  size_t n;
  int expected;
};

const CountCase kCountCases[] = {
    {L"abcX", L"ABCy", 3, 0},     {L"abcX", L"ABCy", 4, 'x' - 'y'},
    {L"ab", L"abc", 5, -'c'}, // the terminator ends the comparison
    {L"ab", L"abc", 2, 0},        {L"a", L"b", 0, 0},
    {L"_x", L"Ax", 1, '_' - 'a'},
};

TEST(CrtCompare, WcsnicmpStopsAfterCount) {
  CrtLocale locale("C");
  ASSERT_TRUE(locale.ok());
  for (const CountCase& t : kCountCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&t - kCountCases));
    EXPECT_EQ(qx::crt::_wcsnicmp(t.a, t.b, t.n), t.expected);
  }
}

// A count that runs past both terminators reads nothing beyond them.
TEST(CrtCompare, WcsnicmpDoesNotReadPastTerminators) {
  wchar_t a[3] = {L'a', 0, kSentinel};
  wchar_t b[3] = {L'A', 0, L'z'};
  EXPECT_EQ(qx::crt::_wcsnicmp(a, b, SIZE_MAX), 0);
}

TEST(CrtCompare, NullArgumentsGiveNlsCmpError) {
  EXPECT_EQ(_NLSCMPERROR, 0x7FFFFFFF);
  const struct {
    const wchar_t* a;
    const wchar_t* b;
    size_t n;
  } cases[] = {{nullptr, L"a", 1}, {L"a", nullptr, 1}, {nullptr, nullptr, 1}, {nullptr, L"a", 0}};
  for (const auto& t : cases) {
    errno = 0;
    EXPECT_EQ(qx::crt::_wcsicmp(t.a, t.b), _NLSCMPERROR);
    EXPECT_EQ(errno, EINVAL);
    errno = 0;
    EXPECT_EQ(qx::crt::_wcsnicmp(t.a, t.b, t.n), _NLSCMPERROR);
    EXPECT_EQ(errno, EINVAL);
  }
}

TEST(CrtReverse, ReversesUnitsInPlace) {
  const struct {
    const wchar_t* text;
    const wchar_t* expected;
  } cases[] = {
      {L"", L""}, {L"a", L"a"}, {L"ab", L"ba"}, {L"abc", L"cba"}, {L"a\u0301b", L"b\u0301a"}};
  for (const auto& t : cases) {
    wchar_t buf[8];
    std::fill(std::begin(buf), std::end(buf), kSentinel);
    size_t len = wcslen(t.text);
    wmemcpy(buf, t.text, len + 1);
    EXPECT_EQ(qx::crt::_wcsrev(buf), buf);
    EXPECT_EQ(std::wstring(buf), std::wstring(t.expected));
    for (size_t i = len + 1; i < 8; ++i)
      EXPECT_EQ(buf[i], kSentinel);
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
}

TEST(CrtTokens, EdgeCases) {
  wchar_t empty[] = L"";
  EXPECT_EQ(qx::crt::wcstok(empty, L","), nullptr);
  wchar_t only[] = L",,,";
  EXPECT_EQ(qx::crt::wcstok(only, L","), nullptr);
  wchar_t whole[] = {L'a', L' ', L'b', 0, kSentinel};
  EXPECT_EQ(qx::crt::wcstok(whole, L""), whole); // no delimiters: one token
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
  std::thread other([&] {
    freshThreadHadNoPosition = qx::crt::wcstok(nullptr, L" ") == nullptr;
    wchar_t theirs[] = L"p q";
    for (wchar_t* t = qx::crt::wcstok(theirs, L" "); t; t = qx::crt::wcstok(nullptr, L" "))
      seen += t;
  });
  other.join();
  EXPECT_TRUE(freshThreadHadNoPosition);
  EXPECT_EQ(seen, L"pq");
  EXPECT_EQ(std::wstring(qx::crt::wcstok(nullptr, L" ")), L"y");
}

struct IntCase {
  const wchar_t* text;
  int32_t expected;
  int error; // errno afterwards (0 when untouched)
};

const IntCase kIntCases[] = {
    {L"3;2;0", 3, 0},
    {L"  -42abc", -42, 0},
    {L"+7", 7, 0},
    {L"\t\n\v\f\r 12", 12, 0},
    {L"\u00a012", 12, 0}, // no-break space is white space
    {L"\u300012", 12, 0}, // so is the ideographic space
    {L"\u008512", 0, 0},  // next line is not
    {L"- 5", 0, 0},
    {L"+-5", 0, 0},
    {L"", 0, 0},
    {L"abc", 0, 0},
    {L"0x1A", 0, 0},
    {L"12\u0301", 12, 0},
    {L"000000000000000000000012", 12, 0},
    {L"2147483647", INT32_MAX, 0},
    {L"2147483648", INT32_MAX, ERANGE},
    {L"-2147483648", INT32_MIN, 0},
    {L"-2147483649", INT32_MIN, ERANGE},
    {L"99999999999999999999999", INT32_MAX, ERANGE},
    {L"-99999999999999999999999x", INT32_MIN, ERANGE},
    {L"\u0661\u0662", 12, 0}, // Arabic-Indic digits
    {L"\uff11\uff12", 12, 0}, // fullwidth digits
    {L"1\u0968", 12, 0},      // ASCII then Devanagari
    {L"\u1811", 1, 0},        // Mongolian
    {L"\u19d1", 0, 0},        // New Tai Lue digits are not read
    {L"\u00b9", 0, 0},        // nor superscripts
};

TEST(CrtToInt, WtoiAndWtol) {
  for (const IntCase& t : kIntCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&t - kIntCases));
    errno = 0;
    EXPECT_EQ(qx::crt::_wtoi(t.text), t.expected);
    EXPECT_EQ(errno, t.error);
    errno = 0;
    EXPECT_EQ(qx::crt::_wtol(t.text), static_cast<long>(t.expected));
    EXPECT_EQ(errno, t.error);
  }
}

TEST(CrtToInt, NullReadsZero) {
  errno = 0;
  EXPECT_EQ(qx::crt::_wtoi(nullptr), 0);
  EXPECT_EQ(errno, EINVAL);
  errno = 0;
  EXPECT_EQ(qx::crt::_wtol(nullptr), 0L);
  EXPECT_EQ(errno, EINVAL);
}

} // namespace
