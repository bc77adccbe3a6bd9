// Frame utilities: rounding to a step, the NaN pattern, CRC-16, time, random
// numbers, the clock, modules and the host relays.
#include "common/frame_call_table.h"
#include "platform/clock.h"
#include "platform/crt_random.h"
#include "platform/modules.h"
#include "qxutil/frame.h"
#include "qxutil/text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <dlfcn.h>

using namespace qx::win;
using qxtest::ExpectCalls;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

// The integer arithmetic and the conversions from double: frame_arithmetic_fuzz.
TEST(Conversions, RoundToAStep) {
  struct {
    double value, step, expected;
  } rounds[] = {{7.0, 0.0, 7.0}, {7.0, 5.0, 5.0},   {7.5, 5.0, 10.0}, {-2.5, 1.0, -2.0},
                {2.5, 1.0, 3.0}, {-7.5, 5.0, -5.0}, {0.26, 0.5, 0.5}, {123.456, 0.01, 123.46}};
  for (const auto& c : rounds)
    EXPECT_DOUBLE_EQ(qx_round(c.value, c.step), c.expected) << c.value << " by " << c.step;
}

TEST(Conversions, TheLibraryNaNPattern) {
  double v = 0;
  SetNaN(v);
  uint64_t bits[2];
  const double got = GetNaN();
  std::memcpy(&bits[0], &v, sizeof bits[0]);
  std::memcpy(&bits[1], &got, sizeof bits[1]);
  EXPECT_EQ(bits[0], 0x7FFFFFFFFFFFFFFFull);
  EXPECT_EQ(bits[1], 0x7FFFFFFFFFFFFFFFull);
  ExpectCalls({CALL(IsNaN(GetNaN()), true), CALL(IsNaN(-kNaN), true), // any NaN
               CALL(IsNaN(kInf), false), CALL(IsNaN(0.0), false)});
}

