// What the clipping and intersection functions must do on any input,
// checked against the exact references (exact_reference.h), for the clip
// fuzzer. Each check returns "" when the call behaves, otherwise what went
// wrong.
#ifndef QXUTIL_FUZZ_MODELS_CLIP_CHECKS_H
#define QXUTIL_FUZZ_MODELS_CLIP_CHECKS_H

#include "exact_reference.h"
#include "geometry/geometry_text.h"
#include "qxutil/geometry.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace qxtest {

inline bool SamePoints(const std::vector<LPNT>& a, const std::vector<LPNT>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const LPNT& p, const LPNT& q) { return p.x == q.x && p.y == q.y; });
}

/// Grown - r moved outwards by d on each side (inwards for d < 0), kept
/// within 32 bits.
inline LRECT Grown(const LRECT& r, int d) {
  auto fit = [](int64_t v) {
    return static_cast<int32_t>(v < INT32_MIN ? INT32_MIN : v > INT32_MAX ? INT32_MAX : v);
  };
  return {fit(int64_t{r.x1} - d), fit(int64_t{r.y1} - d), fit(int64_t{r.x2} + d),
          fit(int64_t{r.y2} + d)};
}

inline bool Inside(const LPNT& p, const LRECT& r) {
  return r.x1 <= p.x && p.x <= r.x2 && r.y1 <= p.y && p.y <= r.y2;
}

/// CheckClipLine - ClipLine gives the exact Cohen-Sutherland answer (where
/// the doubles cannot round a half the other way), and stays within two
/// units of the true geometry: a visible answer for a segment that meets r
/// grown by 2, a hidden one for a segment that misses r shrunk by 2.
inline std::string CheckClipLine(const LPNT& p0, const LPNT& p1, const LRECT& r) {
  LPNT q0 = p0, q1 = p1;
  const bool visible = ClipLine(&q0, &q1, &r);
  auto what = [&] { return Describe({p0, p1}) + " in " + Describe(r) + ": "; };
  LPNT spare = p0;
  if (ClipLine(nullptr, &spare, &r) || ClipLine(&spare, nullptr, &r) ||
      ClipLine(&spare, &spare, nullptr))
    return what() + "a null argument accepted";
  const LineClip want = ReferenceClipLine(p0, p1, r);
  if (want.verdict != Clip::kAmbiguous) {
    if (visible != (want.verdict == Clip::kVisible))
      return what() + (visible ? "visible" : "hidden");
    if (visible && !SamePoints({q0, q1}, {want.p0, want.p1}))
      return what() + Describe({q0, q1}) + " instead of " + Describe({want.p0, want.p1});
  }
  if (visible && !(Inside(q0, r) && Inside(q1, r)))
    return what() + "clipped outside the rectangle: " + Describe({q0, q1});
  if (visible && !ExactlyMeets(p0, p1, Grown(r, 2)))
    return what() + "visible, but misses the rectangle by more than 2";
  if (!visible && ExactlyMeets(p0, p1, Grown(r, -2)))
    return what() + "hidden, but crosses the rectangle";
  return "";
}

