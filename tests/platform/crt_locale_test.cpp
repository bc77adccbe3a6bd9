// The runtime-locale queries: one rule for the "C" locale, the numeric
// locale read like the character-type one, and reads from many threads at
// once (run under ThreadSanitizer with the label "threads").
#include "platform/crt_locale.h"

#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <clocale>
#include <thread>
#include <vector>

namespace {

using qx::platform::CrtDecimalPoint;
using qx::platform::CrtLocaleIsC;
using qx::platform::CrtLocaleName;
using qx::platform::CrtNumericLocaleIsC;
using qx::platform::IsCLocaleName;
using qx::platform::SetThreadNumericLocaleOverride;

TEST(CrtLocale, OneRuleForTheCLocale) {
  const struct {
    const char* name;
    bool isC;
  } cases[] = {{nullptr, true},  {"C", true},      {"POSIX", true},       {"C.UTF-8", false},
               {"c", false},     {"posix", false}, {"", false},           {"CC", false},
               {"de_DE", false}, {"C ", false},    {"POSIX.UTF-8", false}};
  for (const auto& c : cases) {
    EXPECT_EQ(IsCLocaleName(c.name), c.isC) << (c.name ? c.name : "(null)");
    if (!c.name)
      continue;
    // The numeric locale of a thread reads the same name by the same rule.
    SetThreadNumericLocaleOverride(c.name, L',');
    EXPECT_EQ(CrtNumericLocaleIsC(), c.isC) << c.name;
    EXPECT_EQ(CrtDecimalPoint(), L',') << c.name;
    SetThreadNumericLocaleOverride(nullptr, 0);
  }
}

TEST(CrtLocale, CategoriesAreReadSeparately) {
  ASSERT_TRUE(CrtNumericLocaleIsC());
  ASSERT_TRUE(CrtLocaleIsC());
  {
    qxtest::ScopedRuntimeLocale numeric("C.UTF-8", LC_NUMERIC);
    ASSERT_TRUE(numeric.ok());
    EXPECT_FALSE(CrtNumericLocaleIsC());
    EXPECT_TRUE(CrtLocaleIsC());
    EXPECT_EQ(CrtDecimalPoint(), L'.');
  }
  {
    qxtest::ScopedRuntimeLocale numeric("POSIX", LC_NUMERIC);
    EXPECT_TRUE(CrtNumericLocaleIsC());
  }
  qxtest::ScopedRuntimeLocale ctype("C.UTF-8");
  char name[4];
  EXPECT_EQ(CrtLocaleName(name, sizeof name), 7u); // the full length
  EXPECT_STREQ(name, "C.U");                       // cut to fit
  EXPECT_FALSE(CrtLocaleIsC());
  EXPECT_TRUE(CrtNumericLocaleIsC());
}

TEST(CrtLocale, ReadsFromManyThreadsAtOnce) {
  // The runtime keeps one copy of these answers for the process (and
  // rewrites them on each localeconv call): every read goes through the lock.
  constexpr int kThreads = 4, kRounds = 2000;
  std::vector<std::thread> threads;
  std::vector<int> wrong(kThreads, 0);
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([t, &wrong] {
      for (int i = 0; i < kRounds; ++i) {
        char name[16];
        bool right = CrtNumericLocaleIsC() && CrtLocaleIsC() && CrtDecimalPoint() == L'.' &&
                     CrtLocaleName(name, sizeof name) == 1 && name[0] == 'C';
        wrong[t] += !right;
      }
    });
  for (std::thread& t : threads)
    t.join();
  for (int t = 0; t < kThreads; ++t)
    EXPECT_EQ(wrong[t], 0) << "thread " << t;
}

} // namespace
