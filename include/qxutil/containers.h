//===- qxutil/containers.h - Containers -------------------------*- C++ -*-===//
//
// The containers the library's callers keep their data in:
//
//  * QUEUE: an intrusive, singly linked list (head and tail) of objects
//    derived from Q_ELEM; the element carries the link, so linking never
//    allocates. Insertion at either end, at an index or in sorted order.
//  * LINKEDLIST: a singly linked list of untyped pointers with insertion and
//    removal at the front, and enumerators that can move the node they stand
//    on to the front (most-recently-used orderings).
//  * QXList<T>: sorted sets of non-negative integers stored as runs, so that
//    1 to 100,000 costs a few words; with value and range enumerators and a
//    positional accessor.
//  * DPNTContainer: a growable array of DPNT points; PointParserFactory reads
//    coordinate text (pairs of numbers between separators) into one.
//
// Failure rule: nothing here records errors in the error list. All memory
// comes from the memory manager (falloc_ / ffree). A function that cannot
// get memory returns its failure result (false or null) and leaves its
// arguments and the container as they were, except where a comment says
// otherwise. Searches return false, null or -1 when the element, value or
// index is absent. Null container pointers are not tested unless stated.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_CONTAINERS_H
#define QXUTIL_CONTAINERS_H

#include "qxutil/frame.h"
#include "qxutil/geometry.h"

// ---- Queue -----------------------------------------------------------------
//
// Position codes (the `where` argument): 0 is the front (head), 1 the back
// (tail). Any other value makes Enqueue and MergeQueues do nothing and
// Dequeue return true without writing its out-argument. The caller owns the
// elements except where DeleteQueue or FreeQueue disposes of them.

/// Q_ELEM - base of a queue's elements: a virtual destructor (so that
/// DeleteQueue destroys derived elements properly) and the link. Copying an
/// element copies its link too: a copy starts out pointing at the source's
/// successor. Elements are memory-manager blocks (QXHeapObject).
class QXUTIL_API Q_ELEM : public QXHeapObject {
public:
  Q_ELEM() : link(nullptr) {}
  Q_ELEM(const Q_ELEM&) = default;
  Q_ELEM& operator=(const Q_ELEM&) = default;
  virtual ~Q_ELEM();

  Q_ELEM* link; // the next element, null at the end
};

/// QUEUE - head and tail, both null (empty) or both set; the tail's link is
/// null.
struct QUEUE {
  Q_ELEM* head;
  Q_ELEM* tail;
};

/// InitQueue - head and tail null.
QXUTIL_API void InitQueue(QUEUE* q);

/// NullQueue - true when the queue has no head.
QXUTIL_API bool NullQueue(QUEUE* q);

/// Enqueue - 0: links `e` before the head (it is also the tail of an empty
/// queue); 1: clears `e`'s link and appends it after the tail; any other
/// code: nothing.
QXUTIL_API void Enqueue(QUEUE* q, Q_ELEM* e, int where);

/// EnqueueSorted - inserts `e` before the first element x with
/// compare(e, x) <= 0, so among equal elements the newest comes first. The
/// head and the tail are compared before any walk: appending in ascending
/// order costs two comparisons per element. compare(a, b) is negative, 0 or
/// positive as a orders before, with or after b.
QXUTIL_API void EnqueueSorted(QUEUE* q, Q_ELEM* e, int (*compare)(Q_ELEM*, Q_ELEM*));

/// EnqueueAtIndex - inserts `e` at zero-based position `index`. An index at
/// or past the end appends; the index is walked as an unsigned count, so a
/// negative index appends too.
QXUTIL_API void EnqueueAtIndex(QUEUE* q, Q_ELEM* e, long index);

/// Dequeue - removes the head (0) or the tail (1) into *out and clears its
/// link; true. An empty queue gives *out = null and false. Any other code:
/// true, *out untouched. Removing the tail walks the queue.
QXUTIL_API bool Dequeue(QUEUE* q, Q_ELEM** out, int where);

/// DequeueThisElement - unlinks `e` (its link is cleared); false when it is
/// not in the queue.
QXUTIL_API bool DequeueThisElement(QUEUE* q, Q_ELEM* e);

/// DequeueAtIndex - *out = the element at `index`, then unlinks it; a
/// negative or too large index gives *out = null and false.
QXUTIL_API bool DequeueAtIndex(QUEUE* q, Q_ELEM** out, long index);

