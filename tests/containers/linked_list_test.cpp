// LINKEDLIST's fixed cases: enumeration that stays on the last node, a second move to the
// front that must not link the node to itself, null arguments. Every other sequence is
// compared with a vector of its nodes by fuzz/containers_linked_list_fuzz.cpp.
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

char Of(void* data) { return data ? *static_cast<char*>(data) : '-'; }

TEST(LinkedList, EnumerationAndMovesToTheFront) {
  LINKEDLIST list{};
  for (char c : {'a', 'b', 'c'}) { // memory-manager blocks, so that LL_Destroy may free them
    void* data = nullptr;
    ASSERT_TRUE(falloc_(1, &data, true, true));
    *static_cast<char*>(data) = c;
    LL_InsertFront(&list, &data);
  }
  LINKEDLIST_ENUMERATOR* e = LLEnum_Get(&list);
  ASSERT_NE(e, nullptr);
  std::string seen;
  for (int i = 0; i < 5; ++i)
    seen += Of(LLEnum_Next(e));
  EXPECT_EQ(seen, "cba--"); // the enumerator stays on the last node
  EXPECT_TRUE(LLEnum_Reset(e));
  LLEnum_Next(e);
  LLEnum_Next(e);
  LL_MoveFront(&list, e);
  LL_MoveFront(&list, e); // the node is the head now: nothing, no cycle
  std::string read;
  for (LINKEDLIST_NODE* n = list.head; n; n = n->next)
    read += Of(n->data);
  EXPECT_EQ(read, "bca");
  EXPECT_EQ(Of(LLEnum_Next(e)), 'c'); // continues with the former head
  LLEnum_Delete(&e);
  EXPECT_EQ(e, nullptr);
  LLEnum_Delete(&e); // already null: nothing
  LLEnum_Delete(nullptr);
  EXPECT_FALSE(LLEnum_Reset(nullptr));
  EXPECT_EQ(LLEnum_Next(nullptr), nullptr);
  LL_Destroy(&list);
}

} // namespace
