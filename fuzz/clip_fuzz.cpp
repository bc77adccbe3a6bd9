// ClipLine, ClipPoly, LineIntersection and CrossDLines against the exact
// references of models/clip_checks.h. Input: the bytes of one
// case: a rectangle of a hard kind, points near its edges, at the 32-bit
// extremes or on a tiny grid, and a polyline of up to 8 points. Each input
// is read eight times, rotated by 0 to 7 bytes, so that even the short run
// of the test suite compares well over a million segments. The same bytes
// also make a long walk on a small grid round a small rectangle: runs of
// many points in one region, which ClipPoly passes over several at a time.
#include "models/clip_checks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace qxtest;

namespace {

/// Bytes - reads the input, as zeros once it has run out.
struct Bytes {
  const uint8_t* data;
  size_t size;
  uint8_t Next8() { return size ? (--size, *data++) : 0; }
  uint16_t Next16() { return static_cast<uint16_t>(Next8() << 8 | Next8()); }
  int32_t Next32() { return static_cast<int32_t>(uint32_t{Next16()} << 16 | Next16()); }
};

/// PickRect - a rectangle of one of the kinds that make clipping hard:
/// small, large, at either 32-bit limit, the whole range, one unit or no
/// width, unsorted, anywhere.
LRECT PickRect(Bytes& in) {
  const int kind = in.Next8() % 8;
  const int32_t x = static_cast<int16_t>(in.Next16()), y = static_cast<int16_t>(in.Next16());
  const int32_t w = in.Next8() % 40, h = in.Next8() % 40;
  switch (kind) {
  case 0:
    return {x, y, x + w, y + h};
  case 1:
    return {x * 1000, y * 1000, x * 1000 + w * 10000000, y * 1000 + h * 10000000};
  case 2:
    return {INT32_MAX - w, INT32_MAX - h, INT32_MAX, INT32_MAX};
  case 3:
    return {INT32_MIN, INT32_MIN, INT32_MIN + w, INT32_MIN + h};
  case 4:
    return {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
  case 5:
    return {x, y, x + w % 2, y + h % 2};
  case 6:
    return {x + w, y + h, x, y};
  default: {
    LRECT r{in.Next32(), in.Next32(), in.Next32(), in.Next32()};
    SortRect(r);
    return r;
  }
  }
}

int32_t Fit(int64_t v) {
  return static_cast<int32_t>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
}

/// PickPoint - a point near r's edges, inside it, on a tiny grid, far off
/// or at the 32-bit extremes.
LPNT PickPoint(Bytes& in, const LRECT& r) {
  auto pick = [&](int32_t lo, int32_t hi) -> int32_t {
    const uint16_t bits = in.Next16();
    const int32_t small = bits >> 3;
    switch (bits & 7) {
    case 0:
      return Fit(int64_t{lo} + small % 64 - 32);
    case 1:
      return Fit(int64_t{hi} + small % 64 - 32);
    case 2:
      return static_cast<int32_t>(std::min(lo, hi) + small % (std::abs(int64_t{hi} - lo) + 1));
    case 3:
      return INT32_MIN + small % 16;
    case 4:
      return INT32_MAX - small % 16;
    case 5:
      return in.Next32();
    case 6:
      return small % 5;
    default:
      return Fit(int64_t{lo} - 1000 + small % 3000);
    }
  };
  const int32_t px = pick(r.x1, r.x2);
  return {px, pick(r.y1, r.y2)};
}

/// CheckClipCase - one case read from `in`: a rectangle, a segment clipped
/// to it and intersected with another, and a polyline of up to 8 points.
std::string CheckClipCase(Bytes in) {
  const LRECT r = PickRect(in);
  const LPNT a = PickPoint(in, r), b = PickPoint(in, r), c = PickPoint(in, r), d = PickPoint(in, r);
  std::string fault = CheckClipLine(a, b, r);
  if (fault.empty())
    fault = CheckIntersection(a, b, c, d);
  std::vector<LPNT> line{a, b, c, d};
  for (int n = in.Next8() % 5; n > 0; --n)
    line.push_back(PickPoint(in, r));
  line.resize(1 + in.Next8() % line.size());
  if (fault.empty())
    fault = CheckClipPoly(line, r);
  return fault;
}

/// CheckWalk - a walk of one step per byte (of the first 256), up to 3 units
/// each way, on the grid -6..9 round a rectangle of at most 3 by 3; closed
/// on request.
std::string CheckWalk(Bytes in) {
  const uint8_t shape = in.Next8();
  const LRECT r{0, 0, shape % 4, shape / 4 % 4};
  const int step = 1 + shape / 16 % 3, span = 2 * step + 1;
  std::vector<LPNT> line;
  for (int x = 2, y = 2; in.size > 0;) {
    const int move = in.Next8();
    x = std::clamp(x + move % span - step, -6, 9);
    y = std::clamp(y + move / span % span - step, -6, 9);
    line.push_back({x, y});
  }
  if (shape >= 192 && !line.empty())
    line.push_back(line.front());
  return CheckClipPoly(line, r);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<uint8_t> bytes(data, data + size);
  std::string fault = CheckWalk({data, std::min<size_t>(size, 256)});
  for (size_t turn = 0; turn < 8 && (turn == 0 || turn < size) && fault.empty(); ++turn) {
    if (turn > 0)
      std::rotate(bytes.begin(), bytes.begin() + 1, bytes.end());
    fault = CheckClipCase({bytes.data(), bytes.size()});
  }
  if (!fault.empty()) {
    std::fprintf(stderr, "%s\n", fault.c_str());
    std::abort();
  }
  return 0;
}
