//===- frame/report.h - Reporting the library's own errors ------*- C++ -*-===//
//
// How the library's functions record a failure in the calling context's
// error list, under the library's module GUID
// {EE011B72-700B-11D2-BB9D-0060089F5A53}.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FRAME_REPORT_H
#define QXUTIL_FRAME_REPORT_H

#include "qxutil/frame.h"

namespace qx {

/// The library's own module GUID.
extern const GUID kLibraryGuid;

/// The capacity, in units with the terminator, of the text that
/// ReportFormatted formats; longer text is cut to fit.
constexpr unsigned int kFormattedArgCapacity = 1024;

/// ReportError - records error `number` with the message resource
/// `resourceId` and up to two argument strings.
void ReportError(eErrorLevel level, int resourceId, int number, const wchar_t* arg0 = nullptr,
                 const wchar_t* arg1 = nullptr);

/// ReportErrorFrom - the same, for another module's GUID.
void ReportErrorFrom(const GUID& module, eErrorLevel level, int resourceId, int number,
                     const wchar_t* arg0 = nullptr, const wchar_t* arg1 = nullptr);

/// ReportMessage - records error `number` with a literal message template;
/// does nothing when `message` is null.
void ReportMessage(eErrorLevel level, const wchar_t* message, int number,
                   const wchar_t* arg0 = nullptr, const wchar_t* arg1 = nullptr);

/// ReportFormatted - formats `format` (swprintf rules; use %ls for wide
/// strings) into the first argument and records error `number` at level 4
/// with the resource `resourceId`.
void ReportFormatted(int resourceId, int number, const wchar_t* format, ...);

} // namespace qx

#endif // QXUTIL_FRAME_REPORT_H
