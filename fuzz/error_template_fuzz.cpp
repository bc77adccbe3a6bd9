// Template expansion through SetError + GetErrorMsg / GetNextError with
// random templates, arguments and output sizes: nothing may be written past
// the size given, and the first record's message, with its own template and
// with a new one, is the reference expansion cut to the size.
#include "qxutil/frame.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
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

// Expanded - the template with ^0 and ^1 replaced by the arguments (a null
// one by nothing) and ^^ by ^; any other caret stays.
std::wstring Expanded(const wchar_t* t, const wchar_t* arg0, const wchar_t* arg1) {
  std::wstring out;
  for (; *t; ++t) {
    if (t[0] != L'^' || (t[1] != L'^' && t[1] != L'0' && t[1] != L'1')) {
      out += *t;
    } else if (*++t == L'^') {
      out += L'^';
    } else if (const wchar_t* arg = *t == L'0' ? arg0 : arg1) {
      out += arg;
    }
  }
  return out;
}

// CheckFirstMessage - GetErrorMsg of record 0 (with `templ`, or its own
// when null) in `size` units is `want` cut to fit.
void CheckFirstMessage(const wchar_t* templ, unsigned int size, const std::wstring& want) {
  std::vector<wchar_t> buf(size + 1, L'#');
  GetErrorMsg(templ, 0, buf.data(), size);
  if (size > 0 && want.compare(0, size - 1, buf.data()) != 0)
    std::abort();
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
  const wchar_t* arg0 = parts[1].data();
  CheckFirstMessage(nullptr, outSize, Expanded(parts[0].data(), arg0, nullptr));
  CheckFirstMessage(nullptr, 1000, Expanded(parts[0].data(), arg0, nullptr));
  std::vector<wchar_t> buf(outSize + 16, L'#');
  GetErrorMsg(nullptr, data[1] % 40, buf.data(), outSize);
  CheckGuard(buf, outSize);
  std::fill(buf.begin(), buf.end(), L'#');
  GetErrorMsg(parts[2].data(), 0, buf.data(), outSize);
  CheckGuard(buf, outSize);
  CheckFirstMessage(parts[2].data(), 1000, Expanded(parts[2].data(), arg0, nullptr));
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
