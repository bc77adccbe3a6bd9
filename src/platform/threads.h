//===- platform/threads.h - Thread-local storage, critical sections -*- C++ -*-===//
//
// Provides: TlsAlloc, TlsFree, TlsGetValue, TlsSetValue,
// InitializeCriticalSection, DeleteCriticalSection, EnterCriticalSection,
// LeaveCriticalSection, GetCurrentThreadId, and the library's entry point
// notifications (DLL_THREAD_DETACH when a thread that used thread-local
// storage ends, DLL_PROCESS_DETACH when the library is unloaded).
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_THREADS_H
#define QXUTIL_PLATFORM_THREADS_H

#include "qxutil/wintypes.h"

namespace qx::win {

DWORD TlsAlloc();
BOOL TlsFree(DWORD index);
LPVOID TlsGetValue(DWORD index);
BOOL TlsSetValue(DWORD index, LPVOID value);

void InitializeCriticalSection(CRITICAL_SECTION* section);
void DeleteCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);

DWORD GetCurrentThreadId();

} // namespace qx::win

namespace qx::platform {

/// The library's entry point, in the shape of DllMain.
using DllEntry = BOOL (*)(HINSTANCE module, DWORD reason, LPVOID reserved);

/// SetDllEntry - registers the entry point. It receives DLL_THREAD_DETACH on
/// a thread that stored a value in thread-local storage, as that thread ends,
/// and DLL_PROCESS_DETACH when the library is unloaded (or the process
/// exits). Attach notifications are not sent: the library does nothing on
/// them.
void SetDllEntry(DllEntry entry);

/// TlsValueFast - TlsGetValue for an index known to be valid, without
/// touching the last-error code; for the library's hot paths.
LPVOID TlsValueFast(DWORD index);

} // namespace qx::platform

#endif // QXUTIL_PLATFORM_THREADS_H
