// Out-of-memory paths of every exported containers call that allocates: each faulted
// run ends in the call's failure result with the container as it was. The checks read
// without allocating (Count, Contains, GetBounds, GetPoints), so they hold under faults.
#include "common/containers_keyed.h"
#include "common/fault_walk.h"
#include "qxutil/containers.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using qxtest::FaultCase;
using qxtest::Outcome;
using Runs = std::vector<std::pair<unsigned, unsigned>>; // made before the walk, only read in it

// Holds - the list holds exactly `runs`, read without allocating.
template <class T> bool Holds(QXList<T>* list, const Runs& runs) {
  unsigned long count = 0;
  for (const auto& [first, last] : runs) {
    count += last - first + 1;
    if (!list->Contains(static_cast<T>(first)) || !list->Contains(static_cast<T>(last)) ||
        list->Contains(static_cast<T>(last + 1)) ||
        (first > 0 && list->Contains(static_cast<T>(first - 1))))
      return false;
  }
  T min = 0, max = 0;
  bool oneRun = false;
  const bool bounded = list->GetBounds(min, max, &oneRun);
  return list->Count() == count && bounded == !runs.empty() &&
         (!bounded || (min == static_cast<T>(runs.front().first) &&
                       max == static_cast<T>(runs.back().second) && oneRun == (runs.size() == 1)));
}

// Build - a new list holding `runs`; null when memory fails.
template <class T> QXList<T>* Build(const Runs& runs) {
  std::unique_ptr<QXList<T>> list(QXList<T>::Create());
  for (const auto& [first, last] : runs)
    if (!list || !list->AddRange(first, last))
      return nullptr;
  return list.release();
}

// A change: from `start`, the operation ('a' Add(x), 'r' AddRange(x, y),
// 'd' Remove(x), 'c' Clear()) gives `after`;
// unfaulted, each row also pins the plain behaviour of the change.
struct ListChange {
  const char* name;
  Runs start;
  char kind;
  long x, y;
  Runs after;
  bool shrinks; // the word list's block shrinks last; the range arrays never shrink
};

constexpr unsigned kTop = 0x7FFFFFFF, kHi = kTop - 9; // the greatest value a long list holds

const ListChange kChanges[] = {
    {"Add (a new single)", {{10, 20}}, 'a', 30, 0, {{10, 20}, {30, 30}}, false},
    {"Add (joining two entries)", {{10, 20}, {22, 22}}, 'a', 21, 0, {{10, 22}}, true},
    {"Add (bridging two runs)", {{1, 2}, {4, 5}}, 'a', 3, 0, {{1, 5}}, true},
    {"Add (bridging two singles)", {{1, 1}, {3, 3}}, 'a', 2, 0, {{1, 3}}, false},
    {"AddRange (a new run)", {{1, 3}, {7, 9}}, 'r', 200, 100, {{1, 3}, {7, 9}, {100, 200}}, false},
    {"AddRange (merging)", {{1, 3}, {5, 5}, {7, 9}, {12, 12}}, 'r', 4, 6, {{1, 9}, {12, 12}}, true},
    {"Remove (a split)", {{1, 9}}, 'd', 5, 0, {{1, 4}, {6, 9}}, false},
    {"Remove (a single)", {{1, 1}, {3, 4}}, 'd', 1, 0, {{3, 4}}, true},
    {"Clear", {{1, 1}, {3, 9}}, 'c', 0, 0, {}, true},
    {"Remove (absent)", {{5, 6}}, 'd', 9, 0, {{5, 6}}, false},
    {"Remove (top)", {{kHi, kHi + 9}}, 'd', kHi + 5, 0, {{kHi, kHi + 4}, {kHi + 6, kTop}}, false},
};

// Change - builds the start, applies the operation: complete with `after`,
// failed with the start unchanged.
template <class T, size_t I> FaultCase::Outcome Change() {
  const ListChange& c = kChanges[I];
  std::unique_ptr<QXList<T>> list(Build<T>(c.start));
  if (!list)
    return FaultCase::kFailed;
  const T x = static_cast<T>(c.x), y = static_cast<T>(c.y);
  const bool ok = c.kind == 'a'   ? list->Add(x)
                  : c.kind == 'r' ? list->AddRange(x, y)
                  : c.kind == 'd' ? list->Remove(x)
                                  : list->Clear();
  if (!ok)
    return Holds(list.get(), c.start) ? FaultCase::kFailed : FaultCase::kWrong;
  return Holds(list.get(), c.after) ? FaultCase::kComplete : FaultCase::kWrong;
}

