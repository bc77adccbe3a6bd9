// The file-system seam: the Nth call fails with the chosen errno, once or
// from then on; short transfers are completed by the runtime's calls.
#include "common/temp_dir.h"
#include "platform/file_crt.h"
#include "platform/file_seam.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace qx::crt;
using qx::platform::FailFileCalls;
using qx::platform::FileCallCount;

namespace {

TEST(FileSeam, CountsAndFailsTheNthCall) {
  qxtest::TempDir dir;
  dir.Write("f", "abc");
  std::wstring path = dir.Wide("f");
  FailFileCalls(0, 0);
  EXPECT_EQ(_waccess(path.c_str(), 0), 0);
  EXPECT_EQ(FileCallCount(), 1) << "an existing name costs one call";
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