/// GetQueueElement - the element at zero-based `index`; null when `index`
/// is negative or past the end.
QXUTIL_API Q_ELEM* GetQueueElement(const QUEUE* q, long index);

/// QueueNext - the element's link.
QXUTIL_API Q_ELEM* QueueNext(const Q_ELEM* e);

/// CountQueueElements - the number of elements (walks the queue).
QXUTIL_API long CountQueueElements(const QUEUE* q);

/// InQueuePosition - the zero-based position of `e`, or -1 when absent.
QXUTIL_API long InQueuePosition(const QUEUE* q, const Q_ELEM* e);

/// MergeQueues - splices `src`'s elements before (0) or after (1) `dst`'s.
/// `src` is left as it was, still naming the moved elements: re-initialise
/// it before using it again.
QXUTIL_API void MergeQueues(QUEUE* dst, QUEUE* src, int where);

/// DeleteQueue - deletes every element through its virtual destructor,
/// then head and tail null.
QXUTIL_API void DeleteQueue(QUEUE* q);

/// FreeQueue - releases every element's memory with ffree without running
/// destructors (for elements that are plain memory blocks), then head and
/// tail null.
QXUTIL_API void FreeQueue(QUEUE* q);

/// DuplicateBlock - a new memory-manager block of memSize(e) bytes holding a
/// byte-for-byte copy of `e`, link included; null for null or when memory
/// fails. `e` must be a memory-manager block.
QXUTIL_API Q_ELEM* DuplicateBlock(Q_ELEM* e);

// ---- Linked list -----------------------------------------------------------
//
// The list owns its nodes; the data pointers are the caller's, except that
// LL_Destroy frees them as memory-manager blocks. An enumerator becomes
// invalid when the node it stands on, or the one before it, is removed.

/// LINKEDLIST_NODE - one node, allocated by the list.
struct LINKEDLIST_NODE {
  LINKEDLIST_NODE* next; // null at the end
  void* data;            // the caller's pointer
};

/// LINKEDLIST - the first node, null when empty.
struct LINKEDLIST {
  LINKEDLIST_NODE* head;
};

/// LINKEDLIST_ENUMERATOR - made by LLEnum_Get; `current` is the node last
/// returned (null before the first step), `previous` the node before it.
struct LINKEDLIST_ENUMERATOR {
  LINKEDLIST* list;
  LINKEDLIST_NODE* previous;
  LINKEDLIST_NODE* current;
};

/// LL_InsertFront - links a new node holding *data as the head. When the
/// node cannot be allocated nothing happens (and nothing is reported).
QXUTIL_API void LL_InsertFront(LINKEDLIST* list, void** data);

/// LL_GetFirst - the head's data, or null when empty.
QXUTIL_API void* LL_GetFirst(LINKEDLIST* list);

/// LL_RemoveFront - unlinks and frees the head node and returns its data
/// (not freed); null when empty.
QXUTIL_API void* LL_RemoveFront(LINKEDLIST* list);

/// LL_Destroy - removes nodes from the front, freeing each node and its data
/// with ffree. A node holding null data ends it: that node is removed and
/// the nodes after it stay in the list.
QXUTIL_API void LL_Destroy(LINKEDLIST* list);

/// LLEnum_Get - a new enumerator on `list`, before the first node; null when
/// memory fails. Release it with LLEnum_Delete.
QXUTIL_API LINKEDLIST_ENUMERATOR* LLEnum_Get(LINKEDLIST* list);

/// LLEnum_Reset - back before the first node; false for null.
QXUTIL_API bool LLEnum_Reset(LINKEDLIST_ENUMERATOR* e);

/// LLEnum_Next - steps to the next node and returns its data. On the last
/// node it returns null and stays there; null for a null enumerator or an
/// empty list. A node holding null data looks like the end.
QXUTIL_API void* LLEnum_Next(LINKEDLIST_ENUMERATOR* e);

/// LLEnum_MoveToEnd - steps to the last node, stopping early on the first
/// node reached whose data is null.
QXUTIL_API void LLEnum_MoveToEnd(LINKEDLIST_ENUMERATOR* e);

