// Provides: CreateRectRgn, SetRectRgn, CombineRgn, GetRgnBox, EqualRgn,
// DeleteObject (regions only), over pixman's 32-bit regions.
//
// Every region is kept in one form: pixman's empty region is the canonical
// one (bounding box (0, 0, 0, 0)), so that equality and bounding boxes of
// empty results need no special cases. A combination is made into a
// separate region and replaces the destination only when it succeeds.
#include "platform/region.h"

#include "platform/heap.h"

#include <algorithm>
#include <pixman.h>
#include <utility>

struct HRGN__ {
  pixman_region32_t region;
};

namespace qx::win {

namespace {

// InitRectangle - makes `region` (not initialised) the rectangle, with
// Windows' rules: corners in either order, right and bottom edges outside.
void InitRectangle(pixman_region32_t* region, int x1, int y1, int x2, int y2) {
  if (x1 > x2)
    std::swap(x1, x2);
  if (y1 > y2)
    std::swap(y1, y2);
  if (x1 == x2 || y1 == y2) {
    pixman_region32_init(region);
    return;
  }
  const pixman_box32_t box{x1, y1, x2, y2};
  pixman_region32_init_with_extents(region, &box);
}

// KindOf - read from the region's fields as pixman's own n_rects and
// not_empty do (no data: one rectangle; data: its count of rectangles).
int KindOf(const pixman_region32_t* region) {
  if (!region->data)
    return SIMPLEREGION;
  const long n = region->data->numRects;
  return n == 0 ? NULLREGION : n == 1 ? SIMPLEREGION : COMPLEXREGION;
}

// A deleted region's storage is kept, one per thread, for the next region
// made: rgn_unionrect makes and deletes a temporary region per rectangle.
struct SpareRegion {
  HRGN rgn = nullptr;
  ~SpareRegion() { qx::platform::HeapRelease(rgn); }
};
thread_local SpareRegion tSpare;

const pixman_box32_t& Box(const pixman_region32_t* region) { return region->extents; }

bool Contains(const pixman_box32_t& a, const pixman_box32_t& b) {
  return a.x1 <= b.x1 && a.y1 <= b.y1 && b.x2 <= a.x2 && b.y2 <= a.y2;
}

// RectangularUnion - when a and b are single rectangles whose union is a
// rectangle, that rectangle (the result pixman's union would give).
bool RectangularUnion(const pixman_region32_t* a, const pixman_region32_t* b, pixman_box32_t* out) {
  if (KindOf(a) != SIMPLEREGION || KindOf(b) != SIMPLEREGION)
    return false;
  const pixman_box32_t &p = Box(a), &q = Box(b);
  const bool sameRows = p.y1 == q.y1 && p.y2 == q.y2 && p.x1 <= q.x2 && q.x1 <= p.x2;
  const bool sameColumns = p.x1 == q.x1 && p.x2 == q.x2 && p.y1 <= q.y2 && q.y1 <= p.y2;
  if (!sameRows && !sameColumns && !Contains(p, q) && !Contains(q, p))
    return false;
  *out = {std::min(p.x1, q.x1), std::min(p.y1, q.y1), std::max(p.x2, q.x2), std::max(p.y2, q.y2)};
  return true;
}

// Combine - result (initialised empty) = a `mode` b.
bool Combine(pixman_region32_t* result, const pixman_region32_t* a, const pixman_region32_t* b,
             int mode) {
  switch (mode) {
  case RGN_AND:
    return pixman_region32_intersect(result, a, b);
  case RGN_OR:
    return pixman_region32_union(result, a, b);
  case RGN_DIFF:
    return pixman_region32_subtract(result, a, b);
  case RGN_COPY:
    return pixman_region32_copy(result, a);
  case RGN_XOR: {
    pixman_region32_t aOnly, bOnly;
    pixman_region32_init(&aOnly);
    pixman_region32_init(&bOnly);
    bool ok = pixman_region32_subtract(&aOnly, a, b) && pixman_region32_subtract(&bOnly, b, a) &&
              pixman_region32_union(result, &aOnly, &bOnly);
    pixman_region32_fini(&aOnly);
    pixman_region32_fini(&bOnly);
    return ok;
  }
  }
  return false;
}

} // namespace

HRGN CreateRectRgn(int x1, int y1, int x2, int y2) {
  HRGN rgn = nullptr;
  if (!tSpare.rgn)
    rgn = static_cast<HRGN>(qx::platform::HeapAllocate(sizeof(HRGN__)));
  else if (qx::platform::AllocationPermitted()) // the fault hook counts it as an allocation
    rgn = std::exchange(tSpare.rgn, nullptr);
  if (rgn)
    InitRectangle(&rgn->region, x1, y1, x2, y2);
  return rgn;
}

BOOL SetRectRgn(HRGN rgn, int x1, int y1, int x2, int y2) {
  if (!rgn)
    return FALSE;
  pixman_region32_fini(&rgn->region);
  InitRectangle(&rgn->region, x1, y1, x2, y2);
  return TRUE;
}

int CombineRgn(HRGN dst, HRGN src1, HRGN src2, int mode) {
  if (!dst || !src1 || (!src2 && mode != RGN_COPY) || mode < RGN_AND || mode > RGN_COPY)
    return ERROR;
  // Unions that change nothing or stay one rectangle need no storage.
  pixman_box32_t box;
  if (mode == RGN_OR && dst == src1 && KindOf(&src2->region) == NULLREGION)
    return KindOf(&dst->region);
  if (mode == RGN_OR && RectangularUnion(&src1->region, &src2->region, &box)) {
    pixman_region32_fini(&dst->region);
    pixman_region32_init_with_extents(&dst->region, &box);
    return SIMPLEREGION;
  }
  pixman_region32_t result;
  pixman_region32_init(&result);
  bool ok = Combine(&result, &src1->region, src2 ? &src2->region : nullptr, mode);
  // pixman allocates on its own: its storage asks the heap's fault hook.
  if (ok && KindOf(&result) == COMPLEXREGION)
    ok = qx::platform::AllocationPermitted();
  if (!ok) {
    pixman_region32_fini(&result);
    return ERROR;
  }
  if (!pixman_region32_not_empty(&result))
    pixman_region32_clear(&result);
  pixman_region32_fini(&dst->region);
  dst->region = result;
  return KindOf(&dst->region);
}

int GetRgnBox(HRGN rgn, RECT* box) {
  if (!rgn || !box)
    return ERROR;
  const int kind = KindOf(&rgn->region);
  const pixman_box32_t& b = Box(&rgn->region);
  *box = kind == NULLREGION ? RECT{0, 0, 0, 0} : RECT{b.x1, b.y1, b.x2, b.y2};
  return kind;
}

BOOL EqualRgn(HRGN a, HRGN b) {
  if (!a || !b)
    return ERROR;
  if (KindOf(&a->region) == NULLREGION || KindOf(&b->region) == NULLREGION)
    return KindOf(&a->region) == KindOf(&b->region);
  return pixman_region32_equal(&a->region, &b->region) ? TRUE : FALSE;
}

BOOL DeleteObject(HGDIOBJ object) {
  if (!object)
    return FALSE;
  auto* rgn = static_cast<HRGN>(object);
  pixman_region32_fini(&rgn->region);
  if (!tSpare.rgn)
    tSpare.rgn = rgn;
  else
    qx::platform::HeapRelease(rgn);
  return TRUE;
}

} // namespace qx::win
