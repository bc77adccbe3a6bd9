// The name rules: splitting, extensions, qualification, relative paths,
// recommended names, temporary names and the search for a file.
#include "common/files_scope.h"
#include "common/temp_dir.h"
#include "platform/file_crt.h"
#include "qxutil/files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

std::wstring Split(const wchar_t* in, std::wstring* name) {
  wchar_t path[261], part[261] = L"#";
  wcscpy(path, in);
  splitfilename(path, part);
  *name = part;
  return path;
}

TEST(FileNames, SplitFileName) {
  struct Case {
    const wchar_t *in, *dir, *name;
  } cases[] = {
      {L"C:\\d\\roads.abcde", L"C:\\d\\", L"roads.abc"},
      {L"C:\\d/x.y.z", L"C:\\d/", L"x.y.z"},
      {L"C:\\d\\noext", L"C:\\d\\", L"noext"},
      {L"C:\\d\\", L"C:\\d\\", L""},
      {L"plain.txt", L"", L"plain.txt"},
  };
  for (const Case& c : cases) {
    std::wstring name;
    EXPECT_EQ(Split(c.in, &name), c.dir) << c.in;
    EXPECT_EQ(name, c.name) << c.in;
  }
  std::wstring longBase(300, L'b');
  std::wstring name;
  Split((L"C:\\" + longBase.substr(0, 250) + L".abcdef").c_str(), &name);
  EXPECT_EQ(name, longBase.substr(0, 250) + L".abc");
}

TEST(FileNames, MakeExtensionAndRecommendations) {
  struct Case {
    const wchar_t *name, *ext, *out;
  } cases[] = {
      {L"C:\\d\\a.dbf", L".CSV", L"C:\\d\\a.CSV"},     // a default extension is replaced
      {L"C:\\d\\a.shp", L".CSV", L"C:\\d\\a.shp.CSV"}, // an unknown one stays
      {L"C:\\d\\a", L".TXT", L"C:\\d\\a.TXT"},
      {L"C:\\d\\  a .txt", L".DBF", L"C:\\d\\a.DBF"}, // blanks at the start and before the dot
      {L"C:\\d.x\\a", L".TXT", L"C:\\d.x\\a.TXT"},    // dots of directories do not count
      {L"C:\\d\\a.txt", L"", L"C:\\d\\a"},            // an empty extension removes a default one
  };
  for (const Case& c : cases) {
    wchar_t buf[261];
    wcscpy(buf, c.name);
    make_extension(buf, c.ext);
    EXPECT_STREQ(buf, c.out) << c.name << " + " << c.ext;
  }
  wchar_t out[261];
  recommend_filename(out, L"C:\\p\\photo.jpg", FILETYPE_IMAGE);
  EXPECT_STREQ(out, L"C:\\p\\photo.JPG") << "an image keeps the photo extension";
  recommend_filename(out, L"C:\\p\\photo.gif", FILETYPE_IMAGE);
  EXPECT_STREQ(out, L"C:\\p\\photo.PNG");
  recommend_filename(out, L"C:\\p\\x", static_cast<FILETYPE>(70));
  EXPECT_STREQ(out, L"C:\\p\\x");
  recommend_table_filename(out, L"C:\\t\\roads.txt");
  EXPECT_STREQ(out, L"C:\\t\\roads.DBF");
  recommend_table_filename(out, L"C:\\t\\roads.DBF");
  EXPECT_STREQ(out, L"C:\\t\\roads.CSV") << "the table's own name gives the second kind";
  wcscpy(out, L"C:\\t\\r.txt");
  require_dos_extension(out, FILETYPE_INDEX);
  EXPECT_STREQ(out, L"C:\\t\\r.IDX");
}

TEST(FileNames, UnknownTypesAndModes) {
  EXPECT_EQ(file_extension(static_cast<FILETYPE>(70)), nullptr);
  EXPECT_FALSE(munge_filename(static_cast<FILETYPE>(70)));
  for (const wchar_t* n : {L"a.DBF", L"a.dbf", L"a.", L"a", L"a.txt.csv"})
    EXPECT_EQ(file_type(n), FILETYPE_ANY) << n;
  EXPECT_EQ(level0mode_to_ourmode(_O_RDONLY), OPEN_READ);
  EXPECT_EQ(level0mode_to_ourmode(_O_WRONLY), OPEN_READWRITE);
  EXPECT_EQ(level0mode_to_ourmode(_O_RDWR | _O_BINARY), OPEN_READWRITE);
  EXPECT_EQ(level0mode_to_ourmode(_O_WRONLY | _O_CREAT), OPEN_CREATE);
}

