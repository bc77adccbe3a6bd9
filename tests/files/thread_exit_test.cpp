// A thread that ends with files still open: its context's registry closes
// them, writing their cached blocks first, and nothing is left behind.
#include "common/temp_dir.h"
#include "qxutil/files.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

TEST(FilesThreadExit, OpenFilesAreWrittenWhenTheThreadEnds) {
  qxtest::TempDir dir;
  std::wstring path = dir.Wide("left-open.dat");
  std::string data(3000, 'z');
  std::thread([&] {
    int h = register_file(path.c_str(), FILETYPE_ANY, true);
    ASSERT_EQ(fileopen(h, OPEN_CREATE, nullptr), h);
    ASSERT_EQ(write2(h, data.data(), 3000), 3000); // in the cache, not yet on disk
  }).join();
  EXPECT_EQ(dir.Read("left-open.dat"), data);
}

} // namespace