/// CheckClipPoly - ClipPoly gives the reference's points, writes no more
/// than 3n - 2 of them, all inside r and none twice in a row, and is visible exactly when a point
/// of the line lies in r.
inline std::string CheckClipPoly(const std::vector<LPNT>& in, const LRECT& r) {
  const int n = static_cast<int>(in.size());
  const size_t room = n > 0 ? 3 * n - 2 : 0;
  std::vector<LPNT> input = in, out(room + 8, LPNT{-77, -77});
  int count = -1;
  const bool visible = ClipPoly(input.data(), out.data(), &r, &count, n);
  auto what = [&] { return Describe(in) + " in " + Describe(r) + ": "; };
  int nullCount = -1;
  if (ClipPoly(nullptr, out.data(), &r, &nullCount, n) || nullCount != 0 ||
      ClipPoly(input.data(), nullptr, &r, &nullCount, n) ||
      ClipPoly(input.data(), out.data(), nullptr, &nullCount, n))
    return what() + "a null argument accepted";
  if (n <= 2) { // no count wanted: the same answer
    std::vector<LPNT> spare(room + 1);
    if (ClipPoly(input.data(), spare.data(), &r, nullptr, n) != visible)
      return what() + "another answer without a count";
  }
  for (size_t i = room; i < out.size(); ++i)
    if (out[i].x != -77 || out[i].y != -77)
      return what() + "written beyond 3n - 2 points";
  if (count < 0 || static_cast<size_t>(count) > room || (!visible && count != 0))
    return what() + "count " + std::to_string(count);
  out.resize(count);
  for (size_t i = 0; i < out.size(); ++i) {
    if (!Inside(out[i], r))
      return what() + "a point outside the rectangle: " + Describe(out);
    if (i > 0 && out[i].x == out[i - 1].x && out[i].y == out[i - 1].y)
      return what() + "a repeated point: " + Describe(out);
  }
  bool meets = n == 1 && ExactlyMeets(in[0], in[0], r);
  for (int i = 1; i < n && !meets; ++i)
    meets = ExactlyMeets(in[i - 1], in[i], r);
  if (visible != meets)
    return what() + (visible ? "visible" : "hidden");
  const PolyClip want = ReferenceClipPoly(in, r);
  if (want.visible != visible || !SamePoints(want.points, out))
    return what() + Describe(out) + " instead of " + Describe(want.points);
  return "";
}

/// CheckIntersection - LineIntersection gives the exact answer, and so
/// does CrossDLines on the same points where its doubles are exact
/// (coordinates below 2^24), within its parallel tolerance.
inline std::string CheckIntersection(const LPNT& a, const LPNT& b, const LPNT& c, const LPNT& d) {
  auto what = [&] { return Describe({a, b}) + " x " + Describe({c, d}) + ": "; };
  LPNT x{-7, -7};
  const bool meet = LineIntersection(a, b, c, d, x);
  const Meeting want = ReferenceIntersection(a, b, c, d);
  if (meet != want.meet || (meet && (x.x != want.x.x || x.y != want.x.y)))
    return what() + (meet ? Describe({x}) : "none") + " instead of " +
           (want.meet ? Describe({want.x}) : "none");
  for (const LPNT* p : {&a, &b, &c, &d})
    if (std::abs(int64_t{p->x}) >= (1 << 24) || std::abs(int64_t{p->y}) >= (1 << 24))
      return "";
  const DPNT da{1.0 * a.x, 1.0 * a.y}, db{1.0 * b.x, 1.0 * b.y}, dc{1.0 * c.x, 1.0 * c.y},
      dd{1.0 * d.x, 1.0 * d.y};
  const double ux = db.x - da.x, uy = db.y - da.y, scale = std::fabs(ux) + std::fabs(uy);
  const int128 den = int128{int64_t{b.x} - a.x} * (int64_t{d.y} - c.y) -
                     int128{int64_t{b.y} - a.y} * (int64_t{d.x} - c.x);
  const bool parallel = std::fabs(static_cast<double>(den)) <= scale * scale * 1e-10;
  DPNT dx{-7, -7};
  const bool dmeet = CrossDLines(da, db, dc, dd, dx);
  if (dmeet != (want.meet && !parallel))
    return what() + "CrossDLines " + (dmeet ? "meets" : "misses");
  if (dmeet) {
    // The exact crossing, unrounded: a + t (b - a).
    const Ratio t(int128{int64_t{c.x} - a.x} * (int64_t{d.y} - c.y) -
                      int128{int64_t{c.y} - a.y} * (int64_t{d.x} - c.x),
                  den);
    const double tx = a.x + static_cast<double>(t.n) / static_cast<double>(t.d) * ux;
    const double ty = a.y + static_cast<double>(t.n) / static_cast<double>(t.d) * uy;
    if (std::fabs(dx.x - tx) > 1e-6 || std::fabs(dx.y - ty) > 1e-6)
      return what() + "CrossDLines point " + Describe(dx);
  }
  return "";
}

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_CLIP_CHECKS_H
