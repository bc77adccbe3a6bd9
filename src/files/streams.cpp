//===- files/streams.cpp - Text streams on registered files --------------===//
//
// The stream form of a handle: the same number typed FILE*, whose entry holds
// a buffered binary stream (ffileopen). Text is wide in memory and bytes of
// the file's character set on disk; a line end is one '\n' in memory and the
// character set's own line end on disk.
//
// Reading folds CR LF, a lone CR and a lone LF to '\n'; a lone byte 26
// (Ctrl-Z) at the end ends the text. fgets2 gathers a line in pieces of 40
// bytes and then seeks back, so that whatever it read past the line end, or
// past what fitted the caller's buffer, is read again by the next call: a
// line longer than the buffer comes in several calls, a double-byte
// character is never cut, and a line end is never split. docs/files.md says
// more.
//
//===----------------------------------------------------------------------===//
#include "files/file_system.h"

#include "platform/codepage.h"
#include "platform/crt_wprintf.h"

#include <climits>
#include <cstring>
#include <cwchar>

namespace qx::files {

namespace {

constexpr size_t kPiece = 40;         // fgets2 reads this many bytes at a time
constexpr size_t kFormatUnits = 1024; // vfprintf2's buffer, terminator included
constexpr int kCtrlZ = 26;

// LineEnd - the character set's line end as bytes ("\r\n", "\n" or "\r").
size_t LineEnd(QXCHARSET cs, char* out) {
  size_t n = 0;
  for (const wchar_t* p = CharsetSlashN(cs); *p && n < 2; ++p)
    out[n++] = static_cast<char>(*p);
  return n;
}

// DoubleByte - whether page `cp` (0 and 1 being the locale's ANSI and OEM
// pages) is one of the double-byte pages.
bool DoubleByte(int cp) {
  UINT page = cp == CP_ACP ? qx::win::GetACP() : cp == CP_OEMCP ? qx::win::GetOEMCP() : cp;
  return page == 932 || page == 936 || page == 949 || page == 950;
}

// IsLead - whether `byte` begins a double-byte character of page `cp`.
bool IsLead(int cp, unsigned char byte) {
  return byte >= 0x80 && qx::win::IsDBCSLeadByteEx(static_cast<UINT>(cp), byte);
}

// FitBytes - the bytes of the first whole characters of `bytes[0, len)`, at
// most `room` of them, as the code-page conversion counts characters: a lead
// byte and the byte after it (not a NUL) are one. A lead byte at the end is
// left out unless the text ends there (`atEnd`). *chars gets the count.
size_t FitBytes(int cp, bool dbcs, const unsigned char* bytes, size_t len, size_t room,
                bool atEnd, size_t* chars) {
  size_t i = 0, n = 0;
  if (!dbcs) {
    n = len < room ? len : room;
    *chars = n;
    return n;
  }
  while (i < len && n < room) {
    size_t step = 1;
    if (IsLead(cp, bytes[i])) {
      if (i + 1 < len) {
        if (bytes[i + 1] != 0)
          step = 2;
      } else if (!atEnd) {
        break; // its trail byte is still in the file
      }
    }
    i += step;
    ++n;
  }
  *chars = n;
  return i;
}

} // namespace

int cFileSystemImpl::FEof(FILE* stream) {
  FILE* f = GetFilePtr(stream);
  return f ? std::feof(f) : -1;
}

int cFileSystemImpl::FError(FILE* stream) {
  FILE* f = GetFilePtr(stream);
  return f ? std::ferror(f) : -1;
}

int cFileSystemImpl::FFlush(FILE* stream) {
  FILE* f = GetFilePtr(stream);
  return f ? std::fflush(f) : EOF;
}

size_t cFileSystemImpl::FRead(void* buffer, size_t size, size_t count, FILE* stream) {
  FILE* f = GetFilePtr(stream);
  return f && buffer ? std::fread(buffer, size, count, f) : 0;
}

size_t cFileSystemImpl::FWrite(const void* data, size_t size, size_t count, FILE* stream) {
  FILE* f = GetFilePtr(stream);
  return f && data ? std::fwrite(data, size, count, f) : 0;
}

int cFileSystemImpl::FSeek(FILE* stream, long offset, int whence) {
  FILE* f = GetFilePtr(stream);
  return f ? std::fseek(f, offset, whence) : -1;
}

long cFileSystemImpl::FTell(FILE* stream) {
  FILE* f = GetFilePtr(stream);
  return f ? std::ftell(f) : -1;
}

long cFileSystemImpl::FFileLength(FILE* stream) {
  FILE* f = GetFilePtr(stream);
  if (!f)
    return -1;
  long at = std::ftell(f);
  if (at < 0 || std::fseek(f, 0, SEEK_END) != 0)
    return -1;
  long length = std::ftell(f);
  if (std::fseek(f, at, SEEK_SET) != 0)
    return -1;
  return length;
}

int cFileSystemImpl::FGetc(FILE* stream) {
  FILE* f = GetFilePtr(stream);
  QXCHARSET cs = GetCharset(stream);
  int cp = GetWinCodePage(cs);
  if (!f || cp < 0)
    return -1;
  int c = std::getc(f);
  if (c == EOF || c == kCtrlZ)
    return -1;
  if (c == '\r') {
    int next = std::getc(f);
    if (next != '\n' && next != EOF)
      std::ungetc(next, f);
    return '\n';
  }
  char bytes[2] = {static_cast<char>(c), 0};
  unsigned int len = 1;
  if (IsLead(cp, static_cast<unsigned char>(c))) {
    // A line end or a NUL after a lead byte is no trail byte: it is read on
    // its own, as fgets2 reads it.
    int trail = std::getc(f);
    if (trail == '\r' || trail == '\n' || trail == 0)
      std::ungetc(trail, f);
    else if (trail != EOF)
      bytes[len++] = static_cast<char>(trail);
  }
  wchar_t wide[3];
  if (!ConvertMBCSCharToSystem(bytes, len, cs, wide, 2))
    return -1;
  return static_cast<int>(wide[0] & 0xFFFF);
}

wchar_t* cFileSystemImpl::FGets(wchar_t* buffer, int size, FILE* stream) {
  FileEntry* e = Entry(FileNo(stream));
  FILE* f = GetFilePtr(stream);
  QXCHARSET cs = GetCharset(stream);
  int cp = GetWinCodePage(cs);
  if (size < 1 || !buffer || !e || !f || cp < 0)
    return nullptr;
  if (size == 1) { // room for the terminator only: nothing is read
    buffer[0] = 0;
    return buffer;
  }
  long start = std::ftell(f);
  if (start < 0)
    return nullptr;

  // 1-2: gather pieces until one holds a line end, the file ends, or 2 x
  // size - 1 bytes are in; a lone Ctrl-Z is the end.
  const size_t limit = 2 * static_cast<size_t>(size) - 1;
  size_t got = 0, taken = 0, lineAt = SIZE_MAX; // gathered, read from the file
  bool atEnd = false;
  unsigned int capacity = 0;
  unsigned char* bytes = nullptr;
  while (got < limit) {
    size_t want = limit - got < kPiece ? limit - got : kPiece;
    if (got + want + 2 > capacity) {
      size_t grown = got + want + 2 + (got < 4 * kPiece ? 4 * kPiece : got);
      if (grown > limit + 2)
        grown = limit + 2;
      if (grown > UINT_MAX || !GetMem_(static_cast<unsigned int>(grown), &e->appBuffer, true))
        return nullptr;
      capacity = static_cast<unsigned int>(grown);
      bytes = reinterpret_cast<unsigned char*>(e->appBuffer);
    }
    size_t n = std::fread(bytes + got, 1, want, f);
    taken += n;
    if (n == 0) {
      if (got == 0)
        return nullptr;
      atEnd = true;
      break;
    }
    if (n == 1 && bytes[got] == kCtrlZ) {
      if (got == 0)
        return nullptr;
      atEnd = true; // the bytes before it are the last line; it is read next
      break;
    }
    for (size_t i = got; i < got + n; ++i)
      if (bytes[i] == '\r' || bytes[i] == '\n') {
        lineAt = i;
        break;
      }
    got += n;
    if (lineAt != SIZE_MAX)
      break;
  }

  // 3-4: the line end, with a carriage return at the end of what was read
  // completed by one more byte.
  size_t textEnd = got, consumed = got;
  bool newline = false;
  if (lineAt != SIZE_MAX) {
    textEnd = lineAt;
    newline = true;
    size_t endLen = 1;
    if (bytes[lineAt] == '\r') {
      if (lineAt + 1 == got) {
        if (std::fread(bytes + got, 1, 1, f) == 1)
          ++taken;
      }
      if (lineAt + 1 < taken && bytes[lineAt + 1] == '\n')
        endLen = 2;
    }
    consumed = lineAt + endLen;
  }

  // 5: as many whole characters as the buffer holds; the rest is read again.
  size_t room = static_cast<size_t>(size) - 1, chars = 0;
  size_t fit = FitBytes(cp, DoubleByte(cp), bytes, textEnd, room,
                        atEnd || newline, &chars);
  if (fit < textEnd || (newline && chars == room)) {
    newline = false;
    consumed = fit;
  }
  if (consumed != taken && std::fseek(f, start + static_cast<long>(consumed), SEEK_SET) != 0)
    return nullptr;
  size_t units = 0;
  buffer[0] = 0;
  if (fit > 0) {
    if (!ConvertMBCSCharToSystem(reinterpret_cast<char*>(bytes), static_cast<unsigned int>(fit),
                                 cs, buffer, static_cast<unsigned int>(room)))
      return nullptr;
    units = chars;
  }
  if (newline) {
    buffer[units] = L'\n';
    buffer[units + 1] = 0;
  }
  return buffer;
}

int cFileSystemImpl::FPutc(int c, FILE* stream) {
  FILE* f = GetFilePtr(stream);
  if (!f)
    return -1;
  QXCHARSET cs = GetCharset(stream);
  char bytes[3];
  size_t n;
  if (c == '\n') {
    n = LineEnd(cs, bytes);
  } else {
    const wchar_t text[2] = {static_cast<wchar_t>(c & 0xFFFF), 0};
    if (!ConvertSystemToMBCSChar(text, bytes, cs, sizeof bytes, false))
      return -1;
    n = std::strlen(bytes);
  }
  return std::fwrite(bytes, 1, n, f) == n ? c : -1;
}

int cFileSystemImpl::FPuts(const wchar_t* text, FILE* stream) {
  FileEntry* e = Entry(FileNo(stream));
  FILE* f = GetFilePtr(stream);
  if (!e || !f || !text)
    return -1;
  QXCHARSET cs = GetCharset(stream);
  size_t units = std::wcslen(text);
  if (units > (UINT_MAX - 1) / 2)
    return -1;
  unsigned int room = static_cast<unsigned int>(units * 2 + 1);
  if (!GetMem_(room, &e->appBuffer, true) ||
      !ConvertSystemToMBCSChar(text, e->appBuffer, cs, room, false))
    return -1;
  char end[2];
  size_t endLen = LineEnd(cs, end);
  for (const char* p = e->appBuffer; *p;) {
    const char* lf = std::strchr(p, '\n');
    size_t run = lf ? static_cast<size_t>(lf - p) : std::strlen(p);
    if (run && std::fwrite(p, 1, run, f) != run)
      return -1;
    if (!lf)
      break;
    if (std::fwrite(end, 1, endLen, f) != endLen)
      return -1;
    p = lf + 1;
  }
  return 0;
}

int cFileSystemImpl::FPrintf(FILE* stream, const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  int n = VFPrintf(stream, format, args);
  va_end(args);
  return n;
}

int cFileSystemImpl::VFPrintf(FILE* stream, const wchar_t* format, va_list args) {
  if (!GetFilePtr(stream) || !format)
    return -1;
  wchar_t text[kFormatUnits];
  int n = qx::crt::_vswprintf(text, kFormatUnits, format, args);
  if (n < 0) // longer than 1,023 characters: refused, nothing written
    return -1;
  return FPuts(text, stream) < 0 ? -1 : n;
}

} // namespace qx::files
