// Provides: MultiByteToWideChar, WideCharToMultiByte and the other code-page calls of codepage.h.
#include "platform/codepage.h"

#include "platform/ascii_blocks.h"
#include "platform/codepage_reference.h"
#include "platform/codepage_tables.h"
#include "platform/locale_db.h"
#include "platform/unicode.h"
#include "qxutil/winlocale.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>

using namespace qx::win;

using qx::platform::CodePageTable;
using qx::platform::HighBytes16;
using qx::platform::Narrow16;
using qx::platform::NonAscii16;
using qx::platform::Widen16;

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
// The ASCII blocks are platform/ascii_blocks.h; the mark scan is here.

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

// IsMark - a nonspacing mark (the first is U+0300).
inline bool IsMark(wchar_t c) {
  uint32_t u = static_cast<uint32_t>(c);
  return u >= 0x300 && qx::platform::IsNonSpacingMark(u);
}

// Marks16 - bit k set when the unit s[k] is a nonspacing mark; only the units
// at U+0300 and above are looked up.
inline unsigned Marks16(const wchar_t* s) {
  unsigned marks = 0;
  for (unsigned m = MarkCandidates16(s); m != 0; m &= m - 1) {
    unsigned k = static_cast<unsigned>(std::countr_zero(m));
    if (qx::platform::IsNonSpacingMark(static_cast<uint32_t>(s[k]))) {
      marks |= 1u << k;
    }
  }
  return marks;
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
        // An ASCII run: 16 bytes widened, the run's units kept. The units
        // past the run are overwritten by the characters after it: at least
        // 16 units come from the next 32 bytes.
        if (b < 0x80 && limit - i >= 16 && n - i >= 32) {
          unsigned high = HighBytes16(s + i);
          if (high != 0) {
            size_t run = static_cast<size_t>(std::countr_zero(high));
            Widen16(s + i, dst + o);
            i += run;
            o += run;
            continue;
          }
        }
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

// The fast encoders below convert what the general step would convert unit
// by unit, and stop where it must take over: with WC_COMPOSITECHECK at a
// nonspacing mark or at a unit followed by one, and, on a double-byte page,
// at any unit without a direct code. Best fit is on (the code of a unit the
// page lacks is 0, and the generator makes sure nothing but the default
// character's own unit maps onto the default byte, so the general path's
// check for it never fires). They write only the bytes of the units they
// convert, never past them, so a stop leaves the buffer as the general path
// would.

// SbcsEncoder - a single-byte page: two loads per unit that is not ASCII,
// ASCII blocks of 16 narrowed at once.
class SbcsEncoder {
public:
  SbcsEncoder(const CodePageTable& t, DefaultChar def, bool composite)
      : hi_(t.encodeHi), blocks_(t.sbcsBlocks), ascii_(t.asciiIdentity), default_(def.code),
        composite_(composite) {}

  bool usedDefault() const { return usedDefault_; }

  // Run - converts the units from s[i] up to `end` (d: room for one byte a
  // unit; kStore false only counts) and returns where it stopped: `end`, or
  // under WC_COMPOSITECHECK the first mark or unit followed by one.
  template <bool kStore> size_t Run(const wchar_t* s, size_t n, size_t i, size_t end, char* d) {
    const size_t first = i;
    bool used = false; // a local: stores through char* could alias a member
    auto put = [&](size_t k) {
      char c = static_cast<char>(Code(static_cast<uint32_t>(s[k]), &used));
      if constexpr (kStore) {
        d[k - first] = c;
      }
    };
    for (; end - i >= 16; i += 16) {
      unsigned other = ascii_ ? NonAscii16(s + i) : 0xFFFF;
      if (composite_) {
        // Marks are no ASCII; a mark after the block makes its last unit a base.
        unsigned marks = other != 0 ? Marks16(s + i) : 0;
        if (i + 16 < n && IsMark(s[i + 16])) {
          marks |= 1u << 16;
        }
        if (marks != 0) {
          // The first block of a run is the only one that can start with a mark.
          unsigned k = static_cast<unsigned>(std::countr_zero(marks));
          size_t stop = k == 0 ? i : i + k - 1;
          for (; i < stop; ++i) {
            put(i);
          }
          usedDefault_ |= used;
          return stop;
        }
      }
      if constexpr (kStore) {
        if (ascii_) {
          Narrow16(s + i, d + (i - first));
        }
      }
      for (; other != 0; other &= other - 1) {
        put(i + static_cast<unsigned>(std::countr_zero(other)));
      }
    }
    for (; i < end; ++i) {
      if (composite_ && (IsMark(s[i]) || (i + 1 < n && IsMark(s[i + 1])))) {
        break;
      }
      put(i);
    }
    usedDefault_ |= used;
    return i;
  }

private:
  // Code - the byte of u, or the default character (setting *used).
  uint8_t Code(uint32_t u, bool* used) const {
    uint8_t code = u <= 0xFFFF ? blocks_[hi_[u >> 8]][u & 0xFF] : 0;
    if (code == 0 && u != 0) {
      *used = true;
      code = static_cast<uint8_t>(default_);
    }
    return code;
  }

  const uint16_t* hi_;
  const uint8_t (*blocks_)[256];
  bool ascii_;
  uint16_t default_;
  bool composite_;
  bool usedDefault_ = false;
};

// DbcsEncoder - a double-byte page through its flat table (DbcsUnitCodes):
// one load per unit tells the code or that the general step must convert it
// (U+0000, a unit the page lacks, a mark), and, loaded one unit ahead,
// whether a mark follows. ASCII blocks of 16 narrowed at once.
class DbcsEncoder {
public:
  DbcsEncoder(const uint16_t* codes, bool composite) : codes_(codes), composite_(composite) {}

  // Run - converts the units from s[i] up to `end` (d: room for two bytes a
  // unit; kStore false only counts) and returns where it stopped: `end`, a
  // unit without a direct code, or under WC_COMPOSITECHECK a unit followed
  // by a mark. *written receives the bytes.
  template <bool kStore>
  size_t Run(const wchar_t* s, size_t n, size_t i, size_t end, char* d, size_t* written) const {
    const uint16_t* codes = codes_;
    auto code = [codes](wchar_t c) {
      uint32_t u = static_cast<uint32_t>(c);
      return codes[u > 0xFFFF ? 0xFFFF : u];
    };
    size_t o = 0;
    // putSpare - the entry's two bytes, of which the second is a spare one
    // for a one-byte code (the next character overwrites it): no branch per
    // character; putExact - the code's bytes alone.
    auto putSpare = [&](uint16_t c) {
      if constexpr (kStore) {
        d[o] = static_cast<char>(c & 0xFF);
        d[o + 1] = static_cast<char>(c >> 8);
      }
      o += 1 + ((c + 0xFF00u) >> 16); // 2 when c > 0xFF, computed off the chain through o
    };
    auto putExact = [&](uint16_t c) {
      if constexpr (kStore) {
        d[o] = static_cast<char>(c & 0xFF);
      }
      ++o;
      if (c > 0xFF) {
        if constexpr (kStore) {
          d[o] = static_cast<char>(c >> 8);
        }
        ++o;
      }
    };
    while (i < end) {
      // An ASCII block whose next unit has a code (so it is no mark).
      if (end - i > 16 && NonAscii16(s + i) == 0 && code(s[i + 16]) != 0) {
        if constexpr (kStore) {
          Narrow16(s + i, d + o);
        }
        i += 16;
        o += 16;
        continue;
      }
      // Only the run's first unit can lack a code here: a unit is stored
      // only when the one after it has a code.
      uint16_t c = code(s[i]);
      if (c == 0) {
        break;
      }
      // Units with a successor in the span: the successor's code is loaded
      // first; a unit without one, or before a mark, ends the run.
      size_t limit = end - i > 16 ? i + 16 : end - 1;
      for (; i < limit; ++i) {
        uint16_t next = code(s[i + 1]);
        if (next == 0) {
          if (!(composite_ && IsMark(s[i + 1]))) {
            putExact(c);
            ++i;
          }
          *written = o;
          return i;
        }
        putSpare(c);
        c = next;
      }
      if (i + 1 == end) { // the span's last unit: no spare byte
        if (!(composite_ && i + 1 < n && IsMark(s[i + 1]))) {
          putExact(c);
          ++i;
        }
        break;
      }
    }
    *written = o;
    return i;
  }

private:
  const uint16_t* codes_;
  bool composite_;
};

// EncodeFast - WideCharToMultiByte without WC_NO_BEST_FIT_CHARS: the fast
// encoder converts runs, the general step what stops them (and the units
// that meet the end of the buffer). Returns the bytes written (or needed),
// or SIZE_MAX.
size_t EncodeFast(const CodePageTable& t, DWORD flags, const wchar_t* s, size_t n, char* dst,
                  size_t cap, LPCSTR defaultChar, bool wantUsed, bool* used) {
  const bool composite = (flags & WC_COMPOSITECHECK) != 0;
  ByteOut out{dst, cap};
  Encoder general(t, flags, defaultChar, out);
  bool ok = true;
  if (!t.dbcs) {
    SbcsEncoder direct(t, ChooseDefault(t, defaultChar), composite);
    if (cap == 0 && !composite && !wantUsed) {
      *used = false;
      return n; // one byte a unit
    }
    for (size_t i = 0; ok && i < n;) {
      size_t end = cap == 0 ? n : i + std::min(n - i, cap - out.count);
      if (end > i) {
        size_t stop = cap == 0 ? direct.Run<false>(s, n, i, end, nullptr)
                               : direct.Run<true>(s, n, i, end, dst + out.count);
        out.count += stop - i;
        i = stop;
      }
      if (i < n) {
        size_t next = i + 1;
        ok = general.Step(s, n, i, &next);
        i = next;
      }
    }
    *used = direct.usedDefault() || general.usedDefault();
  } else if (const uint16_t* codes = qx::platform::DbcsUnitCodes(t)) {
    DbcsEncoder direct(codes, composite);
    for (size_t i = 0; ok && i < n;) {
      // At most two bytes a unit: that many units need no check each.
      size_t end = cap == 0 ? n : i + std::min(n - i, (cap - out.count) / 2);
      if (end > i) {
        size_t written = 0;
        i = cap == 0 ? direct.Run<false>(s, n, i, end, nullptr, &written)
                     : direct.Run<true>(s, n, i, end, dst + out.count, &written);
        out.count += written;
      }
      if (i < n) {
        size_t next = i + 1;
        ok = general.Step(s, n, i, &next);
        i = next;
      }
    }
    *used = general.usedDefault();
  } else { // the flat table is being filled by another thread
    ok = general.Run(s, n);
    *used = general.usedDefault();
  }
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
    count = EncodeFast(t, flags, s, n, dst, cap, defaultChar, wantUsed, &used);
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
