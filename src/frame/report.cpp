//===- frame/report.cpp - Reporting the library's own errors --------------===//
#include "frame/report.h"

#include "frame/wide_buffer.h"

#include <cstdarg>
#include <cwchar>

namespace qx {

const GUID kLibraryGuid = {
    0xEE011B72, 0x700B, 0x11D2, {0xBB, 0x9D, 0x00, 0x60, 0x08, 0x9F, 0x5A, 0x53}};

void ReportError(eErrorLevel level, int resourceId, int number, const wchar_t* arg0,
                 const wchar_t* arg1) {
  ReportErrorFrom(kLibraryGuid, level, resourceId, number, arg0, arg1);
}

void ReportErrorFrom(const GUID& module, eErrorLevel level, int resourceId, int number,
                     const wchar_t* arg0, const wchar_t* arg1) {
  ::SetError(level, resourceId, nullptr, module, number, arg0, arg1);
}

void ReportMessage(eErrorLevel level, const wchar_t* message, int number, const wchar_t* arg0,
                   const wchar_t* arg1) {
  ::SetError(level, message, kLibraryGuid, number, arg0, arg1);
}

void ReportFormatted(int resourceId, int number, const wchar_t* format, ...) {
  wchar_t text[kFormattedArgCapacity] = {};
  if (format) {
    va_list args;
    va_start(args, format);
    int n = std::vswprintf(text, kFormattedArgCapacity, format, args);
    va_end(args);
    if (n < 0) {
      // Too long for the buffer (the runtime leaves its contents
      // unspecified): format in full on the heap and keep the head.
      WideBuffer full;
      for (size_t room = 2 * kFormattedArgCapacity; room <= (1u << 20); room *= 2) {
        if (!full.Reserve(room))
          break;
        va_start(args, format);
        n = std::vswprintf(full.data(), room, format, args);
        va_end(args);
        if (n >= 0)
          break;
      }
      strcpyn(text, n >= 0 ? full.c_str() : L"", kFormattedArgCapacity);
    }
  }
  ReportError(eErrorLevelError, resourceId, number, text, nullptr);
}

} // namespace qx
