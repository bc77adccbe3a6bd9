// QUEUE: the cases where the queue keeps a behaviour on purpose (position
// codes, newest-first sorting, the source of a merge, copies of the link),
// the disposal functions, and a short differential run against std::list
// (the long runs are in fuzz/containers_differential_fuzz.cpp).
#include "common/queue_model.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <new>
#include <random>
#include <vector>

namespace {

using qxtest::CompareKeys;
using qxtest::KeyedElement;

// Keyed - a queue of new elements with these keys, appended in order.
struct Keyed {
  explicit Keyed(std::initializer_list<int> keys) {
    InitQueue(&q);
    for (int k : keys)
      Enqueue(&q, new KeyedElement(k), 1);
  }
  ~Keyed() { DeleteQueue(&q); }
  KeyedElement* At(long i) const { return static_cast<KeyedElement*>(GetQueueElement(&q, i)); }
  std::vector<int> Keys() const {
    std::vector<int> keys;
    for (Q_ELEM* e = q.head; e; e = QueueNext(e))
      keys.push_back(static_cast<KeyedElement*>(e)->key);
    return keys;
  }
  QUEUE q;
};

using Keys = std::vector<int>;

TEST(Queue, PositionCodes) {
  Keyed k{1, 2, 3};
  KeyedElement* stray = new KeyedElement(9);
  Enqueue(&k.q, stray, 2); // unknown code: unchanged
  EXPECT_EQ(k.Keys(), (Keys{1, 2, 3}));
  Q_ELEM* out = stray;
  EXPECT_TRUE(Dequeue(&k.q, &out, 5)); // unknown code: true, out untouched
  EXPECT_EQ(out, stray);
  EXPECT_EQ(k.Keys(), (Keys{1, 2, 3}));
  Enqueue(&k.q, stray, 0);
  EXPECT_EQ(k.Keys(), (Keys{9, 1, 2, 3}));
  ASSERT_TRUE(Dequeue(&k.q, &out, 1));
  EXPECT_EQ(static_cast<KeyedElement*>(out)->key, 3);
  EXPECT_EQ(out->link, nullptr);
  EXPECT_EQ(k.q.tail, k.At(2));
  delete out;
}

TEST(Queue, DequeueEmptiesAndReportsEmpty) {
  Keyed k{4};
  KeyedElement* only = k.At(0);
  Q_ELEM* out = nullptr;
  ASSERT_TRUE(Dequeue(&k.q, &out, 1)); // the only element, from the back
  EXPECT_EQ(out, only);
  EXPECT_TRUE(NullQueue(&k.q));
  EXPECT_EQ(k.q.tail, nullptr);
  EXPECT_FALSE(Dequeue(&k.q, &out, 0));
  EXPECT_EQ(out, nullptr);
  EXPECT_FALSE(DequeueThisElement(&k.q, only));
  delete only;
}

TEST(Queue, SortedInsertionPutsTheNewestFirstAmongEquals) {
  Keyed k{};
  for (int key : {3, 1, 2})
    EnqueueSorted(&k.q, new KeyedElement(key), CompareKeys);
  EXPECT_EQ(k.Keys(), (Keys{1, 2, 3}));
  KeyedElement* firstTwo = k.At(1);
  KeyedElement* secondTwo = new KeyedElement(2);
  EnqueueSorted(&k.q, secondTwo, CompareKeys);
  EXPECT_EQ(k.At(1), secondTwo);
  EXPECT_EQ(k.At(2), firstTwo);
  EXPECT_EQ(k.q.tail->link, nullptr);
}

TEST(Queue, SortedAppendInAscendingOrderComparesTwice) {
  static int comparisons;
  auto counting = [](Q_ELEM* a, Q_ELEM* b) {
    ++comparisons;
    return CompareKeys(a, b);
  };
  Keyed k{};
  EnqueueSorted(&k.q, new KeyedElement(0), counting);
  comparisons = 0;
  for (int key = 1; key <= 1000; ++key)
    EnqueueSorted(&k.q, new KeyedElement(key), counting);
  EXPECT_EQ(comparisons, 2000);
  EXPECT_EQ(CountQueueElements(&k.q), 1001);
}

TEST(Queue, InsertionAtAnIndex) {
  struct Case {
    long index;
    Keys expected;
  } cases[] = {
      {0, {9, 1, 2, 3}},   {1, {1, 9, 2, 3}},  {3, {1, 2, 3, 9}},
      {100, {1, 2, 3, 9}}, {-1, {1, 2, 3, 9}}, // walked unsigned: appends
  };
  for (const Case& c : cases) {
    Keyed k{1, 2, 3};
    KeyedElement* e = new KeyedElement(9);
    EnqueueAtIndex(&k.q, e, c.index);
    EXPECT_EQ(k.Keys(), c.expected) << c.index;
    EXPECT_EQ(k.q.tail->link, nullptr);
    EXPECT_EQ(k.q.tail == e, c.expected.back() == 9) << c.index;
  }
  Keyed empty{};
  EnqueueAtIndex(&empty.q, new KeyedElement(5), 7);
  EXPECT_EQ(empty.q.head, empty.q.tail);
}

TEST(Queue, SearchesAndRemovalByIndex) {
  Keyed k{10, 11, 12};
  KeyedElement foreign(99);
  EXPECT_EQ(GetQueueElement(&k.q, -1), nullptr);
  EXPECT_EQ(GetQueueElement(&k.q, 3), nullptr);
  EXPECT_EQ(InQueuePosition(&k.q, &foreign), -1);
  EXPECT_EQ(InQueuePosition(&k.q, k.At(2)), 2);
  EXPECT_FALSE(DequeueThisElement(&k.q, &foreign));
  Q_ELEM* out = &foreign;
  EXPECT_FALSE(DequeueAtIndex(&k.q, &out, 3));
  EXPECT_EQ(out, nullptr);
  ASSERT_TRUE(DequeueAtIndex(&k.q, &out, 1)); // from the middle
  EXPECT_EQ(static_cast<KeyedElement*>(out)->key, 11);
  EXPECT_EQ(out->link, nullptr);
  delete out;
  KeyedElement* tail = k.At(1);
  ASSERT_TRUE(DequeueThisElement(&k.q, tail)); // the tail: its predecessor becomes the tail
  EXPECT_EQ(k.q.tail, k.q.head);
  EXPECT_EQ(k.q.head->link, nullptr);
  delete tail;
}

TEST(Queue, MergeLeavesTheSourceNamingTheMovedElements) {
  for (int where : {0, 1}) {
    Keyed dst{1, 2}, src{7, 8};
    const QUEUE before = src.q;
    MergeQueues(&dst.q, &src.q, where);
    EXPECT_EQ(src.q.head, before.head);
    EXPECT_EQ(src.q.tail, before.tail);
    EXPECT_EQ(dst.Keys(), where == 0 ? (Keys{7, 8, 1, 2}) : (Keys{1, 2, 7, 8}));
    EXPECT_EQ(dst.q.tail->link, nullptr);
    InitQueue(&src.q); // the caller's duty
  }
  Keyed dst{1}, src{7};
  MergeQueues(&dst.q, &src.q, 3); // unknown code: nothing
  EXPECT_EQ(dst.Keys(), (Keys{1}));
  Keyed empty{};
  MergeQueues(&empty.q, &src.q, 1); // an empty destination takes the source
  EXPECT_EQ(empty.Keys(), (Keys{7}));
  InitQueue(&src.q);
}

TEST(Queue, CopiesKeepTheLink) {
  Keyed k{1, 2};
  KeyedElement copy(*k.At(0));
  EXPECT_EQ(copy.link, k.At(1));
  Q_ELEM* block = DuplicateBlock(k.At(0));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->link, k.At(1));
  EXPECT_EQ(static_cast<KeyedElement*>(block)->key, 1);
  EXPECT_EQ(memSize(block), memSize(k.At(0)));
  ffree(&block);
  EXPECT_EQ(DuplicateBlock(nullptr), nullptr);
}

