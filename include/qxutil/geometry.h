//===- qxutil/geometry.h - Plane geometry -----------------------*- C++ -*-===//
//
// Plane geometry for map drawing, on points and rectangles in two forms:
// 32-bit integers (device or map units) and doubles.
//
//  * rectangles and points: construction, normalisation, merging and
//    intersection, containment, offsets and expansions with clamping,
//    centres and corners, conversion between the two forms, small vector
//    operations and orientation;
//  * lines and arcs: segment clipping (ClipLine, ClipPoly), intersections,
//    the angles and points of arcs of the ellipse inscribed in a rectangle;
//  * regions: sets of pixels kept as platform region handles (HRGN) that
//    accumulate rectangles.
//
// Integer arithmetic is exact and saturates at the 32-bit limits, as
// LongAddCoords does; conversions from double round halves away from zero,
// as DoubleToLong does. A `long` argument counts by its low 32 bits, as it
// would on Windows. Angles are signed 16-bit tenths of a degree: 3600 is a
// full turn, 0 points along +x and angles grow towards +y.
//
// Failure rule: nothing here records errors or throws. Functions answer
// every input; a null pointer argument makes a function do nothing (or
// return false). Only the region functions allocate: they return null when
// a region cannot be made, and a union that cannot be made degrades to a
// coarser region (see rgn_unionrect).
//
// The records are plain values, passed by reference or as arrays with an
// explicit count.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_GEOMETRY_H
#define QXUTIL_GEOMETRY_H

#include "qxutil/wintypes.h"

#include <cstdint>

// ---- Records ---------------------------------------------------------------

/// LPNT - a point with 32-bit integer coordinates.
struct LPNT {
  int32_t x;
  int32_t y;
};

/// DPNT - a point with double coordinates.
struct DPNT {
  double x;
  double y;
};

/// LRECT - a rectangle with 32-bit integer corners, in this order. A
/// normalised rectangle has x1 <= x2 and y1 <= y2; nothing assumes which way
/// the y axis points. Prepared for merging it holds x1 = y1 = 2147483647
/// and x2 = y2 = -2147483648.
struct LRECT {
  int32_t x1;
  int32_t y1;
  int32_t x2;
  int32_t y2;
};

/// DRECT - LRECT with double corners; prepared for merging it holds
/// x1 = y1 = DBL_MAX and x2 = y2 = -DBL_MAX.
struct DRECT {
  double x1;
  double y1;
  double x2;
  double y2;
};

// ---- Building and normalising rectangles -----------------------------------

/// SetRect - stores the four values as given, without sorting.
QXUTIL_API void SetRect(LRECT& r, long x1, long y1, long x2, long y2);
QXUTIL_API void SetRect(DRECT& r, double x1, double y1, double x2, double y2);

/// SortRect - exchanges x1 and x2 when x1 > x2, and y1 and y2 when y1 > y2.
QXUTIL_API void SortRect(LRECT& r);
QXUTIL_API void SortRect(DRECT& r);

/// SortRectWithPoints - r = (a.x, a.y, b.x, b.y), sorted.
QXUTIL_API void SortRectWithPoints(LRECT& r, const LPNT& a, const LPNT& b);
QXUTIL_API void SortRectWithPoints(DRECT& r, const DPNT& a, const DPNT& b);

/// InitRectForMerging - stores the merging sentinels (see LRECT, DRECT), so
/// that the first MergeRects or MergeRectWithPoint gives its argument.
QXUTIL_API void InitRectForMerging(LRECT& r);
QXUTIL_API void InitRectForMerging(DRECT& r);

/// MergeRects - r grows to cover s: the smaller x1 and y1, the larger x2
/// and y2. Neither rectangle is tested for emptiness.
QXUTIL_API void MergeRects(LRECT& r, const LRECT& s);
QXUTIL_API void MergeRects(DRECT& r, const DRECT& s);

/// MergeRectWithPoint - r grows to cover p (a NaN coordinate changes
/// nothing). After InitRectForMerging, merging (5, 7) gives (5, 7, 5, 7).
QXUTIL_API void MergeRectWithPoint(LRECT& r, const LPNT& p);
QXUTIL_API void MergeRectWithPoint(DRECT& r, const DPNT& p);

