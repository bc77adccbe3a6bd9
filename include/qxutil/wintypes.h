//===- qxutil/wintypes.h - Windows types used by the interface -*- C++ -*-===//
//
// The Windows types, constants and calls that the library's interface uses,
// with Windows' member order and widths. On Windows they come from
// <windows.h>; elsewhere they are defined here so that host code written for
// Windows compiles unchanged.
//
// Widths follow Windows, not the host: DWORD, LCID, UINT and LONG are 32 bits
// even where `long` is 64 bits. WCHAR is wchar_t, which is 32 bits on Linux;
// every character the library handles is in the Basic Multilingual Plane, so
// one wchar_t holds what one UTF-16 unit holds on Windows.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_WINTYPES_H
#define QXUTIL_WINTYPES_H

#include "qxutil/export.h"

#ifdef _WIN32
#include <windows.h>
#else

#include <cstddef>
#include <cstdint>

// ---- Basic types -----------------------------------------------------------

typedef int BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef unsigned int UINT;
typedef int INT;
typedef char CHAR;
typedef wchar_t WCHAR;
typedef CHAR* LPSTR;
typedef const CHAR* LPCSTR;
typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;
typedef BOOL* LPBOOL;
typedef void* LPVOID;
typedef intptr_t INT_PTR;
typedef uintptr_t UINT_PTR;
typedef intptr_t LONG_PTR;
typedef uintptr_t ULONG_PTR;
typedef ULONG_PTR DWORD_PTR;
typedef long long LONGLONG;
typedef unsigned long long ULONGLONG;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define MAX_PATH 260

// ---- Handles ---------------------------------------------------------------

struct HINSTANCE__;
typedef HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
typedef INT_PTR (*FARPROC)();
struct HMETAFILE__;
typedef HMETAFILE__* HMETAFILE;
struct HENHMETAFILE__;
typedef HENHMETAFILE__* HENHMETAFILE;
typedef void* HGLOBAL;
struct HRGN__;
typedef HRGN__* HRGN; // a region (see the rgn_ functions in geometry.h)

#define LOAD_WITH_ALTERED_SEARCH_PATH 0x00000008

// ---- Records ---------------------------------------------------------------

struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek; // 0 = Sunday
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

// A critical section: opaque storage large enough for the platform's
// recursive mutex. Use InitializeCriticalSection and its relatives.
struct CRITICAL_SECTION {
  alignas(16) unsigned char Opaque[64];
};

// ---- Threads ---------------------------------------------------------------

#define TLS_OUT_OF_INDEXES ((DWORD)0xFFFFFFFF)

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

// ---- Last-error codes ------------------------------------------------------

#define ERROR_SUCCESS 0
#define ERROR_FILE_NOT_FOUND 2
#define ERROR_PATH_NOT_FOUND 3
#define ERROR_ACCESS_DENIED 5
#define ERROR_INVALID_HANDLE 6
#define ERROR_NOT_ENOUGH_MEMORY 8
#define ERROR_INVALID_DATA 13
#define ERROR_OUTOFMEMORY 14
#define ERROR_SHARING_VIOLATION 32
#define ERROR_INVALID_PARAMETER 87
#define ERROR_INSUFFICIENT_BUFFER 122
#define ERROR_MOD_NOT_FOUND 126
#define ERROR_PROC_NOT_FOUND 127
#define ERROR_INVALID_FLAGS 1004
#define ERROR_NO_UNICODE_TRANSLATION 1113
#define ERROR_PRIVILEGE_NOT_HELD 1314

// ---- Locale database (see GetLocaleInfoW) ----------------------------------

typedef DWORD LCID;
typedef DWORD LCTYPE;

struct NUMBERFMTW {
  UINT NumDigits;
  UINT LeadingZero;
  UINT Grouping;
  LPWSTR lpDecimalSep;
  LPWSTR lpThousandSep;
  UINT NegativeOrder;
};

struct CURRENCYFMTW {
  UINT NumDigits;
  UINT LeadingZero;
  UINT Grouping;
  LPWSTR lpDecimalSep;
  LPWSTR lpThousandSep;
  UINT NegativeOrder;
  UINT PositiveOrder;
  LPWSTR lpCurrencySymbol;
};

// ---- Code pages (see MultiByteToWideChar) ----------------------------------

#define CP_ACP 0
#define CP_OEMCP 1
#define CP_MACCP 2
#define CP_THREAD_ACP 3

#define MB_PRECOMPOSED 0x00000001
#define MB_COMPOSITE 0x00000002
#define MB_USEGLYPHCHARS 0x00000004
#define MB_ERR_INVALID_CHARS 0x00000008

#define WC_DISCARDNS 0x00000010
#define WC_SEPCHARS 0x00000020
#define WC_DEFAULTCHAR 0x00000040
#define WC_ERR_INVALID_CHARS 0x00000080
#define WC_COMPOSITECHECK 0x00000200
#define WC_NO_BEST_FIT_CHARS 0x00000400

// ---- Calls a host may need -------------------------------------------------

QXUTIL_API DWORD GetLastError();
QXUTIL_API void SetLastError(DWORD code);

#endif // _WIN32

#endif // QXUTIL_WINTYPES_H