const Runs kFourFive = {{4, 5}};

// With - `use` on a new companion of the list {4, 5}: Clone, an enumerator
// or the accessor; complete when it answers right.
template <class T, class Companion>
FaultCase::Outcome With(Companion* (QXList<T>::*make)(), bool (*use)(Companion*)) {
  std::unique_ptr<QXList<T>> list(Build<T>(kFourFive));
  std::unique_ptr<Companion> companion(list ? (list.get()->*make)() : nullptr);
  return Outcome(companion != nullptr, companion && use(companion.get()));
}

// What each companion of {4, 5} must answer.
template <class T> bool IsFourFive(QXList<T>* copy) { return Holds(copy, kFourFive); }
template <class T> bool NextIsFour(QXListEnumerator<T>* e) {
  T v = 0;
  return e->Next(v) && v == 4;
}
template <class T> bool NextIsFourFive(QXListRangeEnumerator<T>* e) {
  T a = 0, b = 0;
  return e->Next(a, b) && a == 4 && b == 5;
}
template <class T> bool SecondIsFive(QXListItem<T>* item) {
  T v = 0;
  return item->GetAt(2, v) && v == 5;
}

template <class T, size_t... I> std::vector<FaultCase> ListCases(std::index_sequence<I...>) {
  return {
      {"Create",
       [] {
         std::unique_ptr<QXList<T>> list(QXList<T>::Create());
         return Outcome(list != nullptr, list && list->Count() == 0);
       }},
      {"Clone", [] { return With(&QXList<T>::Clone, &IsFourFive<T>); }},
      {"GetEnumerator", [] { return With(&QXList<T>::GetEnumerator, &NextIsFour<T>); }},
      {"GetRangeEnumerator",
       [] { return With(&QXList<T>::GetRangeEnumerator, &NextIsFourFive<T>); }},
      {"GetItem", [] { return With(&QXList<T>::GetItem, &SecondIsFive<T>); }},
      FaultCase{kChanges[I].name, &Change<T, I>,
                kChanges[I].shrinks && std::is_same_v<T, long> ? FaultCase::kShrinksLast
                                                               : FaultCase::kFails}...,
  };
}

template <class T> std::vector<FaultCase> ListCases() {
  return ListCases<T>(std::make_index_sequence<std::size(kChanges)>());
}

// Walk - walks each case, naming it after `prefix`.
void Walk(const char* prefix, const std::vector<FaultCase>& cases) {
  for (const FaultCase& c : cases) {
    SCOPED_TRACE(std::string(prefix) + c.name);
    const qxtest::FaultWalkCount count = qxtest::WalkFaults(c);
    EXPECT_GT(count.allocations, 0) << prefix << c.name << " allocates nothing";
    std::printf("  %s%-28s %3ld allocations\n", prefix, c.name, count.allocations);
  }
}

TEST(ContainersFaultWalk, IntegerLists) {
  Walk("QXList<long>::", ListCases<long>());
  Walk("QXList<unsigned long>::", ListCases<unsigned long>());
  Walk("QXList<unsigned long long>::", ListCases<unsigned long long>());
}

// PointsAre - the container holds `n` points (k, -k) for k = 1, 2, ...
bool PointsAre(DPNTContainer* c, unsigned n) {
  unsigned count = 0;
  const DPNT* p = c->GetPoints(&count);
  for (unsigned i = 0; i < count && count == n; ++i)
    if (p[i].x != i + 1.0 || p[i].y != -(i + 1.0))
      return false;
  return count == n;
}

const DPNT kPoints[4] = {{1, -1}, {2, -2}, {3, -3}, {4, -4}};

// WithPoint - a container made with `capacity` and `step`, holding the
// first point; null when memory fails.
DPNTContainer* WithPoint(unsigned capacity, unsigned step) {
  std::unique_ptr<DPNTContainer> c(DPNTContainer::Create(capacity, step));
  return c && c->Append(kPoints, 1) ? c.release() : nullptr;
}

// Parsing - a parser with "," and ";" into a new container; either is null
// when memory fails.
struct Parsing {
  Parsing(unsigned capacity, bool addWhitespace)
      : points(DPNTContainer::Create(capacity, 0)),
        parser(points ? PointParserFactory::Create(points.get(), L",", L";", addWhitespace)
                      : nullptr) {}
  std::unique_ptr<DPNTContainer> points;
  std::unique_ptr<PointParserFactory> parser;
};

