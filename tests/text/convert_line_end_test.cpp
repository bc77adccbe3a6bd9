// Line-end rewriting between LF and the system charset's line end: the spare
// units of the output buffer, and a failed growth.
#include "platform/heap.h"
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qxtest::Repeat;

// Each line break needs one spare unit but CR LF pairs, which cost none: a
// text of them never grows its buffer of 40 spare units.
TEST(ConvertLFToPlatformCRLF, PairsTakeNoSpareUnits) {
  qxtest::InLocale(1033, [&] {
    std::wstring pairs = Repeat(L"\r\n", 300);
    wchar_t* out = ConvertLFToPlatformCRLF(pairs.data());
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(std::wstring(out), pairs);
    EXPECT_LT(memSize(out), (pairs.size() + 41 + 40) * sizeof(wchar_t));
    ffree(&out);
  });
}

// convert_fuzz holds both directions under CR LF, CR and LF to the plain
// rules; here null, and a failed growth that returns null and frees the first
// buffer (the fault walk covers the first allocation).
TEST(LineEndRewriting, NullAndAFailedGrowth) {
  EXPECT_EQ(ConvertPlatformCRLFToLF(nullptr), nullptr);
  EXPECT_EQ(ConvertLFToPlatformCRLF(nullptr), nullptr);
  qxtest::InLocale(1033, [] {
    std::wstring many = Repeat(L"\n", 60); // grows once
    system_charset();                      // the services are built now
    qx::platform::FailAllocations(2, false);
    EXPECT_EQ(ConvertLFToPlatformCRLF(many.data()), nullptr);
    qx::platform::FailAllocations(0, false);
  });
}

} // namespace
