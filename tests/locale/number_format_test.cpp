// Number formatting: DoubleToString, UI text both ways, coordinates, database
// columns, EqualDoubles and numbers by picture (random ones: the fuzz targets).
#include "common/locale_support.h"
#include "qxutil/locale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using qxtest::OnPinnedThread;
using qxtest::RuntimeNumericLocale;
using qxtest::TextBuffer;

namespace {

const double kInf = std::numeric_limits<double>::infinity();

// The automatic precision, sizes, coordinates and UI text in en-US and de-DE
// against swprintf and a reference grouping: number_format_fuzz.
TEST(DoubleToString, TiesAndAnotherLocalesUiText) {
  wchar_t buffer[64];
  OnPinnedThread(1033, [&] { // printf's ties go to even
    EXPECT_STREQ(DoubleToString(2.5, buffer, 64, false, 0, PRINTF_F, -1), L"2");
  });
  OnPinnedThread(1036, [&] {
    EXPECT_STREQ(DoubleToString(1234567.891, buffer, 64, true, 2, PRINTF_F, -1),
                 L"1\u00A0234\u00A0567,89");
  });
}

TEST(DoubleToString, RuntimeLocaleOutputIsNeutralisedByTheThreadLocale) {
  OnPinnedThread(1031, [] { // agrees with the runtime: "," decimal
    RuntimeNumericLocale comma("de_DE.UTF-8", L',');
    wchar_t buffer[32];
    EXPECT_STREQ(DoubleToString(1234.5, buffer, 32, false, 1, PRINTF_F, -1), L"1234.5");
    EXPECT_STREQ(DoubleToString(1234.5, buffer, 32, true, 1, PRINTF_F, -1), L"1.234,5");
    // When they disagree, the runtime's comma is taken for a thousands
    // separator and removed.
    SetThreadLocale(1033);
    EXPECT_STREQ(DoubleToString(1234.5, buffer, 32, false, 1, PRINTF_F, -1), L"12345");
  });
}

TEST(UiText, NullArguments) {
  FormatNumberForUI(nullptr, 10);
  wchar_t out[4] = L"xyz";
  DeformatNumberFromUI(nullptr, out);
  EXPECT_STREQ(out, L"");
  DeformatNumberFromUI(L"1", nullptr);
}

TEST(DoubleToDBString, ValuesAreKeptWithinTheColumn) {
  // 1e25 in 20 columns: 1e20 - 1e5, the step that keeps 15 digits.
  struct Case {
    int width, decimals;
    double value;
    const wchar_t* text;
  } cases[] = {
      {8, 2, 12345.678, L"12345.68"},
      {8, 2, 123456.0, L"99999.99"},
      {8, 2, -1234.567, L"-1234.57"},
      {8, 2, -12345.0, L"-9999.99"},
      {8, 2, 1.5, L"    1.50"},
      {5, 0, 123456.0, L"99999"},
      {5, 0, 12.5, L"   12"},
      {20, 0, 1e25, L"99999999999999901696"},
      {20, 10, 3.25, L"        3.2500000000"},
  };
  OnPinnedThread(1033, [&] {
    for (const Case& c : cases) {
      TextBuffer b(static_cast<size_t>(c.width) + 1);
      DoubleToDBString(b.data(), c.width, c.decimals, c.value);
      EXPECT_STREQ(b.data(), c.text) << c.value << " in " << c.width << "," << c.decimals;
    }
    TextBuffer none(4);
    DoubleToDBString(none.data(), -1, 2, 1.0);
    EXPECT_TRUE(none.UntouchedFrom(0));
  });
}

TEST(EqualDoubles, ComparesBinaryMantissas) {
  // 0.9999999 and 1.0 lie either side of 2^0.
  struct Case {
    double a, b;
    int digits;
    bool equal;
  } cases[] = {{1.0, 1.0000001, 5, true},
               {1.0, 1.0000001, 8, false},
               {-1.0, -1.0000001, 5, true},
               {0.9999999, 1.0, 0, false},
               {0.0, -0.0, 14, true},
               {0.0, 1e-300, 0, false},
               {kInf, kInf, 0, true},
               {std::nan(""), std::nan(""), 0, false},
               {1.5, 1.55, 0, true},
               {1.5, 1.55, 1, false},
               {3.0, 3.0000000000000004, 14, true}};
  for (const Case& c : cases)
    EXPECT_EQ(EqualDoubles(c.a, c.b, static_cast<SIGNIFICANTDIGITS>(c.digits)), c.equal)
        << c.a << " vs " << c.b << " at " << c.digits;
}

struct FormatCase {
  const wchar_t* picture;
  double value;
  const wchar_t* text;
};

// Writes - qxSQLDoubleToString of each case in a 40-unit buffer gives its
// text; true, or false (`fails`) with "#"s for an overflow and "" for a bad
// picture.
void Writes(std::initializer_list<FormatCase> cases, bool fails = false, LCID locale = 1033) {
  OnPinnedThread(locale, [&] {
    for (const FormatCase& c : cases) {
      const std::wstring picture = c.picture ? c.picture : L"(null)";
      TextBuffer b(40);
      EXPECT_EQ(qxSQLDoubleToString(c.value, c.picture, b.data(), b.usable()), !fails)
          << picture << " " << c.value;
      EXPECT_STREQ(b.data(), c.text) << picture << " " << c.value;
    }
  });
}
constexpr bool kFails = true;

TEST(SqlNumberFormat, DigitsGroupsAndPoint) {
  // A 0 keeps every digit to its right.
  Writes({{L"9999", 1234, L"1234"}, {L"9999", 12, L"12"}, {L"0000", 12, L"0012"}});
  Writes({{L"9990", 0.2, L"0"}, {L"9099", 5, L"005"}, {L"9,999", 1234, L"1,234"}});
  Writes({{L"9,999", 12, L"12"}, {L"0,000", 12, L"0,012"}, {L"9G999D99", 1234.5, L"1,234.5"}});
  // Only trailing 9 positions drop zeros; with no fraction digit left, the
  // point goes too; with no integer position, the zero goes after it.
  Writes({{L"9g999d00", 1234.5, L"1,234.50"}, {L"99.99", 0.5, L".5"}, {L"90.99", 0.5, L"0.5"}});
  Writes({{L"999.99", 7, L"7"}, {L"999.90", 7, L"7.00"}, {L"999", 0, L"0"}});
  Writes({{L".999", 0.1234, L".123"}, {L".99", 0.001, L".0"}});
  // Halves away from zero (1.005 is slightly less in binary); no minus for
  // a value that rounds to 0; blanks around the picture are ignored.
  Writes({{L"999", 2.5, L"3"}, {L"999", -2.5, L"-3"}, {L"9.00", 1.005, L"1.00"}});
  Writes({{L"9.00", 1.125, L"1.13"}, {L"999", -0.4, L"0"}, {L"  999  ", 12, L"12"}});
}

TEST(SqlNumberFormat, SignCurrencyAndExponent) {
  Writes({{L"+999", 12, L"+12"}, {L"+999", -12, L"-12"}, {L"999+", 12, L"12+"}});
  Writes({{L"999-", -12, L"12-"}, {L"999-", 12, L"12"}, {L"-999", 12, L"12"}});
  Writes({{L"L999", 12, L"$12"}, {L"$999", -5, L"-$5"}, {L"-L999", -5, L"-$5"}});
  Writes({{L"L-999", -5, L"$-5"}, {L"999L", 5, L"5$"}, {L"999L-", -5, L"5$-"}});
  // Rounding carries into the exponent.
  Writes({{L"9.99E", 12345, L"1.23E+04"}, {L"9.99E", 0.00012345, L"1.23E-04"}});
  Writes({{L"9.99E", 9.999, L"1E+01"}, {L"9.00E", 9.999, L"1.00E+01"}, {L"9.99E", 0, L"0E+00"}});
  Writes({{L"9.00e", -1e300, L"-1.00E+300"}, {L"9E-", -0.05, L"5E-02-"}});
  // The locale's symbols.
  Writes({{L"9G999D99", 1234.5, L"1.234,5"}, {L"L9G999", 1234, L"\u20AC1.234"}}, false, 1031);
  Writes({{L"9,999.00L", 1234, L"1.234,00\u20AC"}}, false, 1031);
}

TEST(SqlNumberFormat, OverflowAndBadPictures) {
  // Rounding may add an integer digit (999.96) or leave the doubles
  // (-1.7e308 rounds to 2E+308).
  const double inf = std::numeric_limits<double>::infinity();
  Writes({{L"999", 1234, L"###"}, {L"9,999", 12345, L"#####"}, {L"999.9", 999.96, L"#####"}},
         kFails);
  Writes({{L"0E", -1.7e308, L"##"}, {L"L999", std::nan(""), L"####"}, {L"999", inf, L"###"}},
         kFails);
  for (const wchar_t* bad :
       {L"", static_cast<const wchar_t*>(nullptr), L"9,", L",9", L"9,,9", L"9.9.9", L"E9", L"9E9",
        L"++9", L"LL9", L"9X", L"9 9", L"9.9,9", L"+", L"9+9"})
    Writes({{bad, 1, L""}}, kFails);
  EXPECT_FALSE(qxSQLDoubleToString(1, L"9", nullptr, 10));
}

// Reads - qxSQLStringToDouble of each text by `picture` gives the value;
// Refuses - it fails with 0 for each text.
void Reads(const wchar_t* picture, std::initializer_list<std::pair<const wchar_t*, double>> cases,
           LCID locale = 1033) {
  OnPinnedThread(locale, [&] {
    for (const auto& [text, expected] : cases) {
      double value = 99;
      EXPECT_TRUE(qxSQLStringToDouble(text, picture, &value)) << picture << " <- " << text;
      EXPECT_EQ(value, expected) << picture << " <- " << text;
    }
  });
}
void Refuses(const wchar_t* picture, std::initializer_list<const wchar_t*> texts,
             LCID locale = 1033) {
  OnPinnedThread(locale, [&] {
    for (const wchar_t* text : texts) {
      double value = 99;
      const std::wstring shown = text ? text : L"(null)";
      EXPECT_FALSE(qxSQLStringToDouble(text, picture, &value)) << shown << " by " << picture;
      EXPECT_EQ(value, 0) << shown;
    }
  });
}

TEST(SqlNumberParse, ReadsWhatThePictureAllows) {
  // Groups are checked between digits only; leading zeros do not count, but
  // more integer or fraction digits than the picture fail.
  Reads(L"9G999D99", {{L"1,234.5", 1234.5}, {L" -1,234.50 ", -1234.5}, {L"1234", 1234}});
  Reads(L"9G999D99", {{L"12,34", 1234}, {L"00012", 12}, {L".5", 0.5}, {L"5.", 5}});
  Refuses(L"9G999D99", {L",123", L"123,", L"12345", L"1.234"});
  Refuses(L"9999", {L"1.5"}); // no point in the picture
  // The symbol may be left out; the sign goes where the picture has it.
  Reads(L"L999", {{L"$12", 12}, {L"12", 12}, {L"-$12", -12}});
  Reads(L"999-", {{L"12-", -12}});
  Refuses(L"999-", {L"-12"});
  Reads(L"+999", {{L"+12", 12}});
  Reads(L"9.99E", {{L"1.23E+04", 12300}, {L"1.5e-3", 0.0015}, {L"2", 2}});
  Refuses(L"9.99E", {L"1E"});
  Refuses(L"9E", {L"1E400"}); // beyond a double
  Refuses(L"999", {L"1E2", L"abc", L"", L"+", L"1 2", nullptr});
  Refuses(L"9,", {L"1"}); // a bad picture reads nothing
  Refuses(nullptr, {L"1"});
  Reads(L"9G999D99", {{L"1.234,5", 1234.5}}, 1031);
  Reads(L"L9G999", {{L"\u20AC1.234", 1234}}, 1031);
  Refuses(L"9G999D99", {L"1,234.5"}, 1031);
}

} // namespace
