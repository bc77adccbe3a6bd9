// The QXList members: one table of operation sequences and the runs they
// leave, run on all three members; what each member keeps on purpose (the
// refused values, Add's answer for a present value, the enumerator at the
// top value, the 32-bit total, the word layout and the growth of the range
// array); the accessor's cache across changes; and a short differential run
// against std::set (the long runs are in fuzz/containers_differential_fuzz.cpp).
#include "common/integer_list_model.h"
#include "containers/range_list.h"
#include "containers/word_list.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {

using Runs = std::vector<std::pair<long, long>>;

template <class T> std::unique_ptr<QXList<T>> Make() {
  return std::unique_ptr<QXList<T>>(QXList<T>::Create());
}

// RunsOf - the list through its range enumerator.
template <class T> Runs RunsOf(QXList<T>* list) {
  Runs runs;
  std::unique_ptr<QXListRangeEnumerator<T>> e(list->GetRangeEnumerator());
  T first, last;
  while (e->Next(first, last))
    runs.push_back({static_cast<long>(first), static_cast<long>(last)});
  return runs;
}

template <class T> class IntegerList : public ::testing::Test {};
using Members = ::testing::Types<long, unsigned long, unsigned long long>;
TYPED_TEST_SUITE(IntegerList, Members);

// One operation: 'a' Add(x), 'r' AddRange(x, y), 'd' Remove(x), 'c' Clear().
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
    auto list = Make<T>();
    ASSERT_NE(list, nullptr);
    for (const Op& op : c.ops) {
      const T x = static_cast<T>(op.x), y = static_cast<T>(op.y);
      bool ok = op.kind == 'a'   ? list->Add(x)
                : op.kind == 'r' ? list->AddRange(x, y)
                : op.kind == 'd' ? list->Remove(x)
                                 : list->Clear();
      EXPECT_TRUE(ok) << c.name << ": " << op.kind << " " << op.x;
    }
    EXPECT_EQ(RunsOf(list.get()), c.runs) << c.name;
    EXPECT_EQ(list->Count(), c.count) << c.name;
    EXPECT_EQ(list->CountUpToTwo(), c.count < 2 ? c.count : 2) << c.name;
    T min = 0, max = 0;
    bool oneRun = false;
    ASSERT_TRUE(list->GetBounds(min, max, &oneRun)) << c.name;
    EXPECT_EQ(static_cast<long>(min), c.runs.front().first) << c.name;
    EXPECT_EQ(static_cast<long>(max), c.runs.back().second) << c.name;
    EXPECT_EQ(oneRun, c.runs.size() == 1) << c.name;
    std::unique_ptr<QXList<T>> copy(list->Clone());
    ASSERT_NE(copy, nullptr);
    list->Clear();
    EXPECT_EQ(RunsOf(copy.get()), c.runs) << c.name << " (clone)";
  }
}

TYPED_TEST(IntegerList, EnumeratorsAndPositions) {
  using T = TypeParam;
  auto list = Make<T>();
  list->Add(1);
  list->AddRange(3, 5); // {1, 3 to 5}
  std::unique_ptr<QXListEnumerator<T>> e(list->GetEnumerator());
  std::vector<T> values;
  T v;
  while (e->Next(v))
    values.push_back(v);
  EXPECT_EQ(values, (std::vector<T>{1, 3, 4, 5}));
  EXPECT_EQ(v, qxtest::ListLimits<T>::kNone);
  EXPECT_FALSE(e->Next(v)); // stays at the end
  EXPECT_EQ(RunsOf(list.get()), (Runs{{1, 1}, {3, 5}}));
  std::unique_ptr<QXListItem<T>> item(list->GetItem());
  struct {
    unsigned long ordinal;
    bool found;
    long value;
  } const positions[] = {{4, true, 5}, {1, true, 1}, {5, false, -1}, {0, false, -1},
                         {3, true, 4}, {2, true, 3}, {4, true, 5}};
  for (const auto& p : positions) {
    T got = 0;
    EXPECT_EQ(item->GetAt(p.ordinal, got), p.found) << p.ordinal;
    EXPECT_EQ(got, p.found ? static_cast<T>(p.value) : qxtest::ListLimits<T>::kNone) << p.ordinal;
  }
}

TYPED_TEST(IntegerList, TheAccessorNoticesChanges) {
  using T = TypeParam;
  auto list = Make<T>();
  list->AddRange(1, 10);
  list->AddRange(21, 30);
  std::unique_ptr<QXListItem<T>> item(list->GetItem());
  T v = 0;
  ASSERT_TRUE(item->GetAt(15, v)); // caches the second run, ordinal base 11
  EXPECT_EQ(v, T{25});
  list->AddRange(12, 14); // a run before it: the second run now starts at 14
  ASSERT_TRUE(item->GetAt(15, v));
  EXPECT_EQ(v, T{22});
  list->Remove(21);
  list->Remove(22);
  list->Remove(12);
  ASSERT_TRUE(item->GetAt(12, v));
  EXPECT_EQ(v, T{14});
  list->Clear();
  EXPECT_FALSE(item->GetAt(1, v));
  list->Add(7);
  ASSERT_TRUE(item->GetAt(1, v));
  EXPECT_EQ(v, T{7});
}

TYPED_TEST(IntegerList, CountUpToTwoAndEmptyLists) {
  using T = TypeParam;
  auto list = Make<T>();
  T min = 9, max = 9;
  EXPECT_FALSE(list->GetBounds(min, max, nullptr));
  EXPECT_EQ(list->CountUpToTwo(), 0ul);
  EXPECT_TRUE(list->Remove(3));
  std::unique_ptr<QXList<T>> copy(list->Clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->Count(), 0ul);
  EXPECT_TRUE(copy->Add(2));
  list->AddRange(3, 1000);
  EXPECT_EQ(list->CountUpToTwo(), 2ul);
  EXPECT_TRUE(list->GetBounds(min, max, nullptr)); // oneRun may be null
}

