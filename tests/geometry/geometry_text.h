// Points and rectangles as text, for test messages and short table rows.
#ifndef QXUTIL_TESTS_GEOMETRY_GEOMETRY_TEXT_H
#define QXUTIL_TESTS_GEOMETRY_GEOMETRY_TEXT_H

#include "qxutil/geometry.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace qxtest {

inline std::string Number(double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", v);
  return text;
}

/// Describe - a point as "(x,y)", a rectangle as "[x1,y1,x2,y2]", in the
/// integer and the double form alike; points one after another.
template <class P> auto Describe(const P& p) -> decltype(p.x, std::string()) {
  return "(" + Number(p.x) + "," + Number(p.y) + ")";
}
template <class R> auto Describe(const R& r) -> decltype(r.x1, std::string()) {
  return "[" + Number(r.x1) + "," + Number(r.y1) + "," + Number(r.x2) + "," + Number(r.y2) + "]";
}
inline std::string Describe(const std::vector<LPNT>& pts) {
  std::string s;
  for (const LPNT& p : pts)
    s += Describe(p);
  return s;
}

/// Pts - the points of "x,y x,y ..."; "min" and "max" stand for the 32-bit
/// limits, "max-1" for one below.
inline std::vector<LPNT> Pts(std::string text) {
  std::replace(text.begin(), text.end(), ',', ' ');
  std::istringstream in(text);
  std::vector<LPNT> pts;
  int32_t v[2];
  int n = 0;
  for (std::string w; in >> w; ++n) {
    const bool limit = w.rfind("min", 0) == 0 || w.rfind("max", 0) == 0;
    const int64_t base = !limit ? 0 : w[1] == 'i' ? INT32_MIN : INT32_MAX;
    const std::string rest = limit ? w.substr(3) : w;
    v[n % 2] = static_cast<int32_t>(base + (rest.empty() ? 0 : std::stoll(rest)));
    if (n % 2 == 1)
      pts.push_back({v[0], v[1]});
  }
  return pts;
}

} // namespace qxtest

#endif // QXUTIL_TESTS_GEOMETRY_GEOMETRY_TEXT_H
