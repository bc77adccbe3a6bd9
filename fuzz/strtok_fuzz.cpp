// The tokenisers on arbitrary text: the list tokeniser (brackets on and
// off) must always end, return tokens inside the text and leave *next on
// the terminator; the positional tokeniser must report exactly the list
// tokeniser's tokens (with brackets) as positions; the DBCS-mode strtok
// (the fuzzer pins a Japanese locale) must return tokens free of
// delimiters, in order, until it reports the end.
#include "qxutil/text.h"
#include "qxutil/winlocale.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

namespace {

wchar_t Unit(uint8_t b) {
  static const wchar_t kAlphabet[] = L"a b,;()[]'\"`\t\x01\u0301\u3042x,";
  return kAlphabet[b % (sizeof(kAlphabet) / sizeof(wchar_t) - 1)];
}

void Check(bool ok) {
  if (!ok)
    std::abort();
}

std::vector<std::wstring> ListTokens(std::wstring text, const wchar_t* delims, bool brackets) {
  std::vector<std::wstring> tokens;
  wchar_t* const begin = text.data();
  wchar_t* const end = begin + text.size();
  wchar_t* next = nullptr;
  for (wchar_t* p = begin;; p = next) {
    wchar_t* token = qxStrtok(p, delims, brackets, &next);
    Check(next >= p && next <= end);
    if (!token) {
      Check(next == end || *next == 0);
      break;
    }
    Check(token >= begin && token < end + 1 && next > p);
    tokens.push_back(token);
  }
  return tokens;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  SetThreadLocale(1041); // before the first service call: DBCS mode
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 256)
    return 0;
  std::wstring text;
  for (size_t i = 0; i < size; ++i)
    text += Unit(data[i]);
  const wchar_t* delims = size && (data[0] & 1) ? L";" : L",\u0301";

  ListTokens(text, delims, false);
  std::vector<std::wstring> withBrackets = ListTokens(text, delims, true);

  qxt::string s(text.c_str());
  unsigned int start = 0, ts = 0, te = 0, next = 0;
  size_t k = 0;
  while (qxStrtok(s, start, delims, &ts, &te, &next, nullptr)) {
    Check(start <= ts && ts <= te && te <= next && next <= s.length() && next > start);
    Check(k < withBrackets.size() && text.substr(ts, te - ts) == withBrackets[k]);
    ++k;
    start = next;
  }
  Check(k == withBrackets.size() && ts == s.length() && te == ts && next == ts);

  std::wstring copy = text;
  wchar_t* context = nullptr;
  for (wchar_t* t = qxStrtok(copy.data(), delims, &context); t;
       t = qxStrtok(nullptr, delims, &context)) {
    Check(t >= copy.data() && t < copy.data() + copy.size() && *t != 0);
    Check(std::wcspbrk(t, delims) == nullptr || std::wcschr(delims, L'\u0301'));
  }
  Check(context != nullptr && *context == 0);
  return 0;
}
