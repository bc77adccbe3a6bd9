// ClipLine, ClipPoly, LineIntersection and CrossDLines against the exact
// references of tests/geometry (clip_checks.h). Input: the bytes of one
// case: a rectangle of a hard kind, points near its edges, at the 32-bit
// extremes or on a tiny grid, and a polyline of up to 8 points. Each input
// is read eight times, rotated by 0 to 7 bytes, so that even the short run
// of the test suite compares well over a million segments.
#include "geometry/clip_checks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<uint8_t> bytes(data, data + size);
  for (size_t turn = 0; turn < 8 && (turn == 0 || turn < size); ++turn) {
    if (turn > 0)
      std::rotate(bytes.begin(), bytes.begin() + 1, bytes.end());
    std::string fault = qxtest::CheckClipCase({bytes.data(), bytes.size()});
    if (!fault.empty()) {
      std::fprintf(stderr, "%s\n", fault.c_str());
      std::abort();
    }
  }
  return 0;
}
