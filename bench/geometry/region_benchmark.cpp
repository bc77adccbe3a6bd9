// rgn_unionrect against the same unions made directly with pixman
// (pixman_region32_union_rect on one region), in one run: 100,000
// rectangles scattered over a 1000 x 1000 area, and 100,000 rectangles side by side
// along a scan line (each overlapping the one before, as text runs do).
#include "qxutil/geometry.h"

#include <benchmark/benchmark.h>
#include <pixman.h>

#include <random>
#include <vector>

namespace {

constexpr int kRects = 100000;

const std::vector<LRECT>& Scattered() {
  static const std::vector<LRECT> rects = [] {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> position(0, 1000), size(1, 24);
    std::vector<LRECT> r(kRects);
    for (LRECT& x : r) {
      int left = position(random), top = position(random);
      x = {left, top, left + size(random), top + size(random)};
    }
    return r;
  }();
  return rects;
}

const std::vector<LRECT>& ScanLine() {
  static const std::vector<LRECT> rects = [] {
    std::vector<LRECT> r(kRects);
    for (int i = 0; i < kRects; ++i)
      r[i] = {i * 8, 100, i * 8 + 10, 116};
    return r;
  }();
  return rects;
}

void Ours(benchmark::State& state, const std::vector<LRECT>& rects) {
  LRECT box{};
  for (auto _ : state) {
    HRGN g = nullptr;
    for (const LRECT& r : rects)
      g = rgn_unionrect(g, &r);
    rgn_bounding_rect(g, &box);
    rgn_destroy(g);
  }
  benchmark::DoNotOptimize(box);
}

void Pixman(benchmark::State& state, const std::vector<LRECT>& rects) {
  int boxes = 0;
  for (auto _ : state) {
    pixman_region32_t region;
    pixman_region32_init(&region);
    for (const LRECT& r : rects)
      pixman_region32_union_rect(&region, &region, r.x1, r.y1, r.x2 - r.x1, r.y2 - r.y1);
    boxes = pixman_region32_n_rects(&region);
    pixman_region32_fini(&region);
  }
  state.counters["boxes"] = boxes;
}

void BM_RgnUnionRect_Scattered(benchmark::State& state) { Ours(state, Scattered()); }
void BM_Pixman_Scattered(benchmark::State& state) { Pixman(state, Scattered()); }
void BM_RgnUnionRect_ScanLine(benchmark::State& state) { Ours(state, ScanLine()); }
void BM_Pixman_ScanLine(benchmark::State& state) { Pixman(state, ScanLine()); }
BENCHMARK(BM_RgnUnionRect_Scattered)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pixman_Scattered)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RgnUnionRect_ScanLine)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Pixman_ScanLine)->Unit(benchmark::kMillisecond);

} // namespace
