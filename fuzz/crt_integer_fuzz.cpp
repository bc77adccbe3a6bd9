// Fuzz target for the runtime's decimal readers: _wtoi and _wtol read what
// wcstol reads in base 10 (the same white space, sign, digit scripts and
// saturation at the 32-bit range) and set errno alike, on random text and,
// once, the ends of the range and a null text.
#include "platform/crt_number.h"
#include "platform/crt_string.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

namespace {

void Check(bool ok) {
  if (!ok) {
    std::abort();
  }
}

// Same - _wtoi and _wtol read `text` as wcstol does in base 10.
void Same(const wchar_t* text) {
  errno = 0;
  const long read = qx::crt::wcstol(text, nullptr, 10);
  const int readErrno = errno;
  errno = 0;
  Check(qx::crt::_wtoi(text) == read && errno == readErrno);
  errno = 0;
  Check(qx::crt::_wtol(text) == read && errno == readErrno);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Once: the ends of the range, where random text seldom lands, and null.
  static const bool ends = [] {
    static const wchar_t* const kEnds[] = {L"2147483647",  L"2147483648",           L"-2147483648",
                                           L"-2147483649", L"99999999999999999999", nullptr};
    for (const wchar_t* text : kEnds) {
      Same(text);
    }
    return true;
  }();
  (void)ends;
  if (size > 512) {
    return 0;
  }
  // Bytes from 0xF0 stand for units that matter to the readers beyond ASCII:
  // white space or not, digits of other scripts and their neighbours.
  static const wchar_t kUnits[] = {0x00A0, 0x3000, 0x0085, 0x2028, 0x0660, 0x0669, 0x066A, 0x0966,
                                   0xFF10, 0xFF19, 0x1810, 0x19D1, 0x00B9, 0x0301, 0x00B2, 0x1819};
  std::wstring text;
  for (size_t i = 0; i < size; ++i) {
    text +=
        data[i] >= 0xF0 ? kUnits[data[i] - 0xF0] : static_cast<wchar_t>(data[i] ? data[i] : '0');
  }
  Same(text.c_str());
  return 0;
}
