//===- locale/date.cpp - qxDATE, day numbers and literals -----------------===//
//
// Day numbers count from 1 January of year 1. The conversions count months
// from March, so that the leap day is the last day of each four-year cycle;
// the common cases are arithmetic only, and one table of the 48 month
// starts of such a cycle serves the rest (year 0, odd months).
//
//===----------------------------------------------------------------------===//
#include "frame/report.h"
#include "locale/date_internal.h"
#include "platform/time32.h"

#include <cstdint>
#include <cwchar>

using namespace qx::win;

namespace {

using qx::date::IsLeapYear;

// kCycleMonthStart - day offsets of the month starts of a four-year cycle
// beginning on 1 March, February having 29 days only in the fourth year;
// the 49th entry is the cycle's length.
constexpr int kCycleMonthStart[49] = {0,    31,   61,   92,   122,  153,  184,  214,  245,  275,
                                      306,  337,  365,  396,  426,  457,  487,  518,  549,  579,
                                      610,  640,  671,  702,  730,  761,  791,  822,  852,  883,
                                      914,  944,  975,  1005, 1036, 1067, 1095, 1126, 1156, 1187,
                                      1217, 1248, 1279, 1309, 1340, 1370, 1401, 1432, 1461};

constexpr uint32_t kDaysPer400Years = 146097;
constexpr uint32_t kDaysPer100Years = 36524;
constexpr uint32_t kDaysPer4Years = 1461;
// Days from 1 March of year 0 to 1 January of year 1.
constexpr long kMarchToJanuary = 306;

// The error that Days2MDY and LiteralToDate record.
void ReportDateError() { qx::ReportError(eErrorLevelError, 9986, 5002); }

// FloorDiv, FloorMod - division rounding down, so that the January and
// February of year 0 (counted in year -1 from March) stay in the table.
constexpr long FloorDiv(long a, long b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }
constexpr long FloorMod(long a, long b) { return a - FloorDiv(a, b) * b; }

} // namespace

namespace qx::date {

int MonthLength(long year, int month) {
  static constexpr int kLength[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12)
    return 0;
  return month == 2 && IsLeapYear(year) ? 29 : kLength[month - 1];
}

int CurrentYear() {
  qxDATE today;
  return SystemDate(&today)->year;
}

long ApplyTwoDigitYearRule(long year) {
  if (year < 0 || year > 9999)
    return 0;
  if (year < 100)
    return year + 100 * (CurrentYear() / 100);
  return year;
}

bool DateSettingsSystemFlag() {
  cLocaleInfo::FormatCallback callback = GetDateFormatCallback();
  return callback ? !callback() : true;
}

bool LiteralFields(long literal, qxDATE* date, bool fromYearOne) {
  long year = literal / 10000, month = (literal / 100) % 100, day = literal % 100;
  if (year < (fromYearOne ? 1 : 0) || year > 9999 || month < 1 || day < 1 ||
      day > MonthLength(year, static_cast<int>(month)))
    return false;
  date->year = static_cast<int16_t>(year);
  date->month = static_cast<int8_t>(month);
  date->day = static_cast<int8_t>(day);
  return true;
}

bool AllDigits(const wchar_t* text, size_t count) {
  size_t i = 0;
  for (; text[i]; ++i)
    if (i >= count || text[i] < L'0' || text[i] > L'9')
      return false;
  return i == count;
}

} // namespace qx::date

bool IsValidDate(const qxDATE* date) {
  return date && date->year >= 0 && date->year <= 9999 && date->month >= 1 && date->month <= 12 &&
         date->day >= 1 && date->day <= qx::date::MonthLength(date->year, date->month);
}

bool SetDate(short year, char month, char day, qxDATE* date) {
  if (!date)
    return false;
  date->year = year;
  date->month = static_cast<int8_t>(month);
  date->day = static_cast<int8_t>(day);
  if (IsValidDate(date))
    return true;
  SetNullDate(date);
  return false;
}

void SetNullDate(qxDATE* date) {
  if (date)
    *date = qxDATE{0, 0, 0};
}

bool NullDate(const qxDATE* date) { return !date || date->month == 0 || date->day == 0; }

qxDATE* SystemDate(qxDATE* date) {
  if (!date)
    return nullptr;
  __time32_t now = _time32(nullptr);
  const struct tm* local = _localtime32(&now);
  if (local) {
    date->year = static_cast<int16_t>(local->tm_year + 1900);
    date->month = static_cast<int8_t>(local->tm_mon + 1);
    date->day = static_cast<int8_t>(local->tm_mday);
  } else {
    *date = qxDATE{2038, 1, 19};
  }
  return date;
}

// MDY2Days and Days2MDY are inline; these keep them exported for hosts
// built without the inline forms.
[[gnu::used]] static long (*const kExportedMDY2Days)(const qxDATE*) = &MDY2Days;
[[gnu::used]] static bool (*const kExportedDays2MDY)(long, qxDATE*) = &Days2MDY;

