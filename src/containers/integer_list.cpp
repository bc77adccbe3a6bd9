//===- containers/integer_list.cpp - The QXList family --------------------===//
//
// The interface templates and their three instantiations, exported from the
// library, and which member each Create() makes: the word block for long,
// the range arrays for unsigned long and unsigned long long.
//
//===----------------------------------------------------------------------===//
#include "containers/range_list.h"
#include "containers/word_list.h"

#include <new>

namespace {

template <class T> QXList<T>* MakeList();
template <> QXList<long>* MakeList<long>() { return qx::containers::QXListImpl::Make(); }
template <> QXList<unsigned long>* MakeList<unsigned long>() {
  return new (std::nothrow) qx::containers::UtilULongListImpl;
}
template <> QXList<unsigned long long>* MakeList<unsigned long long>() {
  return new (std::nothrow) qx::containers::UtilULongLongListImpl;
}

} // namespace

template <class T> QXListEnumerator<T>::~QXListEnumerator() = default;
template <class T> QXListRangeEnumerator<T>::~QXListRangeEnumerator() = default;
template <class T> QXListItem<T>::~QXListItem() = default;
template <class T> QXList<T>::~QXList() = default;
template <class T> QXList<T>* QXList<T>::Create() { return MakeList<T>(); }

#define QXLIST_MEMBER(T)                                                                           \
  template class QXListEnumerator<T>;                                                              \
  template class QXListRangeEnumerator<T>;                                                         \
  template class QXListItem<T>;                                                                    \
  template class QXList<T>
QXLIST_MEMBER(long);
QXLIST_MEMBER(unsigned long);
QXLIST_MEMBER(unsigned long long);
