// Template expansion through SetError + GetErrorMsg / GetNextError with
// random templates, arguments and output sizes: nothing may be written past
// the size given.
#include "qxutil/frame.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

namespace {

// Splits the input into wide strings: units are taken two bytes at a time
// (so "^", "0", "1" and NUL are common), a 0 unit ends a string.
std::vector<std::vector<wchar_t>> Split(const uint8_t* data, size_t size, size_t parts) {
  std::vector<std::vector<wchar_t>> out(parts);
  size_t part = 0;
  for (size_t i = 0; i + 1 < size && part < parts; i += 2) {
    wchar_t c = static_cast<wchar_t>(data[i] | (data[i + 1] << 8));
    if (c == 0)
      ++part;
    else
      out[part].push_back(c);
  }
  for (auto& s : out)
    s.push_back(0);
  return out;
}

void CheckGuard(const std::vector<wchar_t>& buf, size_t size) {
  for (size_t i = size; i < buf.size(); ++i)
    if (buf[i] != L'#')
      std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3)
    return 0;
  unsigned int outSize = data[0] % 64;
  int count = 1 + data[1] % 33; // up to 33 records: also the lost state
  bool endEpisodes = data[2] & 1;
  auto parts = Split(data + 3, size - 3, 3);

  ClearErrors();
  for (int i = 0; i < count; ++i) {
    SetError(eErrorLevelError, parts[0].data(), GUID{}, 100 + i % 31, parts[1].data(),
             (i & 1) ? parts[2].data() : nullptr);
    if (endEpisodes && i % 3 == 2)
      EndError();
  }
  std::vector<wchar_t> buf(outSize + 16, L'#');
  GetErrorMsg(nullptr, data[1] % 40, buf.data(), outSize);
  CheckGuard(buf, outSize);
  std::fill(buf.begin(), buf.end(), L'#');
  GetErrorMsg(parts[2].data(), 0, buf.data(), outSize);
  CheckGuard(buf, outSize);
  for (int pass = 0; pass < 4; ++pass) {
    std::fill(buf.begin(), buf.end(), L'#');
    GetNextError(pass == 0, buf.data(), outSize);
    CheckGuard(buf, outSize);
    if (outSize && std::wcslen(buf.data()) >= outSize)
      std::abort();
  }
  ReportErrors();
  return 0;
}
