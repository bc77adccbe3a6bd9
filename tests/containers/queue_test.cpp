// QUEUE: what fuzz/containers_differential_fuzz.cpp misses (newest-first among equal keys,
// a merge into an empty queue, the links of elements taken out or copied, the comparisons
// of an ascending append) and the disposal functions.
#include "common/containers_keyed.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

using qxtest::KeyedElement;

// Keyed - the queue 1, 2, 3 and spare elements; it owns every element it
// made, wherever the case left them.
struct Keyed {
  Keyed() {
    InitQueue(&q);
    for (int key : {1, 2, 3})
      Enqueue(&q, New(key), 1);
  }
  KeyedElement* New(int key) {
    owned.emplace_back(new KeyedElement(key));
    return owned.back().get();
  }
  KeyedElement* At(long i) { return static_cast<KeyedElement*>(GetQueueElement(&q, i)); }
  // PutSorted - a new element `key` queued in order; true.
  bool PutSorted(int key) { return EnqueueSorted(&q, New(key), qxtest::CompareKeys), true; }
  // Keys - the queue from its head, with "|" when the tail is its end.
  std::string Keys() const {
    std::string s;
    const Q_ELEM* last = nullptr;
    for (const Q_ELEM* e = q.head; e; e = QueueNext(e)) {
      s += std::to_string(static_cast<const KeyedElement*>(e)->key);
      last = e;
    }
    return q.tail == last ? s + "|" : s;
  }
  QUEUE q;
  Q_ELEM* out = nullptr;
  std::vector<std::unique_ptr<KeyedElement>> owned;
};

struct QueueCase {
  const char* name;
  bool (*act)(Keyed&); // its result, where the function has one
  bool result;
  const char* keys;
};

// clang-format off
const QueueCase kCases[] = {
    {"a second equal key goes first",
     [](Keyed& k) { return k.PutSorted(2) && k.At(1) == k.owned.back().get(); }, true, "1223|"},
    {"by index from the middle",
     [](Keyed& k) { return DequeueAtIndex(&k.q, &k.out, 1) && !k.out->link; }, true, "13|"},
    {"merged into an empty queue at an unknown code", [](Keyed& k) {
       QUEUE source = k.q;
       InitQueue(&k.q);
       MergeQueues(&k.q, &source, 3);
       return source.head == k.q.head; }, true, "123|"},
    {"a copy keeps the link",
     [](Keyed& k) { return KeyedElement(*k.At(0)).link == k.At(1); }, true, "123|"},
};
// clang-format on

TEST(Queue, Cases) {
  for (const QueueCase& c : kCases) {
    Keyed k;
    EXPECT_EQ(c.act(k), c.result) << c.name;
    EXPECT_EQ(k.Keys(), c.keys) << c.name;
    EXPECT_EQ(CountQueueElements(&k.q), static_cast<long>(std::string(c.keys).size() - 1))
        << c.name;
  }
}

TEST(Queue, SortedAppendInAscendingOrderComparesTwice) {
  static int comparisons;
  auto counting = [](Q_ELEM* a, Q_ELEM* b) { return ++comparisons, qxtest::CompareKeys(a, b); };
  Keyed k;
  comparisons = 0;
  for (int key = 4; key < 1000; ++key)
    EnqueueSorted(&k.q, k.New(key), counting);
  EXPECT_EQ(comparisons, 2 * 996);
}

TEST(Queue, Disposal) {
  // DuplicateBlock copies the block, link included.
  Keyed k;
  Q_ELEM* block = DuplicateBlock(k.At(0));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->link, k.At(1));
  EXPECT_EQ(static_cast<KeyedElement*>(block)->key, 1);
  EXPECT_EQ(DuplicateBlock(nullptr), nullptr);
  // FreeQueue releases elements in plain blocks without destroying them
  // (leaks would show under LeakSanitizer).
  QUEUE q;
  InitQueue(&q);
  Enqueue(&q, block, 1);
  void* plain = nullptr;
  ASSERT_TRUE(falloc_(sizeof(Q_ELEM) + 32, &plain, true, true));
  Enqueue(&q, ::new (plain) Q_ELEM, 1);
  FreeQueue(&q);
  EXPECT_TRUE(q.head == nullptr && q.tail == nullptr);
  // DeleteQueue runs the destructors.
  static int destroyed;
  struct Counted : Q_ELEM {
    ~Counted() override { ++destroyed; }
  };
  for (int i = 0; i < 4; ++i)
    Enqueue(&q, new Counted, 0);
  destroyed = 0;
  DeleteQueue(&q);
  EXPECT_EQ(destroyed, 4);
  EXPECT_TRUE(NullQueue(&q));
}

} // namespace
