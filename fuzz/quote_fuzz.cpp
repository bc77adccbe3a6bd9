// quotestring and unquotestring on arbitrary text at every size from 3 (0
// for unquoting), into another buffer and in place: nothing is written past
// the size, a quoted result is quote, content, quote, and unquoting it
// gives back a prefix of the source (all of it when there was room).
#include "qxutil/text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr wchar_t kSentinel = L'\uFDD0';
constexpr size_t kTail = 4;

wchar_t Unit(uint8_t b) {
  static const wchar_t kAlphabet[] = L"a'b\"''c\u00e9 ";
  return kAlphabet[b % (sizeof(kAlphabet) / sizeof(wchar_t) - 1)];
}

void Check(bool ok) {
  if (!ok)
    std::abort();
}

// Runs `fn` on a buffer of `size` units pre-filled with `init` (cut to the
// size, terminated if it fits) and sentinels; returns the text written.
template <class Fn> std::wstring Guarded(unsigned int size, const std::wstring& init, Fn fn) {
  std::vector<wchar_t> buf(size + kTail, kSentinel);
  for (size_t i = 0; i < init.size() && i < size; ++i)
    buf[i] = init[i];
  if (init.size() < size)
    buf[init.size()] = 0;
  fn(buf.data());
  for (size_t i = size; i < buf.size(); ++i)
    Check(buf[i] == kSentinel);
  size_t n = 0;
  while (n < size && buf[n])
    ++n;
  Check(size == 0 || n < size); // terminated within the size
  return std::wstring(buf.data(), n);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 64)
    return 0;
  std::wstring src;
  for (size_t i = 0; i < size; ++i)
    src += Unit(data[i]);
  const wchar_t* quote = size && (data[0] & 1) ? L"\"" : L"'";
  const wchar_t q = quote[0];
  std::wstring full(1, q);
  for (wchar_t c : src)
    full += c == q ? std::wstring(2, q) : std::wstring(1, c);
  full += q;

  for (unsigned int n = 3; n <= full.size() + 2; ++n) {
    for (bool inPlace : {false, true}) {
      std::wstring out = Guarded(n, inPlace ? src : L"", [&](wchar_t* buf) {
        Check(quotestring(buf, inPlace ? buf : src.c_str(), n, quote) == buf);
      });
      Check(out.size() >= 2 && out.front() == q && out.back() == q);
      if (n > full.size())
        Check(out == full);
      std::wstring back =
          Guarded(n, L"", [&](wchar_t* buf) { unquotestring(buf, out.c_str(), n, quote); });
      Check(src.compare(0, back.size(), back) == 0);
      if (n > full.size())
        Check(back == src);
    }
  }
  // Unquoting arbitrary text, into another buffer and (when the text fits
  // the buffer) in place, gives the same.
  for (unsigned int n = 0; n <= src.size() + 2; ++n) {
    std::wstring a =
        Guarded(n, L"", [&](wchar_t* buf) { unquotestring(buf, src.c_str(), n, quote); });
    if (src.size() < n) {
      std::wstring b = Guarded(n, src, [&](wchar_t* buf) { unquotestring(buf, buf, n, quote); });
      Check(a == b);
    }
  }
  return 0;
}
