//===- files/streams.cpp - Text streams on registered files --------------===//
//
// The stream form of a handle: the same number typed FILE*, whose entry holds
// a buffered binary stream (ffileopen). Text is wide in memory and bytes of
// the file's character set on disk; a line end is one '\n' in memory and the
// character set's own line end on disk.
//
// Reading folds CR LF, a lone CR and a lone LF to '\n'. fgets2 takes the
// bytes of a line from the stream's buffer up to its line end, or as many
// characters as the caller's buffer holds: a line longer than the buffer
// comes in several calls, and a double-byte character or a line end is
// never cut. It reads exactly what gathering pieces of 40 bytes and seeking
// back to the line end would consume, without the seek; the pieces show
// only in the Ctrl-Z rule, where a byte 26 ends the text when it would be
// a piece of its own (40 x k bytes into the call's line, the file ending
// after it). docs/files.md says more.
//
//===----------------------------------------------------------------------===//
#include "files/file_system.h"

#include "platform/codepage.h"
#include "platform/crt_wprintf.h"
#include "platform/file_crt.h"

#include <algorithm>
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

// LockedStream - holds a stream for a run of unlocked byte reads.
class LockedStream {
public:
  explicit LockedStream(FILE* f) : f_(f) { qx::crt::_lock_file(f_); }
  ~LockedStream() { qx::crt::_unlock_file(f_); }
  LockedStream(const LockedStream&) = delete;
  LockedStream& operator=(const LockedStream&) = delete;
  int Get() { return qx::crt::_getc_nolock(f_); }
  void Unget(int c) { qx::crt::_ungetc_nolock(c, f_); }
  // TakeRun - single-byte text: copies into `out` the bytes the stream
  // holds read ahead, at most `most`, up to the first line end or a byte 26
  // that would start a piece (`at` bytes into the line); those are left
  // for Get. Returns the bytes taken.
  size_t TakeRun(char* out, size_t most, size_t at) {
    size_t ahead = 0;
    const unsigned char* p = qx::crt::StreamReadAhead(f_, &ahead);
    size_t n = ahead < most ? ahead : most;
    if (n == 0)
      return 0;
    if (const void* cr = std::memchr(p, '\r', n))
      n = static_cast<size_t>(static_cast<const unsigned char*>(cr) - p);
    if (const void* lf = std::memchr(p, '\n', n))
      n = static_cast<size_t>(static_cast<const unsigned char*>(lf) - p);
    for (size_t k = 0; k < n;) {
      const void* z = std::memchr(p + k, kCtrlZ, n - k);
      if (!z)
        break;
      k = static_cast<size_t>(static_cast<const unsigned char*>(z) - p);
      if ((at + k) % kPiece == 0)
        n = k;
      ++k;
    }
    std::memcpy(out, p, n);
    qx::crt::StreamSkip(f_, n);
    return n;
  }
  // PieceAlone - whether a byte read at offset `at` of a line is all that
  // fgets2's piece of 40 bytes starting there would have read: it starts
  // a piece and the file ends after it.
  bool PieceAlone(size_t at) {
    if (at % kPiece != 0)
      return false;
    int next = Get();
    if (next == EOF)
      return true;
    Unget(next);
    return false;
  }

private:
  FILE* f_;
};

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
  // The bytes of the line are read up to its line end, or until the
  // buffer's size - 1 characters are in; what pieces of 40 bytes followed
  // by a seek back to the line end would leave unread stays unread here.
  const size_t room = static_cast<size_t>(size) - 1;
  const bool dbcs = DoubleByte(cp);
  LockedStream in(f);
  size_t got = 0, chars = 0;
  unsigned int capacity = 0;
  char* bytes = nullptr;
  bool newline = false;
  while (chars < room) {
    if (got + 2 > capacity) {
      size_t grown = capacity ? 2 * static_cast<size_t>(capacity) : 256;
      if (grown > 2 * room + 2)
        grown = 2 * room + 2;
      if (grown > UINT_MAX || !GetMem_(static_cast<unsigned int>(grown), &e->appBuffer, true))
        return nullptr;
      capacity = static_cast<unsigned int>(grown);
      bytes = e->appBuffer;
    }
    if (!dbcs) {
      size_t run = in.TakeRun(bytes + got, std::min<size_t>(room - chars, capacity - 2 - got), got);
      got += run;
      chars += run;
      if (chars == room)
        break;
      if (got + 2 > capacity)
        continue;
    }
    int c = in.Get();
    if (c == EOF)
      break;
    if (c == kCtrlZ && in.PieceAlone(got)) { // a lone Ctrl-Z ends the text
      if (got == 0)
        return nullptr;
      in.Unget(c); // read again, alone, by the next call
      break;
    }
    if (c == '\r' || c == '\n') {
      newline = true;
      if (c == '\r') {
        int next = in.Get();
        if (next != '\n' && next != EOF)
          in.Unget(next);
      }
      break;
    }
    bytes[got++] = static_cast<char>(c);
    ++chars;
    if (dbcs && IsLead(cp, static_cast<unsigned char>(c))) {
      // A line end, a NUL or a lone Ctrl-Z is no trail byte: the lead
      // byte is a character of its own.
      int trail = in.Get();
      if (trail == EOF)
        break;
      if (trail == '\r' || trail == '\n' || trail == 0 || (trail == kCtrlZ && in.PieceAlone(got)))
        in.Unget(trail);
      else
        bytes[got++] = static_cast<char>(trail);
    }
  }
  if (got == 0 && !newline && chars == 0) {
    // Nothing before the end of the file.
    return nullptr;
  }
  // The code page's conversion (ConvertMBCSCharToSystem's), counting the
  // units it writes: the line end goes after them.
  int units = 0;
  if (got > 0) {
    units = qx::win::MultiByteToWideChar(static_cast<UINT>(cp), MB_PRECOMPOSED, bytes,
                                         static_cast<int>(got), buffer, static_cast<int>(room));
    if (units <= 0)
      return nullptr;
  }
  if (newline && static_cast<size_t>(units) < room)
    buffer[units++] = L'\n';
  buffer[units] = 0;
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
