// The QXList members against std::set<long> and, when the machine has it,
// CRoaring, in the same run: Add in ascending and in random order, Contains,
// Count and enumeration, on a dense set (100,000 values in 100 runs) and a
// sparse one (100,000 random values below 2^31). The Add benchmarks also
// report the bytes each structure holds ("bytes": the blocks' usable sizes
// for the lists, the nodes for std::set, the serialized size after run
// compression for CRoaring).
#include "containers/range_list.h"
#include "containers/word_list.h"
#include "qxutil/containers.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <type_traits>
#include <vector>

#if QXUTIL_BENCH_ROARING
#include <roaring/roaring.h>
#endif

namespace {

enum Shape { kDense = 0, kSparse = 1 };
constexpr size_t kValues = 100000;

struct Data {
  std::vector<long> ascending, shuffled;
  std::vector<long> probes; // in random order, half present, half absent
};

Data MakeData(Shape shape) {
  Data d;
  std::mt19937_64 random(7 + shape);
  if (shape == kDense) {
    for (long run = 0; run < 100; ++run) // 100 runs of 1000 values, 9000 apart
      for (long v = 0; v < 1000; ++v)
        d.ascending.push_back(run * 10000 + v);
  } else {
    std::set<long> values;
    while (values.size() < kValues)
      values.insert(static_cast<long>(random() % 0x80000000u));
    d.ascending.assign(values.begin(), values.end());
  }
  const std::set<long> present(d.ascending.begin(), d.ascending.end());
  d.shuffled = d.ascending;
  std::shuffle(d.shuffled.begin(), d.shuffled.end(), random);
  for (size_t i = 0; i < kValues; ++i) {
    long v = d.shuffled[i];
    if (i % 2) // an absent value near a present one
      for (v += 1 + static_cast<long>(random() % 5000); present.count(v); ++v) {
      }
    d.probes.push_back(v);
  }
  return d;
}

const Data& DataFor(Shape shape) {
  static const Data data[2] = {MakeData(kDense), MakeData(kSparse)};
  return data[shape];
}

// ---- The structures, behind one face ---------------------------------------

template <class T> class QX {
public:
  QX() : list_(QXList<T>::Create()) {}
  ~QX() { delete list_; }
  void Add(long v) { list_->Add(static_cast<T>(v)); }
  bool Contains(long v) { return list_->Contains(static_cast<T>(v)); }
  size_t Count() { return list_->Count(); }
  long Sum() {
    std::unique_ptr<QXListEnumerator<T>> e(list_->GetEnumerator());
    long sum = 0;
    for (T v; e->Next(v);)
      sum += static_cast<long>(v);
    return sum;
  }
  size_t Bytes() {
    size_t bytes = memSize(list_);
    if (auto* words = dynamic_cast<qx::containers::QXListImpl*>(list_))
      bytes += memSize(words->Words());
    if (auto* ranges = dynamic_cast<qx::containers::UtilULongListImpl*>(list_))
      bytes += memSize(ranges->Ranges());
    if (auto* ranges = dynamic_cast<qx::containers::UtilULongLongListImpl*>(list_))
      bytes += memSize(ranges->Ranges());
    return bytes;
  }
  // The word list walks its entries: a few probes show the cost per probe.
  static size_t ProbesFor(Shape shape) {
    return std::is_same_v<T, long> && shape == kSparse ? 2000 : kValues;
  }

private:
  QXList<T>* list_;
};

// Counting - std::allocator that adds up what the set's nodes take (in one
// counter whatever type it is rebound to).
inline size_t gSetBytes = 0;
template <class U> struct Counting : std::allocator<U> {
  template <class V> struct rebind { using other = Counting<V>; };
  Counting() = default;
  template <class V> Counting(const Counting<V>&) {}
  U* allocate(size_t n) {
    gSetBytes += n * sizeof(U);
    return std::allocator<U>::allocate(n);
  }
  void deallocate(U* p, size_t n) {
    gSetBytes -= n * sizeof(U);
    std::allocator<U>::deallocate(p, n);
  }
};

class StdSet {
public:
  void Add(long v) { set_.insert(v); }
  bool Contains(long v) { return set_.count(v) != 0; }
  size_t Count() { return set_.size(); }
  long Sum() {
    long sum = 0;
    for (long v : set_)
      sum += v;
    return sum;
  }
  size_t Bytes() { return gSetBytes; }
  static size_t ProbesFor(Shape) { return kValues; }

private:
  std::set<long, std::less<long>, Counting<long>> set_;
};

#if QXUTIL_BENCH_ROARING
class Roaring {
public:
  Roaring() : r_(roaring_bitmap_create()) {}
  ~Roaring() { roaring_bitmap_free(r_); }
  void Add(long v) { roaring_bitmap_add(r_, static_cast<uint32_t>(v)); }
  bool Contains(long v) { return roaring_bitmap_contains(r_, static_cast<uint32_t>(v)); }
  size_t Count() { return roaring_bitmap_get_cardinality(r_); }
  long Sum() {
    roaring_uint32_iterator_t i;
    roaring_init_iterator(r_, &i);
    long sum = 0;
    for (; i.has_value; roaring_advance_uint32_iterator(&i))
      sum += i.current_value;
    return sum;
  }
  size_t Bytes() {
    roaring_bitmap_run_optimize(r_);
    return roaring_bitmap_size_in_bytes(r_);
  }
  static size_t ProbesFor(Shape) { return kValues; }

private:
  roaring_bitmap_t* r_;
};
#endif

// ---- The benchmarks ----------------------------------------------------------

template <class S> void Fill(S& s, const std::vector<long>& values) {
  for (long v : values)
    s.Add(v);
}

template <class S> void BM_AddAscending(benchmark::State& state) {
  const Data& d = DataFor(static_cast<Shape>(state.range(0)));
  size_t bytes = 0;
  for (auto _ : state) {
    S s;
    Fill(s, d.ascending);
    bytes = s.Bytes();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kValues));
  state.counters["bytes"] = static_cast<double>(bytes);
}