/// GetRectFromPoints - the sentinels, then each of the n points merged; n
/// below 1 (or a null p) leaves the sentinels.
QXUTIL_API void GetRectFromPoints(LRECT& r, const LPNT* p, int n);

/// IntersectRects - r shrinks to its common part with s: the larger x1 and
/// y1, the smaller x2 and y2. A disjoint pair leaves r inverted, not zeroed:
/// (0, 0, 10, 10) with (20, 20, 30, 30) gives (20, 20, 10, 10).
QXUTIL_API void IntersectRects(LRECT& r, const LRECT& s);
QXUTIL_API void IntersectRects(DRECT& r, const DRECT& s);

// ---- Tests on rectangles and points ----------------------------------------

/// RectIsEmpty - x1 >= x2 or y1 >= y2: a rectangle of zero width is empty.
QXUTIL_API bool RectIsEmpty(const LRECT& r);
QXUTIL_API bool RectIsEmpty(const DRECT& r);

/// RectIsZero - all four values are 0.
QXUTIL_API bool RectIsZero(const LRECT& r);
QXUTIL_API bool RectIsZero(const DRECT& r);

/// RectsOverlap - a and b share a point, edges included: (0, 0, 10, 10)
/// and (10, 10, 20, 20) overlap.
QXUTIL_API bool RectsOverlap(const LRECT& a, const LRECT& b);
QXUTIL_API bool RectsOverlap(const DRECT& a, const DRECT& b);

/// RectInRect - a lies inside b, edges included.
QXUTIL_API bool RectInRect(const LRECT& a, const LRECT& b);
QXUTIL_API bool RectInRect(const DRECT& a, const DRECT& b);

/// PointInRect - r.x1 <= p.x <= r.x2 and r.y1 <= p.y <= r.y2.
QXUTIL_API bool PointInRect(const LPNT& p, const LRECT& r);
QXUTIL_API bool PointInRect(const DPNT& p, const DRECT& r);

/// ClipPointToRect - p.x clamped into [r.x1, r.x2] and p.y into
/// [r.y1, r.y2]; the lower limit is tested first.
QXUTIL_API void ClipPointToRect(LPNT& p, const LRECT& r);
QXUTIL_API void ClipPointToRect(DPNT& p, const DRECT& r);

// ---- Measures, centres and corners -----------------------------------------

/// GetWidthHeightOfRect - w = x2 - x1 and h = y2 - y1. The integer form
/// subtracts in plain 32-bit arithmetic, which wraps: the width of
/// (-2147483648, 0, 2147483647, 0) is -1.
QXUTIL_API void GetWidthHeightOfRect(const LRECT& r, long& w, long& h);
QXUTIL_API void GetWidthHeightOfRect(const DRECT& r, double& w, double& h);

/// GetCenterOfPoints - the midpoint of a and b. Double: ((a.x + b.x) * 0.5,
/// (a.y + b.y) * 0.5). Integer, per axis: s = LongAdd(a, b); unless s is
/// one of the 32-bit limits the centre is s / 2 truncated toward zero (3
/// and 4 give 3, -3 and -4 give -3), otherwise a + (b - a) / 2 truncated,
/// which never overflows.
QXUTIL_API void GetCenterOfPoints(const LPNT& a, const LPNT& b, LPNT& c);
QXUTIL_API void GetCenterOfPoints(const DPNT& a, const DPNT& b, DPNT& c);

/// GetCenterOfRect - GetCenterOfPoints of (x1, y1) and (x2, y2).
QXUTIL_API void GetCenterOfRect(const LRECT& r, LPNT& c);
QXUTIL_API void GetCenterOfRect(const DRECT& r, DPNT& c);

/// GetCornersOfRect - writes the four corners (x1, y1), (x1, y2), (x2, y2),
/// (x2, y1), in this order, to pts[0..3].
QXUTIL_API void GetCornersOfRect(const LRECT& r, LPNT* pts);
QXUTIL_API void GetCornersOfRect(const DRECT& r, DPNT* pts);

// ---- Offsets and expansions ------------------------------------------------
//
// The integer forms add with saturation at the 32-bit limits and then clamp
// into [lo, hi] (LongAddCoords); the double forms add plainly.

