// Platform and arithmetic utilities: exact 32-bit arithmetic, rounding
// conversions, CRC-16, time, random numbers, module loading, date and time.
#include "platform/clock.h"
#include "platform/crt_random.h"
#include "platform/modules.h"
#include "qxutil/frame.h"
#include "qxutil/text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

using namespace qx::win;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

struct LongCase {
  long a, b, expected;
};

TEST(Arithmetic, LongAddSaturatesAt32Bits) {
  const LongCase cases[] = {
      {2147483647, 1, 2147483647},
      {-2147483647 - 1, -1, -2147483647 - 1},
      {2147483647, -1, 2147483646},
      {-2147483647 - 1, 2147483647, -1},
      {1000000000, 1500000000, INT_MAX},
      {-1500000000, -1000000000, INT_MIN},
      {5, -7, -2},
      {0x100000005L, 1, 6}, // only the low 32 bits count
  };
  for (const LongCase& c : cases)
    EXPECT_EQ(LongAdd(c.a, c.b), c.expected) << c.a << " + " << c.b;
}

TEST(Arithmetic, ShortAddAndCoordinateClamp) {
  EXPECT_EQ(ShortAdd(30000, 30000), 32767);
  EXPECT_EQ(ShortAdd(-30000, -30000), -32768);
  EXPECT_EQ(ShortAdd(-5, 3), -2);
  EXPECT_EQ(LongAddCoords(5, 10, 0, 12), 12);
  EXPECT_EQ(LongAddCoords(5, -10, 0, 12), 0);
  EXPECT_EQ(LongAddCoords(5, 5, 0, 12), 10);
  EXPECT_EQ(LongAddCoords(2147483647, 10, -5, 2147483647), 2147483647);
  // The limits, too, count only by their low 32 bits: 0 and 12.
  EXPECT_EQ(LongAddCoords(5, 10, 0x100000000L, 0x10000000CL), 12);
  EXPECT_EQ(LongAddCoords(5, -10, 0x100000000L, 0x10000000CL), 0);
}

struct MulDivCase {
  int a, b, divisor, expected;
};

TEST(Arithmetic, IntegerMulDivWrapsAndAddsTheHalfWhateverTheSigns) {
  const MulDivCase cases[] = {
      {7, 3, 2, 11},
      {-7, 3, 2, -10},
      {7, -3, -2, 11},
      {-7, -3, 2, 11},
      {7, 3, -2, -10},
      {10, 10, 3, 33},
      {1, 1, 0, 0},              // a divisor of 0 is answered, not trapped
      {65536, 65536, 1, 0},      // a*b wraps to 0
      {INT_MIN, 1, -1, INT_MIN}, // the one quotient that overflows wraps
  };
  for (const MulDivCase& c : cases)
    EXPECT_EQ(IntegerMulDiv(c.a, c.b, c.divisor), c.expected)
        << c.a << "*" << c.b << "/" << c.divisor;
}

TEST(Arithmetic, LongRoundDivRoundsMagnitudesHalfUp) {
  const LongCase cases[] = {
      {-7, 2, -4},
      {7, 2, 4},
      {7, -2, -4},
      {-7, -2, 4},
      {5, 3, 2},
      {4, 3, 1},
      {7, 0, 7},
      {-7, 0, -7},
      {INT_MIN, 1, INT_MIN},
      {1, 3, 0},
      {INT_MIN, -1, INT_MIN}, // 2147483648 wraps
  };
  for (const LongCase& c : cases)
    EXPECT_EQ(LongRoundDiv(c.a, c.b), c.expected) << c.a << " / " << c.b;
}

TEST(Arithmetic, IntegerMulDivScaleKeepsTheLow16Bits) {
  EXPECT_EQ(IntegerMulDivScale(1, 40000, 1, 1.0), -25536);
  EXPECT_EQ(IntegerMulDivScale(3, 5, 2, 1.0), 8);   // (15 + 1) / 2
  EXPECT_EQ(IntegerMulDivScale(1, 5, 2, 1.0), 3);   // 6 / 2
  EXPECT_EQ(IntegerMulDivScale(1, 5, 4, 1.0), 2);   // 7 / 4 = 1.75
  EXPECT_EQ(IntegerMulDivScale(1, 3, 2, 1.0), 2);   // 4 / 2
  EXPECT_EQ(IntegerMulDivScale(1, 1, 2, 2.5), 3);   // (1 + 1) * 2.5 / 2 = 2.5
  EXPECT_EQ(IntegerMulDivScale(-1, 5, 2, 1.0), -2); // (-5 + 1) / 2
  EXPECT_EQ(IntegerMulDivScale(1, 1, 0, 1.0), 0);   // infinity has no low 16 bits
  EXPECT_EQ(IntegerMulDivScale(1, 32768, 1, 1.0), -32768);
  EXPECT_EQ(IntegerMulDivScale(1, 65537, 1, 1.0), 1);
}