TEST(FileNames, Qualify) {
  qxtest::TempDir dir;
  std::filesystem::create_directories(dir.Path("x/y"));
  const std::filesystem::path saved = std::filesystem::current_path();
  std::filesystem::current_path(dir.Path("x/y"));
  std::wstring base = L"C:";
  for (char c : dir.Path())
    base += c == '/' ? L'\\' : static_cast<wchar_t>(c);
  struct Case {
    std::wstring in, out;
  } cases[] = {
      {L"a\\..\\..\\b", base + L"\\x\\b"},
      {L".\\b.txt", base + L"\\x\\y\\b.txt"},
      {L"C:\\p\\.\\q\\..\\r", L"C:\\p\\r"},
      {L"d:/p/q", L"D:\\p\\q"},
      {L"\\p\\q", L"C:\\p\\q"},
      {L"C:\\..\\..\\p", L"C:\\p"},
      {L"\\\\server\\share\\f", L"\\\\server\\share\\f"},
      {L"C:\\p\\", L"C:\\p\\"},
  };
  for (const Case& c : cases) {
    wchar_t buf[261];
    wcscpy(buf, c.in.c_str());
    qualify_filename(buf);
    EXPECT_EQ(std::wstring(buf), c.out) << c.in;
  }
  std::filesystem::current_path(saved);
  std::wstring deep = L"C:";
  while (deep.size() < 300)
    deep += L"\\abcdefgh";
  deep.resize(259);
  wchar_t buf[261];
  wcscpy(buf, deep.c_str());
  qualify_filename(buf);
  EXPECT_LE(wcslen(buf), 259u);
}

TEST(FileNames, RelativePathsRoundTrip) {
  struct Case {
    const wchar_t *base, *target, *relative;
    bool shared;
    const wchar_t* back; // the relative path resolved against the base
  } cases[] = {
      {L"C:\\a\\b", L"C:\\a\\c\\d.txt", L"..\\c\\d.txt", true, L"C:\\a\\c\\d.txt"},
      {L"C:\\a\\b\\", L"C:\\a\\b\\d.txt", L"d.txt", true, L"C:\\a\\b\\d.txt"},
      {L"C:\\a\\b", L"C:\\z\\t.txt", L"..\\..\\z\\t.txt", true, L"C:\\z\\t.txt"},
      {L"c:\\A\\B", L"C:\\a\\b\\x\\y.txt", L"x\\y.txt", true, L"C:\\A\\B\\x\\y.txt"},
      {L"C:\\a", L"D:\\b\\c.txt", L"D:\\b\\c.txt", false, L"D:\\b\\c.txt"},
  };
  for (const Case& c : cases) {
    wchar_t rel[261], full[261];
    EXPECT_EQ(CalcRelativePath(c.base, c.target, rel), c.shared) << c.target;
    EXPECT_STREQ(rel, c.relative);
    FullPathFromRelativePath(c.base, rel, full);
    EXPECT_STREQ(full, c.back);
    wchar_t ref[261];
    wcscpy(ref, rel);
    path2something(ref, c.base);
    EXPECT_STREQ(ref, full);
  }
  wchar_t out[261];
  EXPECT_TRUE(CalcRelativePath(L"C:\\a", L"data\\x.txt", out)) << "already relative";
  EXPECT_STREQ(out, L"data\\x.txt");
  wchar_t ref[261] = L"..\\lib\\x.dbf";
  EXPECT_TRUE(resolve_path_reference(ref, L"C:\\maps\\roads\\roads.dbf"));
  EXPECT_STREQ(ref, L"C:\\maps\\lib\\x.dbf");
}

