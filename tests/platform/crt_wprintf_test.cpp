// _vswprintf with the Microsoft runtime's reading of a wide format: a table
// of formats and their C-library translations, and the buffer's bound.
#include "platform/crt_wprintf.h"

#include <gtest/gtest.h>
#include <string>

namespace {

struct FormatCase {
  const wchar_t* format;
  const wchar_t* translated;
};

TEST(CrtWprintf, TranslatesTheMicrosoftSizes) {
  const FormatCase cases[] = {
      {L"%s|%c", L"%ls|%lc"},    {L"%S|%C", L"%s|%c"},
      {L"%hs|%hc", L"%s|%c"},    {L"%ls|%wc|%ws", L"%ls|%lc|%ls"},
      {L"%-10.3s", L"%-10.3ls"}, {L"%I64d %I64u %I32d", L"%lld %llu %d"},
      {L"%Iu", L"%zu"},          {L"%lld %hhd %ld %5.2f", L"%lld %hhd %ld %5.2f"},
      {L"100%% %", L"100%% %"},  {L"", L""},
  };
  for (const FormatCase& c : cases) {
    wchar_t out[64];
    std::fill(std::begin(out), std::end(out), L'#');
    ASSERT_TRUE(qx::crt::TranslateFormat(c.format, out, 64)) << testing::PrintToString(c.format);
    EXPECT_STREQ(out, c.translated);
  }
  wchar_t small[4];
  EXPECT_FALSE(qx::crt::TranslateFormat(L"%s%s", small, 4)) << "does not fit";
}

int Format(wchar_t* out, size_t count, const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  int n = qx::crt::_vswprintf(out, count, format, args);
  va_end(args);
  return n;
}

TEST(CrtWprintf, KeepsToItsBuffer) {
  wchar_t out[8];
  std::fill(std::begin(out), std::end(out), L'#');
  EXPECT_EQ(Format(out, 6, L"%s-%hs", L"ab", "cd"), 5);
  EXPECT_STREQ(out, L"ab-cd");
  EXPECT_EQ(out[6], L'#');
  EXPECT_EQ(Format(out, 6, L"%s", L"abcdef"), -1) << "too long";
  EXPECT_EQ(out[5], 0);
  EXPECT_EQ(out[6], L'#') << "nothing past the count";
  EXPECT_EQ(qx::crt::_vswprintf(nullptr, 4, L"x", nullptr), -1);
}

} // namespace
