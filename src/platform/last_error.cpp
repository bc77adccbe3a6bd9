// Provides: GetLastError, SetLastError (the calling thread's last-error code).
#include "qxutil/wintypes.h"

namespace {
thread_local DWORD tLastError = ERROR_SUCCESS;
} // namespace

DWORD GetLastError() { return tLastError; }

void SetLastError(DWORD code) { tLastError = code; }
