// QUEUE: one row per behaviour kept on purpose (position codes, newest-first sorting,
// indexes walked unsigned, a merge's source) and the disposal functions; the rest is
// compared with std::list by fuzz/containers_differential_fuzz.cpp.
#include "common/containers_keyed.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <initializer_list>
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
    InitQueue(&other);
    for (int key : {1, 2, 3})
      Enqueue(&q, New(key), 1);
  }
  KeyedElement* New(int key) {
    owned.emplace_back(new KeyedElement(key));
    return owned.back().get();
  }
  KeyedElement* At(long i) { return static_cast<KeyedElement*>(GetQueueElement(&q, i)); }
  // Put, PutAt, PutSorted - a new element 9 (or `key`) queued; true.
  bool Put(int where) { return Enqueue(&q, New(9), where), true; }
  bool PutAt(long index) { return EnqueueAtIndex(&q, New(9), index), true; }
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
  // Merge - `keys` queued in `other`, merged into q at `where`: whether
  // `other` still names its head and tail.
  bool Merge(std::initializer_list<int> keys, int where) {
    for (int key : keys)
      Enqueue(&other, New(key), 1);
    const QUEUE source = other;
    MergeQueues(&q, &other, where);
    return other.head == source.head && other.tail == source.tail;
  }
  QUEUE q, other;
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
    {"Enqueue, unknown code", [](Keyed& k) { return k.Put(2); }, true, "123|"},
    {"Dequeue, unknown code keeps out",
     [](Keyed& k) { return Dequeue(&k.q, &k.out, 5) && k.out == nullptr; }, true, "123|"},
    {"Dequeue from the back",
     [](Keyed& k) { return Dequeue(&k.q, &k.out, 1) && !k.out->link; }, true, "12|"},
    {"a second equal key goes first",
     [](Keyed& k) { return k.PutSorted(2) && k.At(1) == k.owned.back().get(); }, true, "1223|"},
    {"at index -1 (walked unsigned)", [](Keyed& k) { return k.PutAt(-1); }, true, "1239|"},
    {"a foreign element", [](Keyed& k) {
       KeyedElement* e = k.New(9);
       return InQueuePosition(&k.q, e) != -1 || DequeueThisElement(&k.q, e); }, false, "123|"},
    {"the tail by element", [](Keyed& k) {
       return DequeueThisElement(&k.q, k.At(2)) && InQueuePosition(&k.q, k.At(1)) == 1;
     }, true, "12|"},
    {"by index from the middle",
     [](Keyed& k) { return DequeueAtIndex(&k.q, &k.out, 1) && !k.out->link; }, true, "13|"},
    // The source still names the moved elements.
    {"merged after", [](Keyed& k) { return k.Merge({8, 9}, 1); }, true, "12389|"},
    {"merged into an empty queue",
     [](Keyed& k) { return InitQueue(&k.q), k.Merge({8}, 3); }, true, "8|"},
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
