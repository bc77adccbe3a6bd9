// Clipping, in one run against two peers:
//
//  * ClipPoly of a 1,000,000-point random-walk polyline against a viewport,
//    against GEOS's GEOSClipByRect of the same line by the same rectangle
//    (when GEOS was found at configure time). Both get their input ready
//    made: our points in an array, GEOS's line as a geometry built once.
//  * ClipLine per segment, against a straightforward Liang-Barsky clipper
//    written here (parametric, in doubles, rounding the clipped ends), on
//    the same 1,000,000 segments; the "per_segment" counter is the time one
//    segment takes.
#include "qxutil/geometry.h"

#include <benchmark/benchmark.h>
#ifdef QXBENCH_HAVE_GEOS
#include <geos_c.h>
#endif

#include <cmath>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr int kPoints = 1000000;
const LRECT kViewport{-1000, -1000, 1000, 1000};

// RandomWalk - steps of up to 40 units in each axis, reflected at +-2500,
// so the line leaves and re-enters the viewport again and again.
const std::vector<LPNT>& RandomWalk() {
  static const std::vector<LPNT> walk = [] {
    std::mt19937 random(2024);
    std::uniform_int_distribution<int> step(-40, 40);
    std::vector<LPNT> pts(kPoints);
    int x = 0, y = 0;
    for (LPNT& p : pts) {
      x += step(random);
      y += step(random);
      x = x > 2500 ? 5000 - x : x < -2500 ? -5000 - x : x;
      y = y > 2500 ? 5000 - y : y < -2500 ? -5000 - y : y;
      p = {x, y};
    }
    return pts;
  }();
  return walk;
}

void BM_ClipPoly_RandomWalk(benchmark::State& state) {
  std::vector<LPNT> in = RandomWalk(), out(3 * in.size());
  int count = 0;
  for (auto _ : state) {
    ClipPoly(in.data(), out.data(), &kViewport, &count, static_cast<int>(in.size()));
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["points_out"] = count;
}
BENCHMARK(BM_ClipPoly_RandomWalk)->Unit(benchmark::kMillisecond);

#ifdef QXBENCH_HAVE_GEOS
void BM_GEOSClipByRect_RandomWalk(benchmark::State& state) {
  GEOSContextHandle_t geos = GEOS_init_r();
  const std::vector<LPNT>& walk = RandomWalk();
  std::vector<double> xy;
  xy.reserve(2 * walk.size());
  for (const LPNT& p : walk) {
    xy.push_back(p.x);
    xy.push_back(p.y);
  }
  GEOSCoordSequence* seq = GEOSCoordSeq_copyFromBuffer_r(
      geos, xy.data(), static_cast<unsigned>(walk.size()), false, false);
  GEOSGeometry* line = GEOSGeom_createLineString_r(geos, seq);
  int pieces = 0;
  for (auto _ : state) {
    GEOSGeometry* clipped =
        GEOSClipByRect_r(geos, line, kViewport.x1, kViewport.y1, kViewport.x2, kViewport.y2);
    pieces = GEOSGetNumGeometries_r(geos, clipped);
    GEOSGeom_destroy_r(geos, clipped);
  }
  state.counters["pieces"] = pieces;
  GEOSGeom_destroy_r(geos, line);
  GEOS_finish_r(geos);
}
BENCHMARK(BM_GEOSClipByRect_RandomWalk)->Unit(benchmark::kMillisecond);
#endif

// Segments - the random walk's points in pairs, a mixture of segments
// inside, outside and across the viewport.
const std::vector<std::pair<LPNT, LPNT>>& Segments() {
  static const std::vector<std::pair<LPNT, LPNT>> segments = [] {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> coordinate(-3000, 3000);
    std::vector<std::pair<LPNT, LPNT>> s(kPoints);
    for (auto& [a, b] : s) {
      a = {coordinate(random), coordinate(random)};
      b = {coordinate(random), coordinate(random)};
    }
    return s;
  }();
  return segments;
}

// LiangBarsky - the textbook parametric clipper: entering and leaving
// parameters from the four edges, the ends rounded to the nearest integer.
bool LiangBarsky(LPNT& a, LPNT& b, const LRECT& r) {
  const double dx = b.x - a.x, dy = b.y - a.y;
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {1.0 * a.x - r.x1, 1.0 * r.x2 - a.x, 1.0 * a.y - r.y1, 1.0 * r.y2 - a.y};
  double t0 = 0, t1 = 1;
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0) {
      if (q[i] < 0)
        return false;
      continue;
    }
    const double t = q[i] / p[i];
    if (p[i] < 0) {
      if (t > t1)
        return false;
      if (t > t0)
        t0 = t;
    } else {
      if (t < t0)
        return false;
      if (t < t1)
        t1 = t;
    }
  }
  const LPNT start = a;
  if (t1 < 1)
    b = {static_cast<int32_t>(std::lround(start.x + t1 * dx)),
         static_cast<int32_t>(std::lround(start.y + t1 * dy))};
  if (t0 > 0)
    a = {static_cast<int32_t>(std::lround(start.x + t0 * dx)),
         static_cast<int32_t>(std::lround(start.y + t0 * dy))};
  return true;
}

template <bool (*Clip)(LPNT&, LPNT&, const LRECT&)> void ClipSegments(benchmark::State& state) {
  const auto& segments = Segments();
  int visible = 0;
  for (auto _ : state) {
    visible = 0;
    for (const auto& [a, b] : segments) {
      LPNT p0 = a, p1 = b;
      visible += Clip(p0, p1, kViewport);
      benchmark::DoNotOptimize(p0);
      benchmark::DoNotOptimize(p1);
    }
  }
  state.counters["visible"] = visible;
  state.counters["per_segment"] = benchmark::Counter(static_cast<double>(segments.size()),
                                                     benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

bool OurClipLine(LPNT& a, LPNT& b, const LRECT& r) { return ClipLine(&a, &b, &r); }

void BM_ClipLine_PerSegment(benchmark::State& state) { ClipSegments<OurClipLine>(state); }
BENCHMARK(BM_ClipLine_PerSegment)->Unit(benchmark::kMillisecond);

void BM_LiangBarsky_PerSegment(benchmark::State& state) { ClipSegments<LiangBarsky>(state); }
BENCHMARK(BM_LiangBarsky_PerSegment)->Unit(benchmark::kMillisecond);

} // namespace
