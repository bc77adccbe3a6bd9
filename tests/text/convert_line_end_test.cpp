// Line-end rewriting between LF and the system charset's line end.
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

TEST(ConvertPlatformCRLFToLF, Cases) {
  struct Case {
    std::wstring in;
    Result expected;
  } cases[] = {
      {L"a\r\nb\rc", L"a\nb\nc"},
      {L"abc", std::nullopt}, // nothing to rewrite
      {L"a\nb", std::nullopt},
      {L"", std::nullopt},
      {L"\r", L"\n"},
      {L"\r\r\n", L"\n\n"},
      {L"\n\r", L"\n\n"},
      {L"\r\n\r\n", L"\n\n"},
      {L"x\r", L"x\n"},
      {Repeat(L"ab\r\n", 100), Repeat(L"ab\n", 100)},
  };
  InUSEnglish([&] {
    for (Case& c : cases)
      EXPECT_EQ(Take(ConvertPlatformCRLFToLF(c.in.data())), c.expected) << c.in.size();
    EXPECT_EQ(ConvertPlatformCRLFToLF(nullptr), nullptr);
  });
}

TEST(ConvertLFToPlatformCRLF, CRLFSystem) {
  struct Case {
    std::wstring in;
    Result expected;
  } cases[] = {
      {L"a\nb", L"a\r\nb"},   {L"abc", std::nullopt},         {L"", std::nullopt},
      {L"a\r\nb", L"a\r\nb"}, // already right: still a new buffer
      {L"\r", L"\r\n"},       {L"\n\r\n\r", L"\r\n\r\n\r\n"}, {L"\r\r\n\n", L"\r\n\r\n\r\n"},
  };
  InUSEnglish([&] {
    for (Case& c : cases)
      EXPECT_EQ(Take(ConvertLFToPlatformCRLF(c.in.data())), c.expected) << c.in.size();
    EXPECT_EQ(ConvertLFToPlatformCRLF(nullptr), nullptr);
  });
}

// Each LF needs one extra unit: 40 are spare at first, and the buffer grows
// by 40 units whenever they run out.
TEST(ConvertLFToPlatformCRLF, GrowsAcrossTheSpareUnits) {
  InUSEnglish([] {
    for (int breaks : {1, 39, 40, 41, 42, 79, 80, 81, 121, 400}) {
      for (const std::wstring& unit : {std::wstring(L"\n"), std::wstring(L"ab\n"),
                                       std::wstring(L"\r"), std::wstring(L"\n\r\n")}) {
        std::wstring in = Repeat(unit, breaks);
        std::wstring expected;
        for (size_t i = 0; i < in.size(); ++i) {
          if (in[i] == L'\r' && i + 1 < in.size() && in[i + 1] == L'\n')
            continue;
          expected += in[i] == L'\r' || in[i] == L'\n' ? std::wstring(L"\r\n") : in.substr(i, 1);
        }
        EXPECT_EQ(Take(ConvertLFToPlatformCRLF(in.data())), expected)
            << breaks << " x " << unit.size();
      }
    }
  });
}

// CR LF pairs cost no spare unit: a text of them never grows its buffer.
TEST(ConvertLFToPlatformCRLF, PairsNeedNoGrowth) {
  InUSEnglish([] {
    std::wstring in = Repeat(L"\r\n", 300);
    wchar_t* out = ConvertLFToPlatformCRLF(in.data());
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(std::wstring(out), in);
    EXPECT_LT(memSize(out), (in.size() + 41 + 40) * sizeof(wchar_t));
    ffree(&out);
  });
}

TEST(ConvertLFToPlatformCRLF, OneUnitLineEnds) {
  struct Case {
    QXCHARSET system;
    std::wstring in, expected;
  } cases[] = {
      {QXCHARSET_MAC_ROMAN, L"a\nb\r\nc\rd", L"a\rb\rc\rd"},
      {QXCHARSET_ISO8859_1, L"a\nb\r\nc\rd", L"a\nb\nc\nd"},
      {QXCHARSET_MAC_ROMAN, Repeat(L"\n", 100), Repeat(L"\r", 100)},
  };
  for (Case& c : cases) {
    WithSystemCharset(c.system, [&] {
      EXPECT_EQ(Take(ConvertLFToPlatformCRLF(c.in.data())), Result(c.expected)) << c.system;
    });
  }
}

TEST(LineEndRewriting, MemoryFailures) {
  InUSEnglish([] {
    std::wstring crlf = L"a\r\nb";
    std::wstring many = Repeat(L"\n", 60); // grows once
    system_charset();                      // the services are built now
    qx::platform::FailAllocations(1, false);
    EXPECT_EQ(ConvertPlatformCRLFToLF(crlf.data()), nullptr);
    qx::platform::FailAllocations(1, false);
    EXPECT_EQ(ConvertLFToPlatformCRLF(crlf.data()), nullptr);
    qx::platform::FailAllocations(2, false); // the growth fails: nothing leaks
    EXPECT_EQ(ConvertLFToPlatformCRLF(many.data()), nullptr);
    qx::platform::FailAllocations(0, false);
    EXPECT_EQ(Take(ConvertLFToPlatformCRLF(many.data())), Repeat(L"\r\n", 60));
  });
}

} // namespace
