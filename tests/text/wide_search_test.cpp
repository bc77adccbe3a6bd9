// Comparison, length and search: the mode-dependent functions are run in
// both modes, with the cases where DBCS walking or narrowing changes the
// answer.
#include "platform/heap.h"
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qxtest::InMode;
using qxtest::Mode;

// Positions as indices; -1 stands for null.
long At(const wchar_t* s, const wchar_t* hit) { return hit ? static_cast<long>(hit - s) : -1; }

struct SearchCase {
  const char* what;
  long (*run)(const wchar_t* s, const wchar_t* arg);
  const wchar_t* s;
  const wchar_t* arg;
  long singleByte;
  long dbcs;
};

long Chr(const wchar_t* s, const wchar_t* a) { return At(s, qxStrchr(s, a[0])); }
long Rchr(const wchar_t* s, const wchar_t* a) { return At(s, qxStrrchr(s, a[0])); }
long Pbrk(const wchar_t* s, const wchar_t* a) { return At(s, qxStrpbrk(s, a)); }
long Spn(const wchar_t* s, const wchar_t* a) { return static_cast<long>(qxStrspn(s, a)); }
long Cspn(const wchar_t* s, const wchar_t* a) { return static_cast<long>(qxStrcspn(s, a)); }
long Str(const wchar_t* s, const wchar_t* a) { return At(s, qxStrstr(s, a)); }
long Len(const wchar_t* s, const wchar_t*) { return static_cast<long>(qxStrLen(s)); }
long Last(const wchar_t* s, const wchar_t*) { return At(s, qxLastChar(s)); }

// clang-format off
const SearchCase kSearchCases[] = {
    {"strchr terminator", Chr, L"abc", L"", 3, 3},
    {"strchr narrows to 0x42", Chr, L"a\u3042B", L"\u3042", 1, 2},
    {"strchr narrows with sign", Chr, L"x\uffe9\u00e9", L"\u00e9", 2, 1},
    {"strchr 0x100 narrows to 0", Chr, L"ab", L"\u0100", -1, 2},
    {"strchr mark", Chr, L"e\u0301", L"\u0301", 1, -1},
    {"strchr after mark", Chr, L"e\u0301x", L"x", 2, 2},
    {"strrchr", Rchr, L"abca", L"a", 3, 3},
    {"strrchr not narrowed", Rchr, L"a\u3042B", L"\u3042", 1, 1},
    {"strrchr mark", Rchr, L"a\u0301\u0301", L"\u0301", 2, -1},
    {"strrchr terminator", Rchr, L"ab", L"", 2, 2},
    {"strpbrk mark", Pbrk, L"e\u0301,", L"\u0301,", 1, 2},
    {"strpbrk none", Pbrk, L"abc", L"", -1, -1},
    {"strspn mark", Spn, L"a\u0301b", L"a", 1, 2},
    {"strcspn mark", Cspn, L"a\u0301b", L"\u0301", 1, 3},
    {"strstr empty needle", Str, L"abc", L"", 0, 0},
    {"strstr narrowed first unit", Str, L"aBc\u3042c", L"\u3042c", 3, 1},
    {"strstr at a mark", Str, L"e\u0301x", L"\u0301x", 1, -1},
    {"strstr missing", Str, L"abc", L"abcd", -1, -1},
    {"strlen marks", Len, L"a\u0301b\u0302\u0303", nullptr, 5, 2},
    {"strlen empty", Len, L"", nullptr, 0, 0},
    {"lastchar mark", Last, L"ab\u0301", nullptr, 2, 1},
    {"lastchar empty", Last, L"", nullptr, 0, 0},
    {"strchr null", Chr, nullptr, L"a", -1, -1}, {"strrchr null", Rchr, nullptr, L"a", -1, -1},
    {"strpbrk null", Pbrk, L"a", nullptr, -1, -1}, {"strspn null", Spn, nullptr, L"a", 0, 0},
    {"strcspn null", Cspn, L"a", nullptr, 0, 0}, {"strstr null", Str, L"a", nullptr, -1, -1},
    {"strlen null", Len, nullptr, nullptr, 0, 0}, {"lastchar null", Last, nullptr, nullptr, -1, -1},
};
// clang-format on

TEST(WideSearch, BothModes) {
  for (Mode mode : {Mode::kSingleByte, Mode::kDbcs})
    InMode(mode, [mode] {
      for (const SearchCase& c : kSearchCases)
        EXPECT_EQ(c.run(c.s, c.arg), mode == Mode::kDbcs ? c.dbcs : c.singleByte)
            << c.what << " in " << qxtest::ModeName(mode) << " mode";
    });
}

TEST(WideSearch, ModeFreeSearches) {
  const wchar_t* s = L"a,b,c";
  EXPECT_EQ(At(s, strnchr(s, L'c', 5)), 4);
  EXPECT_EQ(At(s, strnchr(s, L'c', 4)), -1); // the hit is at position n
  EXPECT_EQ(At(s, strnchr(s, L'\0', 9)), -1);
  EXPECT_EQ(strrcspn(s, L","), 3u);
  EXPECT_EQ(strrcspn(s, L";"), 0xFFFFFFFFu);
  EXPECT_EQ(strrcspn(L"", L","), 0xFFFFFFFFu);
  EXPECT_EQ(At(s, fast_strchr(s, L'b')), 2);
  EXPECT_EQ(At(s, fast_strpbrk(s, L"cb")), 2);
  EXPECT_FALSE(qxIsLeadByte(s));
  const wchar_t* marks = L"e\u0301\u0302x";
  EXPECT_EQ(At(marks, qxNextChar(marks)), 3);
  EXPECT_EQ(At(marks, qxPrevChar(marks, marks + 3)), 0);
  EXPECT_EQ(At(marks, qxNextChar(marks + 4)), 4); // stays at the terminator
}

// wide_edit_fuzz holds the comparisons to the plain rules, past the stack
// scratch too; here the runtime's error value and a failed scratch.
TEST(WideCompare, NullAndNoMemory) {
  EXPECT_EQ(qxStrICmp(nullptr, L"A"), 2147483647);
  // Without memory for the scratch a difference is still seen (the frame's
  // fault walk checks equal texts).
  std::wstring a(300, L'a'), b(299, L'A');
  b += L'Z';
  qx::platform::FailAllocations(1, true);
  bool differ = strniequ(a.c_str(), b.c_str(), 300);
  qx::platform::FailAllocations(0, false);
  EXPECT_FALSE(differ);
}

} // namespace
