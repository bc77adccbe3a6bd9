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

const TranscodeCase kCases[] = {
    {"Latin-1 letters", "UTF-8", "WindowsLatin1", nullptr, "Z\xC3\xBCrich", "Z\xFCrich", 0, 0, 0},
    {"base and mark compose", "UTF-8", "WindowsLatin1", nullptr, "e\xCC\x81", "\xE9", 0, 0, 0},
    {"a mark the page best-fits", "UTF-8", "WindowsLatin1", nullptr, "q\xCC\x81x", "q\xB4x", 0, 0,
     0},
    {"a mark the page lacks: one character", "UTF-8", "CodePage437", nullptr, "q\xCC\x81x", "q?x",
     1, 1, 1},
    {"an enclosing mark is a character of its own", "UTF-8", "CodePage437", nullptr,
     "a\xE2\x83\x9D", "a?", 1, 1, 2},
    {"euro sign missing from 437", "UTF-8", "CodePage437", nullptr,
     "a\xE2\x82\xAC"
     "b",
     "a?b", 1, 1, 2},
    {"a character above U+FFFF is one character", "UTF-8", "WindowsLatin1", nullptr,
     "\xF0\x9F\x98\x80", "??", 1, 1, 1},
    {"and passes through UTF-8", "UTF-8", "UTF-8", nullptr, "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80",
     0, 0, 0},
    {"truncated UTF-8: one replacement", "UTF-8", "WindowsLatin1", nullptr,
     "a\xE3\x81"
     "b",
     "a?b", 1, 1, 2},
    {"ill-formed UTF-8 to UTF-8", "UTF-8", "UTF-8", nullptr, "\xC0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD",
     2, 1, 1},
    {"the place of the first, on a later line", "UTF-8", "CodePage437", nullptr,
     "ab\r\ncd\xE2\x82\xAC\n\xE2\x82\xAC", "ab\r\ncd?\n?", 2, 2, 3},
    {"line ends to LF", "WindowsLatin1", "UTF-8", L"\n", "a\r\nb\rc\n\xE9", "a\nb\nc\n\xC3\xA9", 0,
     0, 0},
    {"line ends to CR LF", "UTF-8", "WindowsLatin1", L"\r\n", "a\r\n\r\nb\n", "a\r\n\r\nb\r\n", 0,
     0, 0},
    {"double-byte pairs", "WindowsJapanese", "UTF-8", nullptr, "\x82\xA0x\x93\xFA",
     "\xE3\x81\x82x\xE6\x97\xA5", 0, 0, 0},
    {"an undefined pair", "WindowsJapanese", "UTF-8", nullptr, "\x82\xA0\x85\x40",
     "\xE3\x81\x82\xE3\x83\xBB", 1, 1, 2},
    {"a lead byte at the end", "WindowsJapanese", "UTF-8", nullptr, "a\x82", "a\xE3\x83\xBB", 1, 1,
     2},
    {"into a double-byte page", "UTF-8", "WindowsJapanese", nullptr, "\xE6\x97\xA5\xE6\x9C\xAC",
     "\x93\xFA\x96\x7B", 0, 0, 0},
    {"a map-only member", "UTF-8", "MacRoman", nullptr, "\xE2\x82\xAC\xC3\xA4", "_\x8A", 1, 1, 1},
    {"from a map-only member", "MacRoman", "UTF-8", nullptr, "\x8A\r", "\xC3\xA4\r", 0, 0, 0},
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
