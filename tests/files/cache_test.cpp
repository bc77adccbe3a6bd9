// The block cache: lookups, replacement order, write-back of a whole file
// on eviction and at the end of a thread, valid lengths. Reads, writes and
// chsize2 through caches of every size: fuzz/files_differential_fuzz.cpp.
#include "common/files_scope.h"
#include "common/temp_dir.h"
#include "platform/file_seam.h"
#include "qxutil/files.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using qx::platform::FailFileCalls;
using qx::platform::FileCallCount;

class Cache : public ::testing::Test {
protected:
  // Open - `name` made of `bytes`, opened read/write.
  int Open(const char* name, const std::string& bytes) {
    dir_.Write(name, bytes);
    std::string p = dir_.Path(name);
    int h = register_file(std::wstring(p.begin(), p.end()).c_str(), FILETYPE_ANY, true);
    EXPECT_EQ(fileopen(h, OPEN_READWRITE, nullptr), h);
    return h;
  }
  bool Cached(int h, long block) {
    CacheBlock* b = nullptr;
    return cFileCache::Instance()->Fetch(h, block, &b, cFileCache::kFetchLookup);
  }
  qxtest::TempDir dir_;
};

TEST_F(Cache, CreationLimits) {
  EXPECT_EQ(cFileCache::Create(0, 512), nullptr);
  EXPECT_EQ(cFileCache::Create(1, 512), nullptr) << "one descriptor leaves no block";
  EXPECT_EQ(cFileCache::Create(4, 0), nullptr);
  cFileCache* c = cFileCache::Create(2, 512);
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->BlockCount(), 1);
  delete c;
}

TEST_F(Cache, FetchReadsOnceAndValidLength) {
  qxtest::RegistrySettings s;
  s.cacheBlocks = 4;
  qxtest::ScopedRegistry r(s);
  int h = Open("f", std::string(1000, 'x'));
  cFileCache* cache = cFileCache::Instance();
  CacheBlock* b = nullptr;
  FailFileCalls(0, 0);
  ASSERT_TRUE(cache->Fetch(h, 1, &b, cFileCache::kFetchRead));
  EXPECT_EQ(b->validLength, 488);
  EXPECT_EQ(FileCallCount(), 2) << "a block at the end: one read, one that finds the end";
  ASSERT_TRUE(cache->Fetch(h, 0, &b, cFileCache::kFetchRead));
  EXPECT_EQ(b->validLength, 512);
  EXPECT_EQ(FileCallCount(), 3) << "a whole block: one read";
  ASSERT_TRUE(cache->Fetch(h, 0, &b, cFileCache::kFetchRead));
  EXPECT_EQ(FileCallCount(), 3) << "the second fetch reads nothing";
  EXPECT_FALSE(cache->Fetch(h, 2, &b, cFileCache::kFetchLookup));
  EXPECT_EQ(cache->BlockAt(0)->handle, 0) << "a lookup claims nothing";
}

TEST_F(Cache, LeastRecentlyUsedIsReplaced) {
  qxtest::RegistrySettings s;
  s.cacheBlocks = 4; // three usable blocks
  qxtest::ScopedRegistry r(s);
  int h = Open("f", std::string(4096, 'y'));
  cFileCache* cache = cFileCache::Instance();
  CacheBlock* b = nullptr;
  for (long n : {0, 1, 2, 0, 3})
    ASSERT_TRUE(cache->Fetch(h, n, &b, cFileCache::kFetchRead));
  EXPECT_TRUE(Cached(h, 0));
  EXPECT_FALSE(Cached(h, 1));
  EXPECT_TRUE(Cached(h, 2));
  EXPECT_TRUE(Cached(h, 3)); // the index's order: fuzz/files_differential_fuzz.cpp
}

TEST_F(Cache, EvictingADirtyBlockWritesBackItsWholeFile) {
  qxtest::RegistrySettings s;
  s.cacheBlocks = 4;
  qxtest::ScopedRegistry r(s);
  int a = Open("a", std::string(2048, '.'));
  int other = Open("b", std::string(2048, '.'));
  lseek2(a, 0, 0);
  write2(a, "A0", 2);
  lseek2(a, 512, 0);
  write2(a, "A1", 2);
  char c;
  read2(other, &c, 1); // the third block
  EXPECT_EQ(dir_.Read("a").substr(0, 2), "..") << "written back only when needed";
  lseek2(other, 1024, 0);
  read2(other, &c, 1); // evicts a's block 0, and writes back block 1 with it
  std::string disk = dir_.Read("a");
  EXPECT_EQ(disk.substr(0, 2), "A0");
  EXPECT_EQ(disk.substr(512, 2), "A1");
  CacheBlock* b = nullptr;
  ASSERT_TRUE(cFileCache::Instance()->Fetch(a, 1, &b, cFileCache::kFetchLookup));
  EXPECT_EQ(b->flags & 1, 0u) << "still cached, now clean";
}

// A thread that ends with files open: its context's registry closes them,
// writing their cached blocks first.
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
