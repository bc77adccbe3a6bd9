// The text streams in a random character set with a code page. Reading
// random bytes with fgets2 (random buffer sizes from 1 up) and fgetc2:
// nothing is written past a buffer, a line's '\n' is only ever its last
// unit, fgetc2 reads what Expected makes of the bytes (line ends, Ctrl-Z,
// lone lead bytes), and, for bytes without NUL and Ctrl-Z, the lines joined
// are what fgetc2 reads one by one and what one large buffer reads. Writing random
// lines of the set's characters through fputs2, fputc2 and fprintf2: the
// file holds what converting each line gives, with the set's line end, and
// fgets2 (cutting each line where its buffer is full) and fgetc2 read the
// text back.
#include "common/files_scope.h"
#include "common/stream_file.h"
#include "common/temp_dir.h"
#include "platform/codepage.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

namespace {

std::vector<QXCHARSET> Readable() {
  std::vector<QXCHARSET> out;
  for (int m = 0; m < kQXCharsetCount; ++m)
    if (GetWinCodePage(static_cast<QXCHARSET>(m)) >= 0)
      out.push_back(static_cast<QXCHARSET>(m));
  return out;
}

void Check(bool ok) {
  if (!ok)
    std::abort();
}

// Alphabet - the printable characters of `cs` that convert to its bytes
// and back unchanged (all single bytes, a sample of the double bytes).
std::vector<wchar_t> Alphabet(QXCHARSET cs) {
  std::vector<wchar_t> out;
  auto tryBytes = [&](const char* bytes, unsigned len) {
    wchar_t w[4] = {};
    if (!ConvertMBCSCharToSystem(bytes, len, cs, w, 2) || w[1] != 0 || w[0] < 0x20 ||
        qx::platform::IsNonSpacingMark(w[0]))
      return;
    char back[4] = {};
    if (ConvertSystemToMBCSChar(w, back, cs, 4, false) &&
        std::string(back) == std::string(bytes, len))
      out.push_back(w[0]);
  };
  for (int b = 0x20; b < 0x100; ++b) {
    char one[2] = {static_cast<char>(b), 0};
    tryBytes(one, 1);
  }
  if (CharsetDBCS(cs))
    for (int lead = 0x81; lead < 0xFF; lead += 3)
      for (int trail = 0x40; trail < 0xFF; trail += 5) {
        char two[3] = {static_cast<char>(lead), static_cast<char>(trail), 0};
        tryBytes(two, 2);
      }
  return out;
}

// Expected - the characters fgetc2 reads from `bytes` in `cs`: CR LF, CR and
// LF each one '\n'; a Ctrl-Z or a character that does not convert ends the
// text; a lead byte before a line end, a NUL or the end is a character alone.
std::wstring Expected(const std::string& bytes, QXCHARSET cs) {
  std::wstring out;
  for (size_t i = 0; i < bytes.size() && bytes[i] != '\x1a'; ++i) {
    const unsigned char c = static_cast<unsigned char>(bytes[i]);
    if (c == '\r' || c == '\n') {
      i += c == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n';
      out += L'\n';
      continue;
    }
    char one[2] = {bytes[i], 0};
    unsigned len = 1;
    if (c >= 0x80 && qx::win::IsDBCSLeadByteEx(static_cast<UINT>(GetWinCodePage(cs)), c) &&
        i + 1 < bytes.size() && bytes[i + 1] != '\r' && bytes[i + 1] != '\n' && bytes[i + 1] != 0)
      one[len++] = bytes[++i];
    wchar_t wide[3] = {};
    if (!ConvertMBCSCharToSystem(one, len, cs, wide, 2))
      break;
    out += static_cast<wchar_t>(wide[0] & 0xFFFF);
  }
  return out;
}

// WriteAndReadBack - lines made of `data` (two bytes a character, 0xFF
// ending a line) written in `cs`, the file compared with the conversion,
// then read back.
void WriteAndReadBack(const qxtest::TempDir& dir, QXCHARSET cs, const uint8_t* data, size_t size,
                      uint32_t state) {
  static std::vector<std::vector<wchar_t>> alphabets(kQXCharsetCount);
  std::vector<wchar_t>& alphabet = alphabets[cs];
  if (alphabet.empty())
    alphabet = Alphabet(cs);
  Check(alphabet.size() > 90);
  auto next = [&] { return (state = state * 1103515245u + 12345u) >> 16; };
  const std::wstring wideEnd = CharsetSlashN(cs);
  const std::string lineEnd(wideEnd.begin(), wideEnd.end());
  std::wstring text, line;
  std::string expected;
  const std::string path = dir.Path("w.txt");
  FILE* f = qxtest::OpenStream(path, OPEN_CREATE, cs);
  Check(f != nullptr);
  for (size_t i = 0; i < size; i += 2) {
    if (data[i] != 0xFF && i + 1 < size) {
      line.push_back(alphabet[(data[i] << 8 | data[i + 1]) % alphabet.size()]);
      continue;
    }
    std::vector<char> bytes(line.size() * 2 + 1);
    Check(ConvertSystemToMBCSChar(line.c_str(), bytes.data(), cs,
                                  static_cast<unsigned>(bytes.size()), false));
    expected += bytes.data() + lineEnd;
    text += line + L"\n";
    if (const unsigned way = next() % 3; way == 0) {
      Check(fputs2((line + L"\n").c_str(), f) == 0);
    } else if (way == 1) {
      for (wchar_t c : line + L"\n")
        Check(fputc2(c, f) == static_cast<int>(c));
    } else if (line.size() < 1023) { // the line and its '\n' within 1,023 units
      Check(fprintf2(f, L"%s\n", line.c_str()) == static_cast<int>(line.size() + 1));
    } else {
      Check(fprintf2(f, L"%s\n", line.c_str()) == -1); // past the format buffer
      Check(fputs2((line + L"\n").c_str(), f) == 0);
    }
    line.clear();
  }
  qxtest::CloseStream(f);
  Check(dir.Read("w.txt") == expected);
  f = qxtest::OpenStream(path, OPEN_READ, cs);
  Check(f != nullptr);
  // Each fgets2 call gives the next size - 1 characters of a line, or the rest
  // of it with its '\n'; a buffer filled by the text leaves the line end for
  // the next call.
  std::vector<wchar_t> buffer;
  for (size_t at = 0; at < text.size();) {
    const size_t room = 1 + next() % 90;
    buffer.assign(room + 1, L'\x7777');
    Check(fgets2(buffer.data(), static_cast<int>(room + 1), f) == buffer.data());
    const size_t take = std::min(room, text.find(L'\n', at) - at);
    std::wstring expected = text.substr(at, take);
    at += take;
    if (take < room)
      expected += text[at++];
    Check(expected == buffer.data());
  }
  Check(fgets2(buffer.data(), 2, f) == nullptr);
  Check(fseek2(f, 0, SEEK_SET) == 0);
  Check(qxtest::ReadChars(f) == text);
  qxtest::CloseStream(f);
}

// ReadBack - `bytes` in `cs` read with fgets2 in buffers of sizes drawn from
// `state`, and with fgetc2.
void ReadBack(const qxtest::TempDir& dir, QXCHARSET cs, const std::string& bytes, uint32_t state) {
  FILE* f = qxtest::OpenBytes(dir.Path("f.txt"), bytes, cs);
  Check(f != nullptr);
  auto nextSize = [&] {
    state = state * 1103515245u + 12345u;
    int n = 1 + static_cast<int>((state >> 16) % (state & 0x100 ? 5 : 120));
    return n;
  };
  const int most = static_cast<int>(4 * bytes.size() + 20);
  std::wstring joined;
  std::vector<wchar_t> buffer;
  int calls = 0;
  for (; calls < most; ++calls) {
    int n = nextSize();
    buffer.assign(static_cast<size_t>(n) + 1, L'\x7777');
    if (!fgets2(buffer.data(), n, f))
      break;
    Check(buffer[static_cast<size_t>(n)] == L'\x7777'); // nothing past the size
    const wchar_t* lf = std::wcschr(buffer.data(), L'\n');
    Check(!lf || lf[1] == 0); // a line end only at the end
    joined += buffer.data();
  }
  Check(fseek2(f, 0, SEEK_SET) == 0);
  const std::wstring chars = qxtest::ReadChars(f);
  Check(chars == Expected(bytes, cs));
  if (bytes.find('\0') == std::string::npos && bytes.find('\x1a') == std::string::npos) {
    Check(fseek2(f, 0, SEEK_SET) == 0);
    std::wstring whole;
    qxtest::ReadLines(f, 1 << 16, &whole, false);
    Check(chars == whole);
    // Buffers of size 1 read nothing; the others together read it all.
    Check(calls == most || joined == whole);
  }
  qxtest::CloseStream(f);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3)
    return 0;
  static const std::vector<QXCHARSET> charsets = Readable();
  static qxtest::TempDir* dir = new qxtest::TempDir;
  QXCHARSET cs = charsets[data[0] % charsets.size()];
  uint32_t state = data[1] * 257u + data[2] + 1;
  std::string bytes(reinterpret_cast<const char*>(data) + 3, size - 3);
  qxtest::ScopedRegistry registry;
  static const bool fixed = [] { // line ends and lone lead bytes, every fgets2 size
    for (const char* text : {"a\r\nb\rc\n\n\r\r\n", "\x82\r\nb\x82\rc\x82\n\x82", "ab\ncd"})
      for (QXCHARSET set : {QXCHARSET_WINDOWS_LATIN1, QXCHARSET_WINDOWS_JAPANESE})
        for (uint32_t s = 1; s < 200; ++s)
          ReadBack(*dir, set, text, s);
    return true;
  }();
  (void)fixed;
  if (data[1] & 0x80) {
    static const std::vector<QXCHARSET> doubleByte = [] {
      std::vector<QXCHARSET> out;
      for (QXCHARSET c : charsets)
        if (CharsetDBCS(c))
          out.push_back(c);
      return out;
    }();
    if (data[1] & 0x40) // half of the texts in the double-byte sets
      cs = doubleByte[data[0] % doubleByte.size()];
    WriteAndReadBack(*dir, cs, data + 3, size - 3, state);
    return 0;
  }

  ReadBack(*dir, cs, bytes, state);
  return 0;
}
