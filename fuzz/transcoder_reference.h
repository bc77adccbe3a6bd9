//===- fuzz/transcoder_reference.h - The transcoder, one character at a time -*- C++ -*-===//
//
// The conversion of 'qxutil convert' as it was first written: every source
// unit flagged in a vector, every character tested on its own, every unit
// appended one by one, ConvertSystemToMBCSChar per run between NULs. Slow,
// but plainly what the command promises; the fuzz target holds the
// transcoder (tools/qxutil/transcoder.h) to its bytes, counts and places.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FUZZ_TRANSCODER_REFERENCE_H
#define QXUTIL_FUZZ_TRANSCODER_REFERENCE_H

#include "platform/codepage.h"
#include "platform/unicode.h"
#include "platform/utf8.h"
#include "text/charset_maps.h"
#include "transcoder.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace qxref {

using namespace qx::win;
using qxcli::Charset;
using qxcli::Unconverted;

namespace {

constexpr size_t kMaxHeld = 1024; // the longest character kept back for its marks

bool IsHigh(uint32_t u) { return u >= 0xD800 && u < 0xDC00; }
bool IsLow(uint32_t u) { return u >= 0xDC00 && u < 0xE000; }

// SegmentEnd - the end of the character that starts at w[a]: a unit, the
// low half of a surrogate pair, and the nonspacing marks that follow (what
// CharNextW steps over and WC_COMPOSITECHECK groups).
size_t SegmentEnd(const std::wstring& w, size_t a) {
  size_t i = a + 1;
  if (IsHigh(static_cast<uint32_t>(w[a])) && i < w.size() && IsLow(static_cast<uint32_t>(w[i])))
    ++i;
  while (i < w.size() && qx::platform::IsNonSpacingMark(static_cast<uint32_t>(w[i])))
    ++i;
  return i;
}

// ---- Decoding --------------------------------------------------------------

// Decoder - bytes to wide text, flagging each unit whose character was
// undefined in the source. A code page's input must hold whole characters
// (the transcoder keeps a cut double-byte pair back); UTF-8 streams.
class Decoder {
public:
  explicit Decoder(const Charset& cs) : cs_(cs) {
    if (cs.page && cs.dbcs) {
      // The page's default character: what a lead byte without its trail gives.
      wchar_t unit[2] = {};
      char lead = 0;
      for (int b = 0x81; b < 0x100 && !lead; ++b)
        if (IsDBCSLeadByteEx(CodePage(), static_cast<BYTE>(b)))
          lead = static_cast<char>(b);
      if (lead && ConvertMBCSCharToSystem(&lead, 1, cs.cs, unit, 1))
        defaultUnit_ = unit[0];
      wchar_t text[2] = {defaultUnit_, 0};
      char code[4] = {};
      ConvertSystemToMBCSChar(text, code, cs.cs, sizeof code, false);
      defaultCode_ = static_cast<uint16_t>(static_cast<unsigned char>(code[0]) << 8 |
                                           static_cast<unsigned char>(code[1]));
      if (!code[1])
        defaultCode_ >>= 8;
    }
  }

  /// Complete - how many of the n bytes make whole characters of a
  /// double-byte page (the rest waits for the next chunk, unless this is the
  /// end); all of them for the other charsets.
  size_t Complete(const char* s, size_t n, bool end) const {
    if (end || !cs_.page || !cs_.dbcs)
      return n;
    size_t i = 0;
    while (i < n) {
      if (!IsDBCSLeadByteEx(CodePage(), static_cast<BYTE>(s[i])))
        ++i;
      else if (i + 1 < n)
        i += 2;
      else
        break; // a lead byte whose trail is in the next chunk
    }
    return i;
  }

