// EnqueueSorted in ascending order from 1,000 to 1,000,000 elements: the
// time per element stays flat, because a new greatest element is compared
// with the head and the tail only ("comparisons" per element is reported).
// std::multiset's insertion at the end is measured in the same run.
#include "qxutil/containers.h"

#include <benchmark/benchmark.h>

#include <set>
#include <vector>

namespace {

struct Keyed : Q_ELEM {
  long key = 0;
};

long gComparisons = 0;

int CompareKeys(Q_ELEM* a, Q_ELEM* b) {
  ++gComparisons;
  const long ka = static_cast<Keyed*>(a)->key, kb = static_cast<Keyed*>(b)->key;
  return ka < kb ? -1 : ka > kb;
}

void BM_EnqueueSortedAscending(benchmark::State& state) {
  std::vector<Keyed> elements(static_cast<size_t>(state.range(0)));
  for (size_t i = 0; i < elements.size(); ++i)
    elements[i].key = static_cast<long>(i);
  gComparisons = 0;
  for (auto _ : state) {
    QUEUE q;
    InitQueue(&q);
    for (Keyed& e : elements)
      EnqueueSorted(&q, &e, CompareKeys);
    benchmark::DoNotOptimize(q.tail);
  }
  const double inserted = static_cast<double>(state.iterations()) * elements.size();
  state.SetItemsProcessed(static_cast<int64_t>(inserted));
  state.counters["comparisons"] = static_cast<double>(gComparisons) / inserted;
}
BENCHMARK(BM_EnqueueSortedAscending)->RangeMultiplier(10)->Range(1000, 1000000);

void BM_MultisetInsertAscending(benchmark::State& state) {
  for (auto _ : state) {
    std::multiset<long> s;
    for (long i = 0; i < state.range(0); ++i)
      s.insert(s.end(), i);
    benchmark::DoNotOptimize(s.size());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_MultisetInsertAscending)->RangeMultiplier(10)->Range(1000, 1000000);

} // namespace
