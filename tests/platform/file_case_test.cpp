// Names that ignore case and drive prefixes: every call finds a file under
// any case variant of its directories and name; creation reuses a variant.
#include "common/temp_dir.h"
#include "platform/file_crt.h"
#include "platform/file_path.h"
#include "platform/file_win.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace qx::crt;

namespace {

std::string Kernel(const wchar_t* path) {
  char out[qx::platform::kKernelPathSize];
  return qx::platform::KernelPath(path, out) ? out : "<fail>";
}

TEST(FileCase, KernelNames) {
  const std::pair<const wchar_t*, const char*> cases[] = {
      {L"C:\\data\\roads.dbf", "/data/roads.dbf"},
      {L"d:/data/roads.dbf", "/data/roads.dbf"},
      {L"C:roads.dbf", "roads.dbf"},
      {L"\\\\server\\share\\x", "//server/share/x"},
      {L"\u00e9t\u00e9.txt", "\xc3\xa9t\xc3\xa9.txt"},
      {L"", "<fail>"},
  };
  for (auto [wide, kernel] : cases)
    EXPECT_EQ(Kernel(wide), kernel);
  std::wstring longName(2000, L'a');
  EXPECT_EQ(Kernel(longName.c_str()), "<fail>");
  EXPECT_EQ(errno, ENAMETOOLONG);
}

// Every case variant of "Dir/Sub/Roads.Dat" (directories and name).
std::vector<std::wstring> Variants(const qxtest::TempDir& dir) {
  std::vector<std::wstring> out;
  for (const wchar_t* d : {L"Dir", L"DIR", L"dir", L"dIR"})
    for (const wchar_t* s : {L"Sub", L"SUB", L"sub"})
      for (const wchar_t* n : {L"Roads.Dat", L"ROADS.DAT", L"roads.dat", L"rOADS.dAT"})
        out.push_back(dir.Wide() + L"/" + d + L"\\" + s + L"/" + n);
  return out;
}

TEST(FileCase, EveryVariantOpensTestsAndCreatesTheOneFile) {
  qxtest::TempDir dir;
  std::filesystem::create_directories(dir.Path("Dir/Sub"));
  dir.Write("Dir/Sub/Roads.Dat", "roads");
  for (const std::wstring& v : Variants(dir)) {
    EXPECT_EQ(_waccess(v.c_str(), 0), 0);
    struct _stat32 st;
    EXPECT_EQ(_wstat32(v.c_str(), &st), 0);
    EXPECT_EQ(st.st_size, 5);
    EXPECT_NE(qx::win::GetFileAttributesW(v.c_str()), INVALID_FILE_ATTRIBUTES);
    int fd = _wsopen(v.c_str(), _O_RDONLY, _SH_DENYWR, 0);
    ASSERT_GE(fd, 0);
    char buf[8] = {};
    EXPECT_EQ(_read(fd, buf, 8), 5);
    _close(fd);
    // Creation opens (and truncates) the existing variant, never a second file.
    fd = _wsopen(v.c_str(), _O_RDWR | _O_CREAT | _O_TRUNC, _SH_DENYRW, _S_IWRITE);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(_write(fd, "roads", 5), 5);
    _close(fd);
    size_t files = 0;
    for (auto& e : std::filesystem::recursive_directory_iterator(dir.Path()))
      files += e.is_regular_file();
    EXPECT_EQ(files, 1u);
  }
  // A new file in a case variant of the directories lands in them.
  int fd = _wsopen((dir.Wide() + L"/DIR/sub/New.Dbf").c_str(), _O_RDWR | _O_CREAT, _SH_DENYRW,
                   _S_IWRITE);
  ASSERT_GE(fd, 0);
  _close(fd);
  EXPECT_TRUE(dir.Exists("Dir/Sub/New.Dbf"));
  EXPECT_EQ(_wremove((dir.Wide() + L"/dir/SUB/NEW.DBF").c_str()), 0);
  EXPECT_EQ(_wrename((dir.Wide() + L"/dir/sub/roads.dat").c_str(),
                     (dir.Wide() + L"/DIR/SUB/Moved.Dat").c_str()),
            0);
  EXPECT_EQ(dir.Read("Dir/Sub/Moved.Dat"), "roads");
}

TEST(FileCase, ExactSpellingWinsThenByteOrder) {
  qxtest::TempDir dir;
  dir.Write("roads.dat", "lower");
  dir.Write("Roads.dat", "mixed");
  dir.Write("ROADS.DAT", "upper");
  const std::pair<const char*, const char*> cases[] = {
      {"roads.dat", "lower"}, {"Roads.dat", "mixed"}, {"ROADS.DAT", "upper"},
      {"rOADS.DAT", "upper"}, {"roads.DAT", "upper"},
  };
  for (auto [name, content] : cases) {
    std::wstring path = dir.Wide(name);
    int fd = _wsopen(path.c_str(), _O_RDONLY, _SH_DENYWR, 0);
    ASSERT_GE(fd, 0) << name;
    char buf[8] = {};
    _read(fd, buf, 5);
    _close(fd);
    EXPECT_STREQ(buf, content) << name;
  }
  // Non-ASCII letters fold with the library's upper-casing.
  dir.Write("\xc3\xa9t\xc3\xa9.txt", "summer"); // été.txt
  EXPECT_EQ(_waccess((dir.Wide() + L"/\u00c9T\u00c9.TXT").c_str(), 0), 0);
  EXPECT_EQ(_waccess(dir.Wide("ete.txt").c_str(), 0), -1);
}

} // namespace
