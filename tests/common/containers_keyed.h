// A queue element ordered by its key, for the queue tests and the queue's
// differential driver (fuzz/models/queue_model.h).
#ifndef QXUTIL_TESTS_COMMON_CONTAINERS_KEYED_H
#define QXUTIL_TESTS_COMMON_CONTAINERS_KEYED_H

#include "qxutil/containers.h"

namespace qxtest {

struct KeyedElement : Q_ELEM {
  explicit KeyedElement(int k) : key(k) {}
  int key;
};

inline int CompareKeys(Q_ELEM* a, Q_ELEM* b) {
  return static_cast<KeyedElement*>(a)->key - static_cast<KeyedElement*>(b)->key;
}

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_CONTAINERS_KEYED_H
