// Line-end rewriting between LF and the system charset's line end: a table
// over CR LF and one-unit systems, the growth of the output buffer, and
// memory failures.
#include "common/thread_runner.h"
#include "platform/heap.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using Result = std::optional<std::wstring>;

// Take - the text of a returned buffer (freed here), or nothing for null.
Result Take(wchar_t* buffer) {
  if (!buffer)
    return std::nullopt;
  std::wstring text = buffer;
  ffree(&buffer);
  return text;
}

template <class Fn> void InUSEnglish(Fn fn) {
  qxtest::RunOnNewThread([&] {
    ASSERT_TRUE(SetThreadLocale(1033)); // system charset WindowsLatin1: CR LF
    fn();
  });
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

std::wstring Repeat(const std::wstring& s, int n) {
  std::wstring out;
  for (int i = 0; i < n; ++i)
    out += s;
  return out;
}

// Both directions under a CR LF system charset, and LF to the one-unit line
// ends; null when there is nothing to rewrite (LF to CR LF: no LF).
TEST(LineEndRewriting, Cases) {
  constexpr QXCHARSET kCrLf = QXCHARSET_WINDOWS_LATIN1;
  // clang-format off
  const struct {
    QXCHARSET system;
    bool toLF; // ConvertPlatformCRLFToLF, else ConvertLFToPlatformCRLF
    std::wstring in;
    Result expected;
  } cases[] = {
      {kCrLf, true, L"a\r\nb\rc", L"a\nb\nc"}, {kCrLf, true, L"abc", std::nullopt},
      {kCrLf, true, L"a\nb", std::nullopt}, {kCrLf, true, L"", std::nullopt},
      {kCrLf, true, L"\r", L"\n"}, {kCrLf, true, L"\r\r\n", L"\n\n"},
      {kCrLf, true, L"\n\r", L"\n\n"}, {kCrLf, true, L"\r\n\r\n", L"\n\n"},
      {kCrLf, true, L"x\r", L"x\n"}, {kCrLf, true, Repeat(L"ab\r\n", 100), Repeat(L"ab\n", 100)},
      {kCrLf, false, L"a\nb", L"a\r\nb"}, {kCrLf, false, L"abc", std::nullopt},
      {kCrLf, false, L"", std::nullopt},
      {kCrLf, false, L"a\r\nb", L"a\r\nb"}, // already right: still a new buffer
      {kCrLf, false, L"\r", L"\r\n"}, {kCrLf, false, L"\n\r\n\r", L"\r\n\r\n\r\n"},
      {kCrLf, false, L"\r\r\n\n", L"\r\n\r\n\r\n"},
      {QXCHARSET_MAC_ROMAN, false, L"a\nb\r\nc\rd", L"a\rb\rc\rd"},
      {QXCHARSET_ISO8859_1, false, L"a\nb\r\nc\rd", L"a\nb\nc\nd"},
      {QXCHARSET_MAC_ROMAN, false, Repeat(L"\n", 100), Repeat(L"\r", 100)},
  };
  // clang-format on
  for (const auto& c : cases) {
    WithSystemCharset(c.system, [&] {
      std::wstring in = c.in;
      EXPECT_EQ(
          Take(c.toLF ? ConvertPlatformCRLFToLF(in.data()) : ConvertLFToPlatformCRLF(in.data())),
          c.expected)
          << c.system << " " << c.toLF << " " << (&c - cases);
    });
  }
  EXPECT_EQ(ConvertPlatformCRLFToLF(nullptr), nullptr);
  EXPECT_EQ(ConvertLFToPlatformCRLF(nullptr), nullptr);
}

// Each LF needs one extra unit: 40 are spare at first, and the buffer grows
// by 40 units whenever they run out. CR LF pairs cost no spare unit: a text
// of them never grows its buffer.
TEST(ConvertLFToPlatformCRLF, GrowsAcrossTheSpareUnits) {
  const struct {
    const wchar_t* unit;
    const wchar_t* rewritten;
  } units[] = {{L"\n", L"\r\n"}, {L"ab\n", L"ab\r\n"}, {L"\r", L"\r\n"}, {L"\n\r\n", L"\r\n\r\n"}};
  InUSEnglish([&] {
    for (int breaks : {1, 39, 40, 41, 42, 79, 80, 81, 121, 400})
      for (const auto& u : units) {
        std::wstring in = Repeat(u.unit, breaks);
        EXPECT_EQ(Take(ConvertLFToPlatformCRLF(in.data())), Repeat(u.rewritten, breaks))
            << breaks << " x " << u.unit;
      }
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
  InUSEnglish([] {
    std::wstring many = Repeat(L"\n", 60); // grows once
    system_charset();                      // the services are built now
    qx::platform::FailAllocations(2, false);
    EXPECT_EQ(ConvertLFToPlatformCRLF(many.data()), nullptr);
    qx::platform::FailAllocations(0, false);
    EXPECT_EQ(Take(ConvertLFToPlatformCRLF(many.data())), Repeat(L"\r\n", 60));
  });
}

} // namespace
