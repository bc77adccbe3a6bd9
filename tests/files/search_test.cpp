// File search: Windows patterns, the listing order, the attribute filter
// (FILEFIND), and FindFileInfo's depth-first search over a list of
// directories.
#include "common/temp_dir.h"
#include "platform/file_find.h"
#include "qxutil/files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

namespace {

TEST(FileSearch, WindowsPatterns) {
  const struct {
    const wchar_t* pattern;
    const wchar_t* name;
    bool matches;
  } cases[] = {{L"*", L"README", true},
               {L"*.*", L"README", true},
               {L"*.*", L"a.b.c", true},
               {L"*.dbf", L"ROADS.DBF", true},
               {L"*.dbf", L"roads.dbx", false},
               {L"r?ads.*", L"Roads.dbf", true},
               {L"r?ads.*", L"rads.dbf", false},
               {L"a*.*", L"abc", true},
               {L"*.", L"README", true},
               {L"*.", L"roads.dbf", false},
               {L"??", L"abc", false},
               {L"a*b*c", L"axxbyyc", true},
               {L"a*b*c", L"axxbyy", false},
               {L"\u00e9t\u00e9", L"\u00c9T\u00c9", true},
               {L"x", L"", false}};
  for (const auto& c : cases)
    EXPECT_EQ(qx::win::MatchesPattern(c.pattern, c.name), c.matches) << c.pattern << " " << c.name;
}

class Search : public ::testing::Test {
protected:
  void Touch(const std::string& name) { dir_.Write(name, "x"); }
  void Mkdir(const std::string& name) { std::filesystem::create_directories(dir_.Path(name)); }
  std::wstring W(const std::string& name) const { return dir_.Wide(name); }
  // Names - every name FileFindFirst/Next give for `pattern` and `mask`.
  std::vector<std::wstring> Names(const std::string& pattern, unsigned long mask) {
    std::vector<std::wstring> out;
    FILEFIND f{};
    std::wstring p = W(pattern);
    if (!FileFindFirst(p.data(), mask, &f))
      return out;
    if (f.name[0])
      out.push_back(f.name);
    while (FileFindNext(&f))
      out.push_back(f.name);
    EXPECT_EQ(FileFindClose(&f), 1);
    return out;
  }
  qxtest::TempDir dir_;
};

TEST_F(Search, ListsInUpperCasedNameOrderWithAttributes) {
  for (const char* n : {"b.txt", "B2.txt", "a.TXT", "_x.txt", "Zed.txt", ".hidden"})
    Touch(n);
  Mkdir("Sub");
  ::chmod(dir_.Path("Zed.txt").c_str(), 0444);
  using V = std::vector<std::wstring>;
  EXPECT_EQ(Names("*", FILE_ATTRIBUTE_DIRECTORY), (V{L".", L"..", L"Sub"}));
  EXPECT_EQ(Names("*.txt", FILE_ATTRIBUTE_NORMAL), (V{L"a.TXT", L"b.txt", L"B2.txt", L"_x.txt"}))
      << "upper-cased order: '_' sorts after the letters";
  EXPECT_EQ(Names("*", FILE_ATTRIBUTE_READONLY), (V{L"Zed.txt"}));
  EXPECT_EQ(Names("*", FILE_ATTRIBUTE_HIDDEN), (V{L".hidden"}));
  EXPECT_EQ(Names("*.TXT", FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_READONLY),
            (V{L"a.TXT", L"b.txt", L"B2.txt", L"Zed.txt", L"_x.txt"}));

  WIN32_FIND_DATAW data;
  std::wstring p = W("SUB");
  HANDLE h = qx::win::FindFirstFileW(p.c_str(), &data);
  ASSERT_NE(h, INVALID_HANDLE_VALUE) << "the directory itself, its case ignored";
  EXPECT_STREQ(data.cFileName, L"Sub");
  EXPECT_EQ(data.dwFileAttributes, static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
  EXPECT_FALSE(qx::win::FindNextFileW(h, &data));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
  EXPECT_TRUE(qx::win::FindClose(h));
  EXPECT_FALSE(qx::win::FindClose(INVALID_HANDLE_VALUE));

  p = W("sUB/nothing*");
  EXPECT_EQ(qx::win::FindFirstFileW(p.c_str(), &data), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND)) << "sUB is Sub";
  p = W("missing/*");
  EXPECT_EQ(qx::win::FindFirstFileW(p.c_str(), &data), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

TEST_F(Search, TheFilterKeepsTheNameWhenNothingMatches) {
  Touch("only.txt");
  FILEFIND f{};
  wcscpy(f.name, L"unchanged");
  std::wstring p = W("*.txt");
  EXPECT_EQ(FileFindFirst(p.data(), FILE_ATTRIBUTE_DIRECTORY, &f), 1);
  EXPECT_STREQ(f.name, L"unchanged");
  EXPECT_EQ(FileFindNext(&f), 0);
  EXPECT_EQ(FileFindClose(&f), 1);
  p = W("*.none");
  EXPECT_EQ(FileFindFirst(p.data(), FILE_ATTRIBUTE_NORMAL, &f), 0);
  // Attributes 0 count as FILE_ATTRIBUTE_NORMAL.
  f.mask = FILE_ATTRIBUTE_NORMAL;
  f.data.dwFileAttributes = 0;
  f.handle = INVALID_HANDLE_VALUE;
  EXPECT_EQ(FileFindNext(&f), 0);
}

TEST_F(Search, FindFileInfoSearchesDepthFirstInListOrder) {
  Mkdir("A/x/y");
  Mkdir("A/.");
  Mkdir("B");
  Touch("A/x/y/Target.dat");
  Touch("B/target.dat");
  Touch("top.dat");
  std::wstring list = W("A") + L";" + W("B");
  wchar_t out[261];

  FindFileInfo* flat = FindFileInfo::Create(list.c_str(), false);
  ASSERT_NE(flat, nullptr);
  EXPECT_FALSE(flat->Find(L"target.dat", out, 261)) << "only where it stands as passed";
  std::wstring top = W("TOP.DAT");
  EXPECT_TRUE(flat->Find(top.c_str(), out, 261));
  EXPECT_EQ(std::wstring(out), top);
  delete flat;

  FindFileInfo* tree = FindFileInfo::Create(list.c_str(), true);
  ASSERT_NE(tree, nullptr);
  EXPECT_TRUE(tree->Find(L"other\\TARGET.dat", out, 261));
  EXPECT_EQ(std::wstring(out), W("A") + L"\\x\\y\\TARGET.dat") << "A's subdirectory before B";
  unsigned aLength = static_cast<unsigned>(std::wcslen(out));
  EXPECT_TRUE(tree->Find(L"target.dat", out, aLength + 1));
  EXPECT_EQ(std::wstring(out), W("B") + L"\\target.dat") << "A's find does not fit, B's does";
  EXPECT_FALSE(tree->Find(L"absent.dat", out, 261));
  delete tree;

  std::wstring longList(2000, L';');
  FindFileInfo* cut = FindFileInfo::Create(longList.c_str(), true);
  ASSERT_NE(cut, nullptr);
  EXPECT_FALSE(cut->Find(L"absent.dat", out, 261));
  delete cut;
}

} // namespace
