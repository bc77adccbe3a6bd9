// Provides: the chunked conversion of 'qxutil convert' (transcoder.h).
//
// Each chunk is converted in slices of a fixed size (so memory does not grow
// with the chunks a caller passes), each slice in three block calls: the
// source charset's decoder, the line-end rewrite, the target's encoder. The
// characters that do not survive are rare, so they are looked for only where
// a block call says there may be one: a source unit flagged by the decoder,
// or a target that used its default character (replacement, unknown code).
// Only then is the slice walked character by character.
#include "transcoder.h"

#include "platform/ascii_blocks.h"
#include "platform/codepage.h"
#include "platform/unicode.h"
#include "platform/utf8.h"
#include "text/charset_maps.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <cwchar>
#include <memory>
#include <strings.h>
#include <utility>
#include <vector>

using namespace qx::win;

namespace qxcli {
namespace {

constexpr size_t kMaxHeld = 1024; // the longest character kept back for its marks

bool IsHigh(uint32_t u) { return u >= 0xD800 && u < 0xDC00; }
bool IsLow(uint32_t u) { return u >= 0xDC00 && u < 0xE000; }
bool IsMark(wchar_t u) { return qx::platform::IsNonSpacingMark(static_cast<uint32_t>(u)); }

// SegmentEnd - the end of the character that starts at w[a]: a unit, the
// low half of a surrogate pair, and the nonspacing marks that follow (what
// CharNextW steps over and WC_COMPOSITECHECK groups).
size_t SegmentEnd(const wchar_t* w, size_t size, size_t a) {
  size_t i = a + 1;
  if (IsHigh(static_cast<uint32_t>(w[a])) && i < size && IsLow(static_cast<uint32_t>(w[i])))
    ++i;
  while (i < size && IsMark(w[i]))
    ++i;
  return i;
}

// LastSegmentStart - where the last character of w[0, size) starts (size
// > 0; w starts a character): back over the marks to their base, and from a
// low surrogate to the high one before it (a high surrogate always starts a
// character).
size_t LastSegmentStart(const wchar_t* w, size_t size) {
  size_t j = size - 1;
  while (j > 0 && IsMark(w[j]))
    --j;
  if (j > 0 && IsLow(static_cast<uint32_t>(w[j])) && IsHigh(static_cast<uint32_t>(w[j - 1])))
    --j;
  return j;
}

// Buffer - scratch room that keeps its size between slices (never cleared).
template <typename T> class Buffer {
public:
  /// Room - room for n elements; the first `keep` survive a growth.
  T* Room(size_t n, size_t keep = 0) {
    if (n > size_) {
      std::unique_ptr<T[]> grown(new T[n]);
      if (keep != 0)
        std::memcpy(grown.get(), data_.get(), keep * sizeof(T));
      data_ = std::move(grown);
      size_ = n;
    }
    return data_.get();
  }
  T* data() const { return data_.get(); }

private:
  std::unique_ptr<T[]> data_;
  size_t size_ = 0;
};

// Equal16 - bit k set when w[k] is `c`, for wide units and bytes.
unsigned Equal16(const wchar_t* w, char c) { return qx::platform::Equal16(w, c); }
unsigned Equal16(const uint8_t* w, char c) {
  return qx::platform::EqualBytes16(w, static_cast<uint8_t>(c));
}

// MayBreak16 - whether the 16 units or bytes at w may hold a CR or LF (one
// test for the block, exact tests only where it says yes).
bool MayBreak16(const wchar_t* w) { return qx::platform::Below16(w, L'\r' + 1) != 0; }
bool MayBreak16(const uint8_t* w) {
  return (qx::platform::EqualBytes16(w, '\r') | qx::platform::EqualBytes16(w, '\n')) != 0;
}

// Ones16 - the bits set in the low 16 bits of m.
unsigned Ones16(unsigned m) {
  m = (m & 0x5555) + (m >> 1 & 0x5555);
  m = (m & 0x3333) + (m >> 2 & 0x3333);
  m = (m & 0x0F0F) + (m >> 4 & 0x0F0F);
  return (m & 0x00FF) + (m >> 8 & 0x00FF);
}

// ---- Decoding --------------------------------------------------------------

// Decoder - bytes to wide text, noting the units whose character was
// undefined in the source. A code page's input must hold whole characters
// (the transcoder keeps a cut double-byte pair back); UTF-8 streams.
class Decoder {
public:
  explicit Decoder(const Charset& cs) : cs_(cs) {
    if (!cs.page)
      return;
    if (cs.dbcs)
      for (int b = 0x80; b < 0x100; ++b)
        lead_[b] = IsDBCSLeadByteEx(CodePage(), static_cast<BYTE>(b)) != FALSE;
    // The page's default character: what a lead byte without its trail
    // gives (double-byte pages), or what a byte the page lacks gives.
    if (cs.dbcs) {
      wchar_t unit[2] = {};
      for (int b = 0x81; b < 0x100; ++b) {
        if (lead_[b]) {
          char c = static_cast<char>(b);
          if (ConvertMBCSCharToSystem(&c, 1, cs.cs, unit, 1))
            defaultUnit_ = unit[0];
          break;
        }
      }
      wchar_t text[2] = {defaultUnit_, 0};
      char code[4] = {};
      ConvertSystemToMBCSChar(text, code, cs.cs, sizeof code, false);
      defaultCode_ = static_cast<uint16_t>(static_cast<unsigned char>(code[0]) << 8 |
                                           static_cast<unsigned char>(code[1]));
      if (!code[1])
        defaultCode_ >>= 8;
    }
  }

