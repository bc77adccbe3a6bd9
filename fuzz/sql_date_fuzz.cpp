// Fuzz target for the database date pictures: qxSQLStringToDate on random
// text and picture, and qxSQLDateToString of random dates with every
// output size up to a bound. Checks that nothing is written past the size,
// that a text which does not fit leaves the terminator alone, that a date
// read is valid, and that a date written with a numeric picture reads back
// the same.
#include "qxutil/locale.h"

#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <vector>

namespace {

constexpr unsigned int kMaxOut = 40;
constexpr wchar_t kSentinel = 0x7F7F;

void Check(bool ok) {
  if (!ok)
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 5)
    return 0;
  SetThreadLocale(data[0] & 1 ? 1031 : 1033);
  qxDATE date{static_cast<int16_t>((data[1] | data[2] << 8) % 10001),
              static_cast<int8_t>(data[3] % 14), static_cast<int8_t>(data[4] % 33)};
  // Text and picture: the rest of the input, split at the first 0 byte.
  std::vector<wchar_t> text, picture;
  std::vector<wchar_t>* into = &text;
  for (size_t i = 5; i < size; ++i) {
    if (data[i] == 0 && into == &text) {
      into = &picture;
      continue;
    }
    if (data[i] != 0)
      into->push_back(data[i]);
  }
  text.push_back(0);
  picture.push_back(0);

  qxDATE parsed{};
  if (qxSQLStringToDate(text.data(), picture.data(), &parsed))
    Check(IsValidDate(&parsed));
  else
    Check(NullDate(&parsed));

  // Every size: the whole text when it fits with its terminator, otherwise
  // false and the terminator alone.
  wchar_t whole[kMaxOut + 8];
  const bool wrote = qxSQLDateToString(date, picture.data(), whole, kMaxOut);
  for (unsigned int n = 0; n <= kMaxOut; ++n) {
    wchar_t out[kMaxOut + 8];
    std::wmemset(out, kSentinel, kMaxOut + 8);
    bool ok = qxSQLDateToString(date, picture.data(), out, n);
    for (unsigned int i = n; i < kMaxOut + 8; ++i)
      Check(out[i] == kSentinel);
    if (ok)
      Check(IsValidDate(&date) && std::wcslen(out) < n);
    if (wrote)
      Check(ok == (std::wcslen(whole) < n) &&
            (ok ? std::wcscmp(out, whole) == 0 : n == 0 || out[0] == 0));
  }
  if (IsValidDate(&date)) {
    wchar_t out[32];
    Check(qxSQLDateToString(date, L"yyyy-mm-dd", out, 32));
    qxDATE back{};
    Check(qxSQLStringToDate(out, L"yyyy-mm-dd", &back) && DateCmp(&back, &date) == 0);
  }
  return 0;
}