  /// Decode - appends the wide text of n bytes to *out and a flag per unit.
  void Decode(const char* s, size_t n, bool end, std::wstring* out, std::vector<bool>* flags) {
    if (cs_.utf8) {
      size_t base = out->size();
      out->resize(base + qx::platform::Utf8Decoder::MaxUnits(n));
      std::unique_ptr<bool[]> replaced(new bool[qx::platform::Utf8Decoder::MaxUnits(n)]);
      size_t got = utf8_.Decode(s, n, end, out->data() + base, replaced.get());
      out->resize(base + got);
      flags->insert(flags->end(), replaced.get(), replaced.get() + got);
      return;
    }
    if (n == 0)
      return;
    if (!cs_.page) {
      for (size_t i = 0; i < n; ++i) {
        uint16_t u = cs_.map[static_cast<unsigned char>(s[i])];
        bool unmapped = qx::IsUnmappedMarker(u);
        out->push_back(unmapped ? L'\uFFFD' : u);
        flags->push_back(unmapped);
      }
      return;
    }
    size_t base = out->size();
    wide_.resize(n + 1);
    // One unit per character (no MB_COMPOSITE), embedded NULs included.
    size_t chars = 0;
    for (size_t i = 0; i < n; ++chars)
      i += CharLength(s, n, i);
    if (!ConvertMBCSCharToSystem(s, static_cast<unsigned int>(n), cs_.cs, wide_.data(),
                                 static_cast<unsigned int>(n)))
      std::fill(wide_.begin(), wide_.end(), defaultUnit_);
    out->append(wide_.data(), chars);
    for (size_t i = 0, k = base; i < n; ++k) {
      size_t len = CharLength(s, n, i);
      uint16_t code = static_cast<unsigned char>(s[i]);
      if (len == 2)
        code = static_cast<uint16_t>(code << 8 | static_cast<unsigned char>(s[i + 1]));
      wchar_t u = (*out)[k];
      flags->push_back(u == defaultUnit_ && code != defaultCode_);
      i += len;
    }
  }

private:
  UINT CodePage() const { return static_cast<UINT>(GetWinCodePage(cs_.cs)); }

  size_t CharLength(const char* s, size_t n, size_t i) const {
    if (cs_.dbcs && i + 1 < n && s[i + 1] != 0 &&
        IsDBCSLeadByteEx(CodePage(), static_cast<BYTE>(s[i])))
      return 2;
    return 1;
  }

  const Charset& cs_;
  qx::platform::Utf8Decoder utf8_;
  std::vector<wchar_t> wide_;
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

  /// Lacks - true when the target cannot represent the character w[a, b).
  bool Lacks(const std::wstring& w, size_t a, size_t b) {
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
        known_[first] = UsedDefault(w.data() + a, 1) ? 2 : 1;
      return known_[first] == 2;
    }
    return UsedDefault(w.data() + a, b - a);
  }

  /// Encode - appends the bytes of `w` to *out; `end`: no text follows.
  void Encode(const std::wstring& w, bool end, std::string* out) {
    if (cs_.utf8) {
      size_t base = out->size();
      out->resize(base + qx::platform::Utf8Encoder::MaxBytes(w.size()));
      out->resize(base + utf8_.Encode(w.data(), w.size(), end, out->data() + base));
      return;
    }
    if (!cs_.page) {
      for (wchar_t u : w) {
        uint32_t c = static_cast<uint32_t>(u);
        unsigned char b = c == 0 ? 0 : c > 0xFFFF ? 0 : reverse_[c];
        out->push_back(c != 0 && b == 0 ? static_cast<char>(CharsetUnknownCode(cs_.cs))
                                        : static_cast<char>(b));
      }
      return;
    }
    // ConvertSystemToMBCSChar takes terminated text: convert the runs
    // between embedded NULs.
    for (size_t start = 0; start <= w.size();) {
      size_t stop = w.find(L'\0', start);
      if (stop == std::wstring::npos)
        stop = w.size();
      if (stop > start) {
        std::wstring run = w.substr(start, stop - start);
        bytes_.resize(run.size() * 2 + 1);
        if (ConvertSystemToMBCSChar(run.c_str(), bytes_.data(), cs_.cs,
                                    static_cast<unsigned int>(bytes_.size()), false))
          out->append(bytes_.data());
      }
      if (stop < w.size())
        out->push_back('\0');
      start = stop + 1;
    }
  }

private:
  // UsedDefault - whether the page writes its default character for any of
  // the n units at s (converted as ConvertSystemToMBCSChar converts them).
  // The size query reports it without writing anything.
  bool UsedDefault(const wchar_t* s, size_t n) {
    BOOL used = FALSE;
    WideCharToMultiByte(static_cast<UINT>(GetWinCodePage(cs_.cs)), WC_COMPOSITECHECK, s,
                        static_cast<int>(n), nullptr, 0, nullptr, &used);
    return used != FALSE;
  }

  const Charset& cs_;
  qx::platform::Utf8Encoder utf8_;
  std::vector<unsigned char> reverse_; // map targets: unit => byte, 0 if none
  std::vector<unsigned char> known_;   // page targets: 0 untested, 1 shown, 2 not
  std::vector<char> bytes_;
};

