// LINKEDLIST and one enumerator against a vector of its nodes: each input
// byte picks an operation (insertion at the front with data or null data,
// removal from the front, LL_Destroy, the enumerator's Next, Reset and
// MoveToEnd, LL_MoveFront); after each, the list's nodes, their data, the
// enumerator's fields and LL_GetFirst must be what the model says. At the
// end the enumerator is deleted (its pointer nulled) and the enumerator
// calls take null arguments.
#include "qxutil/containers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

struct Model {
  LINKEDLIST list{};
  LINKEDLIST_ENUMERATOR* e = nullptr;
  std::vector<LINKEDLIST_NODE*> nodes; // front first
  std::vector<void*> data;             // each node's data
  LINKEDLIST_NODE* current = nullptr;
  LINKEDLIST_NODE* previous = nullptr;

  size_t At(LINKEDLIST_NODE* n) const {
    return static_cast<size_t>(std::find(nodes.begin(), nodes.end(), n) - nodes.begin());
  }
  void* Next() {
    if (!current) {
      current = nodes.empty() ? nullptr : nodes[0];
      return current ? data[0] : nullptr;
    }
    const size_t i = At(current);
    if (i + 1 == nodes.size())
      return nullptr;
    previous = current;
    current = nodes[i + 1];
    return data[i + 1];
  }
  // RemoveFront - the model's front goes; an enumerator on it starts again.
  void RemoveFront() {
    if (current == nodes[0] || previous == nodes[0]) {
      LLEnum_Reset(e);
      current = previous = nullptr;
    }
    nodes.erase(nodes.begin());
    data.erase(data.begin());
  }
  void Compare() {
    size_t i = 0;
    for (LINKEDLIST_NODE* n = list.head; n; n = n->next, ++i)
      Check(i < nodes.size() && n == nodes[i] && n->data == data[i]);
    Check(i == nodes.size());
    Check(e->current == current && e->previous == previous);
    Check(LL_GetFirst(&list) == (nodes.empty() ? nullptr : data[0]));
  }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  Model m;
  m.e = LLEnum_Get(&m.list);
  Check(m.e != nullptr);
  for (size_t at = 0; at < size; ++at) {
    switch (bytes[at] % 8) {
    case 0:
    case 1: { // null data one time in four
      void* d = nullptr;
      if (bytes[at] & 0x18)
        Check(falloc_(1, &d, true, true));
      LL_InsertFront(&m.list, &d);
      m.nodes.insert(m.nodes.begin(), m.list.head);
      m.data.insert(m.data.begin(), d);
      break;
    }
    case 2:
      if (!m.nodes.empty()) {
        void* expected = m.data[0];
        m.RemoveFront();
        void* d = LL_RemoveFront(&m.list);
        Check(d == expected);
        ffree(&d);
      } else {
        Check(LL_RemoveFront(&m.list) == nullptr);
      }
      break;
    case 3: // LL_Destroy: the front nodes up to one with null data
      while (!m.nodes.empty() && m.data[0])
        m.RemoveFront();
      if (!m.nodes.empty())
        m.RemoveFront();
      LL_Destroy(&m.list);
      break;
    case 4:
    case 5:
      Check(LLEnum_Next(m.e) == m.Next());
      break;
    case 6:
      if (bytes[at] & 0x08) {
        Check(LLEnum_Reset(m.e));
        m.current = m.previous = nullptr;
      } else { // MoveToEnd: Next until the last node or a node with null data
        LLEnum_MoveToEnd(m.e);
        while (!(m.current && m.At(m.current) + 1 == m.nodes.size()) &&
               !(!m.current && m.nodes.empty()) && m.Next())
          ;
      }
      break;
    default: // LL_MoveFront leaves the enumerator's fields as they were, so it is
             // called only where `previous` still links to `current` (or on the head)
      if (m.previous && m.current && m.current != m.nodes[0] &&
          m.At(m.previous) + 1 != m.At(m.current))
        break;
      LL_MoveFront(&m.list, m.e);
      if (m.previous && m.current && m.current != m.nodes[0]) {
        const size_t i = m.At(m.current);
        std::rotate(m.nodes.begin(), m.nodes.begin() + static_cast<long>(i),
                    m.nodes.begin() + static_cast<long>(i) + 1);
        std::rotate(m.data.begin(), m.data.begin() + static_cast<long>(i),
                    m.data.begin() + static_cast<long>(i) + 1);
      }
    }
    m.Compare();
  }
  for (void* d : m.data)
    ffree(&d);
  while (m.list.head)
    LL_RemoveFront(&m.list);
  LLEnum_Delete(&m.e);
  Check(m.e == nullptr);
  LLEnum_Delete(&m.e); // null arguments: nothing
  LLEnum_Delete(nullptr);
  LLEnum_MoveToEnd(nullptr);
  Check(!LLEnum_Reset(nullptr) && LLEnum_Next(nullptr) == nullptr);
  return 0;
}
