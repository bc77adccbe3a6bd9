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
// holds every route, line-end mode and chunking to a one-character-at-a-time
// reference (a mark or a pair is one character there too).
const TranscodeCase kCases[] = {
    {"the place of the first, on a later line", "UTF-8", "CodePage437", nullptr,
     "ab\r\ncd\xE2\x82\xAC\n\xE2\x82\xAC", "ab\r\ncd?\n?", 2, 2, 3},
    {"a lead byte at the end", "WindowsJapanese", "UTF-8", nullptr, "a\x82", "a\xE3\x83\xBB", 1, 1,
     2},
    {"embedded NULs", "UTF-8", "WindowsLatin1", nullptr, std::string("a\0\xC3\xA9", 4),
     std::string("a\0\xE9", 3), 0, 0, 0},
};

// Transcode - converts `t.in` in chunks of `chunk` bytes (0: one call).
std::string Transcode(const TranscodeCase& t, size_t chunk, qxcli::Unconverted* lost) {
  qxcli::Charset from, to;
  EXPECT_TRUE(qxcli::ParseCharset(t.from, &from));
  EXPECT_TRUE(qxcli::ParseCharset(t.to, &to));
  qxcli::Transcoder transcoder(from, to, t.lineEnd);
  std::string out;
  size_t step = chunk == 0 ? t.in.size() : chunk;
  for (size_t at = 0; at < t.in.size(); at += step)
    transcoder.Convert(t.in.data() + at, std::min(step, t.in.size() - at), false, &out);
  transcoder.Convert(nullptr, 0, true, &out);
  *lost = transcoder.unconverted();
  return out;
}

TEST(Transcoder, BytesAndUnconvertedCharacters) {
  for (const TranscodeCase& t : kCases) {
    for (size_t chunk : {0, 1, 2, 3}) {
      SCOPED_TRACE(testing::Message() << t.what << ", chunks of " << chunk);
      qxcli::Unconverted lost;
      EXPECT_EQ(Transcode(t, chunk, &lost), t.out);
      EXPECT_EQ(lost.count, t.count);
      EXPECT_EQ(lost.line, t.line);
      EXPECT_EQ(lost.column, t.column);
    }
  }
}

} // namespace
