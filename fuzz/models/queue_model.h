// A differential driver for QUEUE: each step applies one queue function,
// chosen from a stream of random numbers, to a main queue (and sometimes to
// a second one that is merged into it) and to std::lists of the same
// elements, then compares the queues link by link, the tails, the counts and
// the answers of the searching functions, the links of removed elements and
// of copies, and the comparisons of a new head or tail. Unknown position
// codes, negative and too large indexes, foreign elements and an empty main
// queue are drawn on purpose. Driven by fuzz/containers_differential_fuzz.cpp.
#ifndef QXUTIL_FUZZ_MODELS_QUEUE_MODEL_H
#define QXUTIL_FUZZ_MODELS_QUEUE_MODEL_H

#include "common/containers_keyed.h"
#include "qxutil/containers.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <list>
#include <sstream>
#include <string>
#include <vector>

namespace qxtest {

class QueueDifferential {
public:
  explicit QueueDifferential(int elements) {
    InitQueue(&main_);
    InitQueue(&other_);
    for (int i = 0; i < elements; ++i)
      free_.push_back(new KeyedElement(i % 7));
  }
  ~QueueDifferential() {
    DeleteQueue(&main_);
    DeleteQueue(&other_);
    for (KeyedElement* e : free_)
      delete e;
  }
  QueueDifferential(const QueueDifferential&) = delete;
  QueueDifferential& operator=(const QueueDifferential&) = delete;

  size_t size() const { return model_.size(); }

  /// Step - one operation and the comparison; "" or the first difference.
  template <class Next> std::string Step(Next& next) {
    std::ostringstream what;
    const uint64_t r = next();
    const long n = static_cast<long>(model_.size());
    const long index = static_cast<long>(next() % static_cast<uint64_t>(n + 5)) - 2;
    int where = static_cast<int>(next() % 2); // mostly the two ends, sometimes any code
    if (next() % 6 == 0)
      where = static_cast<int>(next() % 9) - 4;
    const int op = static_cast<int>(r % 12);
    if (r % 64 == 63) { // now and then the main queue is emptied from the front
      for (Q_ELEM* out = nullptr; !model_.empty(); model_.pop_front()) {
        if (!Dequeue(&main_, &out, 0) || out != model_.front())
          return "emptying: wrong result";
        Release(out);
      }
      return Compare(&main_, model_);
    }
    KeyedElement* e = nullptr; // the element the insertions link
    if ((op <= 4 || op == 9 || op == 10) && !(e = Take(next)))
      return ""; // none is free
    if (op <= 1) {
      what << "Enqueue(" << where << ")";
      Enqueue(&main_, e, where);
      if (where == 0 || where == 1)
        model_.insert(where == 0 ? model_.begin() : model_.end(), e);
      else
        free_.push_back(e);
    } else if (op <= 3) {
      what << "EnqueueSorted(" << e->key << ")";
      // One comparison for a new head, two for a new tail; the walk between is not counted.
      const int comparisons = model_.empty()                  ? 0
                              : e->key <= model_.front()->key ? 1
                              : e->key > model_.back()->key   ? 2
                                                              : -1;
      comparisons_ = 0;
      EnqueueSorted(&main_, e, Counting);
      if (comparisons >= 0 && comparisons_ != comparisons)
        return what.str() + ": " + std::to_string(comparisons_) + " comparisons";
      auto at = model_.begin();
      if (!model_.empty() && e->key > model_.front()->key) {
        if (e->key > model_.back()->key)
          at = model_.end();
        else
          while (at != model_.end() && e->key > (*at)->key)
            ++at;
      }
      model_.insert(at, e);
    } else if (op == 4) {
      what << "EnqueueAtIndex(" << index << ")";
      EnqueueAtIndex(&main_, e, index);
      model_.insert(index < 0 || index >= n ? model_.end() : std::next(model_.begin(), index), e);
    } else if (op <= 6) {
      what << "Dequeue(" << where << ")";
      Q_ELEM* sentinel = reinterpret_cast<Q_ELEM*>(&other_);
      Q_ELEM* out = sentinel;
      const bool ok = Dequeue(&main_, &out, where);
      Q_ELEM* expected = n == 0       ? nullptr
                         : where == 0 ? model_.front()
                         : where == 1 ? model_.back()
                                      : sentinel;
      if (ok != (n > 0) || out != expected)
        return what.str() + ": wrong result";
      if (expected && expected != sentinel) {
        if (expected->link)
          return what.str() + ": the removed element keeps its link";
        model_.remove(static_cast<KeyedElement*>(expected));
        Release(expected);
      }
    } else if (op == 7) {
      // An element of the queue, a free one or one of the other queue.
      if (n > 0 && next() % 4 != 0)
        e = *std::next(model_.begin(), static_cast<long>(next() % static_cast<uint64_t>(n)));
      else if (!free_.empty())
        e = free_.back();
      else if (!otherModel_.empty())
        e = otherModel_.front();
      what << "DequeueThisElement";
      const bool member = e && std::find(model_.begin(), model_.end(), e) != model_.end();
      if (e && DequeueThisElement(&main_, e) != member)
        return what.str() + ": wrong result";
      if (member && e->link)
        return what.str() + ": the removed element keeps its link";
      if (member) {
        model_.remove(e);
        Release(e);
      }
    } else if (op == 8) {
      what << "DequeueAtIndex(" << index << ")";
      Q_ELEM* out = reinterpret_cast<Q_ELEM*>(&other_);
      const bool in = index >= 0 && index < n;
      const bool ok = DequeueAtIndex(&main_, &out, index);
      KeyedElement* expected = in ? *std::next(model_.begin(), index) : nullptr;
      if (ok != in || out != expected || (in && expected->link))
        return what.str() + ": wrong result or link";
      if (in) {
        model_.remove(expected);
        Release(expected);
      }
    } else if (op <= 10) {
      what << "Enqueue(other)";
      Enqueue(&other_, e, 1);
      otherModel_.push_back(e);
    } else {
      what << "MergeQueues(" << where << ")";
      const QUEUE before = other_;
      MergeQueues(&main_, &other_, where);
      if (other_.head != before.head || other_.tail != before.tail)
        return what.str() + ": the source changed";
      if (!otherModel_.empty() && (model_.empty() || where == 0 || where == 1)) {
        model_.splice(where == 0 ? model_.begin() : model_.end(), otherModel_);
        InitQueue(&other_);
      }
    }
    if (!model_.empty()) { // a copy, made or assigned, keeps the link
      KeyedElement copy(*model_.front());
      const bool made = copy.link == model_.front()->link;
      copy = *model_.back();
      if (!made || copy.link != model_.back()->link)
        return what.str() + ": a copy lost the link";
    }
    std::string difference = Compare(&main_, model_);
    if (difference.empty())
      difference = Compare(&other_, otherModel_);
    if (difference.empty())
      difference = Search(next);
    return difference.empty() ? difference : what.str() + ": " + difference;
  }

private:
  // Take - a free element with a fresh key, or null when none is free.
  template <class Next> KeyedElement* Take(Next& next) {
    if (free_.empty())
      return nullptr;
    KeyedElement* e = free_.back();
    free_.pop_back();
    e->key = static_cast<int>(next() % 9);
    e->link = reinterpret_cast<Q_ELEM*>(e); // Enqueue must not trust the old link
    return e;
  }