struct ToLongCase {
  double value;
  long expected;
};

TEST(Conversions, DoubleToLongRoundsHalvesAwayFromZero) {
  const ToLongCase cases[] = {
      {2.5, 3},
      {-2.5, -3},
      {0.0, 0},
      {-0.0, 0},
      {0.49, 0},
      {-0.49, 0},
      {1.4999, 1},
      {-1.5, -2},
      {2147483646.5, 2147483647},
      {-2147483647.5, INT_MIN},
      {2147483647.5, INT_MIN}, // beyond the range: integer indefinite
      {3e9, INT_MIN},
      {-3e9, INT_MIN},
      {kInf, INT_MIN},
      {kNaN, INT_MIN},
  };
  for (const ToLongCase& c : cases)
    EXPECT_EQ(DoubleToLong(c.value), c.expected) << c.value;
}

TEST(Conversions, ShortAndInt64Conversions) {
  EXPECT_EQ(DoubleToShort(2.5), 3);
  EXPECT_EQ(DoubleToShort(-32768.4), -32768);
  EXPECT_EQ(DoubleToShort(40000.0), -25536); // low 16 bits of 40000
  EXPECT_EQ(DoubleToShort(1e10), 0);         // low 16 bits of 0x80000000
  EXPECT_EQ(DoubleToInt64(-2.5), -3);
  EXPECT_EQ(DoubleToInt64(1e15 + 0.5), 1000000000000001LL);
  EXPECT_EQ(DoubleToInt64(1e19), LLONG_MIN);
  EXPECT_EQ(DoubleToInt64(kNaN), LLONG_MIN);
}

TEST(Conversions, ClippingConversions) {
  const ToLongCase cases[] = {
      {-3e9, INT_MIN},         {3e9, INT_MAX},   {-2147483648.0, INT_MIN}, {2147483647.0, INT_MAX},
      {2147483647.2, INT_MAX}, {-kInf, INT_MIN}, {kInf, INT_MAX},          {-2.5, -3},
      {kNaN, INT_MIN},
  };
  for (const ToLongCase& c : cases)
    EXPECT_EQ(DoubleToLongClip(c.value), c.expected) << c.value;
  EXPECT_EQ(DoubleToShortClip(40000.0), 32767);
  EXPECT_EQ(DoubleToShortClip(-40000.0), -32768);
  EXPECT_EQ(DoubleToShortClip(32767.0), 32767);
  EXPECT_EQ(DoubleToShortClip(-32768.0), -32768);
  EXPECT_EQ(DoubleToShortClip(-1.5), -2);
  EXPECT_EQ(DoubleToShortClip(kNaN), 0);
}

TEST(Conversions, QxRoundRoundsHalvesUpward) {
  struct {
    double value, step, expected;
  } cases[] = {{7.0, 0.0, 7.0}, {7.0, 5.0, 5.0},   {7.5, 5.0, 10.0}, {-2.5, 1.0, -2.0},
               {2.5, 1.0, 3.0}, {-7.5, 5.0, -5.0}, {0.26, 0.5, 0.5}, {123.456, 0.01, 123.46}};
  for (const auto& c : cases)
    EXPECT_DOUBLE_EQ(qx_round(c.value, c.step), c.expected) << c.value << " by " << c.step;
}

TEST(NaN, TheLibraryPatternAndTheTest) {
  double v = 0;
  SetNaN(v);
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  EXPECT_EQ(bits, 0x7FFFFFFFFFFFFFFFull);
  std::memcpy(&bits, &(const double&)GetNaN(), sizeof bits);
  EXPECT_EQ(bits, 0x7FFFFFFFFFFFFFFFull);
  EXPECT_TRUE(IsNaN(GetNaN()));
  EXPECT_TRUE(IsNaN(-kNaN)); // any NaN
  EXPECT_FALSE(IsNaN(kInf));
  EXPECT_FALSE(IsNaN(0.0));
}