/// LL_MoveFront - moves the enumerator's current node to the head. The
/// enumerator's fields are left alone: it now stands on the head, so the
/// next LLEnum_Next returns the node that was the head before. Nothing
/// happens for a null enumerator or one standing on the head.
QXUTIL_API void LL_MoveFront(LINKEDLIST* list, LINKEDLIST_ENUMERATOR* e);

/// LLEnum_Delete - frees *e, if any, and nulls it.
QXUTIL_API void LLEnum_Delete(LINKEDLIST_ENUMERATOR** e);

// ---- Integer sets ----------------------------------------------------------
//
// QXList<T> is a sorted set of non-negative integers kept as runs of
// consecutive values. Three members, each made by its own Create():
//
//   QXList<long>                values 0 to 2,147,483,647; a block of 32-bit
//                               words sized exactly to its content; lookups
//                               walk it; Count() walks it.
//   QXList<unsigned long>       values 0 to 4,294,967,295 (32 bits, as on
//                               Windows); a sorted array of ranges searched
//                               by halving, room for 32 ranges at first, then
//                               8 more at a time; Count() is a cached total.
//   QXList<unsigned long long>  the same over 64-bit values; the cached total
//                               is kept in 32 bits (the count modulo 2^32).
//
// Values outside a member's range are refused by Add and AddRange (false)
// and are never contained. "All bits set" (-1, 0xFFFFFFFF, 2^64 - 1) is what
// the enumerators and GetAt yield at the end and on failure. Every object
// returned by Clone, GetEnumerator, GetRangeEnumerator and GetItem belongs to
// the caller, who deletes it; enumerators and items must not outlive their
// list. Virtual slots are in declaration order.

/// QXListEnumerator - the values of a list in ascending order, one per Next.
template <class T> class QXUTIL_API QXListEnumerator : public QXHeapObject {
public:
  virtual ~QXListEnumerator();
  /// Next - the next value; at the end `value` is all bits set and the
  /// result false. True while the value yielded is not all bits set (so the
  /// top value of QXList<unsigned long> and <unsigned long long> is yielded
  /// with false).
  virtual bool Next(T& value) = 0;
};

/// QXListRangeEnumerator - the runs of a list in ascending order; a value
/// on its own comes as first == last.
template <class T> class QXUTIL_API QXListRangeEnumerator : public QXHeapObject {
public:
  virtual ~QXListRangeEnumerator();
  /// Next - the next run; at the end both are all bits set and the result
  /// false.
  virtual bool Next(T& first, T& last) = 0;
};

/// QXListItem - the n-th value of a list. It remembers the run where the
/// last answer was found, so ascending and nearby ordinals are cheap; a
/// change to the list is noticed and never gives a stale answer.
template <class T> class QXUTIL_API QXListItem : public QXHeapObject {
public:
  virtual ~QXListItem();
  /// GetAt - the value at 1-based `ordinal`: {1, 3 to 5} has 5 at ordinal
  /// 4. False (with `value` all bits set) for ordinal 0, an empty list or an
  /// ordinal past the end.
  virtual bool GetAt(unsigned long ordinal, T& value) = 0;
};

/// QXList - a sorted set of non-negative integers kept as runs.
template <class T> class QXUTIL_API QXList : public QXHeapObject {
public:
  virtual ~QXList();
  /// Add - adds `value`, joining it to the runs it touches. QXList<long>:
  /// true unless the value is refused or memory fails. The range-array
  /// members (unsigned long, unsigned long long): true when the value was
  /// added, false when it was already present, refused, or memory failed.
  virtual bool Add(const T& value) = 0;
  /// AddRange - adds first..last inclusive (bounds in either order), merged
  /// with every run it overlaps or touches; true unless a bound is refused
  /// or memory fails. AddRange(10, 3) == AddRange(3, 10).
  virtual bool AddRange(const T& first, const T& last) = 0;
  /// Remove - removes `value`, splitting its run if needed. Removing an
  /// absent value reports success; false only when a split cannot get
  /// memory (the list is unchanged).
  virtual bool Remove(const T& value) = 0;
  /// Clear - removes every value and gives back the memory; true.
  virtual bool Clear() = 0;
  virtual bool Contains(const T& value) = 0;
  /// GetBounds - the least and greatest value, and (when `oneRun` is not
  /// null) whether the list is one value or one run; false when empty.
  virtual bool GetBounds(T& min, T& max, bool* oneRun) = 0;
  /// Count - the number of values (kept in 32 bits by the range-array
  /// members).
  virtual unsigned long Count() = 0;
  /// CountUpToTwo - 0, 1 or 2 (meaning "several"), looking at two runs at
  /// most.
  virtual unsigned long CountUpToTwo() = 0;
  /// Clone - a new list of the same member with the same values; null when
  /// memory fails.
  virtual QXList<T>* Clone() = 0;
  /// GetEnumerator, GetRangeEnumerator, GetItem - new companion objects
  /// over this list, or null when memory fails.
  virtual QXListEnumerator<T>* GetEnumerator() = 0;
  virtual QXListRangeEnumerator<T>* GetRangeEnumerator() = 0;
  virtual QXListItem<T>* GetItem() = 0;

  /// Create - a new, empty list; null when memory fails.
  static QXList<T>* Create();
};