/// OffsetRect - each coordinate moved by dx (x) or dy (y), clamped; no
/// sorting. (0, 0, 100, 100) by (50, 0) in [0, 120] gives (50, 0, 120, 100).
QXUTIL_API void OffsetRect(LRECT& r, long dx, long dy, long lo, long hi);
QXUTIL_API void OffsetRect(DRECT& r, double dx, double dy);

/// OffsetPoints - the n points moved as OffsetRect moves corners.
QXUTIL_API void OffsetPoints(LPNT* p, int n, long dx, long dy, long lo, long hi);
QXUTIL_API void OffsetPoints(DPNT* p, int n, double dx, double dy);

/// ExpandRect - x1 - dx, y1 - dy, x2 + dx, y2 + dy (clamped in the integer
/// form), then sorted, so a shrinking that crosses over is re-sorted:
/// (0, 0, 10, 10) by (-6, -6) gives (4, 4, 6, 6).
QXUTIL_API void ExpandRect(LRECT& r, long dx, long dy, long lo, long hi);
QXUTIL_API void ExpandRect(DRECT& r, double dx, double dy);

/// ExpandPointIntoRect - r = (p.x - dx, p.y - dy, p.x + dx, p.y + dy)
/// (clamped in the integer form), sorted.
QXUTIL_API void ExpandPointIntoRect(const LPNT& p, LRECT& r, long dx, long dy, long lo, long hi);
QXUTIL_API void ExpandPointIntoRect(const DPNT& p, DRECT& r, double dx, double dy);

// ---- Conversions -----------------------------------------------------------

/// LongToDoubleRect, LongToDoublePoints - exact conversions.
QXUTIL_API void LongToDoubleRect(const LRECT& s, DRECT& d);
QXUTIL_API void LongToDoublePoints(const LPNT* s, DPNT* d, int n);

/// DoubleToLongRect, DoubleToLongPoints - each coordinate clamped into
/// [lo, hi] first (a value below lo becomes lo, otherwise one above hi
/// becomes hi), then rounded half away from zero: 2.5 => 3, -2.5 => -3,
/// 1e12 with hi = 1000000000 => 1000000000. A NaN converts to -2147483648.
QXUTIL_API void DoubleToLongRect(const DRECT& s, LRECT& d, long lo, long hi);
QXUTIL_API void DoubleToLongPoints(const DPNT* s, LPNT* d, int n, long lo, long hi);

/// ClipToLongRect - each coordinate of s clamped into [lo, hi], into d.
QXUTIL_API void ClipToLongRect(const LRECT& s, LRECT& d, long lo, long hi);

/// ClipToLongPoints - the n points of s with each coordinate clamped into
/// [lo, hi], into d; *count = n when count is not null. n below 1 copies
/// nothing.
QXUTIL_API void ClipToLongPoints(const LPNT* s, LPNT* d, int n, int* count, long lo, long hi);

// ---- Vectors and orientation -----------------------------------------------

/// ReverseNodes - reverses the order of the n points in place.
QXUTIL_API void ReverseNodes(LPNT* p, int n);
QXUTIL_API void ReverseNodes(DPNT* p, int n);

/// SubtractPoints - c = a - b. The integer form subtracts in 32-bit
/// arithmetic, which wraps, and converts the results to double.
QXUTIL_API void SubtractPoints(const LPNT& a, const LPNT& b, DPNT& c);
QXUTIL_API void SubtractPoints(const DPNT& a, const DPNT& b, DPNT& c);

/// DotProductVecs - a.x * b.x + a.y * b.y.
QXUTIL_API double DotProductVecs(const DPNT& a, const DPNT& b);
/// CrossProductVecs - a.x * b.y - a.y * b.x.
QXUTIL_API double CrossProductVecs(const DPNT& a, const DPNT& b);
/// NormL1Vec - |a.x| + |a.y|.
QXUTIL_API double NormL1Vec(const DPNT& a);

/// IsClockwiseTriangle - d = a.x * (b.y - c.y) + b.x * (c.y - a.y) +
/// c.x * (a.y - b.y) computed in doubles (the integer form converts first);
/// true when d <= 0, so a collinear triangle counts as clockwise; a NaN
/// gives false.
QXUTIL_API bool IsClockwiseTriangle(const LPNT& a, const LPNT& b, const LPNT& c);
QXUTIL_API bool IsClockwiseTriangle(const DPNT& a, const DPNT& b, const DPNT& c);

