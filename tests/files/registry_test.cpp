// The registry: handles, registration errors, opening and closing with the
// open-file bound, upgrade, positions, application strings, removal,
// renaming, copying and times.
#include "common/files_scope.h"
#include "common/temp_dir.h"
#include "qxutil/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using qxtest::RegistrySettings;
using qxtest::ScopedRegistry;

// LastErrorNumber - the number of the newest error record (0 when none).
int LastErrorNumber() {
  int n = NumErrors();
  return n ? GetErrorNum(n - 1) : 0;
}

class Registry : public ::testing::Test {
protected:
  void SetUp() override { ClearErrors(); }
  void TearDown() override { ClearErrors(); }
  std::wstring Path(const std::string& name) const { return dir_.Wide(name); }
  qxtest::TempDir dir_;
};

TEST_F(Registry, HandlesAndRegistration) {
  ScopedRegistry r;
  int a = register_file(Path("a.txt").c_str(), FILETYPE_TEXT, true);
  EXPECT_EQ(a, 1000);
  EXPECT_EQ(register_file(Path("b.txt").c_str(), FILETYPE_TEXT, true), 1001);
  EXPECT_TRUE(unregister_file(1000));
  EXPECT_FALSE(unregister_file(1000));
  EXPECT_EQ(register_file(Path("c.txt").c_str(), FILETYPE_TEXT, true), 1000) << "the lowest free";

  EXPECT_EQ(register_file(Path("C.TXT").c_str(), FILETYPE_TEXT, true), 0) << "already registered";
  EXPECT_EQ(LastErrorNumber(), 8);
  EXPECT_EQ(register_nonunique_file(Path("c.txt").c_str(), FILETYPE_TEXT), 1002);
  EXPECT_EQ(is_file_registered(Path("C.txt").c_str(), FILETYPE_ANY), 1000) << "first in order";
  EXPECT_EQ(is_file_registered(Path("c.txt").c_str(), FILETYPE_TEXT), 1000);
  EXPECT_EQ(is_file_registered(Path("c.txt").c_str(), FILETYPE_LOG), 0) << "another type";
  int any = register_file(Path("d.dat").c_str(), FILETYPE_ANY, true);
  EXPECT_EQ(is_file_registered(Path("d.dat").c_str(), FILETYPE_LOG), any);

  // Forced extensions apply at registration; the name is qualified.
  int table = register_file(Path("roads.txt").c_str(), FILETYPE_TABLE, true);
  wchar_t out[261];
  EXPECT_STREQ(fhandle2name(table, out), L"roads.DBF");
  std::wstring dir = L"C:" + Path("") + L"/";
  for (auto& c : dir)
    c = c == L'/' ? L'\\' : c;
  EXPECT_EQ(std::wstring(fhandle2dir(table, out)), dir);
  EXPECT_EQ(std::wstring(fhandle2path(table, out)), dir + L"roads.DBF");
  EXPECT_EQ(fhandle2name(999, out), nullptr);
  EXPECT_EQ(fhandle2name(5000, out), nullptr);

  // Many registrations: the table grows by 100 and lookups stay exact.
  for (int i = 0; i < 250; ++i)
    ASSERT_NE(register_file(Path("m" + std::to_string(i)).c_str(), FILETYPE_ANY, true), 0);
  EXPECT_EQ(is_file_registered(Path("M249").c_str(), FILETYPE_ANY), 1000 + 5 + 249);
}

