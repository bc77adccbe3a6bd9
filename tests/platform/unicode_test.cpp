// The Unicode character services: case mapping and character types for
// tricky characters, and the one definition of a nonspacing mark.
// fuzz/unicode_case_fuzz.cpp checks every code point and walks random text.
#include "platform/unicode.h"

#include "platform/codepage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

using namespace qx::win;

namespace {

LPWSTR AsCharArg(uint32_t c) { return reinterpret_cast<LPWSTR>(static_cast<uintptr_t>(c)); }
uint32_t FromCharArg(LPWSTR p) { return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(p)); }

// The single-character form of CharUpperW / CharLowerW.
uint32_t Upper1(uint32_t c) { return FromCharArg(CharUpperW(AsCharArg(c))); }
uint32_t Lower1(uint32_t c) { return FromCharArg(CharLowerW(AsCharArg(c))); }

std::string Hex(uint32_t c) {
  char buf[16];
  snprintf(buf, sizeof buf, "U+%04X", c);
  return buf;
}

struct CaseCase {
  uint32_t c;
  uint32_t upper;
  uint32_t lower;
  bool isUpper;
  bool isLower;
  bool isAlpha;
  bool isAlnum;
};

// Windows' answers for characters where a Unicode-based mapping is easy to
// get wrong: only one-to-one mappings that go both ways, no Turkish rules.
const CaseCase kCaseCases[] = {
    {0x00DF, 0x00DF, 0x00DF, false, true, true, true},    // sharp s: no one-unit upper case
    {0x1E9E, 0x1E9E, 0x1E9E, true, false, true, true},    // capital sharp s: lower does not return
    {0x00FF, 0x0178, 0x00FF, false, true, true, true},    // y diaeresis -> U+0178
    {0x0178, 0x0178, 0x00FF, true, false, true, true},    // and back
    {0x00B5, 0x00B5, 0x00B5, false, true, true, true},    // micro sign stays (Greek mu is another)
    {0x0131, 0x0131, 0x0131, false, true, true, true},    // dotless i: no Turkish rule
    {0x0130, 0x0130, 0x0130, true, false, true, true},    // capital I with dot
    {0x017F, 0x017F, 0x017F, false, true, true, true},    // long s
    {0x01C4, 0x01C4, 0x01C6, true, false, true, true},    // DZ with caron
    {0x01C5, 0x01C5, 0x01C5, true, true, true, true},     // titlecase Dz: upper and lower, unmapped
    {0x01C6, 0x01C4, 0x01C6, false, true, true, true},    // dz with caron
    {0x03C2, 0x03C2, 0x03C2, false, true, true, true},    // final sigma stays
    {0x03C3, 0x03A3, 0x03C3, false, true, true, true},    // sigma
    {0x03A3, 0x03A3, 0x03C3, true, false, true, true},    // capital sigma -> sigma, not final
    {0x0345, 0x0345, 0x0345, false, false, false, false}, // ypogegrammeni: a mark, unmapped
    {0x1F80, 0x1F88, 0x1F80, false, true, true, true},    // alpha with psili and ypogegrammeni
    {0x1F88, 0x1F88, 0x1F80, true, true, true, true},     // its titlecase form
    {0x212A, 0x212A, 0x212A, true, false, true, true},    // Kelvin sign stays
    {0x2126, 0x2126, 0x2126, true, false, true, true},    // Ohm sign stays
    {0xFF21, 0xFF21, 0xFF41, true, false, true, true},    // fullwidth A
    {0xFF41, 0xFF21, 0xFF41, false, true, true, true},    // fullwidth a
    {0xFF10, 0xFF10, 0xFF10, false, false, false, true},  // fullwidth 0
    {0x2160, 0x2160, 0x2170, false, false, true, true},   // Roman numeral one: a letter number
    {0x24B6, 0x24B6, 0x24D0, false, false, false, false}, // circled A: a symbol with case
    {0x00B2, 0x00B2, 0x00B2, false, false, false, true},  // superscript two counts as a digit
    {0x2074, 0x2074, 0x2074, false, false, false, false}, // superscript four does not
    {0x00AA, 0x00AA, 0x00AA, false, true, true, true},    // feminine ordinal: lower case
    {0x0660, 0x0660, 0x0660, false, false, false, true},  // Arabic-Indic zero
    {0x4E00, 0x4E00, 0x4E00, false, false, true, true},   // CJK ideograph
    {0xD800, 0xD800, 0xD800, false, false, false, false}, // lone surrogate
    {0xFFFF, 0xFFFF, 0xFFFF, false, false, false, false},
    {0x0000, 0x0000, 0x0000, false, false, false, false},
};

