// Provides: MultiByteToWideChar, WideCharToMultiByte and the other code-page calls of codepage.h.
#include "platform/codepage.h"

#include "platform/codepage_reference.h"
#include "platform/codepage_tables.h"
#include "platform/locale_db.h"
#include "platform/unicode.h"
#include "qxutil/winlocale.h"

#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>

#if defined(__SSE2__)
#include <emmintrin.h>

using namespace qx::win;
#endif

using qx::platform::CodePageTable;

namespace {

// The code-page placeholders beyond CP_ACP and CP_OEMCP.
constexpr UINT kMacCodePage = CP_MACCP;       // no Macintosh pages here
constexpr UINT kThreadAnsiCp = CP_THREAD_ACP; // the same as CP_ACP here
constexpr UINT kFallbackAnsi = 1252;          // when the thread's locale has no ANSI page
constexpr UINT kFallbackOem = 437;            // when it has no OEM page we have a table for

constexpr DWORD kMbFlags = MB_PRECOMPOSED | MB_COMPOSITE | MB_USEGLYPHCHARS | MB_ERR_INVALID_CHARS;
constexpr DWORD kWcExceptionFlags = WC_DISCARDNS | WC_SEPCHARS | WC_DEFAULTCHAR;
constexpr DWORD kWcFlags = kWcExceptionFlags | WC_COMPOSITECHECK | WC_NO_BEST_FIT_CHARS;

int Fail(DWORD error) {
  SetLastError(error);
  return 0;
}

const CodePageTable* ResolveTable(UINT cp) {
  switch (cp) {
  case CP_ACP:
  case kThreadAnsiCp:
    return qx::platform::FindCodePageTable(GetACP());
  case CP_OEMCP:
    return qx::platform::FindCodePageTable(GetOEMCP());
  case kMacCodePage:
    return nullptr;
  default:
    return qx::platform::FindCodePageTable(cp);
  }
}

// A private-use placeholder: what Windows decodes some undefined single bytes
// to (cp1253 0xAA => U+F8F9). MB_ERR_INVALID_CHARS rejects such bytes.
bool IsPlaceholder(uint32_t u) { return u >= 0xE000 && u <= 0xF8FF; }

// AllValid - the MB_ERR_INVALID_CHARS check: no undefined byte or pair (one that
// decodes to the default character without being its code), no placeholder
// single byte, no lead byte without a trail byte (a NUL is no trail byte).
bool AllValid(const CodePageTable& t, const uint8_t* s, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    uint8_t b = s[i];
    if (t.IsLead(b)) {
      if (i + 1 == n) {
        return false;
      }
      uint16_t code = static_cast<uint16_t>(b << 8 | s[i + 1]);
      if (t.rowOf[b][s[i + 1]] == t.defaultUnicode && code != t.defaultCode) {
        return false;
      }
      ++i;
      continue;
    }
    uint16_t u = t.decode[b];
    if ((u == t.defaultUnicode && b != t.defaultCode) || IsPlaceholder(u)) {
      return false;
    }
  }
  return true;
}

// ---- Blocks of 16 -------------------------------------------------------------
//
// The fast paths move ASCII 16 characters at a time: SSE2 where the compiler
// targets it (every x86-64), plain loops elsewhere. wchar_t is 32 bits here.

static_assert(sizeof(wchar_t) == 4, "the block helpers take 32-bit wchar_t");

// HighBytes16 - bit k set when s[k] is 0x80 or above.
inline unsigned HighBytes16(const uint8_t* s) {
#if defined(__SSE2__)
  return static_cast<unsigned>(
      _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s))));
#else
  unsigned m = 0;
  for (unsigned k = 0; k < 16; ++k) {
    m |= static_cast<unsigned>(s[k] >> 7) << k;
  }
  return m;
#endif
}

// Widen16 - d[k] = s[k] for the 16 bytes at s.
inline void Widen16(const uint8_t* s, wchar_t* d) {
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
  __m128i lo = _mm_unpacklo_epi8(v, zero);
  __m128i hi = _mm_unpackhi_epi8(v, zero);
  auto* o = reinterpret_cast<__m128i*>(d);
  _mm_storeu_si128(o, _mm_unpacklo_epi16(lo, zero));
  _mm_storeu_si128(o + 1, _mm_unpackhi_epi16(lo, zero));
  _mm_storeu_si128(o + 2, _mm_unpacklo_epi16(hi, zero));
  _mm_storeu_si128(o + 3, _mm_unpackhi_epi16(hi, zero));
#else
  for (unsigned k = 0; k < 16; ++k) {
    d[k] = s[k];
  }
#endif
}