TEST(Crc16, ArcCheckValueAndTableWithinItsSize) {
  const unsigned char check[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'}, a[] = {'A'};
  constexpr unsigned short kUnwritten = 0xEEEE;
  unsigned short table[256 + 4], small[16 + 2];
  std::fill(std::begin(table), std::end(table), kUnwritten);
  std::fill(std::begin(small), std::end(small), kUnwritten);
  ExpectCalls(
      {CALL(calculate_crc16(check, 9, table, true, 256), 0xBB3D), CALL(table[1], 0xC0C1),
       CALL(table[255], 0x4040), CALL(table[256], kUnwritten), // nothing past the stated size
       // The kept table serves later calls.
       CALL(calculate_crc16(a, 1, table, false, 256), 0x30C0),
       CALL(calculate_crc16(check, 0, table, false, 256), 0),
       CALL(calculate_crc16(nullptr, 5, table, false, 256), 0),
       CALL(calculate_crc16(check, 9, nullptr, true, 256), 0),
       // A small table is neither overrun nor wrong, built or not.
       CALL(calculate_crc16(check, 9, small, true, 16), 0xBB3D), CALL(small[1], 0xC0C1),
       CALL(small[16], kUnwritten), CALL(calculate_crc16(check, 9, small, false, 0), 0xBB3D)});
}

TEST(Time, HundredthsFollowTheTickCountAndSleepWaits) {
  long before = time_100();
  DWORD ticks = GetTickCount();
  long after = time_100();
  EXPECT_LE(before, static_cast<long>(ticks / 10));
  EXPECT_LE(static_cast<long>(ticks / 10), after);
  EXPECT_GE(before, 0);
  EXPECT_LE(after, 429496729);
  EXPECT_EQ(DoubleClickTime_100(), 50);
  long start = time_100();
  Sleep100(2.9); // truncated to 2
  EXPECT_GE(time_100() - start, 2);
  Sleep100(-5.0); // returns at once
  Sleep100(kNaN);
}

TEST(Random, TheRuntimesGeneratorAndRange) {
  qx::crt::srand(1);
  ExpectCalls({CALL(qx::crt::rand(), 41), CALL(qx::crt::rand(), 18467), CALL(qx::crt::rand(), 6334),
               CALL(random_number(1), 0), CALL(random_number(0), 0)});
  for (int i = 0; i < 1000; ++i) {
    int r = random_number(10);
    ASSERT_GE(r, 0);
    ASSERT_LT(r, 10);
    ASSERT_LE(random_number(1000000), qx::crt::kRandMax);
  }
}

TEST(Platform, WindowsNtNoMetafilesAndTheDefaultRotatableFont) {
  // The tests' user locale is en-US, whose character set is WindowsLatin1.
  ExpectCalls({CALL(SystemPlatform(), 2), CALL(GetMetaFileBits(nullptr) == nullptr, true),
               CALL(GetEnhancedMetaFileBits(nullptr) == nullptr, true), CALL(InitLiterals(), true),
               CALL(InitLiterals(), true)});
  EXPECT_STREQ(GetDefaultRotatableFont(), L"Arial");
}

int gSetCalls = 0;
long long gSetSeconds[2];
int gSetResult = 0;

int RecordClockSet(long long seconds, long) {
  if (gSetCalls < 2)
    gSetSeconds[gSetCalls] = seconds;
  ++gSetCalls;
  return gSetResult;
}

struct ClockHook {
  explicit ClockHook(int result) {
    gSetCalls = 0;
    gSetResult = result;
    qx::platform::SetThreadClockSetHook(RecordClockSet);
  }
  ~ClockHook() { qx::platform::SetThreadClockSetHook(nullptr); }
};

TEST(DateTime, GetDateTimeGivesAValidLocalTime) {
  SYSTEMTIME t{};
  GetDateTime(&t);
  EXPECT_TRUE(t.wYear >= 2000 && t.wMonth >= 1 && t.wMonth <= 12 && t.wDay >= 1 && t.wDay <= 31 &&
              t.wDayOfWeek <= 6 && t.wHour <= 23 && t.wMilliseconds <= 999);
  GetDateTime(nullptr); // does nothing
}

TEST(DateTime, SetDateTimeSetsTwiceAndReturnsTheSecondResult) {
  SYSTEMTIME t{2020, 2, 0, 29, 12, 30, 15, 250};
  {
    ClockHook hook(0);
    EXPECT_TRUE(SetDateTime(&t));
    ASSERT_EQ(gSetCalls, 2);
    EXPECT_EQ(gSetSeconds[0], gSetSeconds[1]);
  }
  ClockHook hook(EPERM);
  SetLastError(0);
  EXPECT_FALSE(SetDateTime(&t));
  EXPECT_EQ(gSetCalls, 2);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PRIVILEGE_NOT_HELD));
}

TEST(DateTime, SetDateTimeRefusesImpossibleDates) {
  const SYSTEMTIME bad[] = {
      {2021, 2, 0, 29, 0, 0, 0, 0}, // no leap day
      {2020, 13, 0, 1, 0, 0, 0, 0}, {2020, 1, 0, 0, 0, 0, 0, 0},    {2020, 1, 0, 1, 24, 0, 0, 0},
      {2020, 1, 0, 1, 0, 60, 0, 0}, {2020, 1, 0, 1, 0, 0, 0, 1000}, {1600, 1, 0, 1, 0, 0, 0, 0},
  };
  ClockHook hook(0);
  for (SYSTEMTIME t : bad) {
    SetLastError(0);
    EXPECT_FALSE(SetDateTime(&t)) << t.wYear << "-" << t.wMonth << "-" << t.wDay;
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  }
  EXPECT_FALSE(SetDateTime(nullptr));
  EXPECT_EQ(gSetCalls, 0); // the clock was never asked
}