TYPED_TEST(IntegerList, AgreesWithStdSet) {
  using T = TypeParam;
  for (qxtest::Profile profile : {qxtest::Profile::kDense, qxtest::Profile::kSparse,
                                  qxtest::Profile::kMixed, qxtest::Profile::kEdges}) {
    std::mt19937_64 random(static_cast<unsigned>(profile) + 11);
    auto next = [&] { return random(); };
    qxtest::IntegerListDifferential<T> d(profile);
    ASSERT_TRUE(d.ok());
    const int steps = profile == qxtest::Profile::kEdges ? 3000 : 300; // edge sets are tiny
    for (int step = 0; step < steps; ++step) {
      const std::string difference = d.Step(next);
      ASSERT_EQ(difference, "") << "profile " << static_cast<int>(profile) << ", step " << step;
    }
  }
}

// ---- What each member keeps on purpose ---------------------------------------

TEST(IntegerListMembers, RefusedValues) {
  auto longs = Make<long>();
  EXPECT_FALSE(longs->Add(-1));
  EXPECT_FALSE(longs->Add(2147483648L));
  EXPECT_FALSE(longs->AddRange(-1, 5));
  EXPECT_TRUE(longs->Add(2147483647L));
  EXPECT_FALSE(longs->Contains(-1));
  EXPECT_TRUE(longs->Remove(-1)); // never present: success
  EXPECT_EQ(RunsOf(longs.get()), (Runs{{2147483647L, 2147483647L}}));
  auto ulongs = Make<unsigned long>();
  EXPECT_FALSE(ulongs->Add(0x100000000ul)); // 32 bits, as on Windows
  EXPECT_FALSE(ulongs->AddRange(0xFFFFFFFFul, 0x100000000ul));
  EXPECT_FALSE(ulongs->Contains(0x100000000ul));
  EXPECT_EQ(ulongs->Count(), 0ul);
}

TEST(IntegerListMembers, AddOfAPresentValue) {
  auto longs = Make<long>();
  longs->Add(4);
  EXPECT_TRUE(longs->Add(4)); // the word list: true unless memory fails
  auto ulongs = Make<unsigned long>();
  ulongs->Add(4);
  EXPECT_FALSE(ulongs->Add(4)); // the range arrays: false, nothing added
  EXPECT_EQ(ulongs->Count(), 1ul);
}

TEST(IntegerListMembers, TheTopValue) {
  auto ulongs = Make<unsigned long>();
  ulongs->Add(0xFFFFFFFFul);
  ulongs->Add(0); // neither joins the other across the ends
  ulongs->Add(0xFFFFFFFEul);
  ulongs->Add(1);
  EXPECT_EQ(ulongs->Count(), 4ul);
  std::unique_ptr<QXListEnumerator<unsigned long>> e(ulongs->GetEnumerator());
  unsigned long v = 0;
  std::vector<unsigned long> values;
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(e->Next(v));
    values.push_back(v);
  }
  EXPECT_FALSE(e->Next(v)); // the top value is all bits set: yielded with false
  EXPECT_EQ(v, 0xFFFFFFFFul);
  EXPECT_EQ(values, (std::vector<unsigned long>{0, 1, 0xFFFFFFFEul}));
  EXPECT_TRUE(ulongs->Remove(0xFFFFFFFFul));
  EXPECT_TRUE(ulongs->Remove(0));
  EXPECT_EQ(RunsOf(ulongs.get()), (Runs{{1, 1}, {0xFFFFFFFEl, 0xFFFFFFFEl}}));
}

TEST(IntegerListMembers, The64BitTotalIsKeptIn32Bits) {
  auto list = Make<unsigned long long>();
  list->AddRange(0xFFFFFFF0ull, 0x100000010ull); // across the low halves' wrap
  EXPECT_EQ(list->Count(), 33ul);
  list->AddRange(0, 0x100000004ull); // 2^32 + 5 values
  EXPECT_EQ(list->Count(), 0x11ul);  // (2^32 + 17) modulo 2^32
  list->Remove(0x100000000ull);
  EXPECT_EQ(list->Count(), 0x10ul);
  std::unique_ptr<QXList<unsigned long long>> copy(list->Clone());
  EXPECT_EQ(copy->Count(), 0x10ul); // the adopting list recomputes it
  unsigned long long v = 0;
  std::unique_ptr<QXListItem<unsigned long long>> item(list->GetItem());
  ASSERT_TRUE(item->GetAt(0x100000001ul, v));
  EXPECT_EQ(v, 0x100000001ull);
}

TEST(IntegerListMembers, TheWordLayout) {
  using qx::containers::QXListImpl;
  std::unique_ptr<QXList<long>> list(QXList<long>::Create());
  auto* impl = dynamic_cast<QXListImpl*>(list.get());
  ASSERT_NE(impl, nullptr);
  EXPECT_EQ(impl->Words()[0], 0u);
  list->Add(5);
  list->AddRange(7, 9);
  list->Add(2147483647L);
  const uint32_t expected[] = {4, 0x80000005u, 7, 9, 0xFFFFFFFFu};
  EXPECT_EQ(std::vector<uint32_t>(impl->Words(), impl->Words() + 5),
            std::vector<uint32_t>(expected, expected + 5));
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

} // namespace
