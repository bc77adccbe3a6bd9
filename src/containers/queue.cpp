//===- containers/queue.cpp - The intrusive queue -------------------------===//
//
// QUEUE links elements through their own `link` field: every operation is
// pointer work without allocation, except DuplicateBlock. There are no back
// links, so removing the tail or a given element walks from the head.
//
//===----------------------------------------------------------------------===//
#include "qxutil/containers.h"

#include <cstring>

namespace {

constexpr int kFront = 0;
constexpr int kBack = 1;

// Predecessor - the element whose link is `e`, or null.
Q_ELEM* Predecessor(const QUEUE* q, const Q_ELEM* e) {
  for (Q_ELEM* x = q->head; x; x = x->link)
    if (x->link == e)
      return x;
  return nullptr;
}

void PushFront(QUEUE* q, Q_ELEM* e) {
  e->link = q->head;
  q->head = e;
  if (!q->tail)
    q->tail = e;
}

void PushBack(QUEUE* q, Q_ELEM* e) {
  e->link = nullptr;
  if (q->tail)
    q->tail->link = e;
  else
    q->head = e;
  q->tail = e;
}

// InsertAfter - links `e` after `before`, which is in the queue.
void InsertAfter(QUEUE* q, Q_ELEM* before, Q_ELEM* e) {
  e->link = before->link;
  before->link = e;
  if (!e->link)
    q->tail = e;
}

} // namespace

Q_ELEM::~Q_ELEM() = default;

void InitQueue(QUEUE* q) { q->head = q->tail = nullptr; }

bool NullQueue(QUEUE* q) { return q->head == nullptr; }

void Enqueue(QUEUE* q, Q_ELEM* e, int where) {
  if (where == kFront)
    PushFront(q, e);
  else if (where == kBack)
    PushBack(q, e);
}

void EnqueueSorted(QUEUE* q, Q_ELEM* e, int (*compare)(Q_ELEM*, Q_ELEM*)) {
  if (!q->head) {
    PushBack(q, e);
    return;
  }
  if (compare(e, q->head) <= 0) {
    PushFront(q, e);
    return;
  }
  if (compare(e, q->tail) > 0) {
    PushBack(q, e);
    return;
  }
  // The head orders before e and the tail does not, so the walk ends
  // inside the queue.
  Q_ELEM* before = q->head;
  while (before->link && compare(e, before->link) > 0)
    before = before->link;
  InsertAfter(q, before, e);
}

void EnqueueAtIndex(QUEUE* q, Q_ELEM* e, long index) {
  Q_ELEM* before = nullptr;
  Q_ELEM* at = q->head;
  for (unsigned long steps = static_cast<unsigned long>(index); steps > 0 && at; --steps) {
    before = at;
    at = at->link;
  }
  if (before)
    InsertAfter(q, before, e);
  else
    PushFront(q, e);
}

bool Dequeue(QUEUE* q, Q_ELEM** out, int where) {
  if (!q->head) {
    *out = nullptr;
    return false;
  }
  if (where == kFront) {
    Q_ELEM* e = q->head;
    q->head = e->link;
    if (!q->head)
      q->tail = nullptr;
    e->link = nullptr;
    *out = e;
  } else if (where == kBack) {
    Q_ELEM* e = q->tail;
    if (q->head == e) {
      q->head = q->tail = nullptr;
    } else {
      Q_ELEM* before = Predecessor(q, e);
      before->link = nullptr;
      q->tail = before;
    }
    *out = e;
  }
  return true;
}

bool DequeueThisElement(QUEUE* q, Q_ELEM* e) {
  Q_ELEM* out = nullptr;
  if (!q->head)
    return false;
  if (e == q->head)
    return Dequeue(q, &out, kFront);
  if (e == q->tail)
    return Dequeue(q, &out, kBack);
  Q_ELEM* before = Predecessor(q, e);
  if (!before)
    return false;
  before->link = e->link;
  e->link = nullptr;
  return true;
}

bool DequeueAtIndex(QUEUE* q, Q_ELEM** out, long index) {
  *out = GetQueueElement(q, index);
  return *out && DequeueThisElement(q, *out);
}

Q_ELEM* GetQueueElement(const QUEUE* q, long index) {
  if (index < 0)
    return nullptr;
  Q_ELEM* e = q->head;
  for (; e && index > 0; --index)
    e = e->link;
  return e;
}

Q_ELEM* QueueNext(const Q_ELEM* e) { return e->link; }

long CountQueueElements(const QUEUE* q) {
  long n = 0;
  for (const Q_ELEM* e = q->head; e; e = e->link)
    ++n;
  return n;
}

long InQueuePosition(const QUEUE* q, const Q_ELEM* e) {
  long position = 0;
  for (const Q_ELEM* x = q->head; x; x = x->link, ++position)
    if (x == e)
      return position;
  return -1;
}

void MergeQueues(QUEUE* dst, QUEUE* src, int where) {
  if (!src->head)
    return;
  if (!dst->head) {
    dst->head = src->head;
    dst->tail = src->tail;
  } else if (where == kFront) {
    src->tail->link = dst->head;
    dst->head = src->head;
  } else if (where == kBack) {
    dst->tail->link = src->head;
    dst->tail = src->tail;
  }
}

void DeleteQueue(QUEUE* q) {
  for (Q_ELEM* e = q->head; e;) {
    Q_ELEM* next = e->link;
    delete e;
    e = next;
  }
  InitQueue(q);
}

void FreeQueue(QUEUE* q) {
  for (Q_ELEM* e = q->head; e;) {
    Q_ELEM* next = e->link;
    ffree(&e);
    e = next;
  }
  InitQueue(q);
}

Q_ELEM* DuplicateBlock(Q_ELEM* e) {
  if (!e)
    return nullptr;
  const unsigned int size = memSize(e);
  void* copy = nullptr;
  if (!falloc_(size, &copy, true, true))
    return nullptr;
  std::memcpy(copy, static_cast<const void*>(e), size);
  return static_cast<Q_ELEM*>(copy);
}