// The three members are instantiated, and exported, by the library.
#define QXUTIL_QXLIST_MEMBER(T)                                                                    \
  extern template class QXListEnumerator<T>;                                                       \
  extern template class QXListRangeEnumerator<T>;                                                  \
  extern template class QXListItem<T>;                                                             \
  extern template class QXList<T>
QXUTIL_QXLIST_MEMBER(long);
QXUTIL_QXLIST_MEMBER(unsigned long);
QXUTIL_QXLIST_MEMBER(unsigned long long);
#undef QXUTIL_QXLIST_MEMBER

// ---- Point container and point parser --------------------------------------

/// DPNTContainer - a growable array of DPNT points. Its capacity is what the
/// buffer actually holds (memSize / 16), which may exceed what was asked
/// for. Virtual slots are in declaration order.
class QXUTIL_API DPNTContainer : public QXHeapObject {
public:
  virtual ~DPNTContainer();
  /// Append - Reserve(count + n), then copies the n points after the last.
  /// False, with nothing changed, when the room cannot be had (or `points`
  /// is null while n > 0).
  virtual bool Append(const DPNT* points, unsigned n) = 0;
  /// Reset - count 0; then true for capacity 0, else Reserve(capacity).
  virtual bool Reset(unsigned capacity) = 0;
  /// Reserve - true when `needed` points fit; otherwise the buffer grows to
  /// capacity + max(needed - capacity, growth step) points. False when it
  /// cannot (the old buffer and its points stay), including a size beyond
  /// 32 bits.
  virtual bool Reserve(unsigned needed) = 0;
  /// GetPoints - the buffer, and the number of points in use through
  /// `count` (when not null). The buffer moves when the container grows.
  virtual DPNT* GetPoints(unsigned* count) = 0;

  /// Create - a container with room for at least `initialCapacity` points
  /// that grows by at least `growthStep` points at a time (0: exactly what
  /// is needed). Null when memory fails, or when the initial size would
  /// exceed 32 bits.
  static DPNTContainer* Create(unsigned initialCapacity, unsigned growthStep);
};

/// PointParserFactory - reads coordinate text into a DPNTContainer: numbers
/// read as StringToDouble reads them ("." as the decimal point, exponents),
/// x and y separated by characters of the coordinate separator set, points
/// by characters of the point separator set.
class QXUTIL_API PointParserFactory : public QXHeapObject {
public:
  virtual ~PointParserFactory();
  /// Parse - reads the first `length` units of `text` (or up to its
  /// terminator, whichever comes first; nothing after either is read).
  /// First makes room for length / 20 points: with `replace` the container
  /// is emptied (Reset), otherwise its points are kept (Reserve); false when
  /// that fails. Then skips point separators, and while units remain: x,
  /// coordinate separators, y, append (x, y), point separators. A number
  /// that cannot be read, or a point that cannot be appended (memory), ends
  /// the parse with false; the points appended before stay. So a `length` beyond the terminator
  /// fails there, and "1,2;3,4" with "," and ";" gives (1, 2), (3, 4) and true.
  virtual bool Parse(const wchar_t* text, unsigned length, bool replace) = 0;

  /// Create - a parser filling `container` (not owned; null refused) with
  /// copies of the two separator sets (null reads as empty); with
  /// `addWhitespace` " \t\n" is added to both. Null when memory fails.
  static PointParserFactory* Create(DPNTContainer* container, const wchar_t* coordinateSeparators,
                                    const wchar_t* pointSeparators, bool addWhitespace);
};

#endif // QXUTIL_CONTAINERS_H
