// Provides: UTF-8 encoding and decoding of wide text for the Linux calls.
#include "platform/utf8.h"

#include <cstdint>

namespace qx::platform {

std::string WideToUtf8(const wchar_t* text) {
  std::string out;
  if (!text)
    return out;
  for (; *text; ++text) {
    uint32_t c = static_cast<uint32_t>(*text);
    if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF)
      c = 0xFFFD;
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

std::wstring Utf8ToWide(const char* text) {
  std::wstring out;
  if (!text)
    return out;
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  while (*p) {
    uint32_t c = *p;
    int extra = c < 0x80                ? 0
                : c >= 0xC2 && c < 0xE0 ? 1
                : c >= 0xE0 && c < 0xF0 ? 2
                : c >= 0xF0 && c < 0xF5 ? 3
                                        : -1;
    if (extra < 0) {
      out += L'\xFFFD';
      ++p;
      continue;
    }
    uint32_t value = extra == 0 ? c : c & (0x3F >> extra);
    int i = 1;
    for (; i <= extra; ++i) {
      if ((p[i] & 0xC0) != 0x80)
        break;
      value = (value << 6) | (p[i] & 0x3F);
    }
    bool overlong = (extra == 2 && value < 0x800) || (extra == 3 && value < 0x10000);
    if (i <= extra || overlong || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
      out += L'\xFFFD';
      ++p;
      continue;
    }
    out += static_cast<wchar_t>(value);
    p += extra + 1;
  }
  return out;
}

} // namespace qx::platform
