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

// ---- Files (see qxutil/files.h) -------------------------------------------

#define INVALID_FILE_ATTRIBUTES ((DWORD)0xFFFFFFFF)
#define FILE_ATTRIBUTE_READONLY 0x00000001
#define FILE_ATTRIBUTE_HIDDEN 0x00000002
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020
#define FILE_ATTRIBUTE_NORMAL 0x00000080

#define MOVEFILE_REPLACE_EXISTING 0x00000001

enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard = 0, GetFileExMaxInfoLevel = 1 };

struct WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
};

// The Microsoft C runtime's open flags, share modes and permission bits, with
// its values (glibc's O_ flags have other values).
#define _O_RDONLY 0x0000
#define _O_WRONLY 0x0001
#define _O_RDWR 0x0002
#define _O_APPEND 0x0008
#define _O_CREAT 0x0100
#define _O_TRUNC 0x0200
#define _O_EXCL 0x0400
#define _O_TEXT 0x4000
#define _O_BINARY 0x8000

#define _SH_DENYRW 0x10
#define _SH_DENYWR 0x20
#define _SH_DENYRD 0x30
#define _SH_DENYNO 0x40

#define _S_IFMT 0xF000
#define _S_IFDIR 0x4000
#define _S_IFREG 0x8000
#define _S_IREAD 0x0100
#define _S_IWRITE 0x0080
#define _S_IEXEC 0x0040

typedef int32_t __time32_t;

// _stat32 - what _wstat32 fills in, with the Microsoft runtime's member
// order and widths. glibc's <sys/stat.h> defines st_atime, st_mtime and
// st_ctime as macros; they are set aside while the record is declared.
#pragma push_macro("st_atime")
#pragma push_macro("st_mtime")
#pragma push_macro("st_ctime")
#undef st_atime
#undef st_mtime
#undef st_ctime
struct _stat32 {
  uint32_t st_dev;
  uint16_t st_ino;
  uint16_t st_mode;
  int16_t st_nlink;
  int16_t st_uid;
  int16_t st_gid;
  uint32_t st_rdev;
  int32_t st_size;
  __time32_t st_atime;
  __time32_t st_mtime;
  __time32_t st_ctime;
};
#pragma pop_macro("st_ctime")
#pragma pop_macro("st_mtime")
#pragma pop_macro("st_atime")

// ---- File search (see FileFindFirst) ---------------------------------------

typedef void* HANDLE;
#define INVALID_HANDLE_VALUE ((HANDLE)(LONG_PTR)-1)
#define ERROR_NO_MORE_FILES 18

struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD dwReserved0;
  DWORD dwReserved1;
  WCHAR cFileName[MAX_PATH];
  WCHAR cAlternateFileName[14];
};

// ---- Calls a host may need -------------------------------------------------

QXUTIL_API DWORD GetLastError();
QXUTIL_API void SetLastError(DWORD code);

#endif // _WIN32

#endif // QXUTIL_WINTYPES_H
