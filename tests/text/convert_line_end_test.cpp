// Line-end rewriting between LF and the system charset's line end: one-unit
// systems, the spare units of the output buffer, and a failed growth.
#include "platform/heap.h"
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using qxtest::Repeat;

using Result = std::optional<std::wstring>;

// Take - the text of a returned buffer (freed here), or nothing for null.
Result Take(wchar_t* buffer) {
  if (!buffer)
    return std::nullopt;
  std::wstring text = buffer;
  ffree(&buffer);
  return text;
}

// A system charset chosen by the test, through a stand-in cCharsetInfo.
class FixedCharsetInfo final : public cCharsetInfo {
public:
  explicit FixedCharsetInfo(QXCHARSET cs) : cs_(cs) {}
  QXCHARSET GetSystemCharset() override { return cs_; }

private:
  QXCHARSET cs_;
};

template <class Fn> void WithSystemCharset(QXCHARSET cs, Fn fn) {
  qxtest::RunOnNewThread([&] {
    cCharsetInfo* original = cCharsetInfo::Instance();
    ASSERT_TRUE(cCharsetInfo::Instance(new FixedCharsetInfo(cs)));
    delete original;
    fn();
  });
}

// LF to the one-unit line ends (fuzz/convert_fuzz.cpp holds both directions
// under CR LF to the plain rules).
TEST(LineEndRewriting, OneUnitLineEnds) {
  const struct {
    QXCHARSET system;
    std::wstring in;
    Result expected;
  } cases[] = {
      {QXCHARSET_MAC_ROMAN, L"a\nb\r\nc\rd", L"a\rb\rc\rd"},
      {QXCHARSET_ISO8859_1, L"a\nb\r\nc\rd", L"a\nb\nc\nd"},
      {QXCHARSET_MAC_ROMAN, Repeat(L"\n", 100), Repeat(L"\r", 100)},
  };
  for (const auto& c : cases) {
    WithSystemCharset(c.system, [&] {
      std::wstring in = c.in;
      EXPECT_EQ(Take(ConvertLFToPlatformCRLF(in.data())), c.expected) << c.system;
    });
  }
  EXPECT_EQ(ConvertPlatformCRLFToLF(nullptr), nullptr);
  EXPECT_EQ(ConvertLFToPlatformCRLF(nullptr), nullptr);
}

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

// A failed growth returns null and frees the first buffer (the fault walk
// covers the first allocation).
TEST(LineEndRewriting, FailedGrowth) {
  qxtest::InLocale(1033, [] {
    std::wstring many = Repeat(L"\n", 60); // grows once
    system_charset();                      // the services are built now
    qx::platform::FailAllocations(2, false);
    EXPECT_EQ(ConvertLFToPlatformCRLF(many.data()), nullptr);
    qx::platform::FailAllocations(0, false);
    EXPECT_EQ(Take(ConvertLFToPlatformCRLF(many.data())), Repeat(L"\r\n", 60));
  });
}

} // namespace
