//===- platform/region.h - Regions ------------------------------*- C++ -*-===//
//
// Provides: CreateRectRgn, SetRectRgn, CombineRgn, GetRgnBox, EqualRgn and
// DeleteObject (for regions, the only graphics objects here), with Windows'
// semantics, over pixman's 32-bit regions.
//
// A region is a set of pixels. A rectangle's corners may come in either
// order; its right and bottom edges are outside it, so a rectangle of zero
// width or height is the empty region, whose bounding box is (0, 0, 0, 0).
//
// The storage a combination needs counts as one allocation of the platform
// heap (qx::platform::FailAllocations), so tests can make a combination
// fail; a failed combination leaves its destination as it was.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_REGION_H
#define QXUTIL_PLATFORM_REGION_H

#include "qxutil/wintypes.h"

// Region kinds, the results of CombineRgn and GetRgnBox, and the modes of
// CombineRgn, with Windows' names and values.
#ifndef RGN_AND
#define ERROR 0         // failure
#define NULLREGION 1    // empty
#define SIMPLEREGION 2  // one rectangle
#define COMPLEXREGION 3 // more than one rectangle
#define RGN_AND 1       // intersection
#define RGN_OR 2        // union
#define RGN_XOR 3       // symmetric difference
#define RGN_DIFF 4      // src1 minus src2
#define RGN_COPY 5      // src1
#endif

namespace qx::win {

typedef void* HGDIOBJ;

struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};

/// CreateRectRgn - a new region holding the rectangle; null when it cannot
/// be allocated.
HRGN CreateRectRgn(int x1, int y1, int x2, int y2);

/// SetRectRgn - makes `rgn` the rectangle; FALSE for a null handle.
BOOL SetRectRgn(HRGN rgn, int x1, int y1, int x2, int y2);

/// CombineRgn - dst = src1 `mode` src2 (src2 unused for RGN_COPY); dst may
/// be either source. The kind of the result, or ERROR (dst unchanged) for a
/// null handle, an unknown mode or a failure to allocate.
int CombineRgn(HRGN dst, HRGN src1, HRGN src2, int mode);

/// GetRgnBox - the bounding box into *box and the region's kind; ERROR for
/// a null handle or box.
int GetRgnBox(HRGN rgn, RECT* box);

/// EqualRgn - TRUE when both cover the same pixels, FALSE when not, ERROR
/// (0) when either handle is null.
BOOL EqualRgn(HRGN a, HRGN b);

/// DeleteObject - frees a region; FALSE for null.
BOOL DeleteObject(HGDIOBJ object);

} // namespace qx::win

#endif // QXUTIL_PLATFORM_REGION_H
