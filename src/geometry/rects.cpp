//===- geometry/rects.cpp - Building, merging and testing rectangles ------===//
//
// The integer and double forms share one template each: the two differ only
// in their coordinate type.
//
//===----------------------------------------------------------------------===//
#include "geometry/coords.h"
#include "qxutil/geometry.h"

#include <cfloat>
#include <utility>

using qx::geometry::Low32;

namespace {

template <class Rect> void Sort(Rect& r) {
  if (r.x1 > r.x2)
    std::swap(r.x1, r.x2);
  if (r.y1 > r.y2)
    std::swap(r.y1, r.y2);
}

template <class Rect, class Point> void SortWithPoints(Rect& r, const Point& a, const Point& b) {
  r = {a.x, a.y, b.x, b.y};
  Sort(r);
}

// Lower, Raise - the comparisons MergeRects and IntersectRects are made of;
// a NaN on the right changes nothing.
template <class T> void Lower(T& v, T w) {
  if (w < v)
    v = w;
}
template <class T> void Raise(T& v, T w) {
  if (w > v)
    v = w;
}

template <class Rect> void Merge(Rect& r, const Rect& s) {
  Lower(r.x1, s.x1);
  Lower(r.y1, s.y1);
  Raise(r.x2, s.x2);
  Raise(r.y2, s.y2);
}

template <class Rect, class Point> void MergePoint(Rect& r, const Point& p) {
  Lower(r.x1, p.x);
  Lower(r.y1, p.y);
  Raise(r.x2, p.x);
  Raise(r.y2, p.y);
}

template <class Rect> void Intersect(Rect& r, const Rect& s) {
  Raise(r.x1, s.x1);
  Raise(r.y1, s.y1);
  Lower(r.x2, s.x2);
  Lower(r.y2, s.y2);
}

template <class Rect> bool IsEmpty(const Rect& r) { return r.x1 >= r.x2 || r.y1 >= r.y2; }

template <class Rect> bool IsZero(const Rect& r) {
  return r.x1 == 0 && r.y1 == 0 && r.x2 == 0 && r.y2 == 0;
}

template <class Rect> bool Overlap(const Rect& a, const Rect& b) {
  return !(a.x1 > b.x2 || a.x2 < b.x1 || a.y1 > b.y2 || a.y2 < b.y1);
}

template <class Rect> bool Inside(const Rect& a, const Rect& b) {
  return a.x1 >= b.x1 && a.x2 <= b.x2 && a.y1 >= b.y1 && a.y2 <= b.y2;
}

template <class Point, class Rect> bool PointInside(const Point& p, const Rect& r) {
  return r.x1 <= p.x && p.x <= r.x2 && r.y1 <= p.y && p.y <= r.y2;
}

template <class T> T ClampTo(T v, T lo, T hi) {
  if (v < lo)
    return lo;
  if (v > hi)
    return hi;
  return v;
}

template <class Point, class Rect> void ClipPoint(Point& p, const Rect& r) {
  p.x = ClampTo(p.x, r.x1, r.x2);
  p.y = ClampTo(p.y, r.y1, r.y2);
}

template <class Rect, class Point> void Corners(const Rect& r, Point* pts) {
  if (!pts)
    return;
  pts[0] = {r.x1, r.y1};
  pts[1] = {r.x1, r.y2};
  pts[2] = {r.x2, r.y2};
  pts[3] = {r.x2, r.y1};
}

} // namespace

void SetRect(LRECT& r, long x1, long y1, long x2, long y2) {
  r = {Low32(x1), Low32(y1), Low32(x2), Low32(y2)};
}
void SetRect(DRECT& r, double x1, double y1, double x2, double y2) { r = {x1, y1, x2, y2}; }

void SortRect(LRECT& r) { Sort(r); }
void SortRect(DRECT& r) { Sort(r); }

void SortRectWithPoints(LRECT& r, const LPNT& a, const LPNT& b) { SortWithPoints(r, a, b); }
void SortRectWithPoints(DRECT& r, const DPNT& a, const DPNT& b) { SortWithPoints(r, a, b); }

void InitRectForMerging(LRECT& r) { r = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN}; }
void InitRectForMerging(DRECT& r) { r = {DBL_MAX, DBL_MAX, -DBL_MAX, -DBL_MAX}; }

void MergeRects(LRECT& r, const LRECT& s) { Merge(r, s); }
void MergeRects(DRECT& r, const DRECT& s) { Merge(r, s); }

void MergeRectWithPoint(LRECT& r, const LPNT& p) { MergePoint(r, p); }
void MergeRectWithPoint(DRECT& r, const DPNT& p) { MergePoint(r, p); }

void GetRectFromPoints(LRECT& r, const LPNT* p, int n) {
  InitRectForMerging(r);
  for (int i = 0; p && i < n; ++i)
    MergePoint(r, p[i]);
}

void IntersectRects(LRECT& r, const LRECT& s) { Intersect(r, s); }
void IntersectRects(DRECT& r, const DRECT& s) { Intersect(r, s); }

bool RectIsEmpty(const LRECT& r) { return IsEmpty(r); }
bool RectIsEmpty(const DRECT& r) { return IsEmpty(r); }

bool RectIsZero(const LRECT& r) { return IsZero(r); }
bool RectIsZero(const DRECT& r) { return IsZero(r); }

bool RectsOverlap(const LRECT& a, const LRECT& b) { return Overlap(a, b); }
bool RectsOverlap(const DRECT& a, const DRECT& b) { return Overlap(a, b); }

bool RectInRect(const LRECT& a, const LRECT& b) { return Inside(a, b); }
bool RectInRect(const DRECT& a, const DRECT& b) { return Inside(a, b); }

bool PointInRect(const LPNT& p, const LRECT& r) { return PointInside(p, r); }
bool PointInRect(const DPNT& p, const DRECT& r) { return PointInside(p, r); }

void ClipPointToRect(LPNT& p, const LRECT& r) { ClipPoint(p, r); }
void ClipPointToRect(DPNT& p, const DRECT& r) { ClipPoint(p, r); }

void GetCornersOfRect(const LRECT& r, LPNT* pts) { Corners(r, pts); }
void GetCornersOfRect(const DRECT& r, DPNT* pts) { Corners(r, pts); }
