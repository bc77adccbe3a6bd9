//===- text/wide_search.cpp - Length and search in two modes ---------------===//
//
// Single-byte mode uses the runtime's functions; DBCS mode walks character
// by character with qxNextChar and only looks at the first unit of each
// character, so a nonspacing mark is never found on its own.
//
//===----------------------------------------------------------------------===//
#include "platform/unicode.h"
#include "text/wide_internal.h"

#include <cstdint>
#include <cwchar>

using namespace qx::win;

using qx::text::DbcsMode;
using qx::text::InSet;

namespace {

// Narrow - DBCS mode's view of a searched-for character: its low byte,
// sign-extended to 16 bits (0x41 stays, 0xE9 becomes 0xFFE9, 0x3042 0x42).
wchar_t Narrow(wchar_t c) {
  return static_cast<wchar_t>(static_cast<uint16_t>(static_cast<int8_t>(c & 0xFF)));
}

// WalkWhile - DBCS walk past the characters whose first unit is in `set`
// (inSet true) or not in it (inSet false); stops at the terminator.
const wchar_t* WalkWhile(const wchar_t* s, const wchar_t* set, bool inSet) {
  while (*s && InSet(set, *s) == inSet)
    s = qxNextChar(s);
  return s;
}

} // namespace

size_t qxStrLen(const wchar_t* s) {
  if (!s)
    return 0;
  if (!DbcsMode())
    return std::wcslen(s);
  size_t n = 0;
  for (; *s; s = qxNextChar(s))
    ++n;
  return n;
}

const wchar_t* qxStrchr(const wchar_t* s, wchar_t c) {
  if (!s)
    return nullptr;
  if (!DbcsMode())
    return std::wcschr(s, c);
  c = Narrow(c);
  for (;; s = qxNextChar(s)) {
    if (*s == c)
      return s;
    if (!*s)
      return nullptr;
  }
}

const wchar_t* qxStrrchr(const wchar_t* s, wchar_t c) {
  if (!s)
    return nullptr;
  if (!DbcsMode())
    return std::wcsrchr(s, c);
  const wchar_t* found = nullptr;
  for (;; s = qxNextChar(s)) {
    if (*s == c)
      found = s;
    if (!*s)
      return found;
  }
}

const wchar_t* qxStrpbrk(const wchar_t* s, const wchar_t* set) {
  if (!s || !set)
    return nullptr;
  if (!DbcsMode())
    return std::wcspbrk(s, set);
  s = WalkWhile(s, set, false);
  return *s ? s : nullptr;
}

size_t qxStrspn(const wchar_t* s, const wchar_t* set) {
  if (!s || !set)
    return 0;
  if (!DbcsMode())
    return std::wcsspn(s, set);
  return static_cast<size_t>(WalkWhile(s, set, true) - s);
}

size_t qxStrcspn(const wchar_t* s, const wchar_t* set) {
  if (!s || !set)
    return 0;
  if (!DbcsMode())
    return std::wcscspn(s, set);
  return static_cast<size_t>(WalkWhile(s, set, false) - s);
}

const wchar_t* qxStrstr(const wchar_t* s, const wchar_t* needle) {
  if (!s || !needle)
    return nullptr;
  if (!DbcsMode())
    return std::wcsstr(s, needle);
  if (!*needle)
    return s;
  wchar_t first = Narrow(needle[0]);
  size_t rest = std::wcslen(needle + 1);
  for (; *s; s = qxNextChar(s))
    if (*s == first && std::wcsncmp(s + 1, needle + 1, rest) == 0)
      return s;
  return nullptr;
}

const wchar_t* qxLastChar(const wchar_t* s) {
  if (!s || !*s)
    return s;
  if (!DbcsMode())
    return s + std::wcslen(s) - 1;
  for (const wchar_t* next = qxNextChar(s); *next; next = qxNextChar(next))
    s = next;
  return s;
}

const wchar_t* fast_strchr(const wchar_t* s, wchar_t c) { return s ? std::wcschr(s, c) : nullptr; }

const wchar_t* fast_strpbrk(const wchar_t* s, const wchar_t* set) {
  return s && set ? std::wcspbrk(s, set) : nullptr;
}

const wchar_t* strnchr(const wchar_t* s, wchar_t c, size_t n) {
  if (!s)
    return nullptr;
  for (size_t i = 0; i < n && s[i]; ++i)
    if (s[i] == c)
      return s + i;
  return nullptr;
}

unsigned int strrcspn(const wchar_t* s, const wchar_t* set) {
  unsigned int last = 0xFFFFFFFFu;
  if (!s || !set)
    return last;
  for (unsigned int i = 0; s[i]; ++i)
    if (InSet(set, s[i]))
      last = i;
  return last;
}

const wchar_t* qxNextChar(const wchar_t* p) { return CharNextW(p); }

const wchar_t* qxPrevChar(const wchar_t* start, const wchar_t* p) { return CharPrevW(start, p); }

bool qxIsLeadByte(const wchar_t*) { return false; }
