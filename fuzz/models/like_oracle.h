// The SQL LIKE matcher as a direct transcription of its recursive rules:
// exponential, for benchmarks and fuzzing only. Like must give the
// same result, the same *match and record error 61 exactly when this
// reports a malformed pattern.
#ifndef QXUTIL_FUZZ_MODELS_LIKE_ORACLE_H
#define QXUTIL_FUZZ_MODELS_LIKE_ORACLE_H

namespace qxtest {

/// LikeOracle - returns false (with *match false and *malformed set) when
/// matching reads an escape followed by anything but "%", "_" or the
/// escape itself; otherwise true with *match the outcome.
inline bool LikeOracle(const wchar_t* s, const wchar_t* p, const wchar_t* escape, bool* match,
                       bool* malformed) {
  *match = false;
  const wchar_t esc = escape ? escape[0] : 0;
  for (;;) {
    // Read one token.
    enum { kLiteral, kAnyOne, kAnySequence, kEnd } kind;
    wchar_t literal = 0;
    if (esc && *p == esc) {
      wchar_t next = p[1];
      if (next != L'%' && next != L'_' && next != esc) {
        *malformed = true;
        *match = false;
        return false;
      }
      kind = kLiteral;
      literal = next;
      p += 2;
    } else if (*p == 0) {
      kind = kEnd;
    } else if (*p == L'%') {
      kind = kAnySequence;
      ++p;
    } else if (*p == L'_') {
      kind = kAnyOne;
      ++p;
    } else {
      kind = kLiteral;
      literal = *p++;
    }
    // Match it.
    switch (kind) {
    case kLiteral:
      if (*s != literal)
        return true;
      ++s;
      break;
    case kAnyOne:
      if (*s == 0)
        return true;
      ++s;
      break;
    case kEnd:
      *match = *s == 0;
      return true;
    case kAnySequence: {
      const wchar_t* rest = p;
      if (*s == 0) {
        *match = *rest == 0;
        return true;
      }
      for (;;) {
        if (!LikeOracle(s, rest, escape, match, malformed))
          return false;
        if (*match)
          return true;
        ++s;
        if (*s == 0) {
          *match = *rest == 0;
          return true;
        }
      }
    }
    }
  }
}

} // namespace qxtest

#endif // QXUTIL_FUZZ_MODELS_LIKE_ORACLE_H