TEST_F(Registry, OpenCloseAndModes) {
  ScopedRegistry r;
  dir_.Write("f.dat", "0123456789");
  int h = register_file(Path("f.dat").c_str(), FILETYPE_ANY, true);
  EXPECT_EQ(close2(h), -1) << "not open";
  EXPECT_EQ(LastErrorNumber(), 53);
  int changed = 0; // lengths, positions, reads and writes: fuzz/files_differential_fuzz.cpp
  EXPECT_EQ(fileopen(h, OPEN_READ, &changed), h);
  EXPECT_EQ(fileopen(h, OPEN_READ, &changed), h) << "a second use";
  // Upgrade: both users now hold it read/write.
  EXPECT_EQ(fileopen(h, OPEN_READWRITE, &changed), h);
  EXPECT_EQ(filehandle_get_openmode(h), OPEN_READWRITE);
  EXPECT_EQ(write2(h, "ab", 2), 2);
  EXPECT_EQ(fileopen(h, OPEN_CREATE, &changed), -1) << "incompatible while in use";
  EXPECT_EQ(LastErrorNumber(), 9);
  EXPECT_EQ(close2(h), 0);
  EXPECT_EQ(close2(h), 0);
  EXPECT_GE(GetFileFD(h), 0) << "still open once";
  EXPECT_EQ(close2(h), 0);
  EXPECT_EQ(GetFileFD(h), -1);
  EXPECT_EQ(dir_.Read("f.dat"), "ab23456789");
  EXPECT_EQ(changed, 0);

  EXPECT_EQ(fileopen(h, OPEN_READ, nullptr), h);
  EXPECT_EQ(lseek2(h, -12, 1), -12) << "no bounds are checked";
  close2(h);

  int missing = register_file(Path("missing.dat").c_str(), FILETYPE_ANY, true);
  EXPECT_EQ(fileopen(missing, OPEN_READ, nullptr), -1);
  EXPECT_EQ(LastErrorNumber(), 5001);
  EXPECT_EQ(fileopen(missing, OPEN_CREATE, nullptr), missing);
  EXPECT_EQ(close2(missing), 0);
  EXPECT_TRUE(dir_.Exists("missing.dat"));
  EXPECT_EQ(fileopen(h, static_cast<eOpenMode>(4), nullptr), -1);
}

TEST_F(Registry, IdleFilesAndTheBound) {
  RegistrySettings s;
  s.maxOpenFiles = 1;
  s.closeAtOnce = false;
  ScopedRegistry r(s);
  dir_.Write("a", "A");
  dir_.Write("b", "B");
  int a = register_file(Path("a").c_str(), FILETYPE_ANY, true);
  int b = register_file(Path("b").c_str(), FILETYPE_ANY, true);
  ASSERT_EQ(fileopen(a, OPEN_READ, nullptr), a);
  ASSERT_EQ(close2(a), 0);
  EXPECT_GE(GetFileFD(a), 0) << "kept open while idle";
  ASSERT_EQ(fileopen(b, OPEN_READ, nullptr), b);
  EXPECT_EQ(GetFileFD(a), -1) << "closed to make room";
  char c = 0;
  EXPECT_EQ(read2(b, &c, 1), 1);
  EXPECT_EQ(c, 'B');
  EXPECT_EQ(fileopen(a, OPEN_READ, nullptr), -1) << "b is held: nothing idle to close";
  EXPECT_EQ(LastErrorNumber(), 14);
  close2(b);
  ASSERT_EQ(fileopen(a, OPEN_READ, nullptr), a);
  EXPECT_EQ(read2(a, &c, 1), 1);
  EXPECT_EQ(c, 'A');
  close2(a);
  really_close_all();
  EXPECT_EQ(GetFileFD(a), -1);
}

TEST_F(Registry, TheOldestIdleFileIsClosedFirst) {
  RegistrySettings s;
  s.maxOpenFiles = 2;
  s.closeAtOnce = false;
  ScopedRegistry r(s);
  int h[3];
  for (int i = 0; i < 3; ++i) {
    std::string name(1, static_cast<char>('a' + i));
    dir_.Write(name, name);
    h[i] = register_file(Path(name).c_str(), FILETYPE_ANY, true);
  }
  auto cycle = [&](int i) { // open read-only and close: the file stays open, idle
    ASSERT_EQ(fileopen(h[i], OPEN_READ, nullptr), h[i]);
    ASSERT_EQ(close2(h[i]), 0);
  };
  cycle(0);
  cycle(1);
  cycle(2); // a is the older idle file
  EXPECT_EQ(GetFileFD(h[0]), -1);
  EXPECT_GE(GetFileFD(h[1]), 0);
  cycle(1); // reused: no open, no age reset
  cycle(0); // b is older than c now
  EXPECT_EQ(GetFileFD(h[1]), -1);
  EXPECT_GE(GetFileFD(h[2]), 0);
}

