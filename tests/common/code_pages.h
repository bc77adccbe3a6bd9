// The one list of every Windows code page the library converts; a test in
// tests/platform checks it against the generated tables.
#ifndef QXUTIL_TESTS_COMMON_CODE_PAGES_H
#define QXUTIL_TESTS_COMMON_CODE_PAGES_H

#include "qxutil/wintypes.h"

namespace qxtest {

/// kAllPages - the single-byte pages, then the double-byte ones.
inline constexpr UINT kAllPages[] = {437,   850,   852,   855,   857,   860,   861,   863,   864,
                                     865,   869,   874,   1250,  1251,  1252,  1253,  1254,  1255,
                                     1256,  1257,  1258,  28591, 28592, 28593, 28594, 28595, 28596,
                                     28597, 28598, 28599, 932,   936,   949,   950};

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_CODE_PAGES_H
