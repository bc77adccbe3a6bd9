//===- text/line_end_rewrite.cpp - LF <=> the system line end -------------===//
//
// Both rewriters return a new buffer from the memory manager (the caller
// frees it with ffree) only when the text had something to rewrite, and
// null otherwise.
//
//===----------------------------------------------------------------------===//
#include "qxutil/text.h"

#include <climits>
#include <cwchar>

namespace {

constexpr unsigned int kUnit = sizeof(wchar_t);
constexpr unsigned int kGrowth = 40; // spare units allocated, and added per growth

// BufferBytes - the bytes of `units` wide units; false when they do not fit
// the memory manager's sizes.
bool BufferBytes(size_t units, unsigned int* bytes) {
  if (units > UINT_MAX / kUnit)
    return false;
  *bytes = static_cast<unsigned int>(units * kUnit);
  return true;
}

} // namespace

wchar_t* ConvertPlatformCRLFToLF(wchar_t* s) {
  if (!s)
    return nullptr;
  unsigned int bytes = 0;
  wchar_t* out = nullptr;
  if (!BufferBytes(std::wcslen(s) + 1, &bytes) || !falloc_(bytes, &out, true, true))
    return nullptr;
  bool rewritten = false;
  wchar_t* o = out;
  for (const wchar_t* p = s; *p; ++p) {
    if (*p == L'\r') {
      rewritten = true;
      if (p[1] == L'\n')
        ++p; // the pair becomes one LF
      *o++ = L'\n';
    } else {
      *o++ = *p;
    }
  }
  *o = 0;
  if (!rewritten)
    ffree(&out);
  return out;
}

wchar_t* ConvertLFToPlatformCRLF(wchar_t* s) {
  if (!s)
    return nullptr;
  const wchar_t* lineEnd = CharsetSlashN(system_charset());
  size_t lineEndLen = std::wcslen(lineEnd);
  unsigned int bytes = 0;
  wchar_t* out = nullptr;
  if (!BufferBytes(std::wcslen(s) + 1 + kGrowth, &bytes) || !falloc_(bytes, &out, true, true))
    return nullptr;
  unsigned int spare = kGrowth;
  size_t used = 0;
  bool rewritten = false;
  for (const wchar_t* p = s; *p; ++p) {
    if (*p != L'\r' && *p != L'\n') {
      out[used++] = *p;
      continue;
    }
    if (*p == L'\r' && p[1] == L'\n') {
      ++p; // CR LF is one line break: the CR's unit is spare now
      ++spare;
    }
    rewritten = true;
    if (lineEndLen == 1) {
      out[used++] = lineEnd[0];
      continue;
    }
    if (spare < lineEndLen) {
      void* grown = out;
      if (bytes > UINT_MAX - kGrowth * kUnit || !frealloc_(bytes + kGrowth * kUnit, &grown)) {
        ffree(&out); // a failed resize leaves the old block
        return nullptr;
      }
      out = static_cast<wchar_t*>(grown);
      bytes += kGrowth * kUnit;
      spare = kGrowth;
    }
    for (size_t k = 0; k < lineEndLen; ++k)
      out[used++] = lineEnd[k];
    spare -= static_cast<unsigned int>(lineEndLen - 1);
  }
  out[used] = 0;
  if (!rewritten)
    ffree(&out);
  return out;
}
