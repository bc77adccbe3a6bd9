//===- platform/ascii_blocks.h - ASCII 16 bytes or units at a time -*- C++ -*-===//
//
// Provides: the block helpers of the conversion fast paths (no Windows calls
// of their own): tests and copies of 16 bytes or 16 units at once, SSE2 where
// the compiler targets it (every x86-64), plain loops elsewhere. wchar_t is
// 32 bits here and holds one UTF-16 unit.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_ASCII_BLOCKS_H
#define QXUTIL_PLATFORM_ASCII_BLOCKS_H

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qx::platform {

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

// EqualBytes16 - bit k set when the byte s[k] is `c`.
inline unsigned EqualBytes16(const uint8_t* s, uint8_t c) {
#if defined(__SSE2__)
  __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
  return static_cast<unsigned>(
      _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(c)))));
#else
  unsigned m = 0;
  for (unsigned k = 0; k < 16; ++k) {
    m |= (s[k] == c ? 1u : 0u) << k;
  }
  return m;
#endif
}

#if defined(__SSE2__)
// Mask16 - bit k set when test(unit k) holds; `test` compares four units
// of a 128-bit lane at once and gives all-ones lanes where it holds.
template <typename Test> inline unsigned Mask16(const wchar_t* s, Test test) {
  const auto* p = reinterpret_cast<const __m128i*>(s);
  auto lane = [&](int k) { return test(_mm_loadu_si128(p + k)); };
  __m128i packed =
      _mm_packs_epi16(_mm_packs_epi32(lane(0), lane(1)), _mm_packs_epi32(lane(2), lane(3)));
  return static_cast<unsigned>(_mm_movemask_epi8(packed));
}
#endif

// Below16 - bit k set when the unit s[k] is below `limit` (compared as signed
// 32-bit values).
inline unsigned Below16(const wchar_t* s, wchar_t limit) {
#if defined(__SSE2__)
  const __m128i v = _mm_set1_epi32(static_cast<int>(limit));
  return Mask16(s, [&](__m128i u) { return _mm_cmplt_epi32(u, v); });
#else
  unsigned m = 0;
  for (unsigned k = 0; k < 16; ++k) {
    m |= (static_cast<int32_t>(s[k]) < static_cast<int32_t>(limit) ? 1u : 0u) << k;
  }
  return m;
#endif
}

// NonAscii16 - bit k set when the unit s[k] is not U+0000-U+007F.
inline unsigned NonAscii16(const wchar_t* s) {
#if defined(__SSE2__)
  const __m128i high = _mm_set1_epi32(~0x7F), zero = _mm_setzero_si128();
  return ~Mask16(s, [&](__m128i u) { return _mm_cmpeq_epi32(_mm_and_si128(u, high), zero); }) &
         0xFFFF;
#else
  unsigned m = 0;
  for (unsigned k = 0; k < 16; ++k) {
    m |= (static_cast<uint32_t>(s[k]) > 0x7F ? 1u : 0u) << k;
  }
  return m;
#endif
}

// Equal16 - bit k set when the unit s[k] is `c`.
inline unsigned Equal16(const wchar_t* s, wchar_t c) {
#if defined(__SSE2__)
  const __m128i v = _mm_set1_epi32(static_cast<int>(c));
  return Mask16(s, [&](__m128i u) { return _mm_cmpeq_epi32(u, v); });
#else
  unsigned m = 0;
  for (unsigned k = 0; k < 16; ++k) {
    m |= (s[k] == c ? 1u : 0u) << k;
  }
  return m;
#endif
}

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_ASCII_BLOCKS_H
