// ClipLine, ClipPoly, LineIntersection and CrossDLines against the exact
// references of tests/geometry (clip_checks.h). Input: the bytes of one
// case: a rectangle of a hard kind, points near its edges, at the 32-bit
// extremes or on a tiny grid, and a polyline of up to 8 points.
#include "geometry/clip_checks.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string fault = qxtest::CheckClipCase({data, size});
  if (!fault.empty()) {
    std::fprintf(stderr, "%s\n", fault.c_str());
    std::abort();
  }
  return 0;
}