  void Release(Q_ELEM* e) { free_.push_back(static_cast<KeyedElement*>(e)); }

  static std::string Compare(const QUEUE* q, const std::list<KeyedElement*>& model) {
    if ((q->head == nullptr) != (q->tail == nullptr) ||
        NullQueue(const_cast<QUEUE*>(q)) != model.empty())
      return "head and tail disagree";
    const Q_ELEM* e = q->head;
    for (KeyedElement* expected : model) {
      if (e != expected)
        return "the links differ";
      if (e->link == nullptr && e != q->tail)
        return "the list ends before the tail";
      e = QueueNext(e);
    }
    if (e != nullptr)
      return "the list goes on";
    if (!model.empty() && (q->tail != model.back() || q->tail->link != nullptr))
      return "wrong tail";
    if (CountQueueElements(q) != static_cast<long>(model.size()))
      return "wrong count";
    return "";
  }

  template <class Next> std::string Search(Next& next) {
    const long n = static_cast<long>(model_.size());
    const long index = static_cast<long>(next() % static_cast<uint64_t>(n + 4)) - 2;
    Q_ELEM* expected = index >= 0 && index < n ? *std::next(model_.begin(), index) : nullptr;
    if (GetQueueElement(&main_, index) != expected)
      return "GetQueueElement";
    if (expected && InQueuePosition(&main_, expected) != index)
      return "InQueuePosition";
    if (!free_.empty() && InQueuePosition(&main_, free_.front()) != -1)
      return "InQueuePosition of a foreign element";
    return "";
  }

  static int Counting(Q_ELEM* a, Q_ELEM* b) { return ++comparisons_, CompareKeys(a, b); }

  inline static int comparisons_ = 0;
  QUEUE main_, other_;
  std::list<KeyedElement*> model_, otherModel_;
  std::vector<KeyedElement*> free_;
};

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_QUEUE_MODEL_H
