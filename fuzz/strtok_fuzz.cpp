// The tokenisers on arbitrary text, with delimiters that are also a closer or
// a quote now and then: the list tokeniser (brackets on and off) must give
// the tokens and the places of the plain rules below and leave *next on the
// terminator; the positional tokeniser must report exactly the list
// tokeniser's tokens (with brackets) as positions; the DBCS-mode strtok (the
// fuzzer pins a Japanese locale) must return tokens free of delimiters, in
// order, until it reports the end.
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

bool Trimmable(wchar_t c) { return c <= L' ' || c == 0x7F; } // for this alphabet

// Token - the list tokeniser's rules from `at`: white space and unprintable
// units skipped; the token ends at the first delimiter outside quotes (a
// doubled quote stays inside) and, with `brackets`, outside () and []
// nesting, where quotes open only at depth 0 and a closer at depth 0 is
// ordinary; then trimmed. Sets *start and *next (past the delimiter).
std::wstring Token(const std::wstring& s, const wchar_t* delims, bool brackets, size_t at,
                   size_t* start, size_t* next) {
  while (at < s.size() && Trimmable(s[at]))
    ++at;
  size_t i = *start = at;
  wchar_t quote = 0;
  for (int depth = 0; i < s.size(); ++i) {
    wchar_t c = s[i];
    if (quote) {
      if (c == quote && i + 1 < s.size() && s[i + 1] == quote)
        ++i;
      else if (c == quote)
        quote = 0;
    } else if (brackets && (c == L'(' || c == L'[')) {
      ++depth;
    } else if (brackets && (c == L')' || c == L']') && depth > 0) {
      --depth;
    } else if (depth == 0 && std::wcschr(delims, c)) {
      break;
    } else if (depth == 0 && std::wcschr(L"\"'`", c)) {
      quote = c;
    }
  }
  *next = i < s.size() ? i + 1 : i;
  while (i > at && Trimmable(s[i - 1]))
    --i;
  return s.substr(at, i - at);
}

std::vector<std::wstring> ListTokens(std::wstring text, const wchar_t* delims, bool brackets) {
  std::vector<std::wstring> tokens;
  const std::wstring original = text;
  wchar_t* const begin = text.data();
  wchar_t* next = nullptr;
  for (size_t at = 0;;) {
    size_t start = 0, after = 0;
    std::wstring want = Token(original, delims, brackets, at, &start, &after);
    wchar_t* token = qxStrtok(begin + at, delims, brackets, &next);
    if (start == original.size()) {
      Check(!token && next == begin + start);
      break;
    }
    Check(token == begin + start && next == begin + after && want == token);
    tokens.push_back(token);
    at = after;
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
  static const wchar_t* const kDelims[] = {L";", L",\u0301", L")", L"\""};
  const wchar_t* delims = kDelims[size ? data[0] % 4 : 1];

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