  /// MaxUnits - the room Decode needs for n bytes.
  static constexpr size_t MaxUnits(size_t n) { return qx::platform::Utf8Decoder::MaxUnits(n); }

  /// Complete - how many of the n bytes make whole characters of a
  /// double-byte page (a lead byte ending them waits for its trail in the
  /// next chunk, unless this is the end); all of them otherwise. A byte that
  /// is no lead byte ends a character (alone or as a trail), and the lead
  /// bytes after it pair up.
  size_t Complete(const char* s, size_t n, bool end) const {
    if (end || !cs_.page || !cs_.dbcs)
      return n;
    size_t leads = 0;
    while (leads < n && lead_[static_cast<unsigned char>(s[n - 1 - leads])])
      ++leads;
    return leads % 2 == 1 ? n - 1 : n;
  }

  /// Decode - the units of the n bytes at s into dst (room for
  /// MaxUnits(n)); the places of the units whose character the source
  /// leaves undefined, plus `at`, are appended to *flagged.
  size_t Decode(const char* s, size_t n, bool end, wchar_t* dst, size_t at,
                std::vector<size_t>* flagged) {
    if (cs_.utf8) {
      bool* replaced = replaced_.Room(MaxUnits(n));
      size_t got = utf8_.Decode(s, n, end, dst, replaced);
      for (const bool* p = replaced;
           (p = static_cast<const bool*>(
                std::memchr(p, true, static_cast<size_t>(replaced + got - p)))) != nullptr;
           ++p)
        flagged->push_back(at + static_cast<size_t>(p - replaced));
      return got;
    }
    if (n == 0)
      return 0;
    if (!cs_.page) {
      for (size_t i = 0; i < n; ++i) {
        uint16_t u = cs_.map[static_cast<unsigned char>(s[i])];
        if (qx::IsUnmappedMarker(u)) {
          u = 0xFFFD;
          flagged->push_back(at + i);
        }
        dst[i] = static_cast<wchar_t>(u);
      }
      return n;
    }
    // One unit per character (MB_PRECOMPOSED), embedded NULs included.
    int got = MultiByteToWideChar(CodePage(), MB_PRECOMPOSED, s, static_cast<int>(n), dst,
                                  static_cast<int>(n));
    size_t units = static_cast<size_t>(got);
    if (got <= 0) { // cannot happen with room for every byte; every character is then lost
      units = 0;
      for (size_t i = 0; i < n; ++units)
        i += CharLength(s, n, i);
      std::fill(dst, dst + units, defaultUnit_);
    }
    // A unit is undefined when it is the default character without coming
    // from that character's own code.
    size_t unit = 0, byte = 0; // a character boundary walked to
    for (const wchar_t* p = dst;
         (p = std::wmemchr(p, defaultUnit_, static_cast<size_t>(dst + units - p))) != nullptr;
         ++p) {
      size_t k = static_cast<size_t>(p - dst);
      for (; unit < k; ++unit)
        byte += CharLength(s, n, byte);
      size_t len = CharLength(s, n, byte);
      uint16_t code = static_cast<unsigned char>(s[byte]);
      if (len == 2)
        code = static_cast<uint16_t>(code << 8 | static_cast<unsigned char>(s[byte + 1]));
      if (code != defaultCode_)
        flagged->push_back(at + k);
    }
    return units;
  }

private:
  UINT CodePage() const { return static_cast<UINT>(GetWinCodePage(cs_.cs)); }