// NonAscii16 - bit k set when the unit s[k] is not U+0000-U+007F.
inline unsigned NonAscii16(const wchar_t* s) {
#if defined(__SSE2__)
  const auto* p = reinterpret_cast<const __m128i*>(s);
  const __m128i high = _mm_set1_epi32(~0x7F);
  const __m128i zero = _mm_setzero_si128();
  auto ascii = [&](int k) {
    return _mm_cmpeq_epi32(_mm_and_si128(_mm_loadu_si128(p + k), high), zero);
  };
  __m128i packed =
      _mm_packs_epi16(_mm_packs_epi32(ascii(0), ascii(1)), _mm_packs_epi32(ascii(2), ascii(3)));
  return ~static_cast<unsigned>(_mm_movemask_epi8(packed)) & 0xFFFF;
#else
  unsigned m = 0;
  for (unsigned k = 0; k < 16; ++k) {
    m |= (static_cast<uint32_t>(s[k]) > 0x7F ? 1u : 0u) << k;
  }
  return m;
#endif
}

// Narrow16 - d[k] = s[k] for the units of s that are ASCII; the bytes of the
// others are left for the caller to overwrite.
inline void Narrow16(const wchar_t* s, char* d) {
#if defined(__SSE2__)
  const auto* p = reinterpret_cast<const __m128i*>(s);
  __m128i lo = _mm_packs_epi32(_mm_loadu_si128(p), _mm_loadu_si128(p + 1));
  __m128i hi = _mm_packs_epi32(_mm_loadu_si128(p + 2), _mm_loadu_si128(p + 3));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(lo, hi));
#else
  for (unsigned k = 0; k < 16; ++k) {
    d[k] = static_cast<char>(s[k]);
  }
#endif
}

// MarkCandidates16 - bit k set when the unit s[k] could be a nonspacing mark
// (U+0300, the first, or above; negative wchar_t values are no marks).
inline unsigned MarkCandidates16(const wchar_t* s) {
#if defined(__SSE2__)
  const auto* p = reinterpret_cast<const __m128i*>(s);
  const __m128i first = _mm_set1_epi32(0x300);
  auto below = [&](int k) { return _mm_cmplt_epi32(_mm_loadu_si128(p + k), first); };
  __m128i packed =
      _mm_packs_epi16(_mm_packs_epi32(below(0), below(1)), _mm_packs_epi32(below(2), below(3)));
  return ~static_cast<unsigned>(_mm_movemask_epi8(packed)) & 0xFFFF;
#else
  unsigned m = 0;
  for (unsigned k = 0; k < 16; ++k) {
    m |= (s[k] >= 0x300 ? 1u : 0u) << k;
  }
  return m;
#endif
}

// FirstMark - the index of the first nonspacing mark among the n units at s,
// or n. Only the units at U+0300 and above are looked up.
size_t FirstMark(const wchar_t* s, size_t n) {
  size_t k = 0;
  for (; n - k >= 16; k += 16) {
    for (unsigned m = MarkCandidates16(s + k); m != 0; m &= m - 1) {
      size_t at = k + static_cast<size_t>(std::countr_zero(m));
      if (qx::platform::IsNonSpacingMark(static_cast<uint32_t>(s[at]))) {
        return at;
      }
    }
  }
  for (; k < n; ++k) {
    uint32_t u = static_cast<uint32_t>(s[k]);
    if (u >= 0x300 && qx::platform::IsNonSpacingMark(u)) {
      return k;
    }
  }
  return n;
}

// ---- Decoding -----------------------------------------------------------------

// Output of MultiByteToWideChar: counts only when cap is 0 (the size probe).
struct WideOut {
  wchar_t* dst;
  size_t cap;
  size_t count = 0;

  bool Put(const uint16_t* units, size_t len) {
    if (cap != 0) {
      if (cap - count < len) {
        return false;
      }
      for (size_t k = 0; k < len; ++k) {
        dst[count + k] = units[k];
      }
    }
    count += len;
    return true;
  }
};

// FullDecomposition - `u` as base and nonspacing marks (MB_COMPOSITE); returns
// the number of units written to `out` (room for 8; BMP compositions nest at
// most four deep).
size_t FullDecomposition(uint16_t u, uint16_t* out) {
  const qx::platform::ComposePair* p = qx::platform::Decompose(u);
  if (p == nullptr) {
    out[0] = u;
    return 1;
  }
  size_t len = FullDecomposition(p->base, out);
  out[len] = p->mark;
  return len + 1;
}

