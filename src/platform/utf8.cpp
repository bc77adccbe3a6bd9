// Provides: the streaming UTF-8 codec and the whole-string conversions of utf8.h.
#include "platform/utf8.h"

#include "platform/ascii_blocks.h"

#include <array>
#include <bit>
#include <cstring>
#include <iterator>

#if defined(__x86_64__) && defined(__GNUC__)
#include <tmmintrin.h>
#define QXUTIL_UTF8_SHUFFLE 1 // blocks of the BMP through SSSE3's byte shuffle
#endif

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

// kLeadOf - each byte's entry of kLeads plus one; 0 for a byte that starts
// no sequence of two bytes or more.
constexpr auto kLeadOf = [] {
  std::array<uint8_t, 256> lead{};
  for (size_t k = 0; k < std::size(kLeads); ++k)
    for (unsigned b = kLeads[k].first; b <= kLeads[k].last; ++b)
      lead[b] = static_cast<uint8_t>(k + 1);
  return lead;
}();

const LeadRange* FindLead(uint8_t b) { return kLeadOf[b] != 0 ? &kLeads[kLeadOf[b] - 1] : nullptr; }

// WholeSequence - the value of the well-formed sequence of lead->length
// bytes at s (the lead byte first), or false when it is not one.
bool WholeSequence(const uint8_t* s, const LeadRange& lead, uint32_t* value) {
  if (s[1] < lead.low || s[1] > lead.high)
    return false;
  uint32_t v = (s[0] & (0x7Fu >> lead.length)) << 6 | (s[1] & 0x3Fu);
  for (unsigned k = 2; k < lead.length; ++k) {
    if ((s[k] & 0xC0) != 0x80)
      return false;
    v = v << 6 | (s[k] & 0x3Fu);
  }
  *value = v;
  return true;
}

// Put - writes one code point as UTF-8 at d; returns the bytes written.
inline size_t Put(uint32_t c, char* d) {
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

// FastDecode - decodes from s[i] while the text is ASCII (16 bytes widened
// at once; the units past a run are overwritten later, within the room) or
// whole well-formed sequences of two or three bytes; returns where it
// stopped (at the end, or at a byte the state machine must take).
template <bool kFlags>
size_t FastDecode(const uint8_t* s, size_t i, size_t n, wchar_t* dst, size_t* po, bool* replaced) {
  size_t o = *po;
  while (i < n) {
    uint8_t b = s[i];
    if (b < 0x80) {
      if (n - i >= 16) {
        unsigned high = HighBytes16(s + i);
        size_t run = high == 0 ? 16 : static_cast<size_t>(std::countr_zero(high));
        Widen16(s + i, dst + o);
        if constexpr (kFlags)
          std::memset(replaced + o, 0, 16 * sizeof(bool));
        i += run;
        o += run;
      } else {
        dst[o] = b;
        if constexpr (kFlags)
          replaced[o] = false;
        ++i;
        ++o;
      }
      continue;
    }
    uint32_t u;
    if (b >= 0xE0 && b < 0xF0 && n - i >= 3) {
      uint8_t c1 = s[i + 1], c2 = s[i + 2];
      // E0 needs A0..BF next (no overlong form), ED 80..9F (no surrogate).
      uint8_t low = b == 0xE0 ? 0xA0 : 0x80, high = b == 0xED ? 0x9F : 0xBF;
      if (c1 < low || c1 > high || (c2 & 0xC0) != 0x80)
        break;
      u = (b & 0x0Fu) << 12 | (c1 & 0x3Fu) << 6 | (c2 & 0x3Fu);
      i += 3;
    } else if (b >= 0xC2 && b < 0xE0 && n - i >= 2) {
      uint8_t c1 = s[i + 1];
      if ((c1 & 0xC0) != 0x80)
        break;
      u = (b & 0x1Fu) << 6 | (c1 & 0x3Fu);
      i += 2;
    } else {
      break;
    }
    dst[o] = static_cast<wchar_t>(u);
    if constexpr (kFlags)
      replaced[o] = false;
    ++o;
  }
  *po = o;
  return i;
}

#if defined(QXUTIL_UTF8_SHUFFLE)
// kShuffles - for four units (key bit k: unit k takes two bytes or more, bit
// 4 + k: three), which bytes of their 32-bit lanes, each holding the unit's
// sequence from its low byte up, make the output; and how many.
struct ShuffleTable {
  uint8_t pick[256][16];
  uint8_t length[256];
};

constexpr ShuffleTable kShuffles = [] {
  ShuffleTable t{};
  for (unsigned key = 0; key < 256; ++key) {
    unsigned j = 0;
    for (unsigned k = 0; k < 4; ++k) {
      unsigned len = 1 + (key >> k & 1) + (key >> (4 + k) & 1);
      for (unsigned b = 0; b < len && j < 16; ++b)
        t.pick[key][j++] = static_cast<uint8_t>(4 * k + b);
    }
    t.length[key] = static_cast<uint8_t>(j);
    for (; j < 16; ++j)
      t.pick[key][j] = 0x80; // a zero byte
  }
  return t;
}();

const bool kHasShuffle = __builtin_cpu_supports("ssse3");

// BmpBlock16 - the 16 units at s are all U+0000-U+FFFF and no surrogate.
inline bool BmpBlock16(const wchar_t* s) {
  const auto* p = reinterpret_cast<const __m128i*>(s);
  __m128i bad = _mm_setzero_si128();
  for (int k = 0; k < 4; ++k) {
    __m128i u = _mm_loadu_si128(p + k);
    __m128i surrogate = _mm_and_si128(_mm_cmpgt_epi32(u, _mm_set1_epi32(0xD7FF)),
                                      _mm_cmplt_epi32(u, _mm_set1_epi32(0xE000)));
    bad = _mm_or_si128(bad, _mm_or_si128(surrogate, _mm_cmpgt_epi32(u, _mm_set1_epi32(0xFFFF))));
    bad = _mm_or_si128(bad, _mm_cmplt_epi32(u, _mm_setzero_si128()));
  }
  return _mm_movemask_epi8(bad) == 0;
}

// EncodeBmp16 - the UTF-8 of the 16 units at s (a BmpBlock16) into d; the
// bytes written. Four units at a time: each lane's sequence is built in
// place, then one shuffle packs the lanes' bytes (16 bytes stored, the
// spare ones overwritten later; room for 52).
__attribute__((target("ssse3"))) size_t EncodeBmp16(const wchar_t* s, char* d) {
  const auto* p = reinterpret_cast<const __m128i*>(s);
  const __m128i c3f = _mm_set1_epi32(0x3F);
  const __m128i c80 = _mm_set1_epi32(0x80);
  auto blend = [](__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, b), _mm_andnot_si128(mask, a));
  };
  size_t o = 0;
  for (int k = 0; k < 4; ++k) {
    __m128i u = _mm_loadu_si128(p + k);
    __m128i two = _mm_cmpgt_epi32(u, _mm_set1_epi32(0x7F));
    __m128i three = _mm_cmpgt_epi32(u, _mm_set1_epi32(0x7FF));
    __m128i last = _mm_or_si128(_mm_and_si128(u, c3f), c80);
    __m128i middle = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(u, 6), c3f), c80);
    __m128i w2 = _mm_or_si128(_mm_or_si128(_mm_srli_epi32(u, 6), _mm_set1_epi32(0xC0)),
                              _mm_slli_epi32(last, 8));
    __m128i w3 = _mm_or_si128(_mm_or_si128(_mm_srli_epi32(u, 12), _mm_set1_epi32(0xE0)),
                              _mm_or_si128(_mm_slli_epi32(middle, 8), _mm_slli_epi32(last, 16)));
    __m128i w = blend(three, blend(two, u, w2), w3);
    unsigned key = static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(two)) |
                                         _mm_movemask_ps(_mm_castsi128_ps(three)) << 4);
    __m128i pick = _mm_loadu_si128(reinterpret_cast<const __m128i*>(kShuffles.pick[key]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + o), _mm_shuffle_epi8(w, pick));
    o += kShuffles.length[key];
  }
  return o;
}
#endif

} // namespace