  size_t CharLength(const char* s, size_t n, size_t i) const {
    return cs_.dbcs && i + 1 < n && s[i + 1] != 0 && lead_[static_cast<unsigned char>(s[i])] ? 2
                                                                                             : 1;
  }

  const Charset& cs_;
  qx::platform::Utf8Decoder utf8_;
  Buffer<bool> replaced_;
  bool lead_[256] = {};
  wchar_t defaultUnit_ = L'?';
  uint16_t defaultCode_ = '?';
};

// ---- Encoding --------------------------------------------------------------

// Encoder - wide text to the target's bytes, and the test of which
// characters the target cannot represent.
class Encoder {
public:
  explicit Encoder(const Charset& cs) : cs_(cs) {
    if (!cs.utf8 && !cs.page) {
      reverse_.assign(0x10000, 0);
      for (int b = 254; b >= 1; --b) // the lowest byte wins, as in the byte tables
        if (!qx::IsUnmappedMarker(cs.map[b]))
          reverse_[cs.map[b]] = static_cast<unsigned char>(b);
    }
    if (cs.page)
      known_.assign(0x10000, 0);
  }

  /// MaxBytes - the room Encode needs for n units.
  static size_t MaxBytes(size_t n) { return qx::platform::Utf8Encoder::MaxBytes(n); }

  /// Encode - the bytes of the n units at w into dst (room for
  /// MaxBytes(n)); `end`: no text follows. *suspect becomes true when a
  /// character may not have been represented (a default character, a
  /// replacement, an unknown code, or a high surrogate left waiting).
  size_t Encode(const wchar_t* w, size_t n, bool end, char* dst, bool* suspect) {
    if (cs_.utf8) {
      size_t replacements = 0;
      size_t got = utf8_.Encode(w, n, end, dst, &replacements);
      *suspect = replacements != 0 || (n != 0 && IsHigh(static_cast<uint32_t>(w[n - 1])));
      return got;
    }
    if (!cs_.page) {
      const unsigned char unknown = CharsetUnknownCode(cs_.cs);
      bool lost = false;
      for (size_t i = 0; i < n; ++i) {
        uint32_t c = static_cast<uint32_t>(w[i]);
        unsigned char b = c > 0xFFFF ? 0 : reverse_[c];
        if (b == 0 && c != 0) {
          b = unknown;
          lost = true;
        }
        dst[i] = static_cast<char>(b);
      }
      *suspect = lost;
      return n;
    }
    // What ConvertSystemToMBCSChar writes for the text (embedded NULs are
    // converted as themselves).
    *suspect = false;
    if (n == 0)
      return 0;
    BOOL used = FALSE;
    int got = WideCharToMultiByte(CodePage(), WC_COMPOSITECHECK, w, static_cast<int>(n), dst,
                                  static_cast<int>(MaxBytes(n)), nullptr, &used);
    *suspect = used != FALSE;
    return got > 0 ? static_cast<size_t>(got) : 0;
  }

  /// Lacks - true when the target cannot represent the character w[a, b).
  bool Lacks(const wchar_t* w, size_t a, size_t b) {
    uint32_t first = static_cast<uint32_t>(w[a]);
    if (cs_.utf8) // only a surrogate outside a pair; marks are no surrogates
      return (IsHigh(first) || IsLow(first)) &&
             !(IsHigh(first) && b > a + 1 && IsLow(static_cast<uint32_t>(w[a + 1])));
    if (!cs_.page) {
      for (size_t i = a; i < b; ++i) {
        uint32_t u = static_cast<uint32_t>(w[i]);
        if (u > 0xFFFF || (u != 0 && reverse_[u] == 0))
          return true;
      }
      return false;
    }
    if (b == a + 1 && first <= 0xFFFF) {
      if (!known_[first])
        known_[first] = UsedDefault(w + a, 1) ? 2 : 1;
      return known_[first] == 2;
    }
    return UsedDefault(w + a, b - a);
  }

private:
  UINT CodePage() const { return static_cast<UINT>(GetWinCodePage(cs_.cs)); }

