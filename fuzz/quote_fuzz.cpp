// quotestring and unquotestring on arbitrary text at every size from 0, into
// another buffer and in place, with a quote of one unit, of two (only the
// first counts) or none (empty or null: a plain strcpyn copy): nothing is
// written past the size, the text is what the plain rules below give
// (quoting into another buffer and unquoting also write no unit after the
// terminator but for a plain copy, which fills the size), and unquoting a
// quoted result gives back a prefix of the source (all of it when there was
// room).
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

// Quoted - the quoting rules: without a quote unit a copy cut to size - 1
// units; below size 3 nothing; into another buffer the content's units, a
// doubled quote whole or not at all, while size - 3 units hold them; in
// place the source cut to size - 3 units, its quotes doubled while room
// remains, and after that each doubling pushing out the content's last unit.
std::wstring Quoted(const std::wstring& src, unsigned int size, wchar_t q, bool inPlace) {
  if (q == 0)
    return src.substr(0, size ? size - 1 : 0);
  if (size < 3)
    return L"";
  size_t room = size - 3;
  std::wstring body = inPlace ? src.substr(0, room) : L"";
  if (inPlace) {
    room -= body.size();
    for (size_t i = 0; i < body.size(); i += 2) {
      if (body[i] != q) {
        --i;
        continue;
      }
      body.insert(i, 1, q);
      if (room > 0)
        --room;
      else
        body.pop_back();
    }
  } else {
    for (wchar_t c : src) {
      size_t need = c == q ? 2 : 1;
      if (need > room)
        break;
      body.append(need, c);
      room -= need;
    }
  }
  return q + body + q;
}

// Unquoted - a quoted source's content up to its closing quote, a doubled
// quote as one; any other source (every one without a quote unit) as it
// stands; cut to size - 1 units.
std::wstring Unquoted(const std::wstring& src, unsigned int size, wchar_t q) {
  std::wstring out = src;
  if (q && !src.empty() && src[0] == q) {
    out.clear();
    for (size_t i = 1; i < src.size(); ++i) {
      if (src[i] == q && (i + 1 == src.size() || src[i + 1] != q))
        break;
      out += src[i];
      i += src[i] == q;
    }
  }
  return out.substr(0, size ? size - 1 : 0);
}

size_t gTouched; // one past the last unit the last Guarded call saw written

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
  gTouched = size;
  while (gTouched > 0 && buf[gTouched - 1] == kSentinel)
    --gTouched;
  size_t n = 0;
  while (n < size && buf[n])
    ++n;
  Check(size == 0 || n < size); // terminated within the size
  return std::wstring(buf.data(), n);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size > 65)
    return 0;
  static const wchar_t* const kQuotes[] = {L"'", L"\"", L"'x", L"", nullptr};
  const wchar_t* quote = kQuotes[data[0] % 5];
  std::wstring src;
  for (size_t i = 1; i < size; ++i)
    src += Unit(data[i]);
  const wchar_t q = quote ? quote[0] : 0;
  std::wstring full(q ? 1 : 0, q);
  for (wchar_t c : src)
    full += q && c == q ? std::wstring(2, q) : std::wstring(1, c);
  full += std::wstring(q ? 1 : 0, q);

  for (unsigned int n = 0; n <= full.size() + 2; ++n) {
    for (bool inPlace : {false, true}) {
      std::wstring out = Guarded(n, inPlace ? src : L"", [&](wchar_t* buf) {
        Check(quotestring(buf, inPlace ? buf : src.c_str(), n, quote) == buf);
      });
      Check(out == Quoted(src, n, q, inPlace) && (inPlace || gTouched == (!q  ? n
                                                                          : n ? out.size() + 1
                                                                              : 0)));
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
    std::wstring a = Guarded(
        n, L"", [&](wchar_t* buf) { Check(unquotestring(buf, src.c_str(), n, quote) == buf); });
    bool plain = !q || src.empty() || src[0] != q;
    Check(a == Unquoted(src, n, q) && gTouched == (plain ? n : n ? a.size() + 1 : 0));
    if (src.size() < n) {
      std::wstring b = Guarded(n, src, [&](wchar_t* buf) { unquotestring(buf, buf, n, quote); });
      Check(a == b);
    }
  }
  return 0;
}