// The CRC catalogue's check input, and a table guard value.
const unsigned char kCheckInput[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
constexpr unsigned short kUnwritten = 0xEEEE;

TEST(Crc16, ArcCheckValueAndTable) {
  unsigned short table[256 + 4];
  std::fill(std::begin(table), std::end(table), kUnwritten);
  EXPECT_EQ(calculate_crc16(kCheckInput, 9, table, true, 256), 0xBB3D);
  EXPECT_EQ(table[0], 0x0000);
  EXPECT_EQ(table[1], 0xC0C1);
  EXPECT_EQ(table[128], 0xA001);
  EXPECT_EQ(table[255], 0x4040);
  EXPECT_EQ(table[256], kUnwritten); // nothing past the stated size
  // The kept table serves later calls.
  const unsigned char a[] = {'A'};
  EXPECT_EQ(calculate_crc16(a, 1, table, false, 256), 0x30C0);
  EXPECT_EQ(calculate_crc16(kCheckInput, 0, table, false, 256), 0);
  EXPECT_EQ(calculate_crc16(nullptr, 5, table, false, 256), 0);
  EXPECT_EQ(calculate_crc16(kCheckInput, 9, nullptr, true, 256), 0);
}

TEST(Crc16, ASmallTableIsNeitherOverrunNorWrong) {
  unsigned short small[16 + 2];
  std::fill(std::begin(small), std::end(small), kUnwritten);
  EXPECT_EQ(calculate_crc16(kCheckInput, 9, small, true, 16), 0xBB3D);
  EXPECT_EQ(small[1], 0xC0C1);
  EXPECT_EQ(small[16], kUnwritten);
  EXPECT_EQ(small[17], kUnwritten);
  // A table never built is never read beyond its size either.
  EXPECT_EQ(calculate_crc16(kCheckInput, 9, small, false, 0), 0xBB3D);
}

TEST(Time, HundredthsFollowTheTickCount) {
  long before = time_100();
  DWORD ticks = GetTickCount();
  long after = time_100();
  EXPECT_LE(before, static_cast<long>(ticks / 10));
  EXPECT_LE(static_cast<long>(ticks / 10), after);
  EXPECT_GE(before, 0);
  EXPECT_LE(after, 429496729);
  EXPECT_EQ(DoubleClickTime_100(), 50);
}

TEST(Time, Sleep100WaitsUntilTheHundredthsHavePassed) {
  long start = time_100();
  Sleep100(2.9); // truncated to 2
  EXPECT_GE(time_100() - start, 2);
  Sleep100(-5.0); // returns at once
  Sleep100(kNaN);
}

TEST(Random, MicrosoftGeneratorAndRange) {
  qx::crt::srand(1);
  EXPECT_EQ(qx::crt::rand(), 41);
  EXPECT_EQ(qx::crt::rand(), 18467);
  EXPECT_EQ(qx::crt::rand(), 6334);
  for (int i = 0; i < 1000; ++i) {
    int r = random_number(10);
    ASSERT_GE(r, 0);
    ASSERT_LT(r, 10);
    ASSERT_LE(random_number(1000000), qx::crt::kRandMax);
  }
  EXPECT_EQ(random_number(1), 0);
  EXPECT_EQ(random_number(0), 0);
}

TEST(Platform, ReportsWindowsNtAndHasNoMetafiles) {
  EXPECT_EQ(SystemPlatform(), 2);
  EXPECT_EQ(GetMetaFileBits(nullptr), nullptr);
  EXPECT_EQ(GetEnhancedMetaFileBits(nullptr), nullptr);
}

TEST(Literals, DefaultRotatableFontForTheSystemCharset) {
  // The tests' user locale is en-US, whose character set is WindowsLatin1.
  EXPECT_TRUE(InitLiterals());
  EXPECT_TRUE(InitLiterals());
  EXPECT_STREQ(GetDefaultRotatableFont(), L"Arial");
}

// ---- Date and time -----------------------------------------------------------

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
  EXPECT_GE(t.wYear, 2000);
  EXPECT_GE(t.wMonth, 1);
  EXPECT_LE(t.wMonth, 12);
  EXPECT_GE(t.wDay, 1);
  EXPECT_LE(t.wDay, 31);
  EXPECT_LE(t.wDayOfWeek, 6);
  EXPECT_LE(t.wHour, 23);
  EXPECT_LE(t.wMilliseconds, 999);
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
  {
    ClockHook hook(EPERM);
    SetLastError(0);
    EXPECT_FALSE(SetDateTime(&t));
    EXPECT_EQ(gSetCalls, 2);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PRIVILEGE_NOT_HELD));
  }
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

// ---- Module loading ----------------------------------------------------------

std::wstring Widen(const char* s) { return std::wstring(s, s + std::strlen(s)); }

TEST(LoadQXLibrary, LoadsFromTheDirectoryOfTheBesideModule) {
  const std::wstring path = Widen(QXTEST_BESIDE_PATH);
  HMODULE anchor = LoadLibraryW(path.c_str());
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

} // namespace
