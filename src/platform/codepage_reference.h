//===- platform/codepage_reference.h - Per-character conversions -*- C++ -*-===//
//
// Provides: the reference forms of MultiByteToWideChar and
// WideCharToMultiByte (no Windows calls of its own).
//
// The reference forms take the same arguments, check them the same way and
// give the same results as the Windows calls, but convert one character at a
// time through the general code (no block copies, no fast paths). They define
// what the fast paths must produce; the differential tests compare the two.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_CODEPAGE_REFERENCE_H
#define QXUTIL_PLATFORM_CODEPAGE_REFERENCE_H

#include "qxutil/wintypes.h"

namespace qx::platform {

/// MultiByteToWideCharReference - MultiByteToWideChar, one character at a time.
int MultiByteToWideCharReference(UINT cp, DWORD flags, LPCSTR src, int srclen, LPWSTR dst,
                                 int dstlen);

/// WideCharToMultiByteReference - WideCharToMultiByte, one unit at a time.
int WideCharToMultiByteReference(UINT cp, DWORD flags, LPCWSTR src, int srclen, LPSTR dst,
                                 int dstlen, LPCSTR defaultChar, LPBOOL usedDefault);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_CODEPAGE_REFERENCE_H