template <class S> void BM_AddRandom(benchmark::State& state) {
  const Data& d = DataFor(static_cast<Shape>(state.range(0)));
  for (auto _ : state) {
    S s;
    Fill(s, d.shuffled);
    benchmark::DoNotOptimize(s.Count());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kValues));
}

template <class S> void BM_Contains(benchmark::State& state) {
  const Shape shape = static_cast<Shape>(state.range(0));
  const Data& d = DataFor(shape);
  S s;
  Fill(s, d.ascending);
  const size_t probes = S::ProbesFor(shape);
  for (auto _ : state) {
    size_t found = 0;
    for (size_t i = 0; i < probes; ++i)
      found += s.Contains(d.probes[i]);
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(probes));
}

template <class S> void BM_Count(benchmark::State& state) {
  S s;
  Fill(s, DataFor(static_cast<Shape>(state.range(0))).ascending);
  for (auto _ : state)
    benchmark::DoNotOptimize(s.Count());
}

template <class S> void BM_Enumerate(benchmark::State& state) {
  S s;
  Fill(s, DataFor(static_cast<Shape>(state.range(0))).ascending);
  for (auto _ : state)
    benchmark::DoNotOptimize(s.Sum());
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kValues));
}

using WordList = QX<long>;
using ULongRanges = QX<unsigned long>;
using ULongLongRanges = QX<unsigned long long>;

#define QX_SET_BENCHMARKS(S)                                                                       \
  BENCHMARK_TEMPLATE(BM_AddAscending, S)                                                           \
      ->ArgName("sparse")                                                                          \
      ->Arg(kDense)                                                                                \
      ->Arg(kSparse)                                                                               \
      ->Unit(benchmark::kMillisecond);                                                             \
  BENCHMARK_TEMPLATE(BM_AddRandom, S)                                                              \
      ->ArgName("sparse")                                                                          \
      ->Arg(kDense)                                                                                \
      ->Arg(kSparse)                                                                               \
      ->Unit(benchmark::kMillisecond);                                                             \
  BENCHMARK_TEMPLATE(BM_Contains, S)                                                               \
      ->ArgName("sparse")                                                                          \
      ->Arg(kDense)                                                                                \
      ->Arg(kSparse)                                                                               \
      ->Unit(benchmark::kMicrosecond);                                                             \
  BENCHMARK_TEMPLATE(BM_Count, S)->ArgName("sparse")->Arg(kDense)->Arg(kSparse);                   \
  BENCHMARK_TEMPLATE(BM_Enumerate, S)                                                              \
      ->ArgName("sparse")                                                                          \
      ->Arg(kDense)                                                                                \
      ->Arg(kSparse)                                                                               \
      ->Unit(benchmark::kMicrosecond)

QX_SET_BENCHMARKS(WordList);
QX_SET_BENCHMARKS(ULongRanges);
QX_SET_BENCHMARKS(ULongLongRanges);
QX_SET_BENCHMARKS(StdSet);
#if QXUTIL_BENCH_ROARING
QX_SET_BENCHMARKS(Roaring);
#endif

} // namespace
