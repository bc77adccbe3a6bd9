// Conformance of the runtime's file calls: open modes and share modes,
// errno values, positions and sizes, removal and renaming, status; and the
// file-system seam under them (the Nth call fails; short transfers complete).
#include "common/temp_dir.h"
#include "platform/file_crt.h"
#include "platform/file_seam.h"
#include "platform/file_win.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace qx::crt;
using qx::platform::FailFileCalls;

namespace {

constexpr int kRead = _O_RDONLY | _O_BINARY;
constexpr int kReadWrite = _O_RDWR | _O_BINARY;
constexpr int kCreate = _O_RDWR | _O_CREAT | _O_TRUNC | _O_BINARY;

struct OpenCase {
  const char* what;
  const char* name; // in the scratch directory
  int oflag;
  int shflag;
  int errnoExpected; // 0: the open succeeds
};

TEST(FileCrt, OpenModesAndErrors) {
  qxtest::TempDir dir;
  dir.Write("data.bin", "abcdef");
  dir.Write("locked.ro", "x");
  chmod(dir.Path("locked.ro").c_str(), 0444);
  std::filesystem::create_directory(dir.Path("sub"));
  const OpenCase cases[] = {
      {"read an existing file", "data.bin", kRead, _SH_DENYWR, 0},
      {"read/write an existing file", "data.bin", kReadWrite, _SH_DENYRW, 0},
      {"create a new file", "new.bin", kCreate, _SH_DENYRW, 0},
      {"read a missing file", "missing.bin", kRead, _SH_DENYWR, kErrNoEnt},
      {"a directory on the way is missing", "nodir/x.bin", kCreate, _SH_DENYRW, kErrNoEnt},
      {"a file used as a directory", "data.bin/x", kRead, _SH_DENYWR, kErrNotDir},
      {"write a read-only file", "locked.ro", kReadWrite, _SH_DENYRW, kErrAcces},
      {"read a read-only file", "locked.ro", kRead, _SH_DENYWR, 0},
      {"open a directory", "sub", kRead, _SH_DENYWR, kErrAcces},
      {"exclusive creation of an existing file", "data.bin", kCreate | _O_EXCL, _SH_DENYRW,
       kErrExist},
      {"bad share mode", "data.bin", kRead, 0x50, kErrInval},
      {"bad access bits", "data.bin", _O_WRONLY | _O_RDWR, _SH_DENYWR, kErrInval},
  };
  for (const OpenCase& c : cases) {
    errno = 0;
    int fd = _wsopen(dir.Wide(c.name).c_str(), c.oflag, c.shflag, _S_IREAD | _S_IWRITE);
    if (c.errnoExpected == 0) {
      EXPECT_GE(fd, 0) << c.what << " errno " << errno;
      if (fd >= 0) {
        EXPECT_EQ(_close(fd), 0) << c.what;
      }
    } else {
      EXPECT_EQ(fd, -1) << c.what;
      EXPECT_EQ(errno, c.errnoExpected) << c.what;
    }
  }
  EXPECT_EQ(dir.Read("data.bin"), "abcdef") << "no open truncated the file";
}

struct ShareCase {
  int first, firstShare, second, secondShare;
  bool shared;
};

TEST(FileCrt, ShareModesAreLocksAcrossDescriptors) {
  qxtest::TempDir dir;
  dir.Write("f", "0123456789");
  const ShareCase cases[] = {
      {kRead, _SH_DENYWR, kRead, _SH_DENYWR, true},
      {kRead, _SH_DENYWR, kReadWrite, _SH_DENYRW, false},
      {kReadWrite, _SH_DENYRW, kRead, _SH_DENYWR, false},
      {kReadWrite, _SH_DENYRW, kReadWrite, _SH_DENYRW, false},
      {kReadWrite, _SH_DENYRW, kCreate, _SH_DENYRW, false},
      {kReadWrite, _SH_DENYRW, kRead, _SH_DENYNO, true},
  };
  std::wstring path = dir.Wide("f");
  for (const ShareCase& c : cases) {
    int a = _wsopen(path.c_str(), c.first, c.firstShare, _S_IWRITE);
    ASSERT_GE(a, 0);
    errno = 0;
    int b = _wsopen(path.c_str(), c.second, c.secondShare, _S_IWRITE);
    EXPECT_EQ(b >= 0, c.shared) << c.first << "/" << c.second;
    if (b >= 0)
      _close(b);
    else
      EXPECT_EQ(errno, kErrAcces);
    _close(a);
    EXPECT_EQ(dir.Read("f"), "0123456789") << "a refused creation truncated the holder's file";
  }
  // The lock goes with the last close: the next exclusive open succeeds.
  int c = _wsopen(path.c_str(), kReadWrite, _SH_DENYRW, 0);
  EXPECT_GE(c, 0);
  _close(c);
}

TEST(FileCrt, ReadWriteSeekAndSize) {
  qxtest::TempDir dir;
  int fd = _wsopen(dir.Wide("f").c_str(), kCreate, _SH_DENYRW, _S_IREAD | _S_IWRITE);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(_write(fd, "hello world", 11), 11);
  EXPECT_EQ(_lseek(fd, 0, 2), 11);
  EXPECT_EQ(_lseek(fd, -5, 1), 6);
  char buf[16] = {};
  EXPECT_EQ(_read(fd, buf, sizeof buf), 5);
  EXPECT_STREQ(buf, "world");
  EXPECT_EQ(_read(fd, buf, sizeof buf), 0) << "end of file";
  EXPECT_EQ(_lseek(fd, 0, 3), -1);
  EXPECT_EQ(errno, kErrInval);
  EXPECT_EQ(_lseek(fd, -1, 0), -1);
  EXPECT_EQ(errno, kErrInval);
  EXPECT_EQ(_chsize(fd, 20), 0);
  EXPECT_EQ(_lseek(fd, 0, 2), 20);
  EXPECT_EQ(_chsize(fd, -1), -1);
  EXPECT_EQ(errno, kErrInval);
  EXPECT_EQ(_chsize(fd, 5), 0);
  EXPECT_EQ(_close(fd), 0);
  EXPECT_EQ(dir.Read("f"), "hello");
  EXPECT_EQ(_close(fd), -1);
  EXPECT_EQ(errno, kErrBadF);
  int ro = _wsopen(dir.Wide("f").c_str(), kRead, _SH_DENYWR, 0);
  EXPECT_EQ(_chsize(ro, 1), -1) << "a read-only descriptor";
  EXPECT_EQ(_write(ro, "x", 1), -1);
  _close(ro);
}

TEST(FileCrt, RemoveRenameAccessStat) {
  qxtest::TempDir dir;
  dir.Write("a", "12345");
  dir.Write("b", "x");
  dir.Write("ro", "x");
  chmod(dir.Path("ro").c_str(), 0444);
  EXPECT_EQ(_waccess(dir.Wide("a").c_str(), 0), 0);
  EXPECT_EQ(_waccess(dir.Wide("a").c_str(), 6), 0);
  EXPECT_EQ(_waccess(dir.Wide("ro").c_str(), 2), -1);
  EXPECT_EQ(errno, kErrAcces);
  EXPECT_EQ(_waccess(dir.Wide("none").c_str(), 0), -1);
  EXPECT_EQ(errno, kErrNoEnt);
  EXPECT_EQ(_waccess(dir.Wide("a").c_str(), 1), -1);
  EXPECT_EQ(errno, kErrInval);

  struct _stat32 st;
  ASSERT_EQ(_wstat32(dir.Wide("a").c_str(), &st), 0);
  EXPECT_EQ(st.st_size, 5);
  EXPECT_EQ(st.st_mode & _S_IFMT, _S_IFREG);
  EXPECT_EQ(st.st_mode & 0700, _S_IREAD | _S_IWRITE);
  ASSERT_EQ(_wstat32(dir.Wide("ro").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0444 & ~0000);
  ASSERT_EQ(_wstat32(dir.Wide().c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & _S_IFMT, _S_IFDIR);

  EXPECT_EQ(_wrename(dir.Wide("a").c_str(), dir.Wide("b").c_str()), -1) << "never replaces";
  EXPECT_EQ(errno, kErrAcces);
  EXPECT_EQ(_wrename(dir.Wide("a").c_str(), dir.Wide("c").c_str()), 0);
  EXPECT_EQ(dir.Read("c"), "12345");
  EXPECT_EQ(_wrename(dir.Wide("c").c_str(), dir.Wide("C").c_str()), 0) << "a change of case";
  EXPECT_TRUE(dir.Exists("C"));
  EXPECT_FALSE(dir.Exists("c"));

  int held = _wsopen(dir.Wide("b").c_str(), kReadWrite, _SH_DENYRW, 0);
  EXPECT_EQ(_wremove(dir.Wide("b").c_str()), -1) << "open elsewhere";
  EXPECT_EQ(errno, kErrAcces);
  EXPECT_EQ(_wrename(dir.Wide("b").c_str(), dir.Wide("d").c_str()), -1);
  _close(held);
  EXPECT_EQ(_wremove(dir.Wide("b").c_str()), 0);
  EXPECT_EQ(_wremove(dir.Wide("ro").c_str()), -1);
  EXPECT_EQ(errno, kErrAcces);
  EXPECT_EQ(_wremove(dir.Wide("b").c_str()), -1);
  EXPECT_EQ(errno, kErrNoEnt);
}

TEST(FileCrt, CurrentDirectoryHasWindowsShape) {
  wchar_t buf[1024];
  ASSERT_NE(_wgetdcwd(0, buf, 1024), nullptr);
  EXPECT_EQ(buf[0], L'C');
  EXPECT_EQ(buf[1], L':');
  EXPECT_EQ(std::wstring(buf).find(L'/'), std::wstring::npos);
  ASSERT_NE(_wgetdcwd(4, buf, 1024), nullptr);
  EXPECT_EQ(buf[0], L'D');
  EXPECT_EQ(_wgetdcwd(0, buf, 3), nullptr);
  EXPECT_EQ(errno, kErrRange);
  EXPECT_EQ(_wgetdcwd(27, buf, 1024), nullptr);
}

TEST(FileCrt, ErrnoValuesAreWindows) {
  const std::pair<int, int> map[] = {
      {ENOENT, 2},    {EACCES, 13},       {EEXIST, 17},    {ENOTDIR, 20}, {EMFILE, 24},
      {ENOSPC, 28},   {ENAMETOOLONG, 38}, {ENOTEMPTY, 41}, {EDQUOT, 28},  {ESTALE, 64},
      {ENOTCONN, 64}, {EOVERFLOW, 132},   {EISDIR, 13},    {ELOOP, 2},    {EPROTO, kErrIo},
  };
  for (auto [kernel, windows] : map)
    EXPECT_EQ(WindowsErrno(kernel), windows) << kernel;
}

TEST(FileCrt, AttributesAndTimes) {
  qxtest::TempDir dir;
  dir.Write("a", "123");
  dir.Write(".hidden", "");
  dir.Write("ro", "");
  chmod(dir.Path("ro").c_str(), 0444);
  using namespace qx::win;
  EXPECT_EQ(GetFileAttributesW(dir.Wide("a").c_str()), DWORD(FILE_ATTRIBUTE_ARCHIVE));
  EXPECT_EQ(GetFileAttributesW(dir.Wide("ro").c_str()),
            DWORD(FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(GetFileAttributesW(dir.Wide(".hidden").c_str()),
            DWORD(FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN));
  EXPECT_EQ(GetFileAttributesW(dir.Wide().c_str()), DWORD(FILE_ATTRIBUTE_DIRECTORY));
  EXPECT_EQ(GetFileAttributesW(dir.Wide("none").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
  WIN32_FILE_ATTRIBUTE_DATA data{};
  auto proc = reinterpret_cast<GetFileAttributesExWProc>(
      reinterpret_cast<void*>(GetKernelProcAddress("GetFileAttributesExW")));
  ASSERT_NE(proc, nullptr);
  ASSERT_TRUE(proc(dir.Wide("a").c_str(), GetFileExInfoStandard, &data));
  EXPECT_EQ(data.nFileSizeLow, 3u);
  struct stat st;
  stat(dir.Path("a").c_str(), &st);
  FILETIME expected = qx::platform::FileTimeFromUnix(st.st_mtim.tv_sec, st.st_mtim.tv_nsec);
  EXPECT_EQ(data.ftLastWriteTime.dwLowDateTime, expected.dwLowDateTime);
  EXPECT_EQ(data.ftLastWriteTime.dwHighDateTime, expected.dwHighDateTime);
  FILETIME epoch = qx::platform::FileTimeFromUnix(0, 0);
  EXPECT_EQ((static_cast<unsigned long long>(epoch.dwHighDateTime) << 32) | epoch.dwLowDateTime,
            116444736000000000ULL);
  EXPECT_EQ(GetKernelProcAddress("CreateFileW"), nullptr);
}

TEST(FileSeam, CountsAndFailsTheNthCall) {
  qxtest::TempDir dir;
  dir.Write("f", "abc");
  std::wstring path = dir.Wide("f");
  FailFileCalls(0, 0);
  EXPECT_EQ(_waccess(path.c_str(), 0), 0);
  EXPECT_EQ(qx::platform::FileCallCount(), 1) << "an existing name costs one call";
  FailFileCalls(1, ESTALE); // the mapping of each errno: FileCrt.ErrnoValuesAreWindows
  EXPECT_EQ(_waccess(path.c_str(), 0), -1);
  EXPECT_EQ(errno, kErrNetNameDeleted);
  EXPECT_EQ(_waccess(path.c_str(), 0), 0) << "once only";
  FailFileCalls(2, EIO, true);
  EXPECT_EQ(_waccess(path.c_str(), 0), 0);
  EXPECT_EQ(_waccess(path.c_str(), 0), -1);
  EXPECT_EQ(_waccess(path.c_str(), 0), -1);
  FailFileCalls(0, 0);
  EXPECT_EQ(_waccess(path.c_str(), 0), 0);
}

TEST(FileSeam, ShortAndInterruptedTransfersAreCompleted) {
  qxtest::TempDir dir;
  int fd = _wsopen(dir.Wide("f").c_str(), _O_RDWR | _O_CREAT, _SH_DENYRW, _S_IWRITE);
  ASSERT_GE(fd, 0);
  FailFileCalls(1, 0, true); // every transfer moves half
  EXPECT_EQ(_write(fd, "0123456789", 10), 10);
  EXPECT_EQ(_lseek(fd, 0, 0), 0);
  char buf[16] = {};
  EXPECT_EQ(_read(fd, buf, 10), 10);
  EXPECT_STREQ(buf, "0123456789");
  FailFileCalls(1, EINTR);
  EXPECT_EQ(_write(fd, "ab", 2), 2);
  FailFileCalls(2, ENOSPC); // the second write of a split transfer fails
  EXPECT_EQ(_lseek(fd, 0, 0), 0);
  FailFileCalls(1, 0);
  errno = 0;
  EXPECT_EQ(_write(fd, "wxyz", 4), 4) << "a short write continued";
  FailFileCalls(1, ENOSPC);
  EXPECT_EQ(_write(fd, "q", 1), -1);
  EXPECT_EQ(errno, kErrNoSpc);
  FailFileCalls(0, 0);
  _close(fd);
  EXPECT_EQ(dir.Read("f"), "wxyz456789ab");
}

} // namespace