// RewriteLineEnds - every CR LF, CR and LF of `w` as `lineEnd` (a CR that
// ends a chunk was held back, so a pair is never split).
void RewriteLineEnds(std::wstring* w, const std::wstring& lineEnd) {
  std::wstring out;
  out.reserve(w->size() + w->size() / 16);
  for (size_t i = 0; i < w->size(); ++i) {
    wchar_t u = (*w)[i];
    if (u == L'\r' && i + 1 < w->size() && (*w)[i + 1] == L'\n')
      continue; // the pair is one line break: its LF writes it
    if (u == L'\r' || u == L'\n')
      out += lineEnd;
    else
      out += u;
  }
  w->swap(out);
}

} // namespace

// ---- The transcoder --------------------------------------------------------

struct State {
  State(const Charset& f, const Charset& t, const wchar_t* end)
      : from(f), to(t), decoder(from), encoder(to), keep(end == nullptr), lineEnd(end ? end : L"") {
  }

  // Walk - advances the position over `w`, counting the flagged characters.
  void Walk(const std::wstring& w, const std::vector<bool>& flagged) {
    for (size_t i = 0; i < w.size(); ++i) {
      if (flagged[i] && report.count++ == 0) {
        report.line = line;
        report.column = column;
      }
      wchar_t u = w[i];
      if (u == L'\n' && lastWasCr) {
        lastWasCr = false;
        continue;
      }
      lastWasCr = u == L'\r';
      if (u == L'\r' || u == L'\n') {
        ++line;
        column = 1;
      } else {
        ++column;
      }
    }
  }

  Charset from, to;
  Decoder decoder;
  Encoder encoder;
  bool keep;
  std::wstring lineEnd;
  std::string carried;         // a double-byte pair cut at the last chunk's end
  std::wstring held;           // the last character of the last chunk
  std::vector<bool> heldFlags; // its units' flags
  Unconverted report;
  unsigned long long line = 1, column = 1;
  bool lastWasCr = false;
};

class ReferenceTranscoder {
public:
  ReferenceTranscoder(const Charset& from, const Charset& to, const wchar_t* lineEnd)
      : state_(from, to, lineEnd) {}

  const Unconverted& unconverted() const { return state_.report; }

  void Convert(const char* s, size_t n, bool end, std::string* out) {
    State& st = state_;
    // A double-byte pair cut at the last chunk's end comes first.
    std::string joined;
    if (!st.carried.empty()) {
      joined.swap(st.carried);
      joined.append(s, n);
      s = joined.data();
      n = joined.size();
    }
    size_t whole = st.decoder.Complete(s, n, end);
    st.carried.assign(s + whole, n - whole);
    std::wstring wide;
    std::vector<bool> flags;
    wide.swap(st.held);
    flags.swap(st.heldFlags);
    st.decoder.Decode(s, whole, end, &wide, &flags);

    // The last character waits for the marks (or the LF) that may follow it,
    // unless it is implausibly long; an LF waits with the CR before it.
    size_t last = 0;
    for (size_t a = 0; a < wide.size(); a = SegmentEnd(wide, a))
      last = a;
    if (last > 0 && wide[last] == L'\n' && wide[last - 1] == L'\r')
      --last;
    if (!end && !wide.empty() && wide.size() - last <= kMaxHeld) {
      st.held.assign(wide, last);
      st.heldFlags.assign(flags.begin() + static_cast<ptrdiff_t>(last), flags.end());
      wide.resize(last);
      flags.resize(last);
    }
    // A character is flagged, on its first unit, when the source left any of
    // its units undefined or the target cannot represent it.
    for (size_t a = 0; a < wide.size();) {
      size_t b = SegmentEnd(wide, a);
      bool bad = false;
      for (size_t i = a; i < b; ++i) {
        bad = bad || flags[i];
        flags[i] = false;
      }
      flags[a] = bad || st.encoder.Lacks(wide, a, b);
      a = b;
    }
    st.Walk(wide, flags);
    if (!st.keep)
      RewriteLineEnds(&wide, st.lineEnd);
    st.encoder.Encode(wide, end, out);
  }

private:
  State state_;
};

} // namespace qxref

#endif // QXUTIL_FUZZ_TRANSCODER_REFERENCE_H
