// Tests of the program's atomic output file: the target holds either its
// previous bytes or all the new ones, and no temporary file is left.
#include "atomic_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class AtomicFileTest : public testing::Test {
protected:
  void SetUp() override {
    char pattern[] = "/tmp/qxutil-atomic-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    target_ = dir_ + "/target.txt";
  }
  void TearDown() override { EXPECT_EQ(std::system(("rm -rf " + dir_).c_str()), 0); }

  void Put(const std::string& text) { std::ofstream(target_, std::ios::binary) << text; }
  std::string Get() {
    std::ifstream f(target_, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
  }
  // Entries - the files in the directory.
  int Entries() {
    int n = 0;
    DIR* d = opendir(dir_.c_str());
    while (dirent* e = readdir(d))
      n += e->d_name[0] != '.';
    closedir(d);
    return n;
  }

  std::string dir_, target_;
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
      Put("old");
      ASSERT_EQ(chmod(target_.c_str(), 0640), 0);
    }
    {
      qxcli::AtomicFile out;
      ASSERT_TRUE(out.Open(target_.c_str()));
      EXPECT_EQ(out.target(), target_);
      ASSERT_TRUE(out.Write("new ", 4));
      EXPECT_EQ(Entries(), t.existed ? 2 : 1); // the temporary file beside it
      if (t.existed) {
        EXPECT_EQ(Get(), "old"); // nothing shows before the commit
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
      EXPECT_EQ(Get(), t.expected);
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
  EXPECT_FALSE(nowhere.Open((dir_ + "/missing/target").c_str()));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(Entries(), 0);
  // The target is a directory with an entry: the rename over it fails.
  ASSERT_EQ(mkdir(target_.c_str(), 0755), 0);
  std::ofstream(target_ + "/inside") << "keep";
  qxcli::AtomicFile out;
  ASSERT_TRUE(out.Open(target_.c_str()));
  ASSERT_TRUE(out.Write("x", 1));
  EXPECT_FALSE(out.Commit());
  EXPECT_NE(errno, 0);
  EXPECT_EQ(Entries(), 1); // the directory alone: no temporary file
  std::ifstream inside(target_ + "/inside");
  std::string text;
  inside >> text;
  EXPECT_EQ(text, "keep");
}

// A device or a pipe is written in place, never replaced by a regular file.
TEST(AtomicFileSpecial, PipesAndDevicesAreWrittenInPlace) {
  char pattern[] = "/tmp/qxutil-fifo-XXXXXX";
  ASSERT_NE(mkdtemp(pattern), nullptr);
  std::string fifo = std::string(pattern) + "/pipe";
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
  EXPECT_EQ(std::system(("rm -rf " + std::string(pattern)).c_str()), 0);
}

} // namespace