// DecodeOne - the unit at s[*i] (a byte, or a lead byte and its trail);
// advances *i past it.
inline uint16_t DecodeOne(const CodePageTable& t, const uint8_t* s, size_t n, size_t* i) {
  uint8_t b = s[*i];
  const uint16_t* row = t.rowOf != nullptr ? t.rowOf[b] : nullptr;
  if (row == nullptr) {
    *i += 1;
    return t.decode[b];
  }
  if (*i + 1 < n && s[*i + 1] != 0) {
    uint16_t u = row[s[*i + 1]];
    *i += 2;
    return u;
  }
  *i += 1; // a lead byte at the end or before a NUL
  return t.defaultUnicode;
}

// DecodeGeneral - any page, any flags, one character at a time; false when
// `out` is full.
bool DecodeGeneral(const CodePageTable& t, bool composite, const uint8_t* s, size_t n,
                   WideOut& out) {
  for (size_t i = 0; i < n;) {
    uint16_t units[8];
    units[0] = DecodeOne(t, s, n, &i);
    size_t len = composite ? FullDecomposition(units[0], units) : 1;
    if (!out.Put(units, len)) {
      return false;
    }
  }
  return true;
}

// DecodeSbcs - a single-byte page into room for all n units: one load per
// byte, ASCII blocks of 16 widened at once (the other bytes of a block are
// looked up afterwards).
void DecodeSbcs(const CodePageTable& t, const uint8_t* s, size_t n, wchar_t* dst) {
  const uint16_t* decode = t.decode;
  size_t i = 0;
  if (t.asciiIdentity) {
    for (; n - i >= 16; i += 16) {
      unsigned high = HighBytes16(s + i);
      Widen16(s + i, dst + i);
      for (; high != 0; high &= high - 1) {
        unsigned k = static_cast<unsigned>(std::countr_zero(high));
        dst[i + k] = decode[s[i + k]];
      }
    }
  }
  for (; i < n; ++i) {
    dst[i] = decode[s[i]];
  }
}

// DbcsDecoder - a double-byte page without MB_COMPOSITE: a lead byte's row
// pointer, then its trail byte; ASCII runs 16 bytes at a time. Needs an ASCII
// lower half and lead bytes of 0x80 and above (the generator checks both).
class DbcsDecoder {
public:
  explicit DbcsDecoder(const CodePageTable& t)
      : decode_(t.decode), rowOf_(t.rowOf), default_(t.defaultUnicode) {}

  // Count - the units n bytes give (the size probe).
  size_t Count(const uint8_t* s, size_t n) const {
    size_t count = 0;
    for (size_t i = 0; i < n; ++count) {
      i += rowOf_[s[i]] != nullptr && i + 1 < n && s[i + 1] != 0 ? 2 : 1;
    }
    return count;
  }

  // Decode - the units written, or SIZE_MAX when `dst` (cap > 0 units) is too
  // small; whole characters only.
  size_t Decode(const uint8_t* s, size_t n, wchar_t* dst, size_t cap) const {
    size_t i = 0;
    size_t o = 0;
    while (i < n) {
      // A character gives one unit for one or two bytes: those that start
      // before `limit` fit without a check each.
      size_t room = cap - o;
      if (room == 0) {
        return SIZE_MAX;
      }
      size_t limit = n - i <= room ? n : i + room;
      Span(s, n, limit, dst, &i, &o);
    }
    return o;
  }

private:
  // Span - decodes the characters that start before `limit` (room for one
  // unit per byte up to there).
  void Span(const uint8_t* s, size_t n, size_t limit, wchar_t* dst, size_t* pi, size_t* po) const {
    const uint16_t* decode = decode_;
    const uint16_t* const* rowOf = rowOf_;
    size_t i = *pi;
    size_t o = *po;
    while (i < limit) {
      // All-ASCII blocks of 16 at once; otherwise the characters that start
      // in the block, one by one (a pair may end past it).
      if (limit - i >= 16 && HighBytes16(s + i) == 0) {
        Widen16(s + i, dst + o);
        i += 16;
        o += 16;
        continue;
      }
      size_t end = limit - i >= 16 ? i + 16 : limit;
      while (i < end) {
        uint8_t b = s[i];
        const uint16_t* row = rowOf[b];
        if (row == nullptr) {
          dst[o++] = decode[b];
          ++i;
        } else if (i + 1 < n && s[i + 1] != 0) {
          dst[o++] = row[s[i + 1]];
          i += 2;
        } else { // a lead byte at the end or before a NUL
          dst[o++] = default_;
          ++i;
        }
      }
    }
    *pi = i;
    *po = o;
  }

