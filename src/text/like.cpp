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

bool Malformed() {
  qx::ReportError(eErrorLevelError, kMalformedPatternResource, kMalformedPatternError);
  return false;
}

// How a walk over one segment stopped.
enum class Stop {
  kPercent,   // every token matched and a "%" follows
  kEnd,       // every token matched and the pattern ends
  kBadEscape, // every token matched and a malformed escape follows
  kMismatch,  // a token did not match
};

struct Walk {
  Stop stop;
  const wchar_t* next; // kPercent: the pattern after the "%"
  size_t length;       // subject units matched
};

// Matcher - Like for one escape unit (kEscape: there is one, `esc`, never
// 0). With an escape of "%" or "_" that unit is always read as the escape,
// so the wildcard it stands for does not occur.
template <bool kEscape> class Matcher {
public:
  explicit Matcher(wchar_t esc) : esc_(esc) {}

  bool Run(const wchar_t* s, const wchar_t* p, bool* match) const {
    // The segment before the first "%" is anchored at the start.
    Walk w = WalkSegment(p, s);
    switch (w.stop) {
    case Stop::kMismatch:
      return true;
    case Stop::kEnd:
      *match = s[w.length] == 0;
      return true;
    case Stop::kBadEscape:
      return Malformed();
    case Stop::kPercent:
      break;
    }
    s += w.length;
    p = w.next;
    for (;;) {
      unsigned int run = 1; // "%" tokens before the next segment
      for (; IsPercent(p); ++p)
        ++run;
      if (*p == 0) { // a trailing run; two or more need a unit left over
        *match = run == 1 || *s != 0;
        return true;
      }
      if (IsBadEscape(p)) // read unless the run is at the end of the subject
        return *s == 0 ? true : Malformed();
      // A non-empty segment: its leftmost occurrence at or after s.
      const wchar_t* at = Find(p, s, &w);
      if (!at)
        return true;
      switch (w.stop) {
      case Stop::kBadEscape:
        return Malformed();
      case Stop::kEnd: {
        // The last segment must end the subject; it fits at or after `at`.
        const wchar_t* last = at + std::wcslen(at + w.length);
        *match = last == at || WalkSegment(p, last).stop == Stop::kEnd;
        return true;
      }
      default:
        s = at + w.length;
        p = w.next;
      }
    }
  }

private:
  bool IsPercent(const wchar_t* p) const { return *p == L'%' && (!kEscape || esc_ != L'%'); }

  bool IsBadEscape(const wchar_t* p) const {
    return kEscape && *p == esc_ && p[1] != L'%' && p[1] != L'_' && p[1] != esc_;
  }

  bool IsAnyOne(const wchar_t* p) const { return *p == L'_' && (!kEscape || esc_ != L'_'); }

  // Find - the leftmost position at or after s where the non-empty segment
  // at p matches (*w: how), or null. Candidates are found with wcschr on
  // the segment's first literal, after the "_" tokens that lead it.
  const wchar_t* Find(const wchar_t* p, const wchar_t* s, Walk* w) const {
    size_t lead = 0;
    const wchar_t* q = p;
    for (; IsAnyOne(q); ++q)
      ++lead;
    wchar_t literal = 0;
    if (kEscape && *q == esc_)
      literal = IsBadEscape(q) ? 0 : q[1];
    else if (*q != L'%')
      literal = *q; // 0 at the end of the pattern
    if (!literal) {
      for (; *s; ++s)
        if ((*w = WalkSegment(p, s)).stop != Stop::kMismatch)
          return s;
      return nullptr;
    }
    for (size_t i = 0; i < lead; ++i)
      if (!s[i])
        return nullptr;
    for (const wchar_t* hit = s + lead; (hit = std::wcschr(hit, literal)) != nullptr; ++hit)
      if ((*w = WalkSegment(p, hit - lead)).stop != Stop::kMismatch)
        return hit - lead;
    return nullptr;
  }

  // WalkSegment - compares the tokens from p with the units from s up to
  // the end of the segment. A literal is never 0, so the subject's
  // terminator stops the comparison.
  Walk WalkSegment(const wchar_t* p, const wchar_t* s) const {
    const wchar_t* const start = s;
    for (;; ++p, ++s) {
      const wchar_t c = *p;
      if (kEscape && c == esc_) {
        if (IsBadEscape(p))
          return {Stop::kBadEscape, nullptr, static_cast<size_t>(s - start)};
        if (*s != *++p)
          return {Stop::kMismatch, nullptr, 0};
        continue;
      }
      if (c == *s && c != 0 && c != L'%' && c != L'_')
        continue; // the common case: an equal literal
      if (c == L'%')
        return {Stop::kPercent, p + 1, static_cast<size_t>(s - start)};
      if (c == 0)
        return {Stop::kEnd, nullptr, static_cast<size_t>(s - start)};
      if (c != L'_' || *s == 0)
        return {Stop::kMismatch, nullptr, 0};
    }
  }

  wchar_t esc_;
};

} // namespace

bool Like(const wchar_t* subject, const wchar_t* pattern, const wchar_t* escape, bool* match) {
  if (!match)
    return false;
  *match = false;
  if (!subject || !pattern)
    return false;
  const wchar_t esc = escape ? escape[0] : 0;
  if (esc)
    return Matcher<true>(esc).Run(subject, pattern, match);
  return Matcher<false>(0).Run(subject, pattern, match);
}
