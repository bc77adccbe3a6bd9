// The streaming UTF-8 codec: one case of each replacement rule, surrogate
// pairs, the room each call asks for, and chunks; fuzz/utf8_fastpath_fuzz.cpp
// compares random text with the standard's well-formed sequences.
#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using qx::platform::Utf8Decoder;
using qx::platform::Utf8Encoder;

constexpr wchar_t R = 0xFFFD;

struct DecodeCase {
  const char* what;
  std::string bytes;
  std::wstring units;
};

// clang-format off
const DecodeCase kDecodeCases[] = {
    {"ASCII and NUL", std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
    {"U+10000: a surrogate pair", "\xF0\x90\x80\x80", {0xD800, 0xDC00}},
    {"U+10FFFF", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
    {"above U+10FFFF: ill-formed at the second byte", "\xF4\x90\x80\x80", {R, R, R, R}},
    {"overlong three bytes", "\xE0\x80\x80", {R, R, R}},
    {"encoded high surrogate", "\xED\xA0\x80", {R, R, R}},
    {"truncated three bytes: one replacement", "\xE3\x81\x41", {R, L'A'}},
    {"truncated at the end", "a\xF0\x9F\x98", {L'a', R}},
    {"lead byte at the end", "a\xC3", {L'a', R}},
};
// clang-format on

// Chunked - calls step(at, n, end) over `size` elements cut into chunks of
// `chunk` (0: one call), at least once.
template <typename Step> void Chunked(size_t size, size_t chunk, Step step) {
  size_t len = chunk == 0 ? size : chunk;
  size_t at = 0;
  do {
    size_t n = std::min(len, size - at);
    step(at, n, at + n == size);
    at += n;
  } while (at < size);
}

// Decode - `bytes` cut into chunks of `chunk` bytes (0: one call).
std::wstring Decode(const std::string& bytes, size_t chunk, std::vector<bool>* flags = nullptr) {
  Utf8Decoder decoder;
  std::wstring out;
  Chunked(bytes.size(), chunk, [&](size_t at, size_t n, bool end) {
    std::vector<wchar_t> units(Utf8Decoder::MaxUnits(n) + 1, 0x7777);
    std::unique_ptr<bool[]> replaced(new bool[Utf8Decoder::MaxUnits(n)]());
    size_t got = decoder.Decode(bytes.data() + at, n, end, units.data(), replaced.get());
    EXPECT_EQ(units[Utf8Decoder::MaxUnits(n)], 0x7777) << "wrote past the room it asks for";
    out.append(units.data(), got);
    if (flags)
      flags->insert(flags->end(), replaced.get(), replaced.get() + got);
  });
  return out;
}

// Whole, and cut in chunks so that the boundaries fall everywhere.
TEST(Utf8Decode, ReplacesEachMaximalSubpartOnce) {
  for (const DecodeCase& t : kDecodeCases) {
    SCOPED_TRACE(t.what);
    for (size_t chunk : {0, 1, 2, 3}) {
      std::vector<bool> flags;
      std::wstring units = Decode(t.bytes, chunk, &flags);
      EXPECT_EQ(units, t.units) << "chunks of " << chunk;
      for (size_t i = 0; i < units.size(); ++i)
        EXPECT_EQ(flags[i], units[i] == R) << "unit " << i;
    }
    EXPECT_EQ(qx::platform::Utf8ToWide(t.bytes.c_str()), t.units.substr(0, t.units.find(L'\0')));
  }
}

struct EncodeCase {
  const char* what;
  std::wstring units;
  std::string bytes;
  size_t replacements;
};

// clang-format off
const EncodeCase kEncodeCases[] = {
    {"ASCII and NUL", std::wstring(L"a\0b", 3), std::string("a\0b", 3), 0},
    {"a pair", {0xD83D, 0xDE00}, "\xF0\x9F\x98\x80", 0},
    {"lone high surrogate", {0xD800, L'x'}, "\xEF\xBF\xBDx", 1},
    {"reversed pair", {0xDE00, 0xD83D}, "\xEF\xBF\xBD\xEF\xBF\xBD", 2},
    {"a unit above 0xFFFF names its code point", {0x1F600}, "\xF0\x9F\x98\x80", 0},
    {"a negative unit", {static_cast<wchar_t>(-1)}, "\xEF\xBF\xBD", 1},
};
// clang-format on

std::string Encode(const std::wstring& units, size_t chunk, size_t* replacements) {
  Utf8Encoder encoder;
  std::string out;
  Chunked(units.size(), chunk, [&](size_t at, size_t n, bool end) {
    std::vector<char> bytes(Utf8Encoder::MaxBytes(n) + 1, '#');
    size_t got = encoder.Encode(units.data() + at, n, end, bytes.data(), replacements);
    EXPECT_EQ(bytes[Utf8Encoder::MaxBytes(n)], '#') << "wrote past the room it asks for";
    out.append(bytes.data(), got);
  });
  return out;
}

TEST(Utf8Encode, PairsJoinAndLoneSurrogatesAreReplaced) {
  for (const EncodeCase& t : kEncodeCases) {
    SCOPED_TRACE(t.what);
    for (size_t chunk : {0, 1, 2}) {
      size_t replacements = 0;
      EXPECT_EQ(Encode(t.units, chunk, &replacements), t.bytes) << "chunks of " << chunk;
      EXPECT_EQ(replacements, t.replacements);
    }
    if (t.units.find(L'\0') == std::wstring::npos) {
      EXPECT_EQ(qx::platform::WideToUtf8(t.units.c_str()), t.bytes);
    }
  }
  EXPECT_EQ(qx::platform::WideToUtf8(nullptr), "");
  EXPECT_EQ(qx::platform::Utf8ToWide(nullptr), L"");
}

} // namespace