  const uint16_t* decode_;
  const uint16_t* const* rowOf_;
  uint16_t default_;
};

// ---- Encoding -----------------------------------------------------------------

// DefaultChar - the default character WideCharToMultiByte writes: the
// caller's (its first byte; on a double-byte page its first two when the
// second is not NUL) or the page's. A two-byte default is above 0xFF.
struct DefaultChar {
  uint16_t code;
  bool twoBytes;
};

DefaultChar ChooseDefault(const CodePageTable& t, LPCSTR defaultChar) {
  if (defaultChar == nullptr) {
    return {t.defaultByte, false};
  }
  if (t.dbcs && defaultChar[0] != 0 && defaultChar[1] != 0) {
    return {static_cast<uint16_t>(static_cast<uint8_t>(defaultChar[0]) << 8 |
                                  static_cast<uint8_t>(defaultChar[1])),
            true};
  }
  return {static_cast<uint8_t>(defaultChar[0]), false};
}

// Output of WideCharToMultiByte: whole characters only; counts only when cap is 0.
struct ByteOut {
  char* dst;
  size_t cap;
  size_t count = 0;

  bool Put(uint16_t code, bool twoBytes) {
    size_t len = twoBytes ? 2 : 1;
    if (cap != 0) {
      if (cap - count < len) {
        return false;
      }
      if (twoBytes) {
        dst[count] = static_cast<char>(code >> 8);
      }
      dst[count + len - 1] = static_cast<char>(code & 0xFF);
    }
    count += len;
    return true;
  }
};

// Encoder - WideCharToMultiByte's general path, one unit at a time: flags,
// default characters, composition.
class Encoder {
public:
  Encoder(const CodePageTable& t, DWORD flags, LPCSTR defaultChar, ByteOut& out)
      : t_(t), noBestFit_((flags & WC_NO_BEST_FIT_CHARS) != 0),
        composite_((flags & WC_COMPOSITECHECK) != 0), exception_(flags & kWcExceptionFlags),
        default_(ChooseDefault(t, defaultChar)), out_(out) {}

  bool usedDefault() const { return usedDefault_; }

  bool Run(const wchar_t* s, size_t n) {
    for (size_t i = 0; i < n;) {
      size_t next = i + 1;
      if (!Step(s, n, i, &next)) {
        return false;
      }
      i = next;
    }
    return true;
  }

  // Step - converts what starts at s[i] (a unit, or under WC_COMPOSITECHECK
  // a base and its marks); sets *next past what it consumed.
  bool Step(const wchar_t* s, size_t n, size_t i, size_t* next) {
    if (!composite_) {
      *next = i + 1;
      return PutUnit(static_cast<uint32_t>(s[i]));
    }
    return Composed(s, n, i, next);
  }

private:
  // Map - the code of `u`, false when the page has none (best fit counts
  // unless WC_NO_BEST_FIT_CHARS; a mapping onto the default byte never does).
  bool Map(uint32_t u, uint16_t* code) const {
    uint16_t c = t_.Encode(u);
    if (c == 0 && u != 0) {
      return false;
    }
    if ((noBestFit_ || c == t_.defaultByte) && t_.Decode(c) != u) {
      return false;
    }
    *code = c;
    return true;
  }

  bool PutDefault() {
    usedDefault_ = true;
    return out_.Put(default_.code, default_.twoBytes);
  }

  bool PutUnit(uint32_t u) {
    uint16_t code;
    if (!Map(u, &code)) {
      return PutDefault();
    }
    return out_.Put(code, code > 0xFF);
  }

