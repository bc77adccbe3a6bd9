//===- platform/utf8.h - UTF-8 <=> UTF-16, whole or in chunks ---*- C++ -*-===//
//
// Provides: the library's one UTF-8 codec. Utf8Decoder and Utf8Encoder
// stream: a sequence or a surrogate pair cut at a chunk's end is completed
// by the next chunk. WideToUtf8 and Utf8ToWide convert whole strings (paths,
// module and symbol names for the Linux calls).
//
// The wide side is UTF-16 in 32-bit wchar_t: a character above U+FFFF is a
// surrogate pair. The replacement rules are those of Windows' UTF-8 code
// page (MultiByteToWideChar / WideCharToMultiByte with CP_UTF8 and no
// flags):
//   - decoding: each maximal subpart of an ill-formed sequence becomes one
//     U+FFFD; that is, a lead byte and the continuation bytes that could
//     still have completed it (E3 81 before 'A': one U+FFFD), and every byte
//     that cannot begin a sequence (C0, C1, F5..FF, a stray continuation
//     byte) on its own. Overlong forms (C0 80, E0 80 80), encoded surrogates
//     (ED A0 80) and values above U+10FFFF (F4 90 80 80) are ill-formed at
//     their second byte, so each of their bytes becomes a U+FFFD.
//   - encoding: a lone surrogate becomes U+FFFD (EF BF BD). A unit above
//     0xFFFF, which UTF-16 text never holds, is taken as the code point it
//     names when that is a Unicode scalar value, else it is U+FFFD.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_UTF8_H
#define QXUTIL_PLATFORM_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace qx::platform {

/// Utf8Decoder - UTF-8 bytes to UTF-16 units, chunk by chunk.
class Utf8Decoder {
public:
  /// MaxUnits - the room Decode needs for `n` bytes: every byte gives at
  /// most one unit, and a sequence carried from the last chunk one more.
  static constexpr size_t MaxUnits(size_t n) { return n + 1; }

  /// Decode - decodes the `n` bytes at `s` into `dst` (room for
  /// MaxUnits(n)) and returns the units written. A sequence unfinished at
  /// the end waits for the next call, unless `end` says no bytes follow:
  /// then it becomes U+FFFD. `replaced`, when given, receives one flag per
  /// unit written: true for a U+FFFD that stands for ill-formed input. The
  /// room past the units written (and their flags) may be overwritten.
  size_t Decode(const char* s, size_t n, bool end, wchar_t* dst, bool* replaced = nullptr);

  /// Pending - the bytes of an unfinished sequence held from the last call.
  size_t Pending() const { return have_; }

private:
  uint32_t value_ = 0; // the bits read so far of the unfinished sequence
  uint8_t have_ = 0;   // its bytes read
  uint8_t need_ = 0;   // its length
  uint8_t low_ = 0x80; // the range its next byte must fall in
  uint8_t high_ = 0xBF;
};

/// Utf8Encoder - UTF-16 units to UTF-8 bytes, chunk by chunk.
class Utf8Encoder {
public:
  /// MaxBytes - the room Encode needs for `n` units: four bytes a unit (a
  /// unit above 0xFFFF), and three for a high surrogate carried from the
  /// last chunk.
  static constexpr size_t MaxBytes(size_t n) { return 4 * n + 3; }

  /// Encode - encodes the `n` units at `s` into `dst` (room for
  /// MaxBytes(n)) and returns the bytes written. A high surrogate ending the
  /// chunk waits for its low half, unless `end` says no units follow.
  /// `replacements`, when given, is increased by the lone surrogates and
  /// other non-characters written as U+FFFD. The room past the bytes
  /// written may be overwritten.
  size_t Encode(const wchar_t* s, size_t n, bool end, char* dst, size_t* replacements = nullptr);

private:
  uint32_t high_ = 0; // a high surrogate waiting for its low half, or 0
};

/// WideToUtf8 - encodes `text` (null reads as empty) with Utf8Encoder's rules.
std::string WideToUtf8(const wchar_t* text);

/// Utf8ToWide - decodes `text` (null reads as empty) with Utf8Decoder's
/// rules: characters above U+FFFF become surrogate pairs.
std::wstring Utf8ToWide(const char* text);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_UTF8_H
