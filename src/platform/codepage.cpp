// Provides: MultiByteToWideChar, WideCharToMultiByte and the other code-page calls of codepage.h.
#include "platform/codepage.h"

#include "platform/codepage_tables.h"
#include "platform/locale_db.h"
#include "qxutil/winlocale.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>

using qx::platform::CodePageTable;

namespace {

// The code-page placeholders beyond CP_ACP and CP_OEMCP.
constexpr UINT kMacCodePage = 2;     // CP_MACCP: no Macintosh pages here
constexpr UINT kThreadAnsiCp = 3;    // CP_THREAD_ACP: the same as CP_ACP here
constexpr UINT kFallbackAnsi = 1252; // when the thread's locale has no ANSI page
constexpr UINT kFallbackOem = 437;   // when it has no OEM page we have a table for

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
      if (t.rows[t.leadRow[b] - 1][s[i + 1]] == t.defaultUnicode && code != t.defaultCode) {
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

// Ascii8 - true when the 8 units at s are all below 0x80.
inline bool Ascii8(const wchar_t* s) {
  uint32_t v = 0;
  for (int k = 0; k < 8; ++k) {
    v |= static_cast<uint32_t>(s[k]);
  }
  return v < 0x80;
}

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
  uint8_t row = t.leadRow != nullptr ? t.leadRow[b] : 0;
  if (row == 0) {
    *i += 1;
    return t.decode[b];
  }
  if (*i + 1 < n && s[*i + 1] != 0) {
    uint16_t u = t.rows[row - 1][s[*i + 1]];
    *i += 2;
    return u;
  }
  *i += 1; // a lead byte at the end or before a NUL
  return t.defaultUnicode;
}

// DecodeDbcs - the double-byte pages without MB_COMPOSITE: the units written
// (or needed, when cap is 0), or SIZE_MAX when `dst` is too small. A byte gives
// at most one unit, so a buffer of n units needs no check per character.
size_t DecodeDbcs(const CodePageTable& t, const uint8_t* s, size_t n, wchar_t* dst, size_t cap) {
  size_t count = 0;
  if (cap == 0) {
    for (size_t i = 0; i < n; ++count) {
      DecodeOne(t, s, n, &i);
    }
    return count;
  }
  if (cap >= n) {
    for (size_t i = 0; i < n; ++count) {
      dst[count] = DecodeOne(t, s, n, &i);
    }
    return count;
  }
  for (size_t i = 0; i < n; ++count) {
    if (count == cap) {
      return SIZE_MAX;
    }
    dst[count] = DecodeOne(t, s, n, &i);
  }
  return count;
}

// DecodeComposite - MB_COMPOSITE on any page; false when `out` is full.
bool DecodeComposite(const CodePageTable& t, const uint8_t* s, size_t n, WideOut& out) {
  for (size_t i = 0; i < n;) {
    uint16_t units[8];
    size_t len = FullDecomposition(DecodeOne(t, s, n, &i), units);
    if (!out.Put(units, len)) {
      return false;
    }
  }
  return true;
}

// DefaultChar - the default character WideCharToMultiByte writes: the
// caller's (its first byte; on a double-byte page its first two when the
// second is not NUL) or the page's.
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

// EncodeDirect - WideCharToMultiByte without WC_COMPOSITECHECK and
// WC_NO_BEST_FIT_CHARS: one table lookup per unit. Returns the bytes written
// (or needed, when cap is 0), or SIZE_MAX when `dst` is too small; sets *used
// when a default character was written. kChecked: test the room left before
// each character (not needed when cap covers two bytes per unit).
template <bool kDbcs, bool kChecked>
size_t EncodeDirect(const CodePageTable& t, const wchar_t* s, size_t n, char* dst, size_t cap,
                    DefaultChar def, bool* used) {
  // Locals, not members: stores through char* could alias the table fields.
  const uint16_t* hi = t.encodeHi;
  const uint8_t(*sbcsBlocks)[256] = t.sbcsBlocks;
  const uint16_t(*dbcsBlocks)[256] = t.dbcsBlocks;
  bool usedDefault = false;
  size_t count = 0;
  for (size_t i = 0; i < n; ++i) {
    uint32_t u = static_cast<uint32_t>(s[i]);
    uint16_t code = 0;
    if (u <= 0xFFFF) {
      code = kDbcs ? dbcsBlocks[hi[u >> 8]][u & 0xFF] : sbcsBlocks[hi[u >> 8]][u & 0xFF];
    }
    bool two = kDbcs && code > 0xFF;
    if (code == 0 && u != 0) {
      usedDefault = true;
      code = def.code;
      two = def.twoBytes;
    }
    if (dst == nullptr) { // the size probe
      count += two ? 2 : 1;
      continue;
    }
    if (kChecked && cap - count < (two ? 2u : 1u)) {
      *used = usedDefault;
      return SIZE_MAX;
    }
    if (two) {
      dst[count++] = static_cast<char>(code >> 8);
    }
    dst[count++] = static_cast<char>(code & 0xFF);
  }
  *used = usedDefault;
  return count;
}

// EncodeDbcsRoomy - EncodeDirect on a double-byte page into a buffer with two
// bytes per unit: every character but the last is stored as two bytes and the
// output advances by its length (a one-byte character's second store is
// overwritten by the next character), which saves a branch per character.
size_t EncodeDbcsRoomy(const CodePageTable& t, const wchar_t* s, size_t n, char* dst,
                       DefaultChar def, bool* used) {
  const uint16_t* hi = t.encodeHi;
  const uint16_t(*blocks)[256] = t.dbcsBlocks;
  bool usedDefault = false;
  auto codeOf = [&](uint32_t u) {
    uint16_t code = u <= 0xFFFF ? blocks[hi[u >> 8]][u & 0xFF] : 0;
    if (code == 0 && u != 0) {
      usedDefault = true;
      code = def.code; // a two-byte default has a non-zero first byte
    }
    return code;
  };
  char* o = dst;
  for (size_t i = 0; i + 1 < n; ++i) {
    uint16_t code = codeOf(static_cast<uint32_t>(s[i]));
    bool two = code > 0xFF;
    o[0] = static_cast<char>(two ? code >> 8 : code);
    o[1] = static_cast<char>(code & 0xFF);
    o += two ? 2 : 1;
  }
  uint16_t last = codeOf(static_cast<uint32_t>(s[n - 1]));
  if (last > 0xFF) {
    *o++ = static_cast<char>(last >> 8);
  }
  *o++ = static_cast<char>(last & 0xFF);
  *used = usedDefault;
  return static_cast<size_t>(o - dst);
}

template <bool kDbcs>
size_t EncodeDirect(const CodePageTable& t, const wchar_t* s, size_t n, char* dst, size_t cap,
                    DefaultChar def, bool* used) {
  if (cap == 0) {
    return EncodeDirect<kDbcs, false>(t, s, n, nullptr, 0, def, used);
  }
  if (cap / 2 >= n) {
    if constexpr (kDbcs) {
      return EncodeDbcsRoomy(t, s, n, dst, def, used);
    }
    return EncodeDirect<kDbcs, false>(t, s, n, dst, cap, def, used);
  }
  return EncodeDirect<kDbcs, true>(t, s, n, dst, cap, def, used);
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

// Encoder - WideCharToMultiByte's general path: flags, default characters,
// composition.
class Encoder {
public:
  Encoder(const CodePageTable& t, DWORD flags, LPCSTR defaultChar, ByteOut& out)
      : t_(t), noBestFit_((flags & WC_NO_BEST_FIT_CHARS) != 0),
        composite_((flags & WC_COMPOSITECHECK) != 0), exception_(flags & kWcExceptionFlags),
        default_(ChooseDefault(t, defaultChar)), out_(out) {}

  bool usedDefault() const { return usedDefault_; }

  bool Run(const wchar_t* s, size_t n) {
    for (size_t i = 0; i < n;) {
      uint32_t u = static_cast<uint32_t>(s[i]);
      if (!composite_) {
        if (!PutUnit(u)) {
          return false;
        }
        ++i;
        continue;
      }
      size_t next = i + 1;
      if (!Composed(s, n, i, &next)) {
        return false;
      }
      i = next;
    }
    return true;
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

} // namespace

UINT GetACP() {
  return SupportedOr(qx::platform::LocaleAnsiCodePage(GetThreadLocale()), kFallbackAnsi);
}

UINT GetOEMCP() {
  return SupportedOr(qx::platform::LocaleOemCodePage(GetThreadLocale()), kFallbackOem);
}

BOOL IsValidCodePage(UINT cp) {
  // The placeholders (CP_ACP, CP_OEMCP, CP_MACCP, CP_THREAD_ACP) are no pages of their own.
  return cp > kThreadAnsiCp && qx::platform::FindCodePageTable(cp) != nullptr;
}

int MultiByteToWideChar(UINT cp, DWORD flags, LPCSTR src, int srclen, LPWSTR dst, int dstlen) {
  size_t n = 0;
  const CodePageTable* t = CheckCall(cp, src, srclen, dst, dstlen, &n);
  if (t == nullptr) {
    return 0;
  }
  if ((flags & ~kMbFlags) != 0 ||
      (flags & (MB_PRECOMPOSED | MB_COMPOSITE)) == (MB_PRECOMPOSED | MB_COMPOSITE)) {
    return Fail(ERROR_INVALID_FLAGS);
  }
  const auto* s = reinterpret_cast<const uint8_t*>(src);
  if ((flags & MB_ERR_INVALID_CHARS) != 0 && !AllValid(*t, s, n)) {
    return Fail(ERROR_NO_UNICODE_TRANSLATION);
  }
  size_t cap = static_cast<size_t>(dstlen);
  bool composite = (flags & MB_COMPOSITE) != 0;
  if (!t->dbcs && !composite) {
    // Fast path: one unit per byte.
    if (cap == 0) {
      return static_cast<int>(n);
    }
    const uint16_t* decode = t->decode;
    size_t m = n < cap ? n : cap;
    for (size_t i = 0; i < m; ++i) {
      dst[i] = decode[s[i]];
    }
    return n <= cap ? static_cast<int>(n) : Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  size_t count;
  if (composite) {
    WideOut out{dst, cap};
    count = DecodeComposite(*t, s, n, out) ? out.count : SIZE_MAX;
  } else {
    count = DecodeDbcs(*t, s, n, dst, cap);
  }
  return Finish(count);
}

int WideCharToMultiByte(UINT cp, DWORD flags, LPCWSTR src, int srclen, LPSTR dst, int dstlen,
                        LPCSTR defaultChar, LPBOOL usedDefault) {
  size_t n = 0;
  const CodePageTable* t = CheckCall(cp, src, srclen, dst, dstlen, &n);
  if (t == nullptr) {
    return 0;
  }
  DWORD exception = flags & kWcExceptionFlags;
  if ((flags & ~kWcFlags) != 0 || (exception & (exception - 1)) != 0) {
    return Fail(ERROR_INVALID_FLAGS);
  }
  if (usedDefault != nullptr) {
    *usedDefault = FALSE;
  }
  size_t cap = static_cast<size_t>(dstlen);
  if (!t->dbcs && (flags & (WC_COMPOSITECHECK | WC_NO_BEST_FIT_CHARS)) == 0 &&
      defaultChar == nullptr && usedDefault == nullptr) {
    // Fast path: one byte per unit, best fit, the page's default character.
    if (cap == 0) {
      return static_cast<int>(n);
    }
    const uint16_t* hi = t->encodeHi;
    const uint8_t(*blocks)[256] = t->sbcsBlocks;
    const char fallback = static_cast<char>(t->defaultByte);
    size_t m = n < cap ? n : cap;
    for (size_t i = 0; i < m;) {
      if (t->asciiIdentity && m - i >= 8 && Ascii8(src + i)) {
        for (int k = 0; k < 8; ++k) {
          dst[i + k] = static_cast<char>(src[i + k]);
        }
        i += 8;
        continue;
      }
      for (size_t end = m - i >= 8 ? i + 8 : m; i < end; ++i) {
        uint32_t u = static_cast<uint32_t>(src[i]);
        uint8_t c = u <= 0xFFFF ? blocks[hi[u >> 8]][u & 0xFF] : 0;
        dst[i] = (c != 0 || u == 0) ? static_cast<char>(c) : fallback;
      }
    }
    return n <= cap ? static_cast<int>(n) : Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  size_t count;
  bool used = false;
  if ((flags & (WC_COMPOSITECHECK | WC_NO_BEST_FIT_CHARS)) == 0) {
    DefaultChar def = ChooseDefault(*t, defaultChar);
    count = t->dbcs ? EncodeDirect<true>(*t, src, n, dst, cap, def, &used)
                    : EncodeDirect<false>(*t, src, n, dst, cap, def, &used);
  } else {
    ByteOut out{dst, cap};
    Encoder encoder(*t, flags & kWcFlags, defaultChar, out);
    count = encoder.Run(src, n) ? out.count : SIZE_MAX;
    used = encoder.usedDefault();
  }
  if (usedDefault != nullptr) {
    *usedDefault = used ? TRUE : FALSE;
  }
  return Finish(count);
}

BOOL IsDBCSLeadByteEx(UINT cp, BYTE byte) {
  const CodePageTable* t = ResolveTable(cp);
  if (t == nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  return t->IsLead(byte) ? TRUE : FALSE;
}

BOOL IsDBCSLeadByte(BYTE byte) { return IsDBCSLeadByteEx(CP_ACP, byte); }

LPSTR CharNextExA(WORD cp, LPCSTR p, DWORD /*flags*/) {
  if (p == nullptr || *p == '\0') {
    return const_cast<LPSTR>(p);
  }
  const CodePageTable* t = ResolveTable(cp);
  if (t != nullptr && t->IsLead(static_cast<uint8_t>(p[0])) && p[1] != '\0') {
    return const_cast<LPSTR>(p + 2);
  }
  return const_cast<LPSTR>(p + 1);
}

LPSTR CharNextA(LPCSTR p) { return CharNextExA(CP_ACP, p, 0); }

LPSTR CharPrevExA(WORD cp, LPCSTR start, LPCSTR p, DWORD /*flags*/) {
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

LPSTR CharPrevA(LPCSTR start, LPCSTR p) { return CharPrevExA(CP_ACP, start, p, 0); }
