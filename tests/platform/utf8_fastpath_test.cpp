// The fast paths of the UTF-8 codec (ASCII runs 16 at a time, whole
// sequences at once) against its byte-by-byte state machine: a text
// converted in one call must give what it gives fed one byte or one unit at
// a time, where no fast path applies. Each piece is shifted across the
// 16-byte blocks by an ASCII prefix.
#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using qx::platform::Utf8Decoder;
using qx::platform::Utf8Encoder;

// Units and flags of `bytes` fed in chunks of `chunk` bytes (0: one call).
std::pair<std::wstring, std::vector<bool>> Decode(const std::string& bytes, size_t chunk) {
  Utf8Decoder decoder;
  std::wstring units;
  std::vector<bool> flags;
  size_t step = chunk == 0 ? bytes.size() : chunk;
  for (size_t at = 0; at < bytes.size(); at += step) {
    size_t n = std::min(step, bytes.size() - at);
    std::vector<wchar_t> out(Utf8Decoder::MaxUnits(n));
    std::unique_ptr<bool[]> replaced(new bool[Utf8Decoder::MaxUnits(n)]);
    size_t got =
        decoder.Decode(bytes.data() + at, n, at + n == bytes.size(), out.data(), replaced.get());
    units.append(out.data(), got);
    flags.insert(flags.end(), replaced.get(), replaced.get() + got);
  }
  return {units, flags};
}

std::pair<std::string, size_t> Encode(const std::wstring& units, size_t chunk) {
  Utf8Encoder encoder;
  std::string bytes;
  size_t replacements = 0;
  size_t step = chunk == 0 ? units.size() : chunk;
  for (size_t at = 0; at < units.size(); at += step) {
    size_t n = std::min(step, units.size() - at);
    std::string out(Utf8Encoder::MaxBytes(n), '\0');
    bytes.append(out.data(), encoder.Encode(units.data() + at, n, at + n == units.size(),
                                            out.data(), &replacements));
  }
  return {bytes, replacements};
}

TEST(Utf8FastPath, DecodeAsByteByByte) {
  const std::string kPieces[] = {
      "abcdefghijklmnopqrstuvwxyz",            // ASCII run
      "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80x", // two, three and four bytes
      "\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80",  // overlong, surrogate, too large
      "\xE3\x81"
      "A\x80\xBF\xF0\x9F\x98",      // cut sequences and stray continuations
      std::string("\0\xFF\xC2", 3), // NUL, a byte no sequence starts with
  };
  for (const std::string& piece : kPieces) {
    for (size_t shift = 0; shift <= 17; ++shift) {
      std::string text = std::string(shift, '.') + piece + piece + "tail";
      EXPECT_EQ(Decode(text, 0), Decode(text, 1)) << "shift " << shift;
      EXPECT_EQ(Decode(text, 0), Decode(text, 7)) << "shift " << shift;
    }
  }
}

TEST(Utf8FastPath, EncodeAsUnitByUnit) {
  const std::wstring kPieces[] = {
      L"abcdefghijklmnopqrstuvwxyz",
      L"\u00E9\u20AC\xD83D\xDE00x",
      std::wstring{0xD800, L'a', 0xDC00, 0xDBFF},
      std::wstring(L"\0\u007F\u0080", 3),
  };
  for (const std::wstring& piece : kPieces) {
    for (size_t shift = 0; shift <= 17; ++shift) {
      std::wstring text = std::wstring(shift, L'.') + piece + piece + L"tail";
      EXPECT_EQ(Encode(text, 0), Encode(text, 1)) << "shift " << shift;
    }
  }
}

} // namespace
