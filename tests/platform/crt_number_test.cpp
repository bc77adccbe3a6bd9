// The runtime's number parsers in qx::crt: wcstol and wcstoul (long is 32
// bits wide on Windows), the 64-bit parsers, and wcstod with the runtime
// locale's point (fuzz/number_parse_fuzz.cpp compares the full stop's).
#include "platform/crt_number.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <limits>

namespace {

constexpr long kNullEnd = -1; // the end pointer must be null

struct IntCase {
  const wchar_t* text;
  int radix;
  long long l;            // wcstol
  unsigned long long ul;  // wcstoul
  long long i64;          // _wcstoi64
  unsigned long long u64; // _wcstoui64
  long end;               // offset of the end pointer (all four agree)
  const char* errors;     // errno of each, in that order: '.' untouched, 'R' ERANGE, 'E' EINVAL
};

constexpr long long kMin32 = INT32_MIN, kMax32 = INT32_MAX;
constexpr unsigned long long kMaxU32 = UINT32_MAX, kMaxU64 = UINT64_MAX;

// clang-format off
const IntCase kIntCases[] = {
    {L" \t\n+42x", 10, 42, 42, 42, 42, 6, "...."},
    {L"\u00a0\u3000-7", 10, -7, kMaxU32 - 6, -7, kMaxU64 - 6, 4, "...."}, // runtime white space
    {L"\u0085 7", 10, 0, 0, 0, 0, 0, "...."},                                // NEL is not
    {L"+-1", 10, 0, 0, 0, 0, 0, "...."},
    {L"2147483647", 10, kMax32, 2147483647, kMax32, 2147483647, 10, "...."},
    {L"2147483648", 10, kMax32, 2147483648, 2147483648, 2147483648, 10, "R..."},
    {L"-2147483648", 10, kMin32, 2147483648, kMin32, kMaxU64 - 2147483647, 11, "...."},
    {L"-2147483649", 10, kMin32, 2147483647, -2147483649, kMaxU64 - 2147483648, 11, "R..."},
    {L"4294967295", 10, kMax32, kMaxU32, 4294967295, 4294967295, 10, "R..."},
    {L"4294967296", 10, kMax32, kMaxU32, 4294967296, 4294967296, 10, "RR.."},
    {L"-4294967296", 10, kMin32, kMaxU32, -4294967296, kMaxU64 - 4294967295, 11, "RR.."},
    {L"9223372036854775807", 10, kMax32, kMaxU32, INT64_MAX, INT64_MAX, 19, "RR.."},
    {L"9223372036854775808", 10, kMax32, kMaxU32, INT64_MAX, 1ull << 63, 19, "RRR."},
    {L"-9223372036854775808", 10, kMin32, kMaxU32, INT64_MIN, 1ull << 63, 20, "RR.."},
    {L"18446744073709551616z", 10, kMax32, kMaxU32, INT64_MAX, kMaxU64, 20, "RRRR"},
    {L"\u0661\u0662", 10, 12, 12, 12, 12, 2, "...."}, // Arabic-Indic digits
    {L"\uff21", 16, 0, 0, 0, 0, 0, "...."},           // a fullwidth letter is no digit
    {L"0X1f", 0, 31, 31, 31, 31, 4, "...."},
    {L"-0x10", 0, -16, kMaxU32 - 15, -16, kMaxU64 - 15, 5, "...."},
    {L"09", 0, 0, 0, 0, 0, 1, "...."},    // octal stops at 9
    {L"ffffffff", 16, kMax32, kMaxU32, 4294967295, 4294967295, 8, "R..."},
    {L"5", 37, 0, 0, 0, 0, 0, "EEEE"},
    {nullptr, 10, 0, 0, 0, 0, kNullEnd, "EEEE"},
};
// clang-format on

int Errno(char code) { return code == 'R' ? ERANGE : code == 'E' ? EINVAL : 0; }

// Check - one parser on one row: the value, the end pointer and errno.
template <typename T, typename Parse>
void Check(const IntCase& c, Parse parse, T expected, int which) {
  wchar_t* end = reinterpret_cast<wchar_t*>(1);
  errno = 0;
  EXPECT_EQ(parse(c.text, &end, c.radix), expected) << "parser " << which;
  EXPECT_EQ(end, c.end == kNullEnd ? nullptr : c.text + c.end) << "parser " << which;
  EXPECT_EQ(errno, Errno(c.errors[which])) << "parser " << which;
}

TEST(CrtIntegers, Table) {
  for (const IntCase& c : kIntCases) {
    SCOPED_TRACE(testing::Message() << "row " << (&c - kIntCases) << " radix " << c.radix);
    Check(c, qx::crt::wcstol, static_cast<long>(c.l), 0);
    Check(c, qx::crt::wcstoul, static_cast<unsigned long>(c.ul), 1);
    Check(c, qx::crt::_wcstoi64, c.i64, 2);
    Check(c, qx::crt::_wcstoui64, c.u64, 3);
  }
  EXPECT_EQ(qx::crt::wcstol(L"12", nullptr, 10), 12); // no end pointer wanted
}

struct DoubleCase {
  const wchar_t* text;
  wchar_t point;
  double value;
  long end;
  int error;
};

const double kInf = std::numeric_limits<double>::infinity();

// clang-format off
const DoubleCase kDoubleCases[] = {
    {L"  -2.5e-3x", L'.', -2.5e-3, 9, 0},
    {L"1e309", L'.', kInf, 5, ERANGE},
    {L"1,5", L',', 1.5, 3, 0},                       // the runtime locale's point
    {L"1.5", L',', 1, 1, 0},                         // and "." is then no point
    {L"-0,25e2;", L',', -25, 7, 0},
};
// clang-format on

TEST(CrtWcstod, Table) {
  for (const DoubleCase& c : kDoubleCases) {
    SCOPED_TRACE(testing::Message() << "row " << (&c - kDoubleCases));
    wchar_t* end = reinterpret_cast<wchar_t*>(1);
    errno = 0;
    double value = qx::crt::WcstodWithPoint(c.text, &end, c.point);
    EXPECT_EQ(value, c.value);
    EXPECT_EQ(end, c.text + c.end);
    EXPECT_EQ(errno, c.error);
    // wcstod reads the point of the runtime locale.
    qx::platform::SetThreadNumericLocaleOverride(c.point == L'.' ? "C" : "de_DE.UTF-8", c.point);
    wchar_t* again = reinterpret_cast<wchar_t*>(1);
    double through = qx::crt::wcstod(c.text, &again);
    qx::platform::SetThreadNumericLocaleOverride(nullptr, 0);
    EXPECT_EQ(through, value);
    EXPECT_EQ(again, end);
  }
  wchar_t* end = reinterpret_cast<wchar_t*>(1);
  errno = 0;
  EXPECT_EQ(qx::crt::wcstod(nullptr, &end), 0.0);
  EXPECT_EQ(end, nullptr);
  EXPECT_EQ(errno, EINVAL);
}

} // namespace