  // Composed - one step under WC_COMPOSITECHECK at s[i]; sets *next past
  // what it consumed.
  bool Composed(const wchar_t* s, size_t n, size_t i, size_t* next) {
    uint32_t u = static_cast<uint32_t>(s[i]);
    if (qx::platform::IsNonSpacingMark(u)) {
      // A mark that no base absorbed: an exception of its own.
      *next = i + 1;
      if (exception_ == WC_DISCARDNS) {
        return true;
      }
      return exception_ == WC_DEFAULTCHAR ? PutDefault() : PutUnit(u);
    }
    if (i + 1 >= n || !qx::platform::IsNonSpacingMark(static_cast<uint32_t>(s[i + 1]))) {
      *next = i + 1;
      return PutUnit(u);
    }
    // Compose as far as the marks allow and take the longest composition the
    // page has; marks left over are exceptions of their own.
    uint32_t cur = u;
    size_t best = 0;
    uint16_t bestCode = 0;
    for (size_t j = i + 1; j < n; ++j) {
      cur = qx::platform::Compose(cur, static_cast<uint32_t>(s[j]));
      if (cur == 0) {
        break;
      }
      uint16_t code;
      if (Map(cur, &code)) {
        best = j + 1;
        bestCode = code;
      }
    }
    if (best != 0) {
      *next = best;
      return out_.Put(bestCode, bestCode > 0xFF);
    }
    // No precomposed form in this page: base and its marks are an exception.
    size_t end = i + 1;
    while (end < n && qx::platform::IsNonSpacingMark(static_cast<uint32_t>(s[end]))) {
      ++end;
    }
    switch (exception_) {
    case WC_DISCARDNS:
      *next = end;
      return PutUnit(u);
    case WC_DEFAULTCHAR:
      *next = end;
      return PutDefault();
    default: // WC_SEPCHARS: base now, each mark on its own
      *next = i + 1;
      if (!PutUnit(u)) {
        return false;
      }
      for (size_t k = i + 1; k < end; ++k) {
        if (!PutUnit(static_cast<uint32_t>(s[k]))) {
          return false;
        }
      }
      *next = end;
      return true;
    }
  }

  const CodePageTable& t_;
  bool noBestFit_;
  bool composite_;
  DWORD exception_;
  DefaultChar default_;
  ByteOut& out_;
  bool usedDefault_ = false;
};

// DirectEncoder - WideCharToMultiByte with best fit and no composition: two
// loads per unit (the code of a unit the page lacks is 0; the generator makes
// sure nothing but the default character's own unit maps onto the default
// byte, so the general path's check for it never fires), ASCII runs 16 units
// at a time. Gives what Encoder gives for the same units.
template <bool kDbcs> class DirectEncoder {
public:
  DirectEncoder(const CodePageTable& t, DefaultChar def)
      : hi_(t.encodeHi), sbcsBlocks_(t.sbcsBlocks), dbcsBlocks_(t.dbcsBlocks),
        ascii_(t.asciiIdentity), default_(def) {}

  bool usedDefault() const { return usedDefault_; }

  // Encode - the n units at s onto `out`; false when it is too small (whole
  // characters only). `wantUsed`: the size probe must track the default flag.
  bool Encode(const wchar_t* s, size_t n, ByteOut& out, bool wantUsed) {
    if (out.cap == 0) {
      Probe(s, n, out, wantUsed);
      return true;
    }
    if constexpr (!kDbcs) {
      size_t room = out.cap - out.count;
      size_t m = n < room ? n : room;
      SbcsSpan(s, m, out.dst + out.count);
      out.count += m;
      if (m < n) {
        Code(static_cast<uint32_t>(s[m]), &usedDefault_); // the flag counts the unit that failed
        return false;
      }
      return true;
    } else {
      size_t i = 0;
      while (i < n) {
        // At most two bytes a unit: that many units need no check each.
        size_t room = out.cap - out.count;
        size_t span = n - i < room / 2 ? n - i : room / 2;
        if (span != 0) {
          out.count += DbcsSpan(s + i, span, out.dst + out.count);
          i += span;
          continue;
        }
        uint16_t code = Code(static_cast<uint32_t>(s[i]), &usedDefault_);
        if (!out.Put(code, code > 0xFF)) {
          return false;
        }
        ++i;
      }
      return true;
    }
  }

private:
  // Code - the code of u, or the default character (setting *used).
  uint16_t Code(uint32_t u, bool* used) const {
    uint16_t code = 0;
    if (u <= 0xFFFF) {
      code = kDbcs ? dbcsBlocks_[hi_[u >> 8]][u & 0xFF] : sbcsBlocks_[hi_[u >> 8]][u & 0xFF];
    }
    if (code == 0 && u != 0) {
      *used = true;
      code = default_.code;
    }
    return code;
  }

  void Probe(const wchar_t* s, size_t n, ByteOut& out, bool wantUsed) {
    if (!kDbcs && !wantUsed) {
      out.count += n;
      return;
    }
    bool used = false;
    size_t count = 0;
    for (size_t i = 0; i < n; ++i) {
      count += Code(static_cast<uint32_t>(s[i]), &used) > 0xFF ? 2 : 1;
    }
    out.count += count;
    usedDefault_ |= used;
  }

  // SbcsSpan - n units into n bytes.
  void SbcsSpan(const wchar_t* s, size_t n, char* d) {
    bool used = false; // a local: stores through char* could alias a member
    size_t i = 0;
    if (ascii_) {
      for (; n - i >= 16; i += 16) {
        unsigned other = NonAscii16(s + i);
        Narrow16(s + i, d + i);
        for (; other != 0; other &= other - 1) {
          unsigned k = static_cast<unsigned>(std::countr_zero(other));
          d[i + k] = static_cast<char>(Code(static_cast<uint32_t>(s[i + k]), &used));
        }
      }
    }
    for (; i < n; ++i) {
      d[i] = static_cast<char>(Code(static_cast<uint32_t>(s[i]), &used));
    }
    usedDefault_ |= used;
  }

  // DbcsSpan - n units into room for 2n bytes; the bytes written. Every
  // character but the last is stored as two bytes and the output advances by
  // its length (a one-byte character's second byte is overwritten by the
  // next), which saves a branch per character.
  size_t DbcsSpan(const wchar_t* s, size_t n, char* d) {
    // Locals, not members: stores through char* could alias them.
    const uint16_t* hi = hi_;
    const uint16_t(*blocks)[256] = dbcsBlocks_;
    const uint16_t fallback = default_.code;
    bool used = false;
    size_t o = 0;
    auto put = [&](uint32_t u) {
      uint16_t code = u <= 0xFFFF ? blocks[hi[u >> 8]][u & 0xFF] : 0;
      if (code == 0 && u != 0) [[unlikely]] {
        used = true;
        code = fallback;
      }
      bool two = code > 0xFF;
      d[o] = static_cast<char>(two ? code >> 8 : code);
      d[o + 1] = static_cast<char>(code & 0xFF);
      o += two ? 2 : 1;
    };
    // Blocks of 16 while a unit follows them (it rewrites the last spare byte).
    size_t i = 0;
    for (; n - i > 16; i += 16) {
      if (ascii_ && NonAscii16(s + i) == 0) {
        Narrow16(s + i, d + o);
        o += 16;
        continue;
      }
      for (size_t k = i; k < i + 16; ++k) {
        put(static_cast<uint32_t>(s[k]));
      }
    }
    for (; i + 1 < n; ++i) {
      put(static_cast<uint32_t>(s[i]));
    }
    // The last unit: no spare byte.
    uint16_t code = Code(static_cast<uint32_t>(s[i]), &used);
    if (code > 0xFF) {
      d[o++] = static_cast<char>(code >> 8);
    }
    d[o++] = static_cast<char>(code & 0xFF);
    usedDefault_ |= used;
    return o;
  }

  const uint16_t* hi_;
  const uint8_t (*sbcsBlocks_)[256];
  const uint16_t (*dbcsBlocks_)[256];
  bool ascii_;
  DefaultChar default_;
  bool usedDefault_ = false;
};