/// IsClockwiseOrientation - whether the ring of n points (closed or not:
/// the last point joins the first) turns the way IsClockwiseTriangle calls
/// clockwise, judged by the sign of its exact signed area. *ok (when not
/// null) is false, and the result false, where the orientation is
/// undefined: fewer than three points, a null p, or a signed area of
/// exactly zero (all points on a line, or lobes that cancel). A ring that
/// touches itself has the orientation of its lobes; one that crosses itself
/// has that of the lobes with the larger area.
QXUTIL_API bool IsClockwiseOrientation(const LPNT* p, int n, bool* ok);

/// GetRotatedMBRPnts - the four corners of r, in GetCornersOfRect's order,
/// rotated by `angle` tenths of a degree about (x, y) (positive angles turn
/// +x towards +y), into pts[0..3]. Multiples of 900 rotate exactly.
QXUTIL_API void GetRotatedMBRPnts(DRECT* r, short angle, double x, double y, DPNT* pts);

/// RotateTextMBR - r becomes the sorted bounding rectangle of its corners
/// rotated by `angle` tenths of a degree about (x, y).
QXUTIL_API void RotateTextMBR(DRECT* r, short angle, double x, double y);

// ---- Lines and clipping ----------------------------------------------------

/// ClipLine - clips the segment p0-p1 to r (edges inside), in place, by
/// Cohen-Sutherland: the outside end point moves onto the first edge whose
/// outcode bit it has (x < x1, x > x2, y < y1, y > y2, in that order), its
/// other coordinate moved by the rounded quotient (edge - x0) * (y1 - y0) /
/// (x1 - x0) in doubles. True with both points inside r and in their given
/// order; false when nothing is visible (an unsorted r has no inside), after
/// which p0 and p1 must not be reused. (-10, 5)-(20, 5) clipped to
/// (0, 0, 10, 10) gives (0, 5)-(10, 5).
QXUTIL_API bool ClipLine(LPNT* p0, LPNT* p1, const LRECT* r);

/// ClipPoly - clips the polyline of n points `in` to r (edges inside) into
/// `out`, which must hold 3 * n - 2 points and must not overlap `in`;
/// *count receives the number written. The parts inside r are kept as they
/// are; where the line meets an edge, the exact crossing is rounded half
/// away from zero; a part outside r is replaced by its path along r's
/// boundary (Sutherland-Hodgman's rule), so the output stays one connected
/// line inside r and a filled ring stays a correct fill. Returns false, with
/// *count = 0, when no point of the line lies in r (or on a null argument).
/// docs/geometry.md draws the cases.
QXUTIL_API bool ClipPoly(LPNT* in, LPNT* out, const LRECT* r, int* count, int n);

/// LineIntersection - whether the segments ab and cd share a point, and in
/// x the shared point nearest a, rounded half away from zero: the crossing
/// point; the touching end point; for segments overlapping along one line,
/// the end of the overlap on a's side. Exact for every 32-bit input.
QXUTIL_API bool LineIntersection(const LPNT& a, const LPNT& b, const LPNT& c, const LPNT& d,
                                 LPNT& x);

/// CrossDLines - LineIntersection on doubles: with u = b - a, v = d - c,
/// w = c - a and den = v.y * u.x - v.x * u.y, false when |den| <=
/// (|u.x| + |u.y|)^2 * 1e-10 (parallel, by a tolerance that scales with
/// ab only); otherwise t = (v.y * w.x - w.y * v.x) / den and s = (w.x * u.y
/// - w.y * u.x) / den must both lie in [0, 1], and x = a + t * u.
QXUTIL_API bool CrossDLines(const DPNT& a, const DPNT& b, const DPNT& c, const DPNT& d, DPNT& x);

// ---- Arcs ------------------------------------------------------------------
//
// The direction angle of a vector (dx, dy), used by every arc function: 900
// when dx = 0 and dy > 0, 2700 for any other dx = 0 (the zero vector too);
// 0 or 1800 when dy = 0; otherwise atan2 in degrees (plus 360 when
// negative), times 10, rounded half away from zero. (1, 1) => 450.

