//===- locale/date_parse.cpp - Str2Date and Str2DateEx --------------------===//
//
// Dates read from text: eight digits as a date literal, the neutral
// month/day[/year] form while the host's date format callback asks for
// neutral settings, and otherwise the locale form of the date order and
// delimiter in force. Each number must have at least one digit.
//
//===----------------------------------------------------------------------===//
#include "locale/date_internal.h"
#include "platform/crt_number.h"

#include <cwchar>

using qx::date::ApplyTwoDigitYearRule;
using qx::date::MonthLength;
using qx::date::SkipBlanks;

namespace {

// ReadNumber - wcstol at `p` (Windows' 32-bit long); false when no digit
// was read. *p moves past the number.
bool ReadNumber(const wchar_t** p, long* value) {
  wchar_t* end = nullptr;
  *value = qx::crt::wcstol(*p, &end, 10);
  if (end == *p)
    return false;
  *p = end;
  return true;
}

// StoreIfValid - month 1..12, the year after the two-digit rule non-zero,
// the day in the month; stores the date and returns true, else false.
bool StoreIfValid(long year, long month, long day, qxDATE* date) {
  if (month < 1 || month > 12)
    return false;
  year = ApplyTwoDigitYearRule(year);
  if (year == 0 || day < 1 || day > MonthLength(year, static_cast<int>(month)))
    return false;
  *date = qxDATE{static_cast<int16_t>(year), static_cast<int8_t>(month), static_cast<int8_t>(day)};
  return true;
}

// ReadLiteral - eight digits as a date literal.
bool ReadLiteral(const wchar_t* text, qxDATE* date) {
  long literal = 0;
  return qx::date::AllDigits(text, 8) &&
         StringToLong(text, &literal, nullptr, -2147483647L - 1, 2147483647L) &&
         LiteralToDate(literal, date);
}

// ReadNeutralForm - month sep day [sep year], sep "-" or "/", the year of
// today when there is none.
bool ReadNeutralForm(const wchar_t* text, qxDATE* date) {
  SystemDate(date);
  const wchar_t* p = text;
  long month = 0, day = 0, year = date->year;
  if (!ReadNumber(&p, &month) || month < 1 || month > 12)
    return false;
  p = SkipBlanks(p);
  wchar_t separator = *p;
  if (separator != L'-' && separator != L'/')
    return false;
  ++p;
  if (!ReadNumber(&p, &day))
    return false;
  p = SkipBlanks(p);
  if (*p == separator) {
    ++p;
    if (!ReadNumber(&p, &year))
      return false;
    p = SkipBlanks(p);
    year = ApplyTwoDigitYearRule(year);
  }
  if (*p != 0 || year == 0 || day < 1 || day > MonthLength(year, static_cast<int>(month)))
    return false;
  *date = qxDATE{static_cast<int16_t>(year), static_cast<int8_t>(month), static_cast<int8_t>(day)};
  return true;
}

// SkipToDelimiter - skips blanks unless the delimiter is itself a blank,
// then requires it; *p moves past it.
bool SkipToDelimiter(const wchar_t** p, wchar_t delimiter) {
  if (**p != delimiter)
    *p = SkipBlanks(*p);
  if (**p != delimiter)
    return false;
  ++*p;
  return true;
}

// ReadLocaleForm - number delimiter number [delimiter number] assigned by
// `order`. Without `end` the text must end after the date; with it, *end
// receives where the date stopped (see Str2DateEx).
bool ReadLocaleForm(const wchar_t* text, short order, wchar_t delimiter, qxDATE* date,
                    const wchar_t** end) {
  if (delimiter == 0 || (order != 0 && order != 1 && order != 2 && order != 5))
    return false;
  const wchar_t* p = text;
  long first = 0, second = 0, third = 0;
  if (!ReadNumber(&p, &first) || !SkipToDelimiter(&p, delimiter) || !ReadNumber(&p, &second))
    return false;
  bool hasYear = false;
  const wchar_t* stop = nullptr;
  if (*p != delimiter)
    p = SkipBlanks(p);
  if (*p == 0) {
    stop = p + 1; // one past the terminator: callers never read through it
  } else if (*p == delimiter) {
    ++p;
    if (!ReadNumber(&p, &third))
      return false;
    hasYear = true;
    stop = SkipBlanks(p);
    if (!end && *stop != 0)
      return false;
  } else {
    if (!end)
      return false;
    stop = p + 1;
  }
  long year = hasYear ? third : qx::date::CurrentYear();
  long month = 0, day = 0;
  switch (order) {
  case 0:
    month = first, day = second;
    break;
  case 1:
    day = first, month = second;
    break;
  case 2:
    if (hasYear)
      year = first, month = second, day = third;
    else
      month = first, day = second;
    break;
  default: // 5
    if (hasYear)
      year = first, day = second, month = third;
    else
      day = first, month = second;
    break;
  }
  if (!StoreIfValid(year, month, day, date))
    return false;
  if (end)
    *end = stop;
  return true;
}

qxDATE* Fail(qxDATE* date, wchar_t** end) {
  SetNullDate(date);
  if (end)
    *end = nullptr;
  return nullptr;
}

} // namespace

qxDATE* Str2Date(const wchar_t* text, qxDATE* date) {
  if (!date)
    return nullptr;
  if (!text)
    return Fail(date, nullptr);
  if (ReadLiteral(text, date))
    return date;
  cLocaleInfo::FormatCallback callback = GetDateFormatCallback();
  if (callback && callback())
    return ReadNeutralForm(text, date) ? date : Fail(date, nullptr);
  short order = 0;
  wchar_t delimiter = 0;
  GetQXLocaleDateInfo(true, &order, &delimiter);
  return ReadLocaleForm(text, order, delimiter, date, nullptr) ? date : Fail(date, nullptr);
}

qxDATE* Str2DateEx(const wchar_t* text, qxDATE* date, wchar_t** end) {
  if (!date || !text)
    return date ? Fail(date, end) : nullptr;
  if (ReadLiteral(text, date)) {
    if (end)
      *end = const_cast<wchar_t*>(text + 8);
    return date;
  }
  short order = 0;
  wchar_t delimiter = 0;
  GetQXLocaleDateInfo(qx::date::DateSettingsSystemFlag(), &order, &delimiter);
  const wchar_t* stop = nullptr;
  if (!ReadLocaleForm(text, order, delimiter, date, end ? &stop : nullptr))
    return Fail(date, end);
  if (end)
    *end = const_cast<wchar_t*>(stop);
  return date;
}