// EncodeFast - WideCharToMultiByte without WC_NO_BEST_FIT_CHARS: runs of units
// that are no marks and are not followed by one go through DirectEncoder; with
// WC_COMPOSITECHECK, a base followed by marks, or a mark, takes the general
// path's step. Returns the bytes written (or needed), or SIZE_MAX.
template <bool kDbcs>
size_t EncodeFast(const CodePageTable& t, DWORD flags, const wchar_t* s, size_t n, char* dst,
                  size_t cap, LPCSTR defaultChar, bool wantUsed, bool* used) {
  constexpr size_t kScan = 256; // units searched for a mark at a time
  ByteOut out{dst, cap};
  DirectEncoder<kDbcs> direct(t, ChooseDefault(t, defaultChar));
  Encoder general(t, flags, defaultChar, out);
  bool ok = true;
  if ((flags & WC_COMPOSITECHECK) == 0) {
    ok = direct.Encode(s, n, out, wantUsed);
  } else {
    for (size_t i = 0; ok && i < n;) {
      size_t window = n - i < kScan ? n - i : kScan;
      size_t mark = FirstMark(s + i, window);
      // Before the mark, the unit ahead of it is its base; without one, the
      // last unit's successor lies past the window (unless the text ends).
      size_t plain =
          mark < window ? (mark == 0 ? 0 : mark - 1) : (i + window == n ? n - i : window - 1);
      if (plain != 0) {
        ok = direct.Encode(s + i, plain, out, wantUsed);
        i += plain;
      }
      if (ok && i < n) {
        size_t next = i + 1;
        ok = general.Step(s, n, i, &next);
        i = next;
      }
    }
  }
  *used = direct.usedDefault() || general.usedDefault();
  return ok ? out.count : SIZE_MAX;
}

// SourceLength - srclen, or the length with the terminator when negative;
// false when it does not fit an int.
template <typename Char> bool SourceLength(const Char* src, int srclen, size_t* n) {
  if (srclen >= 0) {
    *n = static_cast<size_t>(srclen);
    return true;
  }
  size_t len;
  if constexpr (sizeof(Char) == 1) {
    len = std::strlen(src);
  } else {
    len = std::wcslen(src);
  }
  *n = len + 1;
  return len < static_cast<size_t>(INT_MAX);
}