const FaultCase kPointCases[] = {
    {"DPNTContainer::Create",
     [] {
       std::unique_ptr<DPNTContainer> c(DPNTContainer::Create(10, 5));
       return Outcome(c != nullptr, c && memSize(c->GetPoints(nullptr)) >= 160);
     }},
    {"DPNTContainer::Append",
     [] {
       std::unique_ptr<DPNTContainer> c(WithPoint(1, 0));
       if (!c)
         return FaultCase::kFailed;
       const bool ok = c->Append(kPoints + 1, 3);
       return PointsAre(c.get(), ok ? 4 : 1) ? Outcome(ok, true) : FaultCase::kWrong;
     }},
    {"DPNTContainer::Reserve",
     [] {
       std::unique_ptr<DPNTContainer> c(WithPoint(1, 0));
       if (!c)
         return FaultCase::kFailed;
       const bool ok = c->Reserve(1000);
       return PointsAre(c.get(), 1) ? Outcome(ok, memSize(c->GetPoints(nullptr)) >= 16000)
                                    : FaultCase::kWrong;
     }},
    {"DPNTContainer::Reset",
     [] {
       std::unique_ptr<DPNTContainer> c(WithPoint(1, 0));
       if (!c)
         return FaultCase::kFailed;
       const bool ok = c->Reset(500); // empties the container whatever comes of the room
       return PointsAre(c.get(), 0) ? Outcome(ok, memSize(c->GetPoints(nullptr)) >= 8000)
                                    : FaultCase::kWrong;
     }},
    {"PointParserFactory::Create",
     [] {
       Parsing parsing(4, true); // parsing needs no more room
       return Outcome(parsing.parser != nullptr, parsing.parser &&
                                                     parsing.parser->Parse(L"1,-1", 4, true) &&
                                                     PointsAre(parsing.points.get(), 1));
     }},
    {"PointParserFactory::Parse (growing)",
     [] {
       Parsing parsing(0, false);
       if (!parsing.parser)
         return FaultCase::kFailed;
       const wchar_t text[] = L"1,-1;2,-2;3,-3;4,-4;5,-5;6,-6";
       const bool ok = parsing.parser->Parse(text, sizeof text / sizeof text[0] - 1, true);
       unsigned n = 0;
       parsing.points->GetPoints(&n);
       // A failure keeps the points read before it.
       return PointsAre(parsing.points.get(), n) ? Outcome(ok, n == 6) : FaultCase::kWrong;
     }},
    {"PointParserFactory::Parse (a long number)",
     [] {
       Parsing parsing(4, false);
       if (!parsing.parser)
         return FaultCase::kFailed;
       static const std::wstring text = std::wstring(300, L'0') + L"1,-1"; // made unfaulted
       const bool ok =
           parsing.parser->Parse(text.c_str(), static_cast<unsigned>(text.size()), false);
       return PointsAre(parsing.points.get(), ok ? 1 : 0) ? Outcome(ok, true) : FaultCase::kWrong;
     }},
};

TEST(ContainersFaultWalk, PointsAndParser) {
  Walk("", std::vector<FaultCase>(std::begin(kPointCases), std::end(kPointCases)));
}

const FaultCase kListCases[] = {
    {"DuplicateBlock",
     [] {
       std::unique_ptr<qxtest::KeyedElement> e(new (std::nothrow) qxtest::KeyedElement(5));
       if (!e)
         return FaultCase::kFailed;
       Q_ELEM* copy = DuplicateBlock(e.get());
       const bool right = copy && static_cast<qxtest::KeyedElement*>(copy)->key == 5;
       ffree(&copy);
       return Outcome(right || copy, right);
     }},
    {"LL_InsertFront",
     [] {
       LINKEDLIST list{};
       int value = 3;
       void* data = &value;
       LL_InsertFront(&list, &data);
       const bool inserted = list.head != nullptr;
       const bool right = LL_GetFirst(&list) == &value && LL_RemoveFront(&list) == &value;
       return Outcome(inserted, right); // a failed insertion leaves the list empty
     }},
    {"LLEnum_Get",
     [] {
       LINKEDLIST list{};
       LINKEDLIST_ENUMERATOR* e = LLEnum_Get(&list);
       const bool right = e && e->list == &list && !e->current && !e->previous;
       const bool made = e != nullptr;
       LLEnum_Delete(&e);
       return Outcome(made, right);
     }},
};

TEST(ContainersFaultWalk, QueueAndLinkedList) {
  Walk("", std::vector<FaultCase>(std::begin(kListCases), std::end(kListCases)));
}

} // namespace
