// The memory manager: zero-filled blocks and growth, the keep rule, null
// arguments, and the fault hook.
#include "platform/heap.h"
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

bool AllZero(const void* p, size_t from, size_t to) {
  const auto* b = static_cast<const unsigned char*>(p);
  for (size_t i = from; i < to; ++i)
    if (b[i])
      return false;
  return true;
}

TEST(Memory, NewBlocksAreZeroFilledAndNullArgumentsFailCleanly) {
  void* blocks[4] = {};
  ASSERT_TRUE(GetMem_(16, &blocks[0], false));
  ASSERT_TRUE(falloc_(32, &blocks[1], false, true)); // whatever the ignored flag
  ASSERT_TRUE(falloc_(32, &blocks[2], true, true));
  ASSERT_TRUE(frealloc_(20, &blocks[3])); // a null block: a fresh one
  EXPECT_GE(memSize(blocks[0]), 16u);
  for (void*& p : blocks) {
    EXPECT_TRUE(AllZero(p, 0, memSize(p)));
    ffree(&p);
    EXPECT_EQ(p, nullptr);
  }
  ffree(&blocks[0]); // a second free of the nulled pointer is harmless
  EXPECT_EQ(memSize(nullptr), 0u);
  EXPECT_FALSE(falloc_(8, static_cast<void**>(nullptr), false, true));
  EXPECT_FALSE(GetMem_(8, static_cast<void**>(nullptr), false));
  EXPECT_FALSE(frealloc_(8, static_cast<void**>(nullptr)));
  ffree(static_cast<void**>(nullptr));
}

TEST(Memory, GrowthZeroFillsEveryGainedByteWhateverTheUsableSize) {
  // The heap may hand out more than asked; bytes past the request must still
  // read as zero after growth, as they would on a heap that gives exact sizes.
  for (unsigned int start : {1u, 13u, 16u, 24u, 100u}) {
    for (bool viaGetMem : {true, false}) {
      unsigned char* p = nullptr;
      ASSERT_TRUE(falloc_(start, &p, false, false));
      std::memset(p, 0xAB, start);
      unsigned int target = start * 2 + 8;
      ASSERT_TRUE(viaGetMem ? GetMem_(target, &p, false) : frealloc_(target, &p));
      for (unsigned int i = 0; i < start; ++i)
        ASSERT_EQ(p[i], 0xAB) << "start " << start;
      EXPECT_TRUE(AllZero(p, start, memSize(p))) << "start " << start;
      ffree(&p);
    }
  }
  // Shrinking and growing again does not resurrect the old bytes.
  unsigned char* p = nullptr;
  ASSERT_TRUE(falloc_(64, &p, false, false));
  std::memset(p, 0xCD, 64);
  ASSERT_TRUE(frealloc_(8, &p));
  ASSERT_TRUE(frealloc_(64, &p));
  EXPECT_EQ(p[7], 0xCD);
  EXPECT_TRUE(AllZero(p, 8, 64));
  ASSERT_TRUE(frealloc_(0, &p)); // a resize to zero gives a valid block
  EXPECT_NE(p, nullptr);
  ffree(&p);
}

TEST(Memory, KeepIfLargeEnoughNeverShrinks) {
  unsigned char* p = nullptr;
  ASSERT_TRUE(GetMem_(64, &p, false));
  p[40] = 7;
  unsigned char* before = p;
  ASSERT_TRUE(GetMem_(8, &p, true));
  EXPECT_EQ(p, before);
  EXPECT_EQ(p[40], 7);
  ASSERT_TRUE(GetMem_(8, &p, false));
  EXPECT_LT(memSize(p), 64u);
  ffree(&p);
}

TEST(MemoryFaults, FailedAllocationAndResizeReportNull) {
  void* p = reinterpret_cast<void*>(1);
  qx::platform::FailAllocations(1, false);
  EXPECT_FALSE(falloc_(8, &p, false, true));
  EXPECT_EQ(p, nullptr);
  ASSERT_TRUE(GetMem_(8, &p, false)); // once: the next call succeeds

  void* keep = p;
  qx::platform::FailAllocations(1, false);
  EXPECT_FALSE(GetMem_(4096, &p, false));
  EXPECT_EQ(p, nullptr);
  ffree(&keep); // the old block was left as the heap leaves it: still ours

  qx::platform::FailAllocations(2, true); // failed calls count too
  void* a = nullptr;
  EXPECT_TRUE(falloc_(8, &a, false, true));
  EXPECT_FALSE(falloc_(8, &p, false, true));
  EXPECT_FALSE(falloc_(8, &p, false, true));
  EXPECT_EQ(qx::platform::AllocationCalls(), 3);
  qx::platform::FailAllocations(0, false);
  ffree(&a);
}

} // namespace
