// Tests of the program's transcoder: bytes, the count and place of the
// characters that did not survive, and the same results wherever the chunks
// of the input end.
#include "transcoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

struct TranscodeCase {
  const char* what;
  const char* from;
  const char* to;
  const wchar_t* lineEnd; // null: keep
  std::string in;
  std::string out;
  unsigned long long count, line, column;
};

// The conventions of the count and the place; fuzz/transcoder_fuzz.cpp
// holds every route to a one-character-at-a-time reference.
const TranscodeCase kCases[] = {
    {"a mark the page lacks: one character", "UTF-8", "CodePage437", nullptr, "q\xCC\x81x", "q?x",
     1, 1, 1},
    {"a character above U+FFFF is one character", "UTF-8", "WindowsLatin1", nullptr,
     "\xF0\x9F\x98\x80", "??", 1, 1, 1},
    {"the place of the first, on a later line", "UTF-8", "CodePage437", nullptr,
     "ab\r\ncd\xE2\x82\xAC\n\xE2\x82\xAC", "ab\r\ncd?\n?", 2, 2, 3},
    {"line ends to LF", "WindowsLatin1", "UTF-8", L"\n", "a\r\nb\rc\n\xE9", "a\nb\nc\n\xC3\xA9", 0,
     0, 0},
    {"a lead byte at the end", "WindowsJapanese", "UTF-8", nullptr, "a\x82", "a\xE3\x83\xBB", 1, 1,
     2},
    {"embedded NULs", "UTF-8", "WindowsLatin1", nullptr, std::string("a\0\xC3\xA9", 4),
     std::string("a\0\xE9", 3), 0, 0, 0},
};

struct Result {
  std::string out;
  qxcli::Unconverted lost;
};

// Transcode - converts `t.in` in chunks of `chunk` bytes (0: one call).
Result Transcode(const TranscodeCase& t, size_t chunk) {
  qxcli::Charset from, to;
  EXPECT_TRUE(qxcli::ParseCharset(t.from, &from));
  EXPECT_TRUE(qxcli::ParseCharset(t.to, &to));
  qxcli::Transcoder transcoder(from, to, t.lineEnd);
  Result r;
  size_t step = chunk == 0 ? t.in.size() : chunk;
  for (size_t at = 0; at < t.in.size(); at += step)
    transcoder.Convert(t.in.data() + at, std::min(step, t.in.size() - at), false, &r.out);
  transcoder.Convert(nullptr, 0, true, &r.out);
  r.lost = transcoder.unconverted();
  return r;
}

TEST(Transcoder, BytesAndUnconvertedCharacters) {
  for (const TranscodeCase& t : kCases) {
    for (size_t chunk : {0, 1, 2, 3}) {
      SCOPED_TRACE(testing::Message() << t.what << ", chunks of " << chunk);
      Result r = Transcode(t, chunk);
      EXPECT_EQ(r.out, t.out);
      EXPECT_EQ(r.lost.count, t.count);
      EXPECT_EQ(r.lost.line, t.line);
      EXPECT_EQ(r.lost.column, t.column);
    }
  }
}

} // namespace