TEST(LoadQXLibrary, LoadsFromTheDirectoryOfTheBesideModule) {
  const std::string path = QXTEST_BESIDE_PATH;
  HMODULE anchor = LoadLibraryW(std::wstring(path.begin(), path.end()).c_str());
  ASSERT_NE(anchor, nullptr);
  HINSTANCE h = reinterpret_cast<HINSTANCE>(1);
  // No extension: ".so" is added; the directory of fileName is ignored.
  EXPECT_TRUE(LoadQXLibrary(L"/nowhere/libqxtest_beside", L"libqxtest_beside.so", h));
  ASSERT_EQ(h, anchor);
  auto id = reinterpret_cast<int (*)()>(
      reinterpret_cast<void*>(GetProcAddress(h, "QxTestBesideModuleId")));
  ASSERT_NE(id, nullptr);
  EXPECT_EQ(id(), 4711);
  FreeLibrary(h);
  EXPECT_FALSE(LoadQXLibrary(L"libqxtest_missing.so", L"libqxtest_beside.so", h));
  EXPECT_EQ(h, nullptr);
  // A beside module that is not loaded means the program's own directory,
  // where the module is not.
  EXPECT_FALSE(LoadQXLibrary(L"libqxtest_beside", L"libqxtest_notloaded.so", h));
  EXPECT_EQ(h, nullptr);
  EXPECT_FALSE(LoadQXLibrary(nullptr, L"libqxtest_beside.so", h));
  EXPECT_FALSE(LoadQXLibrary(L"", nullptr, h));
  FreeLibrary(anchor);
}

TEST(CheckEsc, RelaysToTheCallbackWithTheUpdateFlag) {
  struct Host : cCheckEscCallback {
    bool Check(bool forUpdate) override {
      calls.push_back(forUpdate);
      return true;
    }
    std::vector<bool> calls;
  } host;
  EXPECT_FALSE(CheckEsc());
  EXPECT_FALSE(CheckEsc4Update(true));
  InitCheckEscCallback(&host);
  EXPECT_TRUE(CheckEsc());
  EXPECT_TRUE(CheckEsc4Update(true));
  EXPECT_TRUE(CheckEsc4Update(false));
  EXPECT_EQ(host.calls, (std::vector<bool>{false, true, false}));
  InitCheckEscCallback(nullptr);
  EXPECT_FALSE(CheckEsc());
  EXPECT_EQ(host.calls.size(), 3u);
}

TEST(Companions, RelaysNeverLoadAModule) {
  ASSERT_EQ(dlopen(QXTEST_COMPANION_PATH, RTLD_LAZY | RTLD_NOLOAD), nullptr);
  UtilDllEnsureInit();
  UtilDllForceTerm();
  EXPECT_EQ(GetModuleHandleW(L"libqxkernel.so"), nullptr);
  EXPECT_EQ(dlopen(QXTEST_COMPANION_PATH, RTLD_LAZY | RTLD_NOLOAD), nullptr);
}

TEST(Companions, EnsureInitCallsAndForceTermOnlyLooksUp) {
  void* module = dlopen(QXTEST_COMPANION_PATH, RTLD_NOW);
  ASSERT_NE(module, nullptr) << dlerror();
  auto* inits = static_cast<int*>(dlsym(module, "gEnsureInitCalls"));
  auto* terms = static_cast<int*>(dlsym(module, "gForceTermCalls"));
  ASSERT_TRUE(inits && terms);
  EXPECT_NE(GetModuleHandleW(L"libqxkernel.so"), nullptr);
  UtilDllEnsureInit();
  EXPECT_EQ(*inits, 1);
  UtilDllForceTerm();
  EXPECT_EQ(*terms, 0);
  dlclose(module);
}

TEST(Modules, LookupFailuresSetTheLastError) {
  EXPECT_EQ(GetModuleHandleW(L"libnot-loaded-anywhere.so"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
  HMODULE self = GetModuleHandleW(nullptr);
  ASSERT_NE(self, nullptr);
  EXPECT_EQ(GetProcAddress(self, "no_such_export_here"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
  EXPECT_EQ(GetProcAddress(nullptr, "x"), nullptr);
}

} // namespace
