// QUEUE's disposal functions. Every other queue function is compared with std::list by
// fuzz/containers_differential_fuzz.cpp: links (of removed elements and of copies too),
// tails, counts, the comparisons of a sorted insertion, merges into an empty queue.
#include "common/containers_keyed.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>

namespace {

using qxtest::KeyedElement;

TEST(Queue, Disposal) {
  // DuplicateBlock copies the block, link included.
  std::unique_ptr<KeyedElement> first(new KeyedElement(1)), second(new KeyedElement(2));
  QUEUE q;
  InitQueue(&q);
  Enqueue(&q, first.get(), 1);
  Enqueue(&q, second.get(), 1);
  Q_ELEM* block = DuplicateBlock(first.get());
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block->link, second.get());
  EXPECT_EQ(static_cast<KeyedElement*>(block)->key, 1);
  EXPECT_EQ(DuplicateBlock(nullptr), nullptr);
  // FreeQueue releases elements in plain blocks without destroying them
  // (leaks would show under LeakSanitizer).
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