TEST_F(Registry, ReadOnlyFilesRetryThenFail) {
  RegistrySettings s;
  s.retry = [](eOpenMode, const wchar_t*, long& since) {
    ++since;
    return since < 3; // two retries
  };
  ScopedRegistry r(s);
  dir_.Write("ro", "x");
  chmod(dir_.Path("ro").c_str(), 0444);
  int h = register_file(Path("ro").c_str(), FILETYPE_ANY, true);
  EXPECT_EQ(fileopen(h, OPEN_READWRITE, nullptr), -1);
  EXPECT_EQ(LastErrorNumber(), 4);
  EXPECT_EQ(GetFileFD(h), -1);
  ClearErrors();
  EXPECT_EQ(fileopen(h, OPEN_CREATE, nullptr), -1);
  EXPECT_EQ(NumErrors(), 0) << "creation fails silently";
  EXPECT_EQ(fileopen(h, OPEN_READ, nullptr), h);
  // A failed upgrade leaves the file open read-only for its users.
  EXPECT_EQ(fileopen(h, OPEN_READWRITE, nullptr), -1);
  EXPECT_EQ(filehandle_get_openmode(h), OPEN_READ);
  EXPECT_GE(GetFileFD(h), 0);
  char c = 0;
  EXPECT_EQ(read2(h, &c, 1), 1);
  EXPECT_EQ(close2(h), 0);
  EXPECT_EQ(close2(h), -1);
}

TEST_F(Registry, ApplicationStrings) {
  for (int cacheBlocks : {0, 401}) {
    RegistrySettings s;
    s.cacheBlocks = cacheBlocks;
    ScopedRegistry r(s);
    int h = register_file(Path("app.bin").c_str(), FILETYPE_ANY, true);
    ASSERT_EQ(fileopen(h, OPEN_CREATE, nullptr), h);
    file_put_charset(h, static_cast<QXCHARSET>(1));
    EXPECT_EQ(write_app_string(h, L"Stra\u00dfe"), 6);
    EXPECT_EQ(write_app_string(h, L""), -1);
    EXPECT_EQ(tell2(h), 7);
    lseek2(h, 0, 0);
    EXPECT_EQ(read_app_string_len(h), 6);
    EXPECT_EQ(tell2(h), 0);
    wchar_t text[32];
    EXPECT_TRUE(read_app_string(h, text, 32));
    EXPECT_STREQ(text, L"Stra\u00dfe");
    EXPECT_FALSE(read_app_string(h, text, 32)) << "the end of the file";
    EXPECT_EQ(file_get_charset(h), 1);
    EXPECT_EQ(file_get_charset(h + 50), -1);
    close2(h);
    unregister_file(h);
  }
}