size_t Utf8Decoder::Decode(const char* s, size_t n, bool end, wchar_t* dst, bool* replaced) {
  size_t o = 0;
  auto emit = [&](uint32_t u, bool bad) {
    dst[o] = static_cast<wchar_t>(u);
    if (replaced)
      replaced[o] = bad;
    ++o;
  };
  const auto* bytes = reinterpret_cast<const uint8_t*>(s);
  for (size_t i = 0; i < n;) {
    uint8_t b = bytes[i];
    if (have_ == 0) {
      size_t from = i;
      i = replaced ? FastDecode<true>(bytes, i, n, dst, &o, replaced)
                   : FastDecode<false>(bytes, i, n, dst, &o, nullptr);
      if (i != from || i == n)
        continue;
      b = bytes[i];
      // A four-byte sequence whole.
      const LeadRange* lead = FindLead(b);
      uint32_t value;
      if (lead && n - i >= lead->length && WholeSequence(bytes + i, *lead, &value)) {
        if (value >= 0x10000) {
          emit(0xD800 + ((value - 0x10000) >> 10), false);
          emit(0xDC00 + (value & 0x3FF), false);
        } else {
          emit(value, false);
        }
        i += lead->length;
        continue;
      }
    }
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
  uint32_t waiting = high_; // a local: stores through char* could alias the member
  for (size_t i = 0; i < n; ++i) {
    uint32_t u = static_cast<uint32_t>(s[i]);
    if (waiting == 0) {
      // Between surrogate pairs: an ASCII run, 16 units narrowed at once
      // (the bytes past the run are overwritten later, within the room), and
      // the units of one to three bytes.
      if (n - i >= 16) {
        unsigned other = NonAscii16(s + i);
#if defined(QXUTIL_UTF8_SHUFFLE)
        if (other != 0 && kHasShuffle && BmpBlock16(s + i)) {
          o += EncodeBmp16(s + i, dst + o);
          i += 15;
          continue;
        }
#endif
        if (u < 0x80) {
          size_t run = other == 0 ? 16 : static_cast<size_t>(std::countr_zero(other));
          Narrow16(s + i, dst + o);
          i += run - 1;
          o += run;
          continue;
        }
      }
      if (u < 0xD800 || (u >= 0xE000 && u < 0x10000)) {
        o += Put(u, dst + o);
        continue;
      }
    } else {
      uint32_t high = waiting;
      waiting = 0;
      if (IsLow(u)) {
        o += Put(0x10000 + ((high - 0xD800) << 10) + (u - 0xDC00), dst + o);
        continue;
      }
      o += Put(kReplacement, dst + o); // a high surrogate without its low half
      ++bad;
    }
    if (IsHigh(u)) {
      waiting = u;
    } else if (IsLow(u) || u > 0x10FFFF) {
      o += Put(kReplacement, dst + o);
      ++bad;
    } else {
      o += Put(u, dst + o);
    }
  }
  if (end && waiting != 0) {
    waiting = 0;
    o += Put(kReplacement, dst + o);
    ++bad;
  }
  high_ = waiting;
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