// CheckCall - the argument checks both conversions make, in Windows' order;
// the page's table, or null with ERROR_INVALID_PARAMETER set. *n receives the
// source length.
template <typename In, typename Out>
const CodePageTable* CheckCall(UINT cp, const In* src, int srclen, const Out* dst, int dstlen,
                               size_t* n) {
  if (src == nullptr || srclen == 0 || (dst == nullptr && dstlen != 0) || dstlen < 0 ||
      !SourceLength(src, srclen, n) ||
      (dst != nullptr && static_cast<const void*>(src) == static_cast<const void*>(dst))) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const CodePageTable* t = ResolveTable(cp);
  if (t == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
  }
  return t;
}

// Finish - a conversion's result: the count, or 0 with the last error set
// (SIZE_MAX: the output was too small).
int Finish(size_t count) {
  if (count == SIZE_MAX) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  return count <= static_cast<size_t>(INT_MAX) ? static_cast<int>(count)
                                               : Fail(ERROR_INVALID_PARAMETER);
}

UINT SupportedOr(UINT cp, UINT fallback) {
  return qx::platform::FindCodePageTable(cp) != nullptr ? cp : fallback;
}

// CheckMbFlags / CheckWcFlags - the flag checks, after the argument checks.
bool CheckMbFlags(DWORD flags) {
  return (flags & ~kMbFlags) == 0 &&
         (flags & (MB_PRECOMPOSED | MB_COMPOSITE)) != (MB_PRECOMPOSED | MB_COMPOSITE);
}

bool CheckWcFlags(DWORD flags) {
  DWORD exception = flags & kWcExceptionFlags;
  return (flags & ~kWcFlags) == 0 && (exception & (exception - 1)) == 0;
}

// Decode - MultiByteToWideChar after its checks; kFast: take the fast paths
// where the flags allow.
template <bool kFast>
int Decode(const CodePageTable& t, DWORD flags, const uint8_t* s, size_t n, wchar_t* dst,
           size_t cap) {
  if ((flags & MB_ERR_INVALID_CHARS) != 0 && !AllValid(t, s, n)) {
    return Fail(ERROR_NO_UNICODE_TRANSLATION);
  }
  bool composite = (flags & MB_COMPOSITE) != 0;
  if (kFast && !composite && !t.dbcs) {
    // One unit per byte.
    if (cap == 0) {
      return static_cast<int>(n);
    }
    DecodeSbcs(t, s, n < cap ? n : cap, dst);
    return n <= cap ? static_cast<int>(n) : Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  if (kFast && !composite && t.asciiIdentity) {
    DbcsDecoder decoder(t);
    return Finish(cap == 0 ? decoder.Count(s, n) : decoder.Decode(s, n, dst, cap));
  }
  WideOut out{dst, cap};
  return Finish(DecodeGeneral(t, composite, s, n, out) ? out.count : SIZE_MAX);
}

// Encode - WideCharToMultiByte after its checks.
template <bool kFast>
int Encode(const CodePageTable& t, DWORD flags, const wchar_t* s, size_t n, char* dst, size_t cap,
           LPCSTR defaultChar, LPBOOL usedDefault) {
  if (usedDefault != nullptr) {
    *usedDefault = FALSE;
  }
  size_t count;
  bool used = false;
  if (kFast && (flags & WC_NO_BEST_FIT_CHARS) == 0) {
    bool wantUsed = usedDefault != nullptr;
    count = t.dbcs ? EncodeFast<true>(t, flags, s, n, dst, cap, defaultChar, wantUsed, &used)
                   : EncodeFast<false>(t, flags, s, n, dst, cap, defaultChar, wantUsed, &used);
  } else {
    ByteOut out{dst, cap};
    Encoder encoder(t, flags, defaultChar, out);
    count = encoder.Run(s, n) ? out.count : SIZE_MAX;
    used = encoder.usedDefault();
  }
  if (usedDefault != nullptr) {
    *usedDefault = used ? TRUE : FALSE;
  }
  return Finish(count);
}

template <bool kFast>
int MultiByteToWide(UINT cp, DWORD flags, LPCSTR src, int srclen, LPWSTR dst, int dstlen) {
  size_t n = 0;
  const CodePageTable* t = CheckCall(cp, src, srclen, dst, dstlen, &n);
  if (t == nullptr) {
    return 0;
  }
  if (!CheckMbFlags(flags)) {
    return Fail(ERROR_INVALID_FLAGS);
  }
  return Decode<kFast>(*t, flags, reinterpret_cast<const uint8_t*>(src), n, dst,
                       static_cast<size_t>(dstlen));
}

template <bool kFast>
int WideToMultiByte(UINT cp, DWORD flags, LPCWSTR src, int srclen, LPSTR dst, int dstlen,
                    LPCSTR defaultChar, LPBOOL usedDefault) {
  size_t n = 0;
  const CodePageTable* t = CheckCall(cp, src, srclen, dst, dstlen, &n);
  if (t == nullptr) {
    return 0;
  }
  if (!CheckWcFlags(flags)) {
    return Fail(ERROR_INVALID_FLAGS);
  }
  return Encode<kFast>(*t, flags & kWcFlags, src, n, dst, static_cast<size_t>(dstlen), defaultChar,
                       usedDefault);
}

} // namespace

