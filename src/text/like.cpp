//===- text/like.cpp - The SQL LIKE matcher ---------------------------------===//
//
// Like's answers are those of a simple recursive matcher (one call per "%"
// and subject position), computed without its exponential search. The
// pattern splits at its "%" tokens into segments of literal and "_"
// tokens; a segment always consumes exactly as many subject units as it
// has tokens. Matching then places the segments left to right:
//
//  * the segment before the first "%" must match at the start;
//  * a segment between two "%" goes to its leftmost occurrence at or after
//    the current position (any later occurrence only leaves less room for
//    what follows, so the leftmost is never worse);
//  * the segment after the last "%" must match at the end of the subject;
//  * a pattern ending in a run of "%" matches once the segments before it
//    are placed, except that a run of two or more needs a unit left over:
//    a "%" with more pattern after it never stretches to the end of the
//    subject, and at the end of the subject it only matches when nothing
//    follows it.
//
// A malformed escape is an error only when the recursive matcher would
// read it, that is when the segments before it can be placed as above
// (the last of them anywhere, not at the end). Each placement scans the
// subject at most once per segment token: O(subject x pattern) at worst,
// and no heap. docs/text.md gives the reasoning in full.
//
//===----------------------------------------------------------------------===//
#include "frame/report.h"
#include "qxutil/text.h"

#include <cwchar>

namespace {

// The error a malformed escape records, and the message resource it names.
constexpr int kMalformedPatternError = 61;
constexpr int kMalformedPatternResource = 19;

// What ends a segment.
enum class SegmentEnd { kPercent, kPatternEnd, kBadEscape };

// Segment - a run of literal and "_" tokens of the pattern.
struct Segment {
  const wchar_t* begin = nullptr; // its first pattern unit
  size_t length = 0;              // its tokens, i.e. the subject units it takes
  bool plain = true;              // no escape and no "_": the units are the literals
  wchar_t first = 0;              // the first token's literal; 0 for "_" or none
  SegmentEnd end = SegmentEnd::kPatternEnd;
  const wchar_t* next = nullptr; // the pattern after the "%" that ends it
};

class Pattern {
public:
  explicit Pattern(wchar_t escape) : escape_(escape) {}

  /// Read - the segment starting at `p`.
  Segment Read(const wchar_t* p) const {
    Segment seg;
    seg.begin = p;
    for (;; ++seg.length) {
      wchar_t c = *p, literal = c;
      if (escape_ && c == escape_) {
        wchar_t after = p[1];
        if (after != L'%' && after != L'_' && after != escape_) {
          seg.end = SegmentEnd::kBadEscape;
          return seg;
        }
        seg.plain = false;
        literal = after;
        p += 2;
      } else if (c == 0) {
        seg.end = SegmentEnd::kPatternEnd;
        return seg;
      } else if (c == L'%') {
        seg.end = SegmentEnd::kPercent;
        seg.next = p + 1;
        return seg;
      } else {
        if (c == L'_') {
          seg.plain = false;
          literal = 0;
        }
        ++p;
      }
      if (seg.length == 0)
        seg.first = literal;
    }
  }

  /// MatchAt - whether the segment matches the units at `s`. A literal is
  /// never 0, so the subject's terminator stops the comparison.
  bool MatchAt(const Segment& seg, const wchar_t* s) const {
    const wchar_t* p = seg.begin;
    if (seg.plain) {
      for (size_t i = 0; i < seg.length; ++i)
        if (s[i] != p[i])
          return false;
      return true;
    }
    for (size_t i = 0; i < seg.length; ++i) {
      wchar_t c = *p++;
      if (escape_ && c == escape_)
        c = *p++;
      else if (c == L'_') {
        if (!s[i])
          return false;
        continue;
      }
      if (s[i] != c)
        return false;
    }
    return true;
  }

  /// Find - the leftmost position at or after `s` where the (non-empty)
  /// segment matches; null if none.
  const wchar_t* Find(const Segment& seg, const wchar_t* s) const {
    if (seg.first) {
      for (; (s = std::wcschr(s, seg.first)) != nullptr; ++s)
        if (MatchAt(seg, s))
          return s;
      return nullptr;
    }
    for (; *s; ++s)
      if (MatchAt(seg, s))
        return s;
    return nullptr;
  }

private:
  wchar_t escape_; // 0: no escape
};

} // namespace

bool Like(const wchar_t* subject, const wchar_t* pattern, const wchar_t* escape, bool* match) {
  if (!match)
    return false;
  *match = false;
  if (!subject || !pattern)
    return false;
  const Pattern pat(escape ? escape[0] : 0);
  const wchar_t* s = subject; // where the next segment may start
  const wchar_t* p = pattern;
  bool afterPercent = false; // a "%" has been read
  unsigned int run = 0;      // "%" tokens since the last non-empty segment
  for (;;) {
    Segment seg = pat.Read(p);
    if (seg.length > 0) {
      if (!afterPercent) {
        if (!pat.MatchAt(seg, s))
          return true;
        s += seg.length;
      } else if (seg.end == SegmentEnd::kPatternEnd) {
        size_t left = std::wcslen(s);
        *match = left >= seg.length && pat.MatchAt(seg, s + (left - seg.length));
        return true;
      } else {
        s = pat.Find(seg, s);
        if (!s)
          return true;
        s += seg.length;
      }
      run = 0;
    }
    switch (seg.end) {
    case SegmentEnd::kPercent:
      afterPercent = true;
      ++run;
      p = seg.next;
      break;
    case SegmentEnd::kPatternEnd:
      *match = run == 0 ? *s == 0 : (run == 1 || *s != 0);
      return true;
    case SegmentEnd::kBadEscape:
      // After a run of "%" at the end of the subject nothing more is read.
      if (run > 0 && *s == 0)
        return true;
      qx::ReportError(eErrorLevelError, kMalformedPatternResource, kMalformedPatternError);
      return false;
    }
  }
}
