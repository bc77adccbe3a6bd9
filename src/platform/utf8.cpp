// Provides: the streaming UTF-8 codec and the whole-string conversions of utf8.h.
#include "platform/utf8.h"

#include <cstring>

namespace qx::platform {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

bool IsHigh(uint32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool IsLow(uint32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

// The well-formed sequences (Unicode's table of them): the lead bytes, the
// length they start, and the range of the second byte that keeps a sequence
// free of overlong forms, surrogates and values above U+10FFFF.
struct LeadRange {
  uint8_t first, last;
  uint8_t length;
  uint8_t low, high;
};

constexpr LeadRange kLeads[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

const LeadRange* FindLead(uint8_t b) {
  for (const LeadRange& r : kLeads)
    if (b >= r.first && b <= r.last)
      return &r;
  return nullptr;
}

// Put - writes one code point as UTF-8 at d; returns the bytes written.
size_t Put(uint32_t c, char* d) {
  if (c < 0x80) {
    d[0] = static_cast<char>(c);
    return 1;
  }
  if (c < 0x800) {
    d[0] = static_cast<char>(0xC0 | c >> 6);
    d[1] = static_cast<char>(0x80 | (c & 0x3F));
    return 2;
  }
  if (c < 0x10000) {
    d[0] = static_cast<char>(0xE0 | c >> 12);
    d[1] = static_cast<char>(0x80 | (c >> 6 & 0x3F));
    d[2] = static_cast<char>(0x80 | (c & 0x3F));
    return 3;
  }
  d[0] = static_cast<char>(0xF0 | c >> 18);
  d[1] = static_cast<char>(0x80 | (c >> 12 & 0x3F));
  d[2] = static_cast<char>(0x80 | (c >> 6 & 0x3F));
  d[3] = static_cast<char>(0x80 | (c & 0x3F));
  return 4;
}

} // namespace

size_t Utf8Decoder::Decode(const char* s, size_t n, bool end, wchar_t* dst, bool* replaced) {
  size_t o = 0;
  auto emit = [&](uint32_t u, bool bad) {
    dst[o] = static_cast<wchar_t>(u);
    if (replaced)
      replaced[o] = bad;
    ++o;
  };
  for (size_t i = 0; i < n;) {
    uint8_t b = static_cast<uint8_t>(s[i]);
    if (have_ != 0) {
      if (b < low_ || b > high_) {
        // The sequence so far is a maximal subpart: one U+FFFD; the byte
        // starts afresh.
        emit(kReplacement, true);
        have_ = 0;
        continue;
      }
      value_ = value_ << 6 | (b & 0x3Fu);
      low_ = 0x80;
      high_ = 0xBF;
      ++i;
      if (++have_ < need_)
        continue;
      have_ = 0;
      if (value_ >= 0x10000) {
        emit(0xD800 + ((value_ - 0x10000) >> 10), false);
        emit(0xDC00 + (value_ & 0x3FF), false);
      } else {
        emit(value_, false);
      }
      continue;
    }
    ++i;
    if (b < 0x80) {
      emit(b, false);
      continue;
    }
    const LeadRange* lead = FindLead(b);
    if (!lead) {
      emit(kReplacement, true); // no sequence starts with this byte
      continue;
    }
    need_ = lead->length;
    low_ = lead->low;
    high_ = lead->high;
    value_ = b & (0x7Fu >> lead->length);
    have_ = 1;
  }
  if (end && have_ != 0) {
    emit(kReplacement, true);
    have_ = 0;
  }
  return o;
}

size_t Utf8Encoder::Encode(const wchar_t* s, size_t n, bool end, char* dst, size_t* replacements) {
  size_t o = 0;
  size_t bad = 0;
  for (size_t i = 0; i < n; ++i) {
    uint32_t u = static_cast<uint32_t>(s[i]);
    if (high_ != 0) {
      uint32_t high = high_;
      high_ = 0;
      if (IsLow(u)) {
        o += Put(0x10000 + ((high - 0xD800) << 10) + (u - 0xDC00), dst + o);
        continue;
      }
      o += Put(kReplacement, dst + o); // a high surrogate without its low half
      ++bad;
    }
    if (IsHigh(u)) {
      high_ = u;
    } else if (IsLow(u) || u > 0x10FFFF) {
      o += Put(kReplacement, dst + o);
      ++bad;
    } else {
      o += Put(u, dst + o);
    }
  }
  if (end && high_ != 0) {
    high_ = 0;
    o += Put(kReplacement, dst + o);
    ++bad;
  }
  if (replacements)
    *replacements += bad;
  return o;
}

std::string WideToUtf8(const wchar_t* text) {
  std::string out;
  if (!text)
    return out;
  size_t n = std::wcslen(text);
  out.resize(Utf8Encoder::MaxBytes(n));
  Utf8Encoder encoder;
  out.resize(encoder.Encode(text, n, true, out.data()));
  return out;
}

std::wstring Utf8ToWide(const char* text) {
  std::wstring out;
  if (!text)
    return out;
  size_t n = std::strlen(text);
  out.resize(Utf8Decoder::MaxUnits(n));
  Utf8Decoder decoder;
  out.resize(decoder.Decode(text, n, true, out.data()));
  return out;
}

} // namespace qx::platform
