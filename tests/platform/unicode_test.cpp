// Tests of the Unicode character services: case mapping in its three forms,
// character types, and walking by characters over combining marks.
#include "platform/unicode.h"

#include "platform/codepage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <iterator>
#include <string>
#include <vector>

using namespace qx::win;

namespace {

constexpr wchar_t kSentinel = 0x7777;

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
    {L'a', L'A', L'a', false, true, true, true},
    {L'Z', L'Z', L'z', true, false, true, true},
    {L'5', L'5', L'5', false, false, false, true},
    {L'_', L'_', L'_', false, false, false, false},
    {0x00DF, 0x00DF, 0x00DF, false, true, true, true},    // sharp s: no one-unit upper case
    {0x1E9E, 0x1E9E, 0x1E9E, true, false, true, true},    // capital sharp s: lower does not return
    {0x00FF, 0x0178, 0x00FF, false, true, true, true},    // y diaeresis -> U+0178
    {0x0178, 0x0178, 0x00FF, true, false, true, true},    // and back
    {0x00B5, 0x00B5, 0x00B5, false, true, true, true},    // micro sign stays (Greek mu is another)
    {0x0131, 0x0131, 0x0131, false, true, true, true},    // dotless i: no Turkish rule
    {0x0130, 0x0130, 0x0130, true, false, true, true},    // capital I with dot
    {L'i', L'I', L'i', false, true, true, true},          // i -> I, never U+0130
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

// Every BMP code point: the three forms agree, and every mapping the table
// holds goes both ways (which is what keeps Windows' table one-to-one).
TEST(UnicodeCase, EveryBmpCodePointFormsAgreeAndRoundTrip) {
  for (uint32_t c = 1; c < 0x10000; ++c) {
    uint32_t up = Upper1(c);
    uint32_t low = Lower1(c);
    ASSERT_LT(up, 0x10000u) << Hex(c);
    ASSERT_LT(low, 0x10000u) << Hex(c);

    wchar_t buf[3] = {static_cast<wchar_t>(c), 0, kSentinel};
    ASSERT_EQ(CharUpperW(buf), buf);
    ASSERT_EQ(static_cast<uint32_t>(buf[0]), up) << Hex(c);
    buf[0] = static_cast<wchar_t>(c);
    ASSERT_EQ(CharLowerW(buf), buf);
    ASSERT_EQ(static_cast<uint32_t>(buf[0]), low) << Hex(c);
    ASSERT_EQ(buf[2], kSentinel);

    wchar_t one = static_cast<wchar_t>(c);
    ASSERT_EQ(CharUpperBuffW(&one, 1), 1u);
    ASSERT_EQ(static_cast<uint32_t>(one), up) << Hex(c);
    one = static_cast<wchar_t>(c);
    ASSERT_EQ(CharLowerBuffW(&one, 1), 1u);
    ASSERT_EQ(static_cast<uint32_t>(one), low) << Hex(c);

    ASSERT_EQ(static_cast<uint32_t>(qx::platform::CharToUpper(static_cast<wchar_t>(c))), up);
    ASSERT_EQ(static_cast<uint32_t>(qx::platform::CharToLower(static_cast<wchar_t>(c))), low);

    if (up != c) {
      ASSERT_EQ(Lower1(up), c) << Hex(c) << " upper " << Hex(up);
    }
    if (low != c) {
      ASSERT_EQ(Upper1(low), c) << Hex(c) << " lower " << Hex(low);
    }
    ASSERT_FALSE(up != c && low != c) << Hex(c) << " maps both ways";
  }
}

// Relations between the character types that hold for every code point.
TEST(UnicodeClass, EveryBmpCodePointTypesAreConsistent) {
  for (uint32_t c = 0; c < 0x10000; ++c) {
    WCHAR ch = static_cast<WCHAR>(c);
    unsigned bits = qx::platform::CharTypeBits(ch);
    if (IsCharUpperW(ch) || IsCharLowerW(ch)) {
      ASSERT_TRUE(IsCharAlphaW(ch)) << Hex(c);
    }
    if (IsCharAlphaW(ch)) {
      ASSERT_TRUE(IsCharAlphaNumericW(ch)) << Hex(c);
    }
    if (qx::platform::IsNonSpacingMark(c)) {
      ASSERT_FALSE(IsCharAlphaNumericW(ch)) << Hex(c) << " is a mark";
    }
    ASSERT_EQ(IsCharAlphaNumericW(ch) != 0,
              IsCharAlphaW(ch) || (bits & qx::platform::kCharDigit) != 0)
        << Hex(c);
    if (c < 0x80) {
      bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
      ASSERT_EQ(IsCharAlphaW(ch) != 0, letter) << Hex(c);
      ASSERT_EQ(IsCharUpperW(ch) != 0, c >= 'A' && c <= 'Z') << Hex(c);
      ASSERT_EQ(IsCharLowerW(ch) != 0, c >= 'a' && c <= 'z') << Hex(c);
      ASSERT_EQ(IsCharAlphaNumericW(ch) != 0, letter || (c >= '0' && c <= '9')) << Hex(c);
      ASSERT_EQ(Upper1(c), c >= 'a' && c <= 'z' ? c - 32 : c);
      ASSERT_EQ(Lower1(c), c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
  }
}

// One definition of a nonspacing mark (general category Mn) serves CharNextW,
// CharPrevW and WideCharToMultiByte's WC_COMPOSITECHECK. The rows marked
// "differs" are the BMP code points where the bidirectional class NSM, the
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
    {0x20DE, false, "differs: combining enclosing square"},
    {0x20DF, false, "differs: combining enclosing diamond"},
    {0x20E0, false, "differs: combining enclosing circle backslash"},
    {0x20E1, true, "combining left right arrow above, between the enclosing marks"},
    {0x20E2, false, "differs: combining enclosing screen"},
    {0x20E3, false, "differs: combining enclosing keycap"},
    {0x20E4, false, "differs: combining enclosing upward pointing triangle"},
    {0xA670, false, "differs: combining Cyrillic ten millions sign"},
    {0xA671, false, "differs: combining Cyrillic hundred millions sign"},
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

// Values outside the BMP do not occur in this library's text: they pass
// through case mapping and have no type.
TEST(UnicodeCase, ValuesOutsideTheBmpPassThrough) {
  const wchar_t wide[] = {static_cast<wchar_t>(0x10041), static_cast<wchar_t>(-1),
                          static_cast<wchar_t>(0x1D41A), L'a'};
  wchar_t buf[6] = {wide[0], wide[1], wide[2], wide[3], 0, kSentinel};
  CharUpperW(buf);
  EXPECT_EQ(buf[0], wide[0]);
  EXPECT_EQ(buf[1], wide[1]);
  EXPECT_EQ(buf[2], wide[2]);
  EXPECT_EQ(buf[3], L'A');
  EXPECT_EQ(CharLowerBuffW(buf, 4), 4u);
  EXPECT_EQ(buf[0], wide[0]);
  EXPECT_EQ(buf[3], L'a');
  EXPECT_EQ(buf[5], kSentinel);
  for (wchar_t c : wide) {
    if (c == L'a')
      continue;
    EXPECT_FALSE(IsCharAlphaW(c));
    EXPECT_FALSE(IsCharUpperW(c));
    EXPECT_FALSE(IsCharLowerW(c));
    EXPECT_FALSE(IsCharAlphaNumericW(c));
    EXPECT_EQ(qx::platform::CharTypeBits(c), 0u);
  }
  // 0x10041 is not U+0041: no truncation to 16 bits.
  EXPECT_FALSE(IsCharUpperW(static_cast<WCHAR>(0x10041)));
}

TEST(UnicodeCase, SingleCharacterFormAndNull) {
  EXPECT_EQ(CharUpperW(nullptr), nullptr); // the character 0
  EXPECT_EQ(CharLowerW(nullptr), nullptr);
  EXPECT_EQ(Upper1(0xFFFF), 0xFFFFu); // the largest single-character value
  EXPECT_EQ(Lower1(0xFF21), 0xFF41u);
}

TEST(UnicodeCase, StringFormStopsAtTheTerminator) {
  wchar_t buf[] = {L'a', 0x00E9, L'z', 0, L'b', kSentinel};
  EXPECT_EQ(CharUpperW(buf), buf);
  EXPECT_EQ(buf[0], L'A');
  EXPECT_EQ(buf[1], 0x00C9);
  EXPECT_EQ(buf[2], L'Z');
  EXPECT_EQ(buf[3], 0);
  EXPECT_EQ(buf[4], L'b');
  EXPECT_EQ(buf[5], kSentinel);
  EXPECT_EQ(CharLowerW(buf), buf);
  EXPECT_EQ(std::wstring(buf), std::wstring(L"a\u00e9z"));
  EXPECT_EQ(buf[4], L'b');
}

struct BuffCase {
  const wchar_t* text; // at least `n` units (may hold zeros)
  DWORD n;
  bool upper;
  const wchar_t* expected; // the first n units afterwards
};

const BuffCase kBuffCases[] = {
    {L"abc", 3, true, L"ABC"},
    {L"abc", 2, true, L"ABc"},   // only n units
    {L"abc", 0, true, L"abc"},   // nothing
    {L"a\0b", 3, true, L"A\0B"}, // a zero does not stop it
    {L"\u00c0B\u0178", 3, false, L"\u00e0b\u00ff"},
    {L"\u03a3\u03a3", 2, false, L"\u03c3\u03c3"}, // no final-sigma rule
};

TEST(UnicodeCase, BuffFormsConvertExactlyTheGivenLength) {
  for (const BuffCase& t : kBuffCases) {
    SCOPED_TRACE(testing::Message() << "n=" << t.n << " upper=" << t.upper);
    wchar_t buf[8];
    std::fill(std::begin(buf), std::end(buf), kSentinel);
    for (DWORD i = 0; i < 3; ++i)
      buf[i] = t.text[i];
    DWORD got = t.upper ? CharUpperBuffW(buf, t.n) : CharLowerBuffW(buf, t.n);
    EXPECT_EQ(got, t.n);
    for (DWORD i = 0; i < t.n; ++i)
      EXPECT_EQ(buf[i], t.expected[i]) << "at " << i;
    for (DWORD i = t.n; i < 3; ++i)
      EXPECT_EQ(buf[i], t.text[i]) << "past n at " << i;
    for (size_t i = 3; i < 8; ++i)
      EXPECT_EQ(buf[i], kSentinel);
  }
}

TEST(UnicodeCase, BuffFormsWithNullBuffer) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(CharUpperBuffW(nullptr, 0), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
  EXPECT_EQ(CharUpperBuffW(nullptr, 5), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(CharLowerBuffW(nullptr, 1), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

struct NextCase {
  const wchar_t* text;
  size_t from;
  size_t expected;
};

const NextCase kNextCases[] = {
    {L"abc", 0, 1},
    {L"abc", 2, 3},
    {L"abc", 3, 3}, // at the terminator: stays
    {L"", 0, 0},
    {L"a\u030ab", 0, 2},                  // a + ring above is one character
    {L"a\u0301\u0302\u0303\u0304", 0, 5}, // five code points, one character
    {L"a\u0301\u0302\u0303\u0304", 2, 5}, // from inside the marks
    {L"\u0301x", 0, 1},                   // a mark at the start stands alone
    {L"a\u20ddb", 0, 1},                  // an enclosing mark is no nonspacing mark
    {L"\u0915\u0903x", 0, 1},             // spacing mark: its own character
    {L"a\u00e0b", 0, 1},                  // precomposed letters are not marks
    {L"e\u0301", 0, 2},                   // marks up to the terminator
};

TEST(CharWalk, NextStepsOverCombiningMarks) {
  for (const NextCase& t : kNextCases) {
    SCOPED_TRACE(testing::Message() << "case from " << t.from << " length " << wcslen(t.text));
    LPCWSTR p = t.text + t.from;
    EXPECT_EQ(CharNextW(p), t.text + t.expected);
  }
  EXPECT_EQ(CharNextW(nullptr), nullptr);
}

struct PrevCase {
  const wchar_t* text;
  size_t start;
  size_t current;
  size_t expected;
};

const PrevCase kPrevCases[] = {
    {L"abc", 0, 3, 2},
    {L"abc", 0, 1, 0},
    {L"abc", 0, 0, 0}, // at the start: the start
    {L"abc", 1, 1, 1},
    {L"abc", 2, 1, 1},      // before the start: unchanged
    {L"a\u030ab", 0, 2, 0}, // back over the mark to its base
    {L"a\u030ab", 0, 3, 2},
    {L"a\u0301\u0302\u0303\u0304", 0, 5, 0},
    {L"\u0301\u0302x", 0, 2, 0}, // marks at the start: never before start
    {L"xa\u0301\u0302", 1, 4, 1},
    {L"xa\u0301\u0302", 2, 4, 2}, // start inside the marks
    {L"a\u0903", 0, 2, 1},        // spacing mark is a character
};

TEST(CharWalk, PrevStepsBackToTheBaseCharacter) {
  for (const PrevCase& t : kPrevCases) {
    SCOPED_TRACE(testing::Message() << "start " << t.start << " current " << t.current);
    EXPECT_EQ(CharPrevW(t.text + t.start, t.text + t.current), t.text + t.expected);
  }
  const wchar_t* s = L"ab";
  EXPECT_EQ(CharPrevW(nullptr, s + 1), s + 1);
  EXPECT_EQ(CharPrevW(s, nullptr), nullptr);
}

// Walking a whole string forward and backward visits the same characters.
TEST(CharWalk, ForwardAndBackwardVisitTheSameCharacters) {
  const wchar_t* s = L"\u0301a\u0308bc\u0323\u0302\u20dd d";
  std::vector<const wchar_t*> forward;
  for (const wchar_t* p = s; *p; p = CharNextW(p))
    forward.push_back(p);
  std::vector<const wchar_t*> backward;
  for (const wchar_t* p = s + wcslen(s); p > s;) {
    p = CharPrevW(s, p);
    backward.insert(backward.begin(), p);
  }
  EXPECT_EQ(forward, backward);
  EXPECT_EQ(forward.size(), 7u); // mark, a+, b, c++, enclosing circle, space, d
}

} // namespace