TEST(Queue, FreeQueueReleasesPlainBlocks) {
  QUEUE q;
  InitQueue(&q);
  for (int i = 0; i < 3; ++i) {
    void* block = nullptr;
    ASSERT_TRUE(falloc_(sizeof(Q_ELEM) + 32, &block, true, true));
    Enqueue(&q, ::new (block) Q_ELEM, 1); // an element in a plain block, never destroyed
  }
  FreeQueue(&q); // leaks would show under LeakSanitizer
  EXPECT_EQ(q.head, nullptr);
  EXPECT_EQ(q.tail, nullptr);
}

TEST(Queue, DeleteQueueRunsTheDestructors) {
  static int destroyed;
  struct Counted : Q_ELEM {
    ~Counted() override { ++destroyed; }
  };
  QUEUE q;
  InitQueue(&q);
  for (int i = 0; i < 4; ++i)
    Enqueue(&q, new Counted, 0);
  destroyed = 0;
  DeleteQueue(&q);
  EXPECT_EQ(destroyed, 4);
  EXPECT_TRUE(NullQueue(&q));
}

TEST(Queue, AgreesWithStdList) {
  for (unsigned seed : {1u, 2u, 3u}) {
    std::mt19937_64 random(seed);
    auto next = [&] { return random(); };
    qxtest::QueueDifferential d(24);
    for (int step = 0; step < 600; ++step) {
      const std::string difference = d.Step(next);
      ASSERT_EQ(difference, "") << "seed " << seed << ", step " << step;
    }
  }
}

} // namespace