/// CalcArcAngles - the angles of p1 and p2 on the ellipse inscribed in r,
/// seen from r's integer centre c with the ellipse scaled to a circle: the
/// direction angles of (ry * (p.x - c.x), rx * (p.y - c.y)) with
/// rx = (x2 - x1) * 0.5 and ry = (y2 - y1) * 0.5. With `swap` the two are
/// exchanged; then 3600 is added to *a2 until *a2 > *a1.
QXUTIL_API void CalcArcAngles(const LRECT& r, const LPNT& p1, const LPNT& p2, short* a1, short* a2,
                              bool swap);

/// FlipArcAngles - mirrors an arc: flipX maps a to 1800 - a, flipY to
/// 3600 - a, and exactly one flip exchanges the two. Then *a1 is brought
/// into [0, 3600) and *a2 into (*a1, *a1 + 3600]. (0, 900) with flipX
/// gives (900, 1800).
QXUTIL_API void FlipArcAngles(short* a1, short* a2, bool flipX, bool flipY);

/// LogCalcArcPoints - the points of the ellipse inscribed in r at the
/// angles a1 and a2 (tenths of a degree): c + (cos * rx, sin * ry), each
/// offset rounded half away from zero, c being r's integer centre.
QXUTIL_API void LogCalcArcPoints(const LRECT& r, int a1, int a2, LPNT* p1, LPNT* p2);

/// CirclePointsToMBRAngles - the circle through p1, p2 and p3: its bounding
/// rectangle in mbr, and in a1 and a2 the direction angles of p1 and p3
/// seen from its centre. False (nothing stored) when the points are
/// collinear: |(p2 - p1) x (p3 - p1)| < 1e-13.
QXUTIL_API bool CirclePointsToMBRAngles(const DPNT& p1, const DPNT& p2, const DPNT& p3, DRECT& mbr,
                                        short& a1, short& a2);

/// CreateCircleMBR - the bounding rectangle of the circle about `centre`
/// through `onCircle`, with the aspect ratio sy / sx applied to y: radius
/// sqrt((dy / ratio)^2 + dx^2), then ExpandPointIntoRect by (radius,
/// radius * ratio), rounded, clamped to plus or minus 1000000000.
QXUTIL_API void CreateCircleMBR(LRECT& r, const LPNT& centre, const LPNT& onCircle, double sx,
                                double sy);

/// RoundToPatternSize - v rounded to a multiple of `pattern`: (v + h / 2) /
/// pattern * pattern with truncating divisions, where h is the pattern's
/// low 16 bits as a signed number, negated first when v < 1. When that is 0
/// but v is not and zero is not allowed, the result is h. With pattern 5:
/// 7 => 5, 8 => 10, 2 => 5 (0 when allowZero), -2 => -5. A pattern of 0
/// returns v.
QXUTIL_API long RoundToPatternSize(long v, bool allowZero, long pattern);

// ---- Regions ---------------------------------------------------------------
//
// A region is a platform region handle (HRGN) covering a set of pixels: a
// rectangle's right and bottom edges are outside it, and a rectangle of
// zero width or height is the empty region. Null stands for no region.

/// rgn_create - a new region holding r (corners in either order); the
/// caller owns it. Null when it cannot be made, or for a null r.
QXUTIL_API HRGN rgn_create(const LRECT* r);

/// rgn_destroy - deletes g; null is ignored.
QXUTIL_API void rgn_destroy(HRGN g);

/// rgn_unionrect - adds r to g and returns g; with g null, a new region for
/// r (as rgn_create). When the union cannot be made, g first becomes its
/// bounding rectangle and the union is tried once more: a region too
/// complex to extend becomes its bounding box plus r. A null r returns g.
QXUTIL_API HRGN rgn_unionrect(HRGN g, const LRECT* r);

/// rgn_intersect - a new region, owned by the caller, holding the common
/// part of a and b (empty, not null, when they are disjoint); a and b are
/// unchanged. Null when either is null or it cannot be made.
QXUTIL_API HRGN rgn_intersect(HRGN a, HRGN b);

/// rgn_bounding_rect - g's bounding box as (left, top, right, bottom); all
/// four 0 when g is null or empty.
QXUTIL_API void rgn_bounding_rect(HRGN g, LRECT* out);

/// rgn_equal - true when both are null or both cover the same pixels; false
/// when exactly one is null.
QXUTIL_API bool rgn_equal(HRGN a, HRGN b);

#endif // QXUTIL_GEOMETRY_H
