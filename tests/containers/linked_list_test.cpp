// LINKEDLIST: enumeration that stays on the last node, move-to-front that leaves the
// enumerator's fields alone, LL_Destroy stopping at null data (insertion and removal:
// the fault walk in containers_fault_test.cpp).
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Block - a memory-manager block holding one character, so that LL_Destroy
// may free it.
void* Block(char c) {
  void* block = nullptr;
  falloc_(1, &block, true, true);
  *static_cast<char*>(block) = c;
  return block;
}

char Of(void* data) { return data ? *static_cast<char*>(data) : '-'; }

// Read - the list's data from the head, '-' for null data.
std::string Read(const LINKEDLIST& list) {
  std::string s;
  for (LINKEDLIST_NODE* n = list.head; n; n = n->next)
    s += Of(n->data);
  return s;
}

// AbcList - a, b, c inserted at the front: the list reads "cba".
struct AbcList {
  AbcList() {
    for (char c : {'a', 'b', 'c'}) {
      void* data = Block(c);
      LL_InsertFront(&list, &data);
    }
  }
  ~AbcList() { LL_Destroy(&list); }
  LINKEDLIST list{};
};

TEST(LinkedList, EnumerationStaysOnTheLastNode) {
  AbcList l;
  EXPECT_EQ(Read(l.list), "cba");
  EXPECT_EQ(Of(LL_GetFirst(&l.list)), 'c');
  LINKEDLIST_ENUMERATOR* e = LLEnum_Get(&l.list);
  ASSERT_NE(e, nullptr);
  std::string seen;
  for (int i = 0; i < 5; ++i)
    seen += Of(LLEnum_Next(e));
  EXPECT_EQ(seen, "cba--");
  EXPECT_EQ(Of(e->current->data), 'a');
  EXPECT_TRUE(LLEnum_Reset(e));
  EXPECT_EQ(Of(LLEnum_Next(e)), 'c');
  LLEnum_Delete(&e);
  EXPECT_EQ(e, nullptr);
  LLEnum_Delete(&e); // already null: nothing
  LLEnum_Delete(nullptr);
  EXPECT_FALSE(LLEnum_Reset(nullptr));
  EXPECT_EQ(LLEnum_Next(nullptr), nullptr);
}

TEST(LinkedList, MoveFrontLeavesTheEnumeratorsFields) {
  AbcList l;
  LINKEDLIST_ENUMERATOR* e = LLEnum_Get(&l.list);
  LLEnum_Next(e);
  LL_MoveFront(&l.list, e); // on the head: nothing
  EXPECT_EQ(Read(l.list), "cba");
  EXPECT_EQ(Of(LLEnum_Next(e)), 'b');
  const LINKEDLIST_ENUMERATOR before = *e;
  LL_MoveFront(&l.list, e);
  EXPECT_EQ(Read(l.list), "bca");
  EXPECT_EQ(e->previous, before.previous);
  EXPECT_EQ(e->current, before.current);
  LL_MoveFront(&l.list, e); // the node is the head now: nothing, no cycle
  EXPECT_EQ(Read(l.list), "bca");
  EXPECT_EQ(Of(LLEnum_Next(e)), 'c'); // continues with the former head
  EXPECT_EQ(Of(LLEnum_Next(e)), 'a');
  LLEnum_Delete(&e);
}

TEST(LinkedList, MoveToEndStopsAtTheLastOrANullNode) {
  AbcList l;
  LINKEDLIST_ENUMERATOR* e = LLEnum_Get(&l.list);
  LLEnum_MoveToEnd(e);
  EXPECT_EQ(Of(e->current->data), 'a');
  LLEnum_MoveToEnd(e); // already there
  EXPECT_EQ(Of(e->current->data), 'a');
  void* b = l.list.head->next->data;
  l.list.head->next->data = nullptr; // "c-a"
  LLEnum_Reset(e);
  LLEnum_MoveToEnd(e);
  EXPECT_EQ(e->current, l.list.head->next);
  l.list.head->next->data = b;
  LLEnum_Delete(&e);
  LINKEDLIST empty{};
  e = LLEnum_Get(&empty);
  LLEnum_MoveToEnd(e);
  EXPECT_EQ(e->current, nullptr);
  LLEnum_Delete(&e);
}

TEST(LinkedList, DestroyStopsAtNullData) {
  LINKEDLIST list{};
  EXPECT_EQ(LL_RemoveFront(&list), nullptr);
  EXPECT_EQ(LL_GetFirst(&list), nullptr);
  void* data = Block('a');
  LL_InsertFront(&list, &data);
  data = nullptr;
  LL_InsertFront(&list, &data);
  data = Block('c');
  LL_InsertFront(&list, &data); // "c-a"
  LL_Destroy(&list);            // frees c's node and data and the null node
  EXPECT_EQ(Read(list), "a");
  LL_Destroy(&list);
  EXPECT_EQ(list.head, nullptr);
}

} // namespace
