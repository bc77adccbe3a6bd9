// The QXList members: one table of operation sequences and the runs they
// leave, run on all three members, and what only the internals show (the
// word layout, the growth of the range array, the 32-bit total). Random runs
// against std::set (enumerators, GetAt, refused values, the accessor's cache)
// are in fuzz/containers_differential_fuzz.cpp.
#include "common/integer_list_model.h"
#include "containers/range_list.h"
#include "containers/word_list.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace {

using Runs = std::vector<std::pair<long, long>>;

// RunsOf - the list through its range enumerator.
template <class T> Runs RunsOf(QXList<T>* list) {
  Runs runs;
  std::unique_ptr<QXListRangeEnumerator<T>> e(list->GetRangeEnumerator());
  for (T first, last; e->Next(first, last);)
    runs.push_back({static_cast<long>(first), static_cast<long>(last)});
  return runs;
}

template <class T> class IntegerList : public ::testing::Test {};
using Members = ::testing::Types<long, unsigned long, unsigned long long>;
TYPED_TEST_SUITE(IntegerList, Members);

// One operation as qxtest::Apply takes it; each is true.
struct Op {
  char kind;
  long x, y;
};
struct SequenceCase {
  const char* name;
  std::vector<Op> ops;
  Runs runs;
  unsigned long count;
};

const SequenceCase kSequences[] = {
    {"5, 7, 6 make one run", {{'a', 5, 0}, {'a', 7, 0}, {'a', 6, 0}}, {{5, 7}}, 3},
    {"removing 6 splits", {{'r', 5, 7}, {'d', 6, 0}}, {{5, 5}, {7, 7}}, 2},
    {"then 7 leaves a single", {{'r', 5, 7}, {'d', 6, 0}, {'d', 7, 0}}, {{5, 5}}, 1},
    {"a run shrinks at both ends", {{'r', 5, 9}, {'d', 5, 0}, {'d', 9, 0}}, {{6, 8}}, 3},
    {"a two-value run becomes a single", {{'r', 5, 6}, {'d', 6, 0}}, {{5, 5}}, 1},
    {"removing an absent value", {{'r', 5, 6}, {'d', 9, 0}, {'d', 4, 0}}, {{5, 6}}, 2},
    {"bounds in either order", {{'r', 10, 3}}, {{3, 10}}, 8},
    {"a range joins what it touches",
     {{'r', 1, 3}, {'a', 5, 0}, {'r', 7, 9}, {'a', 20, 0}, {'r', 4, 6}},
     {{1, 9}, {20, 20}},
     10},
    {"a range inside a run", {{'r', 1, 9}, {'r', 3, 4}}, {{1, 9}}, 9},
    {"a range over several runs",
     {{'a', 3, 0}, {'a', 6, 0}, {'r', 10, 12}, {'r', 2, 11}},
     {{2, 12}},
     11},
    {"{1, 3 to 5}", {{'a', 1, 0}, {'r', 3, 5}}, {{1, 1}, {3, 5}}, 4},
    {"a value below everything", {{'r', 5, 9}, {'a', 1, 0}, {'a', 0, 0}}, {{0, 1}, {5, 9}}, 7},
    {"a value bridges two runs", {{'r', 1, 2}, {'r', 4, 5}, {'a', 3, 0}}, {{1, 5}}, 5},
    {"a single bridges two singles", {{'a', 1, 0}, {'a', 3, 0}, {'a', 2, 0}}, {{1, 3}}, 3},
    {"clear, then add", {{'r', 1, 9}, {'c', 0, 0}, {'a', 4, 0}}, {{4, 4}}, 1},
    {"near 2^31",
     {{'r', 2147483640, 2147483647}, {'d', 2147483645, 0}},
     {{2147483640, 2147483644}, {2147483646, 2147483647}},
     7},
};

TYPED_TEST(IntegerList, Sequences) {
  using T = TypeParam;
  for (const SequenceCase& c : kSequences) {
    std::unique_ptr<QXList<T>> list(QXList<T>::Create());
    for (const Op& op : c.ops)
      EXPECT_TRUE(qxtest::Apply(list.get(), op.kind, op.x, op.y)) << c.name << ": " << op.kind;
    EXPECT_EQ(RunsOf(list.get()), c.runs) << c.name;
    EXPECT_EQ(list->Count(), c.count) << c.name;
    EXPECT_EQ(list->CountUpToTwo(), std::min(c.count, 2ul)) << c.name;
    T min = 0, max = 0;
    bool oneRun = false;
    ASSERT_TRUE(list->GetBounds(min, max, &oneRun)) << c.name;
    EXPECT_EQ(Runs({{static_cast<long>(min), static_cast<long>(max)}}),
              Runs({{c.runs.front().first, c.runs.back().second}}))
        << c.name;
    EXPECT_EQ(oneRun, c.runs.size() == 1) << c.name;
    std::unique_ptr<QXList<T>> copy(list->Clone());
    list->Clear();
    EXPECT_EQ(RunsOf(copy.get()), c.runs) << c.name << " (clone)";
  }
}

// ---- What the internals show ---------------------------------------------------

TEST(IntegerListMembers, TheWordLayout) {
  std::unique_ptr<QXList<long>> list(QXList<long>::Create());
  auto* impl = dynamic_cast<qx::containers::QXListImpl*>(list.get());
  ASSERT_NE(impl, nullptr);
  list->Add(5);
  list->AddRange(7, 9);
  list->Add(2147483647L);
  EXPECT_FALSE(list->Add(-1)); // refused, nothing changed
  EXPECT_FALSE(list->Add(2147483648L));
  EXPECT_EQ(std::vector<uint32_t>(impl->Words(), impl->Words() + 5),
            (std::vector<uint32_t>{4, 0x80000005u, 7, 9, 0xFFFFFFFFu}));
  for (long v = 100; v < 2100; v += 2)
    list->Add(v);
  EXPECT_GE(memSize(impl->Words()), 4u * 1005);
  list->Clear(); // the block shrinks back to the count word
  EXPECT_LT(memSize(impl->Words()), 64u);
}

TEST(IntegerListMembers, TheRangeArrayGrowsBy8) {
  using qx::containers::UtilULongListImpl;
  std::unique_ptr<QXList<unsigned long>> list(QXList<unsigned long>::Create());
  auto* impl = dynamic_cast<UtilULongListImpl*>(list.get());
  ASSERT_NE(impl, nullptr);
  EXPECT_EQ(impl->Capacity(), 0u); // an empty list holds no array
  for (unsigned long v = 0; v < 64; v += 2)
    list->Add(v);
  EXPECT_EQ(impl->Capacity(), 32u);
  list->Add(1000); // the 33rd range
  EXPECT_EQ(impl->Capacity(), 40u);
  for (unsigned long v = 0; v < 32; v += 2)
    list->Remove(v); // removals never shrink
  EXPECT_EQ(impl->Capacity(), 40u);
  list->AddRange(2000, 2010); // 18 ranges, 28 values
  std::unique_ptr<QXList<unsigned long>> copy(list->Clone());
  auto* copied = dynamic_cast<UtilULongListImpl*>(copy.get());
  EXPECT_EQ(copied->Capacity(), 18u); // exactly the ranges in use
  copy->Remove(2005);                 // a split when full
  EXPECT_EQ(copied->Capacity(), 26u);
  EXPECT_EQ(copy->Count(), 27ul);
  list->Clear();
  EXPECT_EQ(impl->Capacity(), 0u);
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