  // UsedDefault - whether the page writes its default character for any of
  // the n units at s (converted as ConvertSystemToMBCSChar converts them).
  // The size query reports it without writing anything.
  bool UsedDefault(const wchar_t* s, size_t n) {
    BOOL used = FALSE;
    WideCharToMultiByte(CodePage(), WC_COMPOSITECHECK, s, static_cast<int>(n), nullptr, 0, nullptr,
                        &used);
    return used != FALSE;
  }

  const Charset& cs_;
  qx::platform::Utf8Encoder utf8_;
  std::vector<unsigned char> reverse_; // map targets: unit => byte, 0 if none
  std::vector<unsigned char> known_;   // page targets: 0 untested, 1 shown, 2 not
};

// RewriteLineEnds - every CR LF, CR and LF of w[0, n) as `lineEnd` into
// `out` (room for n * lineEnd.size() units); the units written. A CR that
// ends a slice was held back, so a pair is never split.
size_t RewriteLineEnds(const wchar_t* w, size_t n, const std::wstring& lineEnd, wchar_t* out) {
  size_t o = 0;
  for (size_t i = 0; i < n; ++i) {
    wchar_t u = w[i];
    if (u == L'\r' && i + 1 < n && w[i + 1] == L'\n')
      continue; // the pair is one line break: its LF writes it
    if (u == L'\r' || u == L'\n') {
      for (wchar_t e : lineEnd)
        out[o++] = e;
    } else {
      out[o++] = u;
    }
  }
  return o;
}

} // namespace

bool ParseCharset(const char* text, Charset* out) {
  out->name = text;
  if (!strcasecmp(text, "UTF-8") || !strcasecmp(text, "UTF8")) {
    out->utf8 = true;
    out->name = "UTF-8";
    return true;
  }
  std::wstring wide = qx::platform::Utf8ToWide(text);
  out->cs = Str2CS(wide.c_str());
  if (out->cs == QXCHARSET_NONE)
    return false;
  out->name = qx::platform::WideToUtf8(CS2Str(out->cs));
  out->page = GetWinCodePage(out->cs) != -1;
  out->dbcs = CharsetDBCS(out->cs);
  if (const qx::CharsetUnicodeMap* map = qx::CharsetUnicodeMapOf(out->cs))
    out->map = *map;
  return true;
}

// ---- The transcoder --------------------------------------------------------

struct Transcoder::State {
  State(const Charset& f, const Charset& t, const wchar_t* end, size_t slice)
      : from(f), to(t), decoder(from), encoder(to), keep(end == nullptr), lineEnd(end ? end : L""),
        slice(slice == 0 ? 1 : slice) {
    if (keep && to.utf8 && !from.utf8 && !(from.page && from.dbcs))
      route = ByteRoute::Make(decoder);
  }

  void Slice(const char* s, size_t n, bool end, std::string* out);

  // ByteRoute - a single-byte source to UTF-8 with the line ends kept, one
  // pass over the bytes: each byte's sequence is what the decoder and the
  // UTF-8 encoder give it, found once per byte. The route is taken only
  // when that is exactly the general path's result: every byte one unit,
  // no surrogate (UTF-8 then lacks nothing), CR and LF only from
  // themselves (a byte is a unit for the line count), and an undefined
  // byte's unit no nonspacing mark (so it starts a character of its own and
  // each counts once, at its own place).
  struct ByteRoute {
    char utf8[256][4];
    uint8_t length[256];
    bool undefined[256] = {};
    bool asciiSame; // 0x00-0x7F decode to themselves

