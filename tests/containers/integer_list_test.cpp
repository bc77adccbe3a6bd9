// The 64-bit member's total, kept in 32 bits, which no random run against std::set reaches
// (fuzz/containers_differential_fuzz.cpp, which also checks the word layout and the range
// array's growth). Changes under faults: containers_fault_test.cpp.
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(IntegerListMembers, The64BitTotalIsKeptIn32Bits) {
  std::unique_ptr<QXList<unsigned long long>> list(QXList<unsigned long long>::Create());
  list->AddRange(0xFFFFFFF0ull, 0x100000010ull); // across the low halves' wrap
  EXPECT_EQ(list->Count(), 33ul);
  list->AddRange(0, 0x100000004ull); // now 2^32 + 17 values
  EXPECT_EQ(list->Count(), 0x11ul);
  list->Remove(0x100000000ull);
  EXPECT_EQ(list->Count(), 0x10ul);
  std::unique_ptr<QXList<unsigned long long>> copy(list->Clone());
  EXPECT_EQ(copy->Count(), 0x10ul); // the adopting list computes it again
  unsigned long long v = 0;
  std::unique_ptr<QXListItem<unsigned long long>> item(list->GetItem());
  ASSERT_TRUE(item->GetAt(0x100000001ul, v));
  EXPECT_EQ(v, 0x100000001ull);
}

} // namespace
