//===- platform/crt_wprintf.cpp - Microsoft wide formatting ---------------===//
//
// Provides _vswprintf (platform/crt_wprintf.h): the format is rewritten into
// the C library's reading, conversion by conversion, and handed to
// vswprintf.
//
//===----------------------------------------------------------------------===//
#include "platform/crt_wprintf.h"

#include <cwchar>

namespace qx::crt {

namespace {

constexpr size_t kFormatRoom = 4096;

bool IsFlagOrWidth(wchar_t c) {
  return c == L'-' || c == L'+' || c == L' ' || c == L'#' || c == L'0' || c == L'*' || c == L'.' ||
         (c >= L'0' && c <= L'9');
}

class Writer {
public:
  Writer(wchar_t* out, size_t room) : out_(out), room_(room) {}
  bool Put(wchar_t c) {
    if (used_ + 1 >= room_)
      return false;
    out_[used_++] = c;
    out_[used_] = 0;
    return true;
  }
  bool Put(const wchar_t* s) {
    for (; *s; ++s)
      if (!Put(*s))
        return false;
    return true;
  }

private:
  wchar_t* out_;
  size_t room_;
  size_t used_ = 0;
};

} // namespace

bool TranslateFormat(const wchar_t* format, wchar_t* out, size_t room) {
  if (!format || !out || room == 0)
    return false;
  out[0] = 0;
  Writer w(out, room);
  for (const wchar_t* p = format; *p;) {
    if (*p != L'%') {
      if (!w.Put(*p++))
        return false;
      continue;
    }
    if (!w.Put(*p++))
      return false;
    if (*p == L'%') {
      if (!w.Put(*p++))
        return false;
      continue;
    }
    while (*p && IsFlagOrWidth(*p))
      if (!w.Put(*p++))
        return false;
    // Size: 'h' narrow and 'l' or 'w' wide for s and c; "I64", "I32" and
    // "I" for numbers; the C library's own sizes kept as written.
    int width = 0; // -1 narrow, 1 wide, 0 none
    wchar_t size[8] = {};
    size_t sizeLen = 0;
    auto addSize = [&](const wchar_t* s) {
      for (; *s && sizeLen + 1 < sizeof size / sizeof *size; ++s)
        size[sizeLen++] = *s;
    };
    for (;;) {
      if (*p == L'w') {
        width = 1;
        ++p;
      } else if (*p == L'I' && p[1] == L'6' && p[2] == L'4') {
        addSize(L"ll");
        p += 3;
      } else if (*p == L'I' && p[1] == L'3' && p[2] == L'2') {
        p += 3;
      } else if (*p == L'I') {
        addSize(L"z");
        ++p;
      } else if (*p == L'l' || *p == L'h' || *p == L'L' || *p == L'z' || *p == L'j' || *p == L't' ||
                 *p == L'q') {
        if ((*p == L'l' || *p == L'h') && p[1] != *p)
          width = *p == L'l' ? 1 : -1;
        wchar_t one[2] = {*p++, 0};
        addSize(one);
      } else {
        break;
      }
    }
    wchar_t c = *p;
    if (!c)
      break;
    ++p;
    bool text = c == L's' || c == L'c' || c == L'S' || c == L'C';
    if (text) {
      bool wide = width != 0 ? width > 0 : (c == L's' || c == L'c');
      if (wide && !w.Put(L'l'))
        return false;
      if (!w.Put(static_cast<wchar_t>(c == L'S' ? L's' : c == L'C' ? L'c' : c)))
        return false;
      continue;
    }
    if (!w.Put(size) || !w.Put(c))
      return false;
  }
  return true;
}

int _vswprintf(wchar_t* out, size_t count, const wchar_t* format, va_list args) {
  if (!out || count == 0 || !format)
    return -1;
  wchar_t translated[kFormatRoom];
  if (!TranslateFormat(format, translated, kFormatRoom)) {
    out[0] = 0;
    return -1;
  }
  int n = std::vswprintf(out, count, translated, args);
  if (n < 0)
    out[count - 1] = 0;
  return n;
}

} // namespace qx::crt