    static std::unique_ptr<ByteRoute> Make(Decoder& decoder) {
      std::unique_ptr<ByteRoute> r(new ByteRoute());
      r->asciiSame = true;
      // All 256 bytes in one call: one unit each, so the flagged places are
      // the undefined bytes (and no two bytes combine).
      char all[256];
      for (unsigned b = 0; b < 256; ++b)
        all[b] = static_cast<char>(b);
      wchar_t units[Decoder::MaxUnits(256)];
      std::vector<size_t> flags;
      if (decoder.Decode(all, 256, true, units, 0, &flags) != 256)
        return nullptr;
      for (size_t f : flags)
        r->undefined[f] = true;
      for (unsigned b = 0; b < 256; ++b) {
        const wchar_t* unit = units + b;
        uint32_t u = static_cast<uint32_t>(unit[0]);
        if (IsHigh(u) || IsLow(u) || (u == '\r') != (b == '\r') || (u == '\n') != (b == '\n') ||
            (r->undefined[b] && IsMark(unit[0])))
          return nullptr;
        char bytes[qx::platform::Utf8Encoder::MaxBytes(1)];
        qx::platform::Utf8Encoder utf8;
        size_t len = utf8.Encode(unit, 1, true, bytes);
        if (len > sizeof r->utf8[b])
          return nullptr;
        std::memcpy(r->utf8[b], bytes, len);
        r->length[b] = static_cast<uint8_t>(len);
        if (b < 0x80 && (u != b || r->undefined[b]))
          r->asciiSame = false;
      }
      return r;
    }
  };

  // RouteSlice - the n bytes at s through the byte route.
  void RouteSlice(const char* s, size_t n, std::string* out) {
    const ByteRoute& r = *route;
    const auto* u = reinterpret_cast<const uint8_t*>(s);
    char* d = bytes.Room(4 * n + 16);
    size_t o = 0;
    unsigned long long lost = 0;
    size_t first = 0;
    for (size_t i = 0; i < n;) {
      if (r.asciiSame && n - i >= 16) { // an ASCII run: 16 bytes copied, the run kept
        unsigned high = qx::platform::HighBytes16(u + i);
        size_t run = high == 0 ? 16 : static_cast<size_t>(std::countr_zero(high));
        std::memcpy(d + o, u + i, 16);
        i += run;
        o += run;
        if (run == 16)
          continue;
      }
      uint8_t c = u[i];
      std::memcpy(d + o, r.utf8[c], 4);
      o += r.length[c];
      if (r.undefined[c] && lost++ == 0)
        first = i;
      ++i;
    }
    out->append(d, o);
    if (report.count == 0)
      Track(u, lost != 0 ? first : n);
    if (lost != 0 && report.count == 0) {
      report.line = line;
      report.column = column;
    }
    report.count += lost;
  }

  // Track - advances the line and column over the n units at w (wide
  // units, or bytes that are one unit each): line breaks are CR LF, CR and
  // LF; a column is a unit.
  template <typename T> void Track(const T* w, size_t n) {
    size_t p = n; // just past the last CR or LF
    while (p > 0 && w[p - 1] != '\r' && w[p - 1] != '\n')
      --p;
    if (p == 0) {
      column += n;
      lastWasCr = lastWasCr && n == 0;
      return;
    }
    // An LF after a CR is no break of its own; 16 units at a time.
    unsigned long long breaks = 0;
    unsigned crBefore = lastWasCr ? 1 : 0; // the unit before the block was a CR
    size_t k = 0;
    for (; p - k >= 16; k += 16) {
      if (crBefore == 0 && !MayBreak16(w + k))
        continue;
      unsigned cr = Equal16(w + k, '\r');
      unsigned lf = Equal16(w + k, '\n');
      if ((cr | lf | crBefore) == 0)
        continue;
      breaks += Ones16(cr) + Ones16(lf & ~(cr << 1 | crBefore));
      crBefore = cr >> 15;
    }
    for (; k < p; ++k) {
      bool cr = w[k] == '\r';
      breaks += cr || (w[k] == '\n' && crBefore == 0);
      crBefore = cr ? 1 : 0;
    }
    line += breaks;
    column = 1 + (n - p);
    lastWasCr = p == n && w[n - 1] == '\r';
  }

