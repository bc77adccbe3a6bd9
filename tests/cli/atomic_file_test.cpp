// The program's atomic output file: the target holds either its previous
// bytes or all the new ones, and no temporary file is left.
#include "atomic_file.h"
#include "common/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

class AtomicFileTest : public testing::Test {
protected:
  long Entries() {
    std::filesystem::directory_iterator files(dir_.Path());
    return std::distance(begin(files), end(files));
  }

  qxtest::TempDir dir_;
  const std::string target_ = dir_.Path("target.txt");
};

// What each way of ending leaves: the target's bytes and the files around it.
enum class Ending { kCommit, kAbandon, kDestroy };

struct EndingCase {
  Ending ending;
  bool existed;
  const char* expected;
};

const EndingCase kEndings[] = {
    {Ending::kCommit, true, "new bytes"}, {Ending::kCommit, false, "new bytes"},
    {Ending::kAbandon, true, "old"},      {Ending::kAbandon, false, nullptr},
    {Ending::kDestroy, true, "old"},      {Ending::kDestroy, false, nullptr},
};

TEST_F(AtomicFileTest, TargetIsWholeOldOrWholeNew) {
  for (const EndingCase& t : kEndings) {
    SCOPED_TRACE(testing::Message()
                 << "ending " << static_cast<int>(t.ending) << " existed " << t.existed);
    unlink(target_.c_str());
    if (t.existed) {
      dir_.Write("target.txt", "old");
      ASSERT_EQ(chmod(target_.c_str(), 0640), 0);
    }
    {
      qxcli::AtomicFile out;
      ASSERT_TRUE(out.Open(target_.c_str()));
      EXPECT_EQ(out.target(), target_);
      ASSERT_TRUE(out.Write("new ", 4));
      EXPECT_EQ(Entries(), t.existed ? 2 : 1); // the temporary file beside it
      if (t.existed) {
        EXPECT_EQ(dir_.Read("target.txt"), "old"); // nothing shows before the commit
      }
      ASSERT_TRUE(out.Write("bytes", 5));
      if (t.ending == Ending::kCommit) {
        EXPECT_TRUE(out.Commit());
      } else if (t.ending == Ending::kAbandon) {
        out.Abandon();
      }
    }
    struct stat st;
    if (t.expected) {
      EXPECT_EQ(dir_.Read("target.txt"), t.expected);
      EXPECT_EQ(Entries(), 1);
      ASSERT_EQ(stat(target_.c_str(), &st), 0);
      if (t.existed) {
        EXPECT_EQ(st.st_mode & 07777, 0640u); // the target's permissions are kept
      }
    } else {
      EXPECT_EQ(access(target_.c_str(), F_OK), -1);
      EXPECT_EQ(Entries(), 0);
    }
  }
}

TEST_F(AtomicFileTest, FailuresLeaveNoTrace) {
  qxcli::AtomicFile nowhere;
  EXPECT_FALSE(nowhere.Open(dir_.Path("missing/target").c_str()));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(Entries(), 0);
  // The target is a directory with an entry: the rename over it fails.
  ASSERT_EQ(mkdir(target_.c_str(), 0755), 0);
  dir_.Write("target.txt/inside", "keep");
  qxcli::AtomicFile out;
  ASSERT_TRUE(out.Open(target_.c_str()));
  ASSERT_TRUE(out.Write("x", 1));
  EXPECT_FALSE(out.Commit());
  EXPECT_NE(errno, 0);
  EXPECT_EQ(Entries(), 1); // the directory alone: no temporary file
  EXPECT_EQ(dir_.Read("target.txt/inside"), "keep");
}

// A device or a pipe is written in place, never replaced by a regular file.
TEST_F(AtomicFileTest, PipesAndDevicesAreWrittenInPlace) {
  const std::string fifo = dir_.Path("pipe");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::string got;
  std::thread reader([&] { std::getline(std::ifstream(fifo), got); });
  qxcli::AtomicFile out;
  ASSERT_TRUE(out.Open(fifo.c_str()));
  ASSERT_TRUE(out.Write("through the pipe\n", 17));
  ASSERT_TRUE(out.Commit());
  reader.join();
  EXPECT_EQ(got, "through the pipe");
  struct stat st;
  ASSERT_EQ(stat(fifo.c_str(), &st), 0);
  EXPECT_TRUE(S_ISFIFO(st.st_mode));
  EXPECT_EQ(Entries(), 1);
}

} // namespace