TEST(FileNames, PartialPath) {
  qxtest::ScopedRegistry registry;
  int h = register_file(L"C:\\maps\\region\\roads\\roads.dbf", FILETYPE_ANY, true);
  wchar_t out[261];
  EXPECT_STREQ(fhandle2partialpath(h, out, 261), L"C:\\maps\\region\\roads\\roads.dbf");
  EXPECT_STREQ(fhandle2partialpath(h, out, 24), L"C:\\...\\roads\\roads.dbf");
  EXPECT_STREQ(fhandle2partialpath(h, out, 10), L"roads.dbf");
  EXPECT_STREQ(fhandle2partialpath(h, out, 5), L"road");
  EXPECT_EQ(fhandle2partialpath(h + 1, out, 10), nullptr);
}

TEST(FileNames, TempNamesAndSearch) {
  qxtest::ScopedRegistry registry;
  qxtest::TempDir dir;
  std::wstring d = dir.Wide();
  temp_dir((d + L"\\").c_str());
  wchar_t a[261], b[261];
  ASSERT_NE(tempname(a, nullptr), nullptr);
  ASSERT_NE(tempname(b, nullptr), nullptr);
  std::wstring sa = a, sb = b;
  EXPECT_EQ(sa.substr(0, d.size() + 5), d + L"\\~QXF");
  EXPECT_EQ(sa.substr(sa.size() - 4), L".TMP");
  size_t dash = sa.rfind(L'-'), dashB = sb.rfind(L'-');
  EXPECT_EQ(std::stoul(sb.substr(dashB + 1)), std::stoul(sa.substr(dash + 1)) + 1);
  ASSERT_NE(tempname(a, d.c_str(), FILETYPE_TABLE), nullptr);
  EXPECT_EQ(std::wstring(a).substr(wcslen(a) - 4), L".DBF");
  // An existing name is passed over.
  dir.Write("taken", "");
  std::wstring next = tempname(a, d.c_str());
  const size_t at = next.rfind(L'-'), n = std::stoul(next.substr(at + 1));
  std::wstring taken = next.substr(d.size() + 1, at - d.size()) + std::to_wstring(n + 1) + L".TMP";
  dir.Write(std::string(taken.begin(), taken.end()), "");
  std::wstring after = tempname(a, d.c_str());
  EXPECT_EQ(std::stoul(after.substr(after.rfind(L'-') + 1)), n + 2);

  // search_for_file: application data, then the program directory, then the name.
  std::filesystem::create_directories(dir.Path("app"));
  std::filesystem::create_directories(dir.Path("prog"));
  dir.Write("app/both.txt", "");
  dir.Write("prog/both.txt", "");
  dir.Write("prog/prog.txt", "");
  AddAppDataPath((d + L"\\app").c_str());
  program_dir((d + L"\\prog").c_str());
  wchar_t name[261] = L"both.txt";
  ASSERT_TRUE(search_for_file(name, FILETYPE_ANY));
  EXPECT_EQ(std::wstring(name), d + L"\\app\\both.txt");
  wcscpy(name, L"prog.txt");
  ASSERT_TRUE(search_for_file(name, FILETYPE_ANY));
  EXPECT_EQ(std::wstring(name), d + L"\\prog\\prog.txt");
  wcscpy(name, (d + L"\\taken").c_str());
  EXPECT_TRUE(search_for_file(name, FILETYPE_ANY));
  wcscpy(name, L"nowhere.txt");
  EXPECT_FALSE(search_for_file(name, FILETYPE_ANY));
  EXPECT_TRUE(file_exists((d + L"\\APP\\BOTH.TXT").c_str(), FILETYPE_ANY));
  EXPECT_STREQ(program_dir(), (d + L"\\prog").c_str());
  EXPECT_STREQ(home_dir(), L"");
}

TEST(FileNames, ChangeAndRestoreDirectory) {
  qxtest::ScopedRegistry registry;
  qxtest::TempDir dir;
  std::filesystem::create_directories(dir.Path("sub"));
  const std::filesystem::path before = std::filesystem::current_path();
  int h = register_file((dir.Wide() + L"\\SUB\\f.txt").c_str(), FILETYPE_ANY, true);
  SAVED_DIR saved;
  ASSERT_TRUE(ChangeDirectory(h, &saved));
  EXPECT_EQ(std::filesystem::current_path(), dir.Path("sub"));
  EXPECT_TRUE(RestoreDirectory(&saved));
  EXPECT_EQ(std::filesystem::current_path(), before);
  EXPECT_FALSE(ChangeDirectory(h + 7, &saved));
  EXPECT_EQ(saved.current[0], 0);
}

} // namespace