  // Report - counts the characters of w[0, n) that did not survive: a
  // character is flagged when the source left any of its units undefined
  // (flagged positions, sorted) or the target cannot represent it.
  void Report(const wchar_t* w, size_t n, const size_t* flags, size_t flagCount) {
    size_t tracked = 0; // the units tracked so far
    for (size_t a = 0, f = 0; a < n;) {
      size_t b = SegmentEnd(w, n, a);
      bool bad = false;
      for (; f < flagCount && flags[f] < b; ++f)
        bad = true;
      if (bad || encoder.Lacks(w, a, b)) {
        if (report.count++ == 0) {
          Track(w, a);
          tracked = a;
          report.line = line;
          report.column = column;
        }
      }
      a = b;
    }
    if (report.count == 0)
      Track(w + tracked, n - tracked);
  }

  Charset from, to;
  Decoder decoder;
  Encoder encoder;
  std::unique_ptr<ByteRoute> route; // null: the general path
  bool keep;
  std::wstring lineEnd;
  size_t slice;                // bytes converted at a time
  std::string carried;         // a double-byte lead byte cut at the last slice's end
  std::string joined;          // it and the next slice
  Buffer<wchar_t> wide;        // the held character, then the slice's text
  size_t held = 0;             // the units of the held character
  std::vector<size_t> flagged; // places of units the source left undefined
  Buffer<wchar_t> rewritten;   // the text with its line ends rewritten
  Buffer<char> bytes;          // the target's bytes
  Unconverted report;
  unsigned long long line = 1, column = 1;
  bool lastWasCr = false;
};

void Transcoder::State::Slice(const char* s, size_t n, bool end, std::string* out) {
  if (route) {
    RouteSlice(s, n, out);
    return;
  }
  // A lead byte cut at the last slice's end comes first.
  if (!carried.empty()) {
    joined.assign(carried);
    joined.append(s, n);
    s = joined.data();
    n = joined.size();
  }
  size_t whole = decoder.Complete(s, n, end);
  carried.clear(); // at most a lead byte
  for (size_t i = whole; i < n; ++i)
    carried.push_back(s[i]);
  wchar_t* w = wide.Room(held + Decoder::MaxUnits(whole), held);
  size_t size = held + decoder.Decode(s, whole, end, w + held, held, &flagged);

  // The last character waits for the marks (or the LF) that may follow it,
  // unless it is implausibly long; an LF waits with the CR before it.
  size_t last = size;
  if (!end && size != 0) {
    last = LastSegmentStart(w, size);
    if (last > 0 && w[last] == L'\n' && w[last - 1] == L'\r')
      --last;
    if (size - last > kMaxHeld)
      last = size;
  }

  const wchar_t* text = w;
  size_t length = last;
  if (!keep) {
    text = rewritten.Room(last * lineEnd.size() + 1);
    length = RewriteLineEnds(w, last, lineEnd, rewritten.data());
  }
  bool suspect = false;
  char* b = bytes.Room(Encoder::MaxBytes(length));
  out->append(b, encoder.Encode(text, length, end, b, &suspect));

  size_t sourceFlags =
      static_cast<size_t>(std::lower_bound(flagged.begin(), flagged.end(), last) - flagged.begin());
  if (suspect || sourceFlags != 0)
    Report(w, last, flagged.data(), sourceFlags);
  else if (report.count == 0)
    Track(w, last);

  // Keep the held character (and its flags) for the next slice.
  held = size - last;
  std::memmove(w, w + last, held * sizeof(wchar_t));
  flagged.erase(flagged.begin(), flagged.begin() + static_cast<std::ptrdiff_t>(sourceFlags));
  for (size_t& f : flagged)
    f -= last;
}

Transcoder::Transcoder(const Charset& from, const Charset& to, const wchar_t* lineEnd, size_t slice)
    : state_(new State(from, to, lineEnd, slice)) {}

Transcoder::~Transcoder() = default;

const Unconverted& Transcoder::unconverted() const { return state_->report; }

void Transcoder::Convert(const char* s, size_t n, bool end, std::string* out) {
  State& st = *state_;
  do {
    size_t take = std::min(n, st.slice);
    st.Slice(s, take, end && take == n, out);
    s += take;
    n -= take;
  } while (n != 0);
}

} // namespace qxcli