long qx::detail::MDY2DaysGeneral(const qxDATE* date) {
  if (!date || date->month == 0 || date->day == 0 || date->year < 0)
    return -1;
  // Count from March: January and February belong to the year before
  // (chosen without a branch; the months are spread evenly).
  long early = date->month < 3;
  long m = date->month + 12 * early, y = date->year - early;
  if (y >= 0 && m >= 3 && m <= 14) {
    // The common case, table-free in unsigned 32-bit arithmetic (divisions
    // by constants become multiplications): 365 days a year, a leap day
    // every 4 years but not every 100, a cycle of 400 years.
    uint32_t uy = static_cast<uint32_t>(y), inCycle = uy % 400;
    uint32_t monthStart = (153 * (static_cast<uint32_t>(m) - 3) + 2) / 5;
    return date->day +
           static_cast<long>(kDaysPer400Years * (uy / 400) + 365 * inCycle + inCycle / 4 -
                             inCycle / 100 + monthStart) -
           307;
  }
  long index = FloorMod(FloorMod(y, 100), 4) * 12 + m - 3;
  if (index < 0 || index > 47) // a month outside 1..12
    return -1;
  return date->day + kDaysPer400Years * FloorDiv(y, 400) +
         kDaysPer100Years * (FloorMod(y, 400) / 100) + kDaysPer4Years * (FloorMod(y, 100) / 4) +
         kCycleMonthStart[index] - 307;
}

bool qx::detail::Days2MDYGeneral(long days, qxDATE* date) {
  if (!date)
    return false;
  // Past 31 December 32767 the year no longer fits its field.
  constexpr long kLastRepresentable = 11967899;
  if (days < 0 || days > kLastRepresentable) {
    SetNullDate(date);
    ReportDateError();
    return false;
  }
  // Table-free, in unsigned 32-bit arithmetic (every division is by a
  // constant), on four times the days from 1 March of year 0: a century
  // has 146097 / 4 days, a year of the century 1461 / 4 (the leap day ends
  // each four years), and a month from March is found by one
  // multiplication (153 days for each five months).
  uint32_t n = 4 * static_cast<uint32_t>(days + kMarchToJanuary) + 3;
  uint32_t century = n / kDaysPer400Years;
  uint32_t inCentury = n % kDaysPer400Years / 4 * 4 + 3;
  uint32_t dayOfYear = inCentury % kDaysPer4Years / 4; // from 1 March
  uint32_t m = 2141 * dayOfYear + 197913;              // month in the high half, day in the low
  uint32_t january = dayOfYear >= 306 ? 1 : 0;
  date->year = static_cast<int16_t>(100 * century + inCentury / kDaysPer4Years + january);
  date->month = static_cast<int8_t>((m >> 16) - 12 * january);
  date->day = static_cast<int8_t>((m & 0xFFFF) / 2141 + 1);
  return true;
}

qxDATE* DateAdd(long n, qxDATE* date) {
  if (date)
    Days2MDY(MDY2Days(date) + n, date);
  return date;
}

qxDATE* DateSubtract(long n, qxDATE* date) {
  if (date)
    Days2MDY(MDY2Days(date) - n, date);
  return date;
}

int DateDiff(const qxDATE* a, const qxDATE* b) {
  return static_cast<int>(MDY2Days(a) - MDY2Days(b));
}

int DateCmp(const qxDATE* a, const qxDATE* b) {
  bool nullA = NullDate(a), nullB = NullDate(b);
  if (nullA || nullB)
    return nullA == nullB ? 0 : -2;
  if (a->year != b->year)
    return a->year > b->year ? 1 : -1;
  if (a->month != b->month)
    return a->month > b->month ? 1 : -1;
  if (a->day != b->day)
    return a->day > b->day ? 1 : -1;
  return 0;
}

int DayOfWeek(long dayNumber) {
  long r = dayNumber % 7;
  if (r < 0)
    r += 7;
  return static_cast<int>((r + 1) % 7 + 1);
}

long DateToLiteral(const qxDATE* date) {
  if (!date)
    return 0;
  return (static_cast<long>(date->year) * 100 + date->month) * 100 + date->day;
}

bool LiteralToDate(long literal, qxDATE* date) {
  if (!date)
    return false;
  if (literal == 0) {
    SetNullDate(date);
    return true;
  }
  long year = literal / 10000, month = (literal / 100) % 100, day = literal % 100;
  date->year = static_cast<int16_t>(year);
  date->month = static_cast<int8_t>(month);
  date->day = static_cast<int8_t>(day);
  if (year >= 0 && year <= 32767 && month >= 1 && month <= 12 && day >= 1 &&
      day <= qx::date::MonthLength(year, static_cast<int>(month)))
    return true;
  ReportDateError();
  return false;
}
