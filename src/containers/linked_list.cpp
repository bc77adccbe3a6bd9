//===- containers/linked_list.cpp - The pointer list and its enumerator ---===//
//
// LINKEDLIST keeps untyped pointers in nodes of its own, inserted and removed
// at the front. Its enumerator can move the node it stands on to the front,
// which makes the list a most-recently-used order.
//
//===----------------------------------------------------------------------===//
#include "qxutil/containers.h"

void LL_InsertFront(LINKEDLIST* list, void** data) {
  LINKEDLIST_NODE* node = nullptr;
  if (!falloc_(sizeof(LINKEDLIST_NODE), &node, true, true))
    return; // the insertion is lost, as documented
  node->data = *data;
  node->next = list->head;
  list->head = node;
}

void* LL_GetFirst(LINKEDLIST* list) { return list->head ? list->head->data : nullptr; }

void* LL_RemoveFront(LINKEDLIST* list) {
  LINKEDLIST_NODE* node = list->head;
  if (!node)
    return nullptr;
  list->head = node->next;
  void* data = node->data;
  ffree(&node);
  return data;
}

void LL_Destroy(LINKEDLIST* list) {
  // A node holding null data ends the destruction; the nodes after it stay.
  for (void* data = LL_RemoveFront(list); data; data = LL_RemoveFront(list))
    ffree(&data);
}

LINKEDLIST_ENUMERATOR* LLEnum_Get(LINKEDLIST* list) {
  LINKEDLIST_ENUMERATOR* e = nullptr;
  if (!falloc_(sizeof(LINKEDLIST_ENUMERATOR), &e, true, true))
    return nullptr;
  e->list = list;
  return e;
}

bool LLEnum_Reset(LINKEDLIST_ENUMERATOR* e) {
  if (!e)
    return false;
  e->previous = e->current = nullptr;
  return true;
}

void* LLEnum_Next(LINKEDLIST_ENUMERATOR* e) {
  if (!e)
    return nullptr;
  if (!e->current) {
    e->current = e->list ? e->list->head : nullptr;
    return e->current ? e->current->data : nullptr;
  }
  if (!e->current->next)
    return nullptr; // stays on the last node
  e->previous = e->current;
  e->current = e->current->next;
  return e->current->data;
}

void LLEnum_MoveToEnd(LINKEDLIST_ENUMERATOR* e) {
  if (!e)
    return;
  for (;;) {
    if (e->current && !e->current->next)
      return;
    if (!e->current && !(e->list && e->list->head))
      return;
    if (!LLEnum_Next(e))
      return; // landed on a node whose data is null
  }
}

void LL_MoveFront(LINKEDLIST* list, LINKEDLIST_ENUMERATOR* e) {
  if (!e || !e->previous || !e->current || e->current == list->head)
    return; // a second move of the same node would link it to itself
  LINKEDLIST_NODE* node = e->current;
  e->previous->next = node->next;
  node->next = list->head;
  list->head = node;
}

void LLEnum_Delete(LINKEDLIST_ENUMERATOR** e) {
  if (e)
    ffree(e);
}
