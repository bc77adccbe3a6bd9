// The streaming UTF-8 codec as tables: the replacement rules for ill-formed
// input, surrogate pairs, the room each call asks for, and the same results
// however the input is cut in chunks.
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
    {"two bytes", "\xC3\xA9", L"\u00E9"}, {"three bytes", "\xE2\x82\xAC", L"\u20AC"},
    {"last before the surrogates", "\xED\x9F\xBF", L"\uD7FF"},
    {"first after the surrogates", "\xEE\x80\x80", L"\uE000"},
    {"U+FFFF", "\xEF\xBF\xBF", {0xFFFF}},
    {"U+10000: a surrogate pair", "\xF0\x90\x80\x80", {0xD800, 0xDC00}},
    {"U+10FFFF", "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
    {"above U+10FFFF: ill-formed at the second byte", "\xF4\x90\x80\x80", {R, R, R, R}},
    {"F5 and above start nothing", "\xF5\x80\x80\x80", {R, R, R, R}},
    {"FF", "a\xFF\xFFz", {L'a', R, R, L'z'}},
    {"overlong two bytes", "\xC0\x80", {R, R}}, {"overlong C1", "\xC1\xBF", {R, R}},
    {"overlong three bytes", "\xE0\x80\x80", {R, R, R}},
    {"overlong three bytes, largest", "\xE0\x9F\xBF", {R, R, R}},
    {"overlong four bytes", "\xF0\x8F\xBF\xBF", {R, R, R, R}},
    {"encoded high surrogate", "\xED\xA0\x80", {R, R, R}},
    {"encoded low surrogate", "\xED\xBF\xBF", {R, R, R}},
    {"stray continuation bytes", "\x80\xBFx", {R, R, L'x'}},
    {"truncated three bytes: one replacement", "\xE3\x81\x41", {R, L'A'}},
    {"truncated four bytes: one replacement", "\xF0\x9F\x98\x41", {R, L'A'}},
    {"truncated at the end", "a\xF0\x9F\x98", {L'a', R}},
    {"lead byte at the end", "a\xC3", {L'a', R}},
    {"lead byte before a lead byte", "\xC3\xC3\xA9", {R, 0xE9}},
    {"too many continuation bytes", "\xC3\xA9\xA9", {0xE9, R}},
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
    {"two and three bytes", L"\u00E9\u20AC", "\xC3\xA9\xE2\x82\xAC", 0},
    {"a pair", {0xD83D, 0xDE00}, "\xF0\x9F\x98\x80", 0},
    {"U+10FFFF as a pair", {0xDBFF, 0xDFFF}, "\xF4\x8F\xBF\xBF", 0},
    {"lone high surrogate", {0xD800, L'x'}, "\xEF\xBF\xBDx", 1},
    {"lone low surrogate", {L'x', 0xDC00}, "x\xEF\xBF\xBD", 1},
    {"high surrogate at the end", {L'x', 0xDBFF}, "x\xEF\xBF\xBD", 1},
    {"two highs, then a low", {0xD83D, 0xD83D, 0xDE00}, "\xEF\xBF\xBD\xF0\x9F\x98\x80", 1},
    {"reversed pair", {0xDE00, 0xD83D}, "\xEF\xBF\xBD\xEF\xBF\xBD", 2},
    {"a unit above 0xFFFF names its code point", {0x1F600}, "\xF0\x9F\x98\x80", 0},
    {"above U+10FFFF", {0x110000}, "\xEF\xBF\xBD", 1},
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