UINT qx::win::GetACP() {
  return SupportedOr(qx::platform::LocaleAnsiCodePage(GetThreadLocale()), kFallbackAnsi);
}

UINT qx::win::GetOEMCP() {
  return SupportedOr(qx::platform::LocaleOemCodePage(GetThreadLocale()), kFallbackOem);
}

BOOL qx::win::IsValidCodePage(UINT cp) {
  // The placeholders (CP_ACP, CP_OEMCP, CP_MACCP, CP_THREAD_ACP) are no pages of their own.
  return cp > kThreadAnsiCp && qx::platform::FindCodePageTable(cp) != nullptr;
}

int qx::win::MultiByteToWideChar(UINT cp, DWORD flags, LPCSTR src, int srclen, LPWSTR dst,
                                 int dstlen) {
  return MultiByteToWide<true>(cp, flags, src, srclen, dst, dstlen);
}

int qx::win::WideCharToMultiByte(UINT cp, DWORD flags, LPCWSTR src, int srclen, LPSTR dst,
                                 int dstlen, LPCSTR defaultChar, LPBOOL usedDefault) {
  return WideToMultiByte<true>(cp, flags, src, srclen, dst, dstlen, defaultChar, usedDefault);
}

int qx::platform::MultiByteToWideCharReference(UINT cp, DWORD flags, LPCSTR src, int srclen,
                                               LPWSTR dst, int dstlen) {
  return MultiByteToWide<false>(cp, flags, src, srclen, dst, dstlen);
}

int qx::platform::WideCharToMultiByteReference(UINT cp, DWORD flags, LPCWSTR src, int srclen,
                                               LPSTR dst, int dstlen, LPCSTR defaultChar,
                                               LPBOOL usedDefault) {
  return WideToMultiByte<false>(cp, flags, src, srclen, dst, dstlen, defaultChar, usedDefault);
}

BOOL qx::win::IsDBCSLeadByteEx(UINT cp, BYTE byte) {
  const CodePageTable* t = ResolveTable(cp);
  if (t == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  return t->IsLead(byte) ? TRUE : FALSE;
}

BOOL qx::win::IsDBCSLeadByte(BYTE byte) { return IsDBCSLeadByteEx(CP_ACP, byte); }

LPSTR qx::win::CharNextExA(WORD cp, LPCSTR p, DWORD /*flags*/) {
  if (p == nullptr || *p == '\0') {
    return const_cast<LPSTR>(p);
  }
  const CodePageTable* t = ResolveTable(cp);
  if (t != nullptr && t->IsLead(static_cast<uint8_t>(p[0])) && p[1] != '\0') {
    return const_cast<LPSTR>(p + 2);
  }
  return const_cast<LPSTR>(p + 1);
}

LPSTR qx::win::CharNextA(LPCSTR p) { return CharNextExA(CP_ACP, p, 0); }

LPSTR qx::win::CharPrevExA(WORD cp, LPCSTR start, LPCSTR p, DWORD /*flags*/) {
  if (start == nullptr || p == nullptr) {
    return const_cast<LPSTR>(start);
  }
  const CodePageTable* t = ResolveTable(cp);
  LPCSTR at = start;
  while (at < p && *at != '\0') {
    LPCSTR next = at + 1;
    if (t != nullptr && t->IsLead(static_cast<uint8_t>(at[0])) && at[1] != '\0') {
      next = at + 2;
    }
    if (next >= p) {
      break;
    }
    at = next;
  }
  return const_cast<LPSTR>(at);
}

LPSTR qx::win::CharPrevA(LPCSTR start, LPCSTR p) { return CharPrevExA(CP_ACP, start, p, 0); }