TEST(UnicodeCase, WindowsValuesForTrickyCharacters) {
  for (const CaseCase& t : kCaseCases) {
    SCOPED_TRACE(Hex(t.c));
    EXPECT_EQ(Upper1(t.c), t.upper);
    EXPECT_EQ(Lower1(t.c), t.lower);
    EXPECT_EQ(IsCharUpperW(static_cast<WCHAR>(t.c)), t.isUpper ? TRUE : FALSE);
    EXPECT_EQ(IsCharLowerW(static_cast<WCHAR>(t.c)), t.isLower ? TRUE : FALSE);
    EXPECT_EQ(IsCharAlphaW(static_cast<WCHAR>(t.c)), t.isAlpha ? TRUE : FALSE);
    EXPECT_EQ(IsCharAlphaNumericW(static_cast<WCHAR>(t.c)), t.isAlnum ? TRUE : FALSE);
  }
}

// fuzz/unicode_case_fuzz.cpp holds the string and counted forms to the
// single-character form; a rule for the final sigma would break that.
TEST(UnicodeCase, CountedFormHasNoFinalSigmaRule) {
  std::wstring text = L"\u03a3\u03a3";
  EXPECT_EQ(CharLowerBuffW(text.data(), 2), 2u);
  EXPECT_EQ(text, L"\u03c3\u03c3");
}

// One definition of a nonspacing mark (general category Mn) serves CharNextW,
// CharPrevW and WideCharToMultiByte's WC_COMPOSITECHECK. The rows marked
// "differs" are code points at the ends of the runs where the class NSM, the
// other candidate, gives the other answer.
struct MarkCase {
  uint32_t c;
  bool mark;
  const char* what;
};

const MarkCase kMarkCases[] = {
    {0x0300, true, "combining grave, the first mark"},
    {0x0301, true, "combining acute"},
    {0x064B, true, "Arabic fathatan"},
    {0xFE2F, true, "combining Cyrillic titlo right half, the last BMP mark"},
    {0x02FF, false, "modifier letter low left arrow, before the first mark"},
    {0x0903, false, "Devanagari visarga (spacing mark)"},
    {0x00E0, false, "precomposed a grave"},
    {0x02CA, false, "modifier letter acute"},
    {0x0488, false, "differs: Cyrillic hundred thousands sign (enclosing)"},
    {0x0489, false, "differs: Cyrillic millions sign (enclosing)"},
    {0x0CBF, true, "differs: Kannada vowel sign I (left-to-right)"},
    {0x0CC6, true, "differs: Kannada vowel sign E (left-to-right)"},
    {0x1ABE, false, "differs: combining parentheses overlay (enclosing)"},
    {0x20DD, false, "differs: combining enclosing circle"},
    {0x20E0, false, "differs: combining enclosing circle backslash"},
    {0x20E1, true, "combining left right arrow above, between the enclosing marks"},
    {0x20E2, false, "differs: combining enclosing screen"},
    {0x20E4, false, "differs: combining enclosing upward pointing triangle"},
    {0xA670, false, "differs: combining Cyrillic ten millions sign"},
    {0xA672, false, "differs: combining Cyrillic thousand millions sign"},
};

TEST(NonSpacingMark, OneDefinitionForWalkingAndComposing) {
  for (const MarkCase& t : kMarkCases) {
    SCOPED_TRACE(testing::Message() << Hex(t.c) << " " << t.what);
    EXPECT_EQ(qx::platform::IsNonSpacingMark(t.c), t.mark);
    const wchar_t text[] = {L'q', static_cast<wchar_t>(t.c), L'b', 0}; // q composes with none
    // CharNextW and CharPrevW: a mark belongs to the character before it.
    EXPECT_EQ(CharNextW(text), text + (t.mark ? 2 : 1));
    EXPECT_EQ(CharPrevW(text, text + 2), t.mark ? text : text + 1);
    // WC_DISCARDNS drops a mark after its base; anything else converts as
    // it does without WC_COMPOSITECHECK.
    char out[8] = {}, plain[8] = {};
    int n = WideCharToMultiByte(1252, WC_COMPOSITECHECK | WC_DISCARDNS, text, 2, out, sizeof out,
                                nullptr, nullptr);
    int m = WideCharToMultiByte(1252, 0, text, 2, plain, sizeof plain, nullptr, nullptr);
    EXPECT_EQ(std::string(out, n > 0 ? n : 0), t.mark ? "q" : std::string(plain, m > 0 ? m : 0));
  }
  // No mark below the first: the conversions' block scan relies on it.
  for (uint32_t c = 0; c < 0x300; ++c)
    ASSERT_FALSE(qx::platform::IsNonSpacingMark(c)) << Hex(c);
  EXPECT_FALSE(qx::platform::IsNonSpacingMark(0x10300));
}

} // namespace
