// fgets2 and fgetc2 over random bytes in a random character set with a code
// page, with random buffer sizes from 1 up: nothing is written past a
// buffer, a line's '\n' is only ever its last unit, and, for bytes without
// NUL and Ctrl-Z, the lines joined are what fgetc2 reads one by one and
// what one large buffer reads.
#include "common/files_scope.h"
#include "common/stream_file.h"
#include "common/temp_dir.h"

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

  FILE* f = qxtest::OpenBytes(dir->Path("f.txt"), bytes, cs);
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
  if (bytes.find('\0') == std::string::npos && bytes.find('\x1a') == std::string::npos) {
    Check(fseek2(f, 0, SEEK_SET) == 0);
    std::wstring whole;
    qxtest::ReadLines(
        f, [] { return 1 << 16; }, &whole, false);
    Check(fseek2(f, 0, SEEK_SET) == 0);
    std::wstring chars = qxtest::ReadChars(f);
    Check(chars == whole);
    // Buffers of size 1 read nothing; the others together read it all.
    Check(calls == most || joined == whole);
  }
  qxtest::CloseStream(f);
  return 0;
}
