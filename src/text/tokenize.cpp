//===- text/tokenize.cpp - The three tokenisers -----------------------------===//
#include "platform/crt_string.h"
#include "text/wide_internal.h"

#include <cwchar>

using qx::text::InSet;
using qx::text::IsTrimmable;

namespace {

// The quote characters of the list tokeniser.
constexpr const wchar_t* kListQuotes = L"\"'`";

// Where the DBCS-mode strtok leaves its context at the end. Never written:
// a call resuming here finds nothing left.
wchar_t gNoMoreText[1] = {0};

// TokenLength - the units of `s` (at most n) before the first unit of
// `delims` that is outside quotes and, with `brackets`, outside () and []
// nesting; n if there is none. Inside a quote a doubled quote character
// stays inside and delimiters and brackets are ordinary units. With
// `brackets`, "(" and "[" raise the depth, ")" and "]" lower a positive
// depth (a closer at depth 0 is an ordinary unit), and quotes open only at
// depth 0.
size_t TokenLength(const wchar_t* s, size_t n, const wchar_t* delims, bool brackets,
                   const wchar_t* quotes) {
  wchar_t quote = 0;
  unsigned int depth = 0;
  for (size_t i = 0; i < n; ++i) {
    wchar_t c = s[i];
    if (quote) {
      if (c == quote) {
        if (i + 1 < n && s[i + 1] == quote)
          ++i;
        else
          quote = 0;
      }
      continue;
    }
    if (brackets) {
      if (c == L'(' || c == L'[') {
        ++depth;
        continue;
      }
      if ((c == L')' || c == L']') && depth > 0) {
        --depth;
        continue;
      }
    }
    if (depth > 0)
      continue;
    if (InSet(delims, c))
      return i;
    if (InSet(quotes, c))
      quote = c;
  }
  return n;
}

} // namespace

wchar_t* qxStrtok(wchar_t* s, const wchar_t* delims, bool brackets, wchar_t** next) {
  if (!s || !delims || !next)
    return nullptr;
  while (*s && IsTrimmable(*s))
    ++s;
  *next = s;
  if (!*s)
    return nullptr;
  size_t n = std::wcslen(s);
  size_t end = TokenLength(s, n, delims, brackets, kListQuotes);
  if (end < n) {
    s[end] = 0;
    *next = s + end + 1;
  } else {
    *next = s + n;
  }
  ltrim(s);
  rtrim(s);
  return s;
}

wchar_t* qxStrtok(wchar_t* s, const wchar_t* delims, wchar_t** context) {
  if (!delims)
    return nullptr;
  if (!qx::text::DbcsMode())
    return qx::crt::wcstok(s, delims);
  if (!context)
    return nullptr;
  wchar_t* p = s ? s : *context;
  if (!p)
    return nullptr;
  p += qxStrspn(p, delims);
  if (!*p) {
    *context = gNoMoreText;
    return nullptr;
  }
  wchar_t* delim = qxStrpbrk(p, delims);
  if (delim) {
    *delim = 0;
    *context = delim + 1;
  } else {
    *context = p + std::wcslen(p);
  }
  return p;
}

bool qxStrtok(const qxt::string& s, unsigned int start, const qxt::string& delims,
              unsigned int* tokenStart, unsigned int* tokenEnd, unsigned int* next,
              const wchar_t* quotes) {
  const unsigned int n = s.length();
  if (!tokenStart || !tokenEnd || !next || start > n)
    return false;
  const wchar_t* text = s.c_str();
  unsigned int first = start;
  while (first < n && IsTrimmable(text[first]))
    ++first;
  if (first == n) {
    *tokenStart = *tokenEnd = *next = n;
    return false;
  }
  unsigned int end =
      first + static_cast<unsigned int>(TokenLength(text + first, n - first, delims.c_str(), true,
                                                    quotes ? quotes : kListQuotes));
  *next = end < n ? end + 1 : n;
  while (end > first && IsTrimmable(text[end - 1]))
    --end;
  *tokenStart = first;
  *tokenEnd = end;
  return true;
}
