// What only the internals of the QXList members show: the word layout, the 32-bit total.
// Changes under faults: containers_fault_test.cpp; random runs against std::set and the
// range array's growth: fuzz/containers_differential_fuzz.cpp.
#include "containers/word_list.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

TEST(IntegerListMembers, TheWordLayout) {
  std::unique_ptr<QXList<long>> list(QXList<long>::Create());
  auto* impl = dynamic_cast<qx::containers::QXListImpl*>(list.get());
  ASSERT_NE(impl, nullptr);
  list->Add(5);
  list->AddRange(7, 9);
  list->Add(2147483647L);
  EXPECT_EQ(std::vector<uint32_t>(impl->Words(), impl->Words() + 5),
            (std::vector<uint32_t>{4, 0x80000005u, 7, 9, 0xFFFFFFFFu}));
  for (long v = 100; v < 2100; v += 2)
    list->Add(v);
  EXPECT_GE(memSize(impl->Words()), 4u * 1005);
  list->Clear(); // the block shrinks back to the count word
  EXPECT_LT(memSize(impl->Words()), 64u);
}

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
