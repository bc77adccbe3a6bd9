// Numbers by picture: formatting, reading, bad pictures, overflow and round
// trips, as a user of database number formats would write them.
#include "common/locale_support.h"
#include "qxutil/locale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using qxtest::OnPinnedThread;
using qxtest::TextBuffer;

namespace {

struct FormatCase {
  const wchar_t* picture;
  double value;
  bool ok;
  const wchar_t* text;
};

void RunFormatCases(LCID locale, const FormatCase* cases, size_t n) {
  OnPinnedThread(locale, [&] {
    for (size_t i = 0; i < n; ++i) {
      const FormatCase& c = cases[i];
      TextBuffer b(40);
      EXPECT_EQ(qxSQLDoubleToString(c.value, c.picture, b.data(), b.usable()), c.ok)
          << (c.picture ? c.picture : L"(null)") << " " << c.value;
      EXPECT_STREQ(b.data(), c.text) << (c.picture ? c.picture : L"(null)") << " " << c.value;
      EXPECT_TRUE(b.GuardIntact());
    }
  });
}

TEST(SqlNumberFormat, DigitsGroupsAndPoint) {
  const FormatCase cases[] = {
      {L"9999", 1234, true, L"1234"},
      {L"9999", 12, true, L"12"},
      {L"0000", 12, true, L"0012"},
      {L"9990", 0.2, true, L"0"},
      {L"9099", 5, true, L"005"}, // a 0 keeps every digit to its right
      {L"9,999", 1234, true, L"1,234"},
      {L"9,999", 12, true, L"12"},
      {L"0,000", 12, true, L"0,012"},
      {L"9G999D99", 1234.5, true, L"1,234.5"},
      {L"9g999d00", 1234.5, true, L"1,234.50"},
      {L"99.99", 0.5, true, L".5"},
      {L"90.99", 0.5, true, L"0.5"},
      {L"999.99", 7, true, L"7"},    // no fraction digit left: no point either
      {L"999.90", 7, true, L"7.00"}, // only trailing 9 positions drop zeros
      {L"999", 0, true, L"0"},
      {L"999", 2.5, true, L"3"}, // halves away from zero
      {L"999", -2.5, true, L"-3"},
      {L"9.00", 1.005, true, L"1.00"}, // 1.005 is slightly less in binary
      {L"9.00", 1.125, true, L"1.13"},
      {L"999", -0.4, true, L"0"}, // no minus for a value that rounds to 0
      {L".999", 0.1234, true, L".123"},
      {L".99", 0.001, true, L".0"},  // no integer position: the zero goes after the point
      {L"  999  ", 12, true, L"12"}, // blanks around the picture are ignored
  };
  RunFormatCases(1033, cases, std::size(cases));
}

TEST(SqlNumberFormat, SignCurrencyAndExponent) {
  const FormatCase cases[] = {
      {L"+999", 12, true, L"+12"},
      {L"+999", -12, true, L"-12"},
      {L"999+", 12, true, L"12+"},
      {L"999-", -12, true, L"12-"},
      {L"999-", 12, true, L"12"},
      {L"-999", 12, true, L"12"},
      {L"L999", 12, true, L"$12"},
      {L"$999", -5, true, L"-$5"},
      {L"-L999", -5, true, L"-$5"},
      {L"L-999", -5, true, L"$-5"},
      {L"999L", 5, true, L"5$"},
      {L"999L-", -5, true, L"5$-"},
      {L"9.99E", 12345, true, L"1.23E+04"},
      {L"9.99E", 0.00012345, true, L"1.23E-04"},
      {L"9.99E", 9.999, true, L"1E+01"}, // rounding carries into the exponent
      {L"9.00E", 9.999, true, L"1.00E+01"},
      {L"9.99E", 0, true, L"0E+00"},
      {L"9.00e", -1e300, true, L"-1.00E+300"},
      {L"9E-", -0.05, true, L"5E-02-"},
  };
  RunFormatCases(1033, cases, std::size(cases));
}

TEST(SqlNumberFormat, OverflowBadPicturesAndSmallBuffers) {
  const double nan = std::nan("");
  const FormatCase cases[] = {
      {L"999", 1234, false, L"###"},
      {L"9,999", 12345, false, L"#####"},
      {L"999.9", 999.96, false, L"#####"}, // rounding adds an integer digit
      {L"0E", -1.7e308, false, L"##"},     // rounds to 2E+308, beyond a double
      {L"L999", nan, false, L"####"},
      {L"999", std::numeric_limits<double>::infinity(), false, L"###"},
      {L"", 1, false, L""},
      {nullptr, 1, false, L""},
      {L"9,", 1, false, L""},
      {L",9", 1, false, L""},
      {L"9,,9", 1, false, L""},
      {L"9.9.9", 1, false, L""},
      {L"E9", 1, false, L""},
      {L"9E9", 1, false, L""},
      {L"++9", 1, false, L""},
      {L"LL9", 1, false, L""},
      {L"9X", 1, false, L""},
      {L"9 9", 1, false, L""},
      {L"9.9,9", 1, false, L""},
      {L"+", 1, false, L""},
      {L"9+9", 1, false, L""},
  };
  RunFormatCases(1033, cases, std::size(cases));
  OnPinnedThread(1033, [] {
    TextBuffer b(4);
    EXPECT_FALSE(qxSQLDoubleToString(12345, L"99999", b.data(), b.usable()));
    EXPECT_STREQ(b.data(), L""); // too small: empty, never cut
    EXPECT_TRUE(b.GuardIntact());
    EXPECT_TRUE(qxSQLDoubleToString(123, L"99999", b.data(), b.usable()));
    EXPECT_STREQ(b.data(), L"123");
    TextBuffer o(3);
    EXPECT_FALSE(qxSQLDoubleToString(123456, L"99999", o.data(), o.usable()));
    EXPECT_STREQ(o.data(), L"##");
    EXPECT_TRUE(o.GuardIntact());
    EXPECT_FALSE(qxSQLDoubleToString(1, L"9", nullptr, 10));
  });
}

TEST(SqlNumberFormat, LocaleSymbols) {
  const FormatCase cases[] = {
      {L"9G999D99", 1234.5, true, L"1.234,5"},
      {L"L9G999", 1234, true, L"\u20AC1.234"},
      {L"9,999.00L", 1234, true, L"1.234,00\u20AC"},
  };
  RunFormatCases(1031, cases, std::size(cases));
}

struct ParseCase {
  const wchar_t* picture;
  const wchar_t* text;
  bool ok;
  double value;
};

void RunParseCases(LCID locale, const ParseCase* cases, size_t n) {
  OnPinnedThread(locale, [&] {
    for (size_t i = 0; i < n; ++i) {
      const ParseCase& c = cases[i];
      double value = 99;
      EXPECT_EQ(qxSQLStringToDouble(c.text, c.picture, &value), c.ok)
          << c.picture << " <- " << (c.text ? c.text : L"(null)");
      EXPECT_EQ(value, c.value) << c.picture << " <- " << (c.text ? c.text : L"(null)");
    }
  });
}

TEST(SqlNumberParse, ReadsWhatThePictureAllows) {
  const ParseCase cases[] = {
      {L"9G999D99", L"1,234.5", true, 1234.5},
      {L"9G999D99", L" -1,234.50 ", true, -1234.5},
      {L"9G999D99", L"1234", true, 1234},
      {L"9G999D99", L"12,34", true, 1234}, // groups are checked between digits only
      {L"9G999D99", L",123", false, 0},
      {L"9G999D99", L"123,", false, 0},
      {L"9G999D99", L"12345", false, 0}, // more integer digits than the picture
      {L"9G999D99", L"00012", true, 12}, // leading zeros do not count
      {L"9G999D99", L"1.234", false, 0}, // more fraction digits
      {L"9G999D99", L".5", true, 0.5},
      {L"9G999D99", L"5.", true, 5},
      {L"9999", L"1.5", false, 0}, // no point in the picture
      {L"L999", L"$12", true, 12},
      {L"L999", L"12", true, 12}, // the symbol may be left out
      {L"L999", L"-$12", true, -12},
      {L"999-", L"12-", true, -12},
      {L"999-", L"-12", false, 0}, // the sign goes where the picture has it
      {L"+999", L"+12", true, 12},
      {L"9.99E", L"1.23E+04", true, 12300},
      {L"9.99E", L"1.5e-3", true, 0.0015},
      {L"9.99E", L"2", true, 2},
      {L"9.99E", L"1E", false, 0},
      {L"9E", L"1E400", false, 0}, // beyond a double
      {L"999", L"1E2", false, 0},
      {L"999", L"abc", false, 0},
      {L"999", L"", false, 0},
      {L"999", L"+", false, 0},
      {L"999", L"1 2", false, 0},
      {L"999", nullptr, false, 0},
      {L"9,", L"1", false, 0}, // a bad picture reads nothing
      {nullptr, L"1", false, 0},
  };
  RunParseCases(1033, cases, std::size(cases));
  const ParseCase german[] = {
      {L"9G999D99", L"1.234,5", true, 1234.5},
      {L"L9G999", L"\u20AC1.234", true, 1234},
      {L"9G999D99", L"1,234.5", false, 0},
  };
  RunParseCases(1031, german, std::size(german));
}

TEST(SqlNumber, RoundTrips) {
  const wchar_t* pictures[] = {L"9G999G999D99", L"L999,990.00-", L"+0.000000E", L"999999"};
  const double values[] = {0, 1, -1, 0.5, 1234.56, -98765.43, 999999, 0.001, 3.14159};
  // fr-FR: a no-break space groups, "," decimal, euro symbol.
  OnPinnedThread(1036, [&] {
    for (const wchar_t* picture : pictures) {
      for (double v : values) {
        wchar_t text[40];
        double back = 0;
        ASSERT_TRUE(qxSQLDoubleToString(v, picture, text, 40)) << picture << " " << v;
        ASSERT_TRUE(qxSQLStringToDouble(text, picture, &back)) << picture << " " << text;
        wchar_t again[40];
        ASSERT_TRUE(qxSQLDoubleToString(back, picture, again, 40));
        EXPECT_STREQ(again, text) << picture << " " << v;
      }
    }
  });
}

} // namespace
