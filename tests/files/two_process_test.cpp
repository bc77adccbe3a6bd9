// Two processes on one file: a read/write holder keeps others out (they retry for the
// retry time, then fail with code 4), readers share, and a file changed by the other
// process is seen as changed, its cached blocks dropped.
#include "common/files_scope.h"
#include "common/temp_dir.h"
#include "qxutil/files.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// InChild - runs `body` in a child process with a registry of its own (the
// default retry callback, its retry time of 2 s cut to 0.2 s) and returns its
// exit code.
template <class Body> int InChild(Body body) {
  pid_t pid = fork();
  if (pid == 0) {
    cFileSystem* fs = cFileSystem::Create();
    cFileCache* cache = cFileCache::Create(401, 512);
    cFileSystem::Instance(fs);
    cFileCache::Instance(cache);
    if (GetFileAccessRetryTime() != 200)
      _exit(99);
    SetFileAccessRetryTime(20);
    ClearErrors();
    _exit(body());
  }
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 100;
}

// Two processes' views of one file; Other() registers it in a child.
class FilesTwoProcesses : public ::testing::Test {
protected:
  int Share(const std::string& bytes) {
    dir_.Write("shared.dat", bytes);
    return Other();
  }
  int Other() const { return register_file(path_.c_str(), FILETYPE_ANY, true); }
  qxtest::ScopedRegistry registry_;
  qxtest::TempDir dir_;
  std::wstring path_ = dir_.Wide("shared.dat");
};

TEST_F(FilesTwoProcesses, ReadWriteHolderKeepsOthersOut) {
  int h = Share("0123456789");
  ASSERT_EQ(fileopen(h, OPEN_READWRITE, nullptr), h);
  EXPECT_EQ(InChild([&] {
              int other = Other();
              long start = time_100();
              if (fileopen(other, OPEN_READWRITE, nullptr) != -1)
                return 1;
              if (time_100() - start < 20)
                return 2; // gave up before the retry time
              if (NumErrors() != 1 || GetErrorNum(0) != 4 || GetResourceID(0) != 46)
                return 3;
              return fileopen(other, OPEN_READ, nullptr) != -1 ? 4 : 0;
            }),
            0);
  EXPECT_EQ(close2(h), 0);
  // Once closed, the other process gets in at once.
  EXPECT_EQ(InChild([&] { return fileopen(Other(), OPEN_READWRITE, nullptr) > 0 ? 0 : 1; }), 0);
}

TEST_F(FilesTwoProcesses, ReadersShare) {
  int h = Share("abc");
  ASSERT_EQ(fileopen(h, OPEN_READ, nullptr), h);
  EXPECT_EQ(InChild([&] {
              int other = Other();
              char c = 0;
              if (fileopen(other, OPEN_READ, nullptr) != other || read2(other, &c, 1) != 1 ||
                  c != 'a')
                return 1;
              // An upgrade needs the readers gone.
              return fileopen(other, OPEN_READWRITE, nullptr) != -1 ? 2 : 0;
            }),
            0);
  close2(h);
}

TEST_F(FilesTwoProcesses, ChangesByTheOtherProcessAreSeen) {
  int h = Share(std::string(1500, 'o'));
  int changed = 0;
  ASSERT_EQ(fileopen(h, OPEN_READ, &changed), h);
  EXPECT_EQ(changed, 0) << "no time recorded yet";
  char buf[1500];
  ASSERT_EQ(read2(h, buf, 1500), 1500); // the blocks are cached
  ASSERT_EQ(close2(h), 0);
  ASSERT_EQ(fileopen(h, OPEN_READ, &changed), h);
  EXPECT_EQ(changed, 0) << "unchanged since the registry closed it";
  ASSERT_EQ(close2(h), 0);
  EXPECT_EQ(InChild([&] {
              int other = Other();
              if (fileopen(other, OPEN_READWRITE, nullptr) != other || lseek2(other, 600, 0) != 600)
                return 1;
              return write2(other, "NEW", 3) == 3 && close2(other) == 0 ? 0 : 2;
            }),
            0);
  changed = 0;
  ASSERT_EQ(fileopen(h, OPEN_READ, &changed), h);
  EXPECT_EQ(changed & 1, 1);
  lseek2(h, 598, 0);
  ASSERT_EQ(read2(h, buf, 7), 7);
  EXPECT_EQ(std::string(buf, 7), "ooNEWoo") << "the stale blocks were dropped";
  close2(h);
}

} // namespace
