//===- platform/codepage.h - Windows code-page conversion -------*- C++ -*-===//
//
// Provides: MultiByteToWideChar, WideCharToMultiByte, IsValidCodePage,
// IsDBCSLeadByte, IsDBCSLeadByteEx, CharNextA, CharNextExA, CharPrevA,
// CharPrevExA, GetACP, GetOEMCP.
//
// The Windows code pages the library reaches, from generated tables
// (tools/gen/gen_codepages.py; see docs/codepages.md): the ANSI pages 874 and
// 1250-1258, the DOS pages 437, 850, 852, 855, 857, 860, 861, 863, 864, 865
// and 869, ISO 8859-1..9 as 28591-28599, and the double-byte pages 932, 936,
// 949 and 950. CP_ACP (0) and CP_OEMCP (1) are the ANSI and OEM pages of the
// calling thread's locale (1252 and 437 when the locale has none).
//
// Failure rule: the conversion calls return 0 and set the last error
// (GetLastError): ERROR_INVALID_PARAMETER for a null source, a zero source
// length, a negative output size, a null output with a non-zero size, the
// same buffer for input and output, or a code page that is not supported;
// ERROR_INVALID_FLAGS for flags the call does not take;
// ERROR_INSUFFICIENT_BUFFER when the output is too small (what fits is
// written: whole characters only); ERROR_NO_UNICODE_TRANSLATION for invalid
// input under MB_ERR_INVALID_CHARS (nothing is written). Success leaves the
// last error alone. An output size of 0 returns the size needed.
//
// wchar_t is 32 bits here and holds one UTF-16 unit. A wchar_t of 0x10000 or
// more has no UTF-16 unit and converts as an unmappable character (the
// default character), like any unit the page does not map.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_PLATFORM_CODEPAGE_H
#define QXUTIL_PLATFORM_CODEPAGE_H

#include "qxutil/wintypes.h"

namespace qx::win {

/// MultiByteToWideChar - converts `srclen` bytes of `src` (-1 or any negative
/// length: up to and including the terminator) in code page `cp` to UTF-16
/// units in `dst` (room for `dstlen` units) and returns the units written, or,
/// when `dstlen` is 0, the units needed. Flags: MB_PRECOMPOSED (the default
/// form), MB_COMPOSITE (precomposed letters as base + nonspacing marks),
/// MB_USEGLYPHCHARS (accepted, no effect), MB_ERR_INVALID_CHARS (fail on an
/// undefined byte or code, a lead byte without a trail byte, or a byte that
/// decodes to a private-use placeholder). Double-byte rules: a lead byte and
/// the next byte are one character (an undefined pair gives the default
/// character); a lead byte followed by a NUL, or ending the input, gives the
/// default character and the NUL is converted on its own.
///   932, "\x82\xA0" => U+3042;  932, "\x82" => U+30FB;  1252, "\x80" => U+20AC
int MultiByteToWideChar(UINT cp, DWORD flags, LPCSTR src, int srclen, LPWSTR dst, int dstlen);

/// WideCharToMultiByte - converts `srclen` units of `src` (negative: up to
/// and including the terminator) to code page `cp` in `dst` (room for
/// `dstlen` bytes) and returns the bytes written, or, when `dstlen` is 0, the
/// bytes needed. A unit the page cannot show becomes the default character:
/// `defaultChar` when given (two bytes on a double-byte page when its second
/// byte is not NUL), else the page's ('?'), and `*usedDefault` (when given)
/// becomes TRUE. Best-fit mappings apply on the pages that have them
/// (U+FF21 => 'A', U+221E => '8' on 1252) unless WC_NO_BEST_FIT_CHARS is set.
/// WC_COMPOSITECHECK composes a base and following nonspacing marks into the
/// precomposed character when the page has it ('e' U+0301 => 0xE9 on 1252);
/// otherwise WC_SEPCHARS (the default) converts them one by one, WC_DISCARDNS
/// drops the marks and WC_DEFAULTCHAR gives one default character for the
/// group. Those three flags need WC_COMPOSITECHECK to have an effect, and at
/// most one of them may be given.
int WideCharToMultiByte(UINT cp, DWORD flags, LPCWSTR src, int srclen, LPSTR dst, int dstlen,
                        LPCSTR defaultChar, LPBOOL usedDefault);

/// IsValidCodePage - TRUE for the code pages above; FALSE for everything
/// else, including the placeholders CP_ACP, CP_OEMCP, CP_MACCP and
/// CP_THREAD_ACP.
BOOL IsValidCodePage(UINT cp);

/// IsDBCSLeadByteEx - TRUE if `byte` is a lead byte of code page `cp`
/// (CP_ACP, CP_OEMCP and CP_THREAD_ACP resolve first); FALSE with
/// ERROR_INVALID_PARAMETER for an unsupported page.
BOOL IsDBCSLeadByteEx(UINT cp, BYTE byte);

/// IsDBCSLeadByte - IsDBCSLeadByteEx for CP_ACP.
BOOL IsDBCSLeadByte(BYTE byte);

/// CharNextExA - the next character after `p` in code page `cp`: `p` itself
/// at the terminator, two bytes on for a lead byte followed by a non-NUL
/// byte, else one byte on. `flags` is ignored. A null `p` gives null.
LPSTR CharNextExA(WORD cp, LPCSTR p, DWORD flags);

/// CharNextA - CharNextExA in CP_ACP.
LPSTR CharNextA(LPCSTR p);

/// CharPrevExA - the start of the character before `p`, walking from
/// `start` (which must begin a character); `start` when `p` is at or before
/// it, or when a terminator comes first.
LPSTR CharPrevExA(WORD cp, LPCSTR start, LPCSTR p, DWORD flags);

/// CharPrevA - CharPrevExA in CP_ACP.
LPSTR CharPrevA(LPCSTR start, LPCSTR p);

/// GetACP - the ANSI code page of the calling thread's locale (1252 when the
/// locale has none, e.g. the Unicode-only locales).
UINT GetACP();

/// GetOEMCP - the OEM code page of the calling thread's locale (437 when the
/// locale has none).
UINT GetOEMCP();

} // namespace qx::win

#endif // QXUTIL_PLATFORM_CODEPAGE_H