TEST_F(Registry, RemovalRenamingCopyingTimes) {
  ScopedRegistry r;
  for (const char* n : {"a", "b", "c"})
    dir_.Write(n, n);
  int h[3];
  for (int i = 0; i < 3; ++i)
    h[i] = register_file(Path(std::string(1, "abc"[i])).c_str(), FILETYPE_ANY, true);
  EXPECT_TRUE(group_fileremove(h, 0));
  // One of the group cannot be renamed aside: nothing is removed.
  int missing = register_file(Path("gone").c_str(), FILETYPE_ANY, true);
  int group[4] = {h[0], h[1], missing, h[2]};
  EXPECT_FALSE(group_fileremove(group, 4));
  for (const char* n : {"a", "b", "c"})
    EXPECT_EQ(dir_.Read(n), n);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_.Path()), {}), 3);
  EXPECT_TRUE(group_fileremove(h, 2));
  EXPECT_FALSE(dir_.Exists("a"));
  EXPECT_FALSE(dir_.Exists("b"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_.Path()), {}), 1);

  // renamefile keeps the handle and names the new file.
  int c = h[2];
  ASSERT_EQ(fileopen(c, OPEN_READWRITE, nullptr), c);
  write2(c, "C", 1);
  EXPECT_TRUE(renamefile(&c, Path("renamed.LOG").c_str(), FILETYPE_LOG));
  EXPECT_EQ(c, h[2]);
  EXPECT_EQ(dir_.Read("renamed.LOG"), "C");
  EXPECT_EQ(is_file_registered(Path("renamed.LOG").c_str(), FILETYPE_LOG), c);
  EXPECT_EQ(is_file_registered(Path("c").c_str(), FILETYPE_ANY), 0);

  // filecopy: the target replaced whole; with failIfExists an existing one stays.
  dir_.Write("target", "old contents");
  int t = register_file(Path("target").c_str(), FILETYPE_ANY, true);
  EXPECT_FALSE(filecopy(c, t, true));
  EXPECT_EQ(dir_.Read("target"), "old contents");
  EXPECT_TRUE(filecopy(c, t, false));
  EXPECT_EQ(dir_.Read("target"), "C");
  EXPECT_FALSE(filecopy(missing, t, false));
  EXPECT_EQ(dir_.Read("target"), "C") << "a failed copy leaves the target";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_.Path()), {}), 2)
      << "and nothing beside it";

  EXPECT_TRUE(fileremove(t));
  EXPECT_FALSE(dir_.Exists("target"));
  EXPECT_FALSE(fileremove(t));
  EXPECT_EQ(file_get_timestamp(t), 0);
  EXPECT_FALSE(file_set_timestamp(t));
  EXPECT_TRUE(touch(t));
  EXPECT_TRUE(dir_.Exists("target"));
  long now = static_cast<long>(time(nullptr));
  EXPECT_LE(std::labs(file_get_timestamp(t) - now), 2);
  EXPECT_TRUE(file_set_timestamp(t));
  EXPECT_EQ(rename2(Path("target").c_str(), Path("renamed.LOG").c_str()), -1);
  EXPECT_EQ(access2(Path("TARGET").c_str(), 0), 0);
  struct _stat32 st;
  EXPECT_EQ(stat2(Path("renamed.log").c_str(), &st), 0);
  EXPECT_EQ(st.st_size, 1);
  EXPECT_EQ(remove2(Path("target").c_str()), 0);
}

TEST_F(Registry, VariantsAndTemporaryFiles) {
  ScopedRegistry r;
  temp_dir((dir_.Wide() + L"\\").c_str());
  int base = register_file(Path("roads.txt").c_str(), FILETYPE_TEXT, true);
  int variant = register_file_variant(base, nullptr, FILETYPE_DELIMITED);
  wchar_t out[261];
  EXPECT_STREQ(fhandle2name(variant, out), L"roads.CSV");
  int named = register_file_variant(0, Path("x.txt").c_str(), FILETYPE_TEXT);
  EXPECT_STREQ(fhandle2name(named, out), L"x.txt");
  int temp = register_file_variant(0, nullptr, FILETYPE_ANY);
  ASSERT_NE(temp, 0);
  EXPECT_EQ(std::wstring(fhandle2name(temp, out)).substr(0, 4), L"~QXF");
  FILE* stream = tempfile(nullptr);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(ffileopen(stream, OPEN_CREATE, nullptr), stream);
  EXPECT_NE(GetFilePtr(stream), nullptr);
  EXPECT_EQ(GetFileFD(fileno2(stream)), -1) << "a stream keeps no descriptor";
  EXPECT_EQ(fclose2(stream), 0);
  EXPECT_TRUE(funregister_file(stream));
}

} // namespace
