// What a call wrote into a sentinel-filled buffer of a given size.
#ifndef QXUTIL_TESTS_COMMON_GUARDED_WRITE_H
#define QXUTIL_TESTS_COMMON_GUARDED_WRITE_H

#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <string>

namespace qxtest {

/// kNothingWritten - what Written gives when the call wrote nothing at all.
inline constexpr wchar_t kNothingWritten[] = L"(nothing written)";

/// Written - the text `write` left in a buffer of `size` units (its result
/// in `ok` when given); a unit written past `size` fails the test.
template <class Write> std::wstring Written(unsigned int size, Write&& write, bool* ok = nullptr) {
  Guarded<wchar_t> b(size, L'\x7F7F');
  const bool result = write(b.data());
  if (ok)
    *ok = result;
  EXPECT_TRUE(b.UntouchedFrom(size)) << "written past " << size;
  return b.UntouchedFrom(0) ? std::wstring(kNothingWritten) : b.Text();
}

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_GUARDED_WRITE_H
