// The transcoder of 'qxutil convert' (block calls, slices, the byte route)
// against the reference that converts one character at a time: the same
// bytes, count, line and column for random text, every pair of a few
// charsets, both line-end modes, and random slice and chunk sizes that cut
// characters, pairs and CR LF anywhere.
#include "transcoder.h"
#include "transcoder_reference.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

constexpr const char* kCharsets[] = {
    "UTF-8",       "WindowsLatin1", "WindowsJapanese", "WindowsKorean",     "WindowsTradChinese",
    "CodePage437", "MacRoman",      "WindowsThai",     "WindowsVietnamese", "Neutral",
    "ISO8859_1",   "ISO8859_8",     "CodePage864"};
constexpr size_t kCount = sizeof kCharsets / sizeof kCharsets[0];
constexpr const wchar_t* kLineEnds[] = {nullptr, L"\n", L"\r\n"};

void Check(bool ok) {
  if (!ok)
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4)
    return 0;
  qxcli::Charset from, to;
  Check(qxcli::ParseCharset(kCharsets[data[0] % kCount], &from));
  Check(qxcli::ParseCharset(kCharsets[data[1] % kCount], &to));
  const wchar_t* lineEnd = kLineEnds[data[2] % 3];
  size_t slice = 1 + data[3] % 40;
  size_t chunk = 1 + data[3] / 40 % 7 * 5;
  const char* in = reinterpret_cast<const char*>(data + 4);
  size_t n = size - 4;

  qxcli::Transcoder fast(from, to, lineEnd, slice);
  std::string got;
  for (size_t at = 0; at < n; at += chunk)
    fast.Convert(in + at, std::min(chunk, n - at), false, &got);
  fast.Convert(nullptr, 0, true, &got);

  qxref::ReferenceTranscoder slow(from, to, lineEnd);
  std::string want;
  slow.Convert(in, n, true, &want);

  Check(got == want);
  Check(fast.unconverted().count == slow.unconverted().count);
  Check(fast.unconverted().line == slow.unconverted().line);
  Check(fast.unconverted().column == slow.unconverted().column);
  return 0;
}
