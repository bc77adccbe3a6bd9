// Text streams over scratch files, for the stream tests, the fuzz target and the
// benchmark: a file of given bytes opened in stream form with a character set, and
// the whole of it read back with fgets2 (in buffers of chosen sizes) or fgetc2.
#ifndef QXUTIL_TESTS_COMMON_STREAM_FILE_H
#define QXUTIL_TESTS_COMMON_STREAM_FILE_H

#include "qxutil/files.h"

#include <fstream>
#include <string>

namespace qxtest {

/// OpenStream - registers `path` in stream form, opens it in `mode` and
/// tags it with `cs`; null when either step fails. The wide form takes no
/// memory of its own (for the fault walks).
inline FILE* OpenStream(const wchar_t* path, eOpenMode mode, QXCHARSET cs) {
  FILE* f = fregister_nonunique_file(path, FILETYPE_ANY);
  if (!f)
    return nullptr;
  if (!ffileopen(f, mode, nullptr)) {
    funregister_file(f);
    return nullptr;
  }
  file_put_charset(f, cs);
  return f;
}
inline FILE* OpenStream(const std::string& path, eOpenMode mode, QXCHARSET cs) {
  return OpenStream(std::wstring(path.begin(), path.end()).c_str(), mode, cs);
}

/// OpenBytes - writes `bytes` to `path` and opens it for reading.
inline FILE* OpenBytes(const std::string& path, const std::string& bytes, QXCHARSET cs) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
  return OpenStream(path, OPEN_READ, cs);
}

inline void CloseStream(FILE* f) {
  fclose2(f);
  funregister_file(f);
}

/// ReadLines - fgets2 with buffers of `n` units (at least 1) until null, at
/// most `maxCalls` calls; each result appended to *out followed by "|" when
/// `mark`. Returns the calls that gave text.
inline int ReadLines(FILE* f, int n, std::wstring* out, bool mark, int maxCalls = 1 << 24) {
  std::wstring buffer;
  int calls = 0;
  for (; calls < maxCalls; ++calls) {
    buffer.assign(static_cast<size_t>(n) + 1, L'\x7777'); // one sentinel past the size
    if (!fgets2(buffer.data(), n, f))
      break;
    if (buffer[static_cast<size_t>(n)] != L'\x7777')
      out->append(L"<overrun>");
    out->append(buffer.c_str());
    if (mark)
      out->push_back(L'|');
  }
  return calls;
}

/// ReadChars - fgetc2 until -1 (at most `maxCalls` characters).
inline std::wstring ReadChars(FILE* f, size_t maxCalls = 1u << 26) {
  std::wstring out;
  for (size_t i = 0; i < maxCalls; ++i) {
    int c = fgetc2(f);
    if (c < 0)
      break;
    out.push_back(static_cast<wchar_t>(c));
  }
  return out;
}

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_STREAM_FILE_H
