//===- qxutil/locale.h - Locale, numbers and dates ---------------*- C++ -*-===//
//
// cLocaleInfo is the library's one source of national conventions: decimal
// and thousands separators, grouping, number and currency formats, the date
// order and delimiter, and the time format, clock and designators. Each query
// is answered either from the calling thread's locale (re-read at every
// query) or from fixed neutral settings:
//
//   decimal "."  thousands ","  group 3  date order 0 (M-D-Y)  delimiter "/"
//   time "h:mm:ss tt"  twelve-hour clock  "AM"/"PM" after the time  ":"
//
// A host callback may force the neutral settings: with a number (or date)
// format callback installed, a callback answer of true means "neutral".
// Failure rule: nothing here records errors; GetLocaleInt and
// GetLocaleString return false (writing nothing) for an unknown LCTYPE, a
// too-small buffer or a memory failure.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_LOCALE_H
#define QXUTIL_LOCALE_H

#include "qxutil/frame.h"
#include "qxutil/winlocale.h"

#include <array>
#include <cstdint>

/// cLocaleInfo - locale information of one context (slot key 3).
class QXUTIL_API cLocaleInfo : public QXSingleton<cLocaleInfo, 3> {
public:
  using FormatCallback = bool (*)();

  virtual ~cLocaleInfo();
  /// Refresh - re-reads every setting from the thread's locale; true.
  virtual bool Refresh() = 0;
  /// UpdateLocale - takes the thread's locale as the one queried; returns it.
  virtual LCID UpdateLocale() = 0;
  /// GetLocaleInt - the leading decimal integer of an LCTYPE's value ("3;0"
  /// gives 3) for the locale last taken.
  virtual bool GetLocaleInt(LCTYPE type, unsigned int* out) = 0;
  /// GetLocaleString - an LCTYPE's value; false, leaving `buffer` alone,
  /// when it and its terminator do not fit in `size` units.
  virtual bool GetLocaleString(LCTYPE type, wchar_t* buffer, unsigned int size) = 0;
  virtual void SetNumberFormatCallback(FormatCallback callback) = 0;
  virtual FormatCallback GetNumberFormatCallback() = 0;
  virtual void GetNumberInfo(bool system, wchar_t* decimal, wchar_t* thousands, short* group) = 0;
  virtual const wchar_t* GetCurrencySymbol() = 0;
  virtual bool GetNumberFormat(NUMBERFMTW* format) = 0;
  virtual bool GetCurrencyFormat(CURRENCYFMTW* format) = 0;
  virtual NUMBERFMTW* GetNumberFormatPtr() = 0;
  virtual CURRENCYFMTW* GetCurrencyFormatPtr() = 0;
  virtual void SetDateFormatCallback(FormatCallback callback) = 0;
  virtual FormatCallback GetDateFormatCallback() = 0;
  /// GetDateInfo - the date order and one delimiter character (not
  /// terminated).
  virtual void GetDateInfo(bool system, short* order, wchar_t* delimiter) = 0;
  virtual void GetTimeFormat(bool system, wchar_t* buffer, unsigned int size) = 0;
  /// GetTimeInfo - each output whose pointer is null is skipped.
  virtual void GetTimeInfo(bool system, bool* twelveHour, short* markerPosition, const wchar_t** am,
                           const wchar_t** pm, const wchar_t** separator,
                           const wchar_t** secondSeparator) = 0;

  static cLocaleInfo* Create();
};
extern template class QXSingleton<cLocaleInfo, 3>;

QXUTIL_API bool ResetQXLocaleInfo();
QXUTIL_API unsigned long GetLocaleIdentifier();
QXUTIL_API bool GetLocaleInt(unsigned long type, unsigned int* out);
QXUTIL_API bool GetLocaleString(unsigned long type, wchar_t* buffer, unsigned int size);
QXUTIL_API bool SetNumberFormatCallback(bool (*callback)());
QXUTIL_API bool (*GetNumberFormatCallback())();
QXUTIL_API void GetQXLocaleNumInfo(bool system, wchar_t* decimal, wchar_t* thousands, short* group);
QXUTIL_API const wchar_t* GetCurrencySymbol();
QXUTIL_API bool GetNumberFmt(NUMBERFMTW* format);
/// GetCurrentFmt - the currency format (the name is historical).
QXUTIL_API bool GetCurrentFmt(CURRENCYFMTW* format);
QXUTIL_API NUMBERFMTW* GetNumberFmtPtr();
QXUTIL_API CURRENCYFMTW* GetCurrencyFmtPtr();
QXUTIL_API bool SetDateFormatCallback(bool (*callback)());
QXUTIL_API bool (*GetDateFormatCallback())();
QXUTIL_API void GetQXLocaleDateInfo(bool system, short* order, wchar_t* delimiter);
QXUTIL_API void GetQXLocaleTimeFormat(bool system, wchar_t* buffer, unsigned int size);
QXUTIL_API void GetQXLocaleTimeInfo(bool system, bool* twelveHour, short* markerPosition,
                                    const wchar_t** am, const wchar_t** pm,
                                    const wchar_t** separator, const wchar_t** secondSeparator);

/// The settings in force (the thread's locale, or neutral when the host's
/// callback asks for it).
QXUTIL_API wchar_t GetDecimalSeparator();
QXUTIL_API wchar_t GetThousandsSeparator();
QXUTIL_API short GetThousandsGroupSize();
/// GetDateOrder - 0 month-day-year, 1 day-month-year, 2 year-month-day.
QXUTIL_API short GetDateOrder();
QXUTIL_API wchar_t GetDateDelim();

// ---- Number parsing and formatting -----------------------------------------
//
// Canonical number text is neutral: no thousands separators and "." as the
// decimal point, whatever the C runtime's or the thread's locale. UI text (for
// a person) is made from canonical text by FormatNumberForUI and read back by
// DeformatNumberFromUI, both with the separators of cLocaleInfo (so the
// number format callback can make them neutral).
//
// Parsers return false for a null text, for text that does not start with a
// number (after white space), and for a range error; they then store 0 in
// the result and null in the end pointer. Text after the number does not make
// them fail: the end pointer says where the number stopped. The integer
// parsers have Windows' 32-bit `long`. Nothing here records errors.
//
// Formatters return the buffer they were given and never write more than
// the size they were given (units, terminator included); working buffers
// hold 1024 units, and text longer than that comes out empty.
// qx_round (frame.h) rounds to a multiple of a unit.

/// PRINTF_FORMAT - the conversion of DoubleToString; any other value prints
/// as PRINTF_G.
enum PRINTF_FORMAT : int { PRINTF_E = 1, PRINTF_F = 2, PRINTF_G = 3 };

/// SIGNIFICANTDIGITS - the tolerance of EqualDoubles: value n selects
/// 10^-(n + 1), on the binary mantissa (0.5 <= |m| < 1).
enum SIGNIFICANTDIGITS : int {
  SIGNIFICANTDIGITS_1 = 0, // 0.1
  SIGNIFICANTDIGITS_2,
  SIGNIFICANTDIGITS_3,
  SIGNIFICANTDIGITS_4,
  SIGNIFICANTDIGITS_5,
  SIGNIFICANTDIGITS_6, // 1e-6
  SIGNIFICANTDIGITS_7,
  SIGNIFICANTDIGITS_8,
  SIGNIFICANTDIGITS_9,
  SIGNIFICANTDIGITS_10,
  SIGNIFICANTDIGITS_11,
  SIGNIFICANTDIGITS_12,
  SIGNIFICANTDIGITS_13,
  SIGNIFICANTDIGITS_14,
  SIGNIFICANTDIGITS_15, // 1e-15
};

/// StringToShort - wcstol, then -32768..32767: L"32768" fails.
QXUTIL_API bool StringToShort(const wchar_t* text, short* result, wchar_t** end);
/// StringToInt - wcstol: L"12abc" => 12, end at 'a'; L"abc" fails.
QXUTIL_API bool StringToInt(const wchar_t* text, int* result, wchar_t** end);
QXUTIL_API bool StringToUnsignedInt(const wchar_t* text, unsigned int* result, wchar_t** end);
/// StringToLong - wcstol, then min <= value <= max.
QXUTIL_API bool StringToLong(const wchar_t* text, long* result, wchar_t** end, long min, long max);
/// StringToUnsignedLong - wcstoul with `radix` (0 or 2..36).
QXUTIL_API bool StringToUnsignedLong(const wchar_t* text, unsigned long* result, wchar_t** end,
                                     int radix);
QXUTIL_API bool StringToUnsignedLong16(const wchar_t* text, unsigned long* result);
/// StringToInt64, StringToUnsignedInt64 - an overflow saturates and still
/// succeeds.
QXUTIL_API bool StringToInt64(const wchar_t* text, long long* result);
QXUTIL_API bool StringToUnsignedInt64(const wchar_t* text, unsigned long long* result);
/// StringToDouble - correctly rounded. While the C runtime's numeric locale
/// is "C" the whole of wcstod's syntax is read (hexadecimal, "inf", "nan");
/// in any other runtime locale the number is scanned here ([blanks][sign]
/// digits[.digits][e|E|d|D[sign]digits]) so that "." is the decimal point
/// whatever that locale says, and the text is briefly modified during the
/// call (and restored): it must then be writable. L"1.5d3" => 1.5, end at
/// 'd'.
QXUTIL_API bool StringToDouble(const wchar_t* text, double* result, wchar_t** end);

/// The FmtCtl parsers: with `fromUI` the text is first turned into
/// canonical text by DeformatNumberFromUI (text of 1024 units or more then
/// fails).
QXUTIL_API bool StringToLongFmtCtl(const wchar_t* text, long* result, bool fromUI, long min,
                                   long max);
QXUTIL_API bool StringToShortFmtCtl(const wchar_t* text, short* result, bool fromUI);
QXUTIL_API bool StringToIntFmtCtl(const wchar_t* text, int* result, bool fromUI);
QXUTIL_API bool StringToUnsignedLongFmtCtl(const wchar_t* text, unsigned long* result, bool fromUI);
QXUTIL_API bool StringToInt64FmtCtl(const wchar_t* text, long long* result, bool fromUI);
QXUTIL_API bool StringToUnsignedInt64FmtCtl(const wchar_t* text, unsigned long long* result,
                                            bool fromUI);
QXUTIL_API bool StringToDoubleFmtCtl(const wchar_t* text, double* result, bool fromUI);

/// DoubleToString - printf's "%*.*e", "%*.*f" or "%*.*g" (without the width
/// when it is -1), made canonical, then UI text when `forUI`. Precision -1
/// with PRINTF_G is automatic: trunc(log10|value|) + 3, or 6 when that is
/// below 6 or above 14 (or the value is 0); other formats use 6.
/// 12345.678, -1, PRINTF_G => "12345.68".
QXUTIL_API wchar_t* DoubleToString(double value, wchar_t* buffer, unsigned int size, bool forUI,
                                   int precision, PRINTF_FORMAT format, int width);
/// DoubleToStringEditCtl - DoubleToString with "%.*g" and precision 14.
QXUTIL_API wchar_t* DoubleToStringEditCtl(double value, wchar_t* buffer, int size, bool forUI);
/// CoordinateToString - "%.12f" without trailing zeros (and point): 3.0 =>
/// "3", -0.5 => "-0.5". Canonical, never UI text. In the "C" runtime locale
/// the printed text is first cut to 29 characters (1e29 and more lose digits).
QXUTIL_API wchar_t* CoordinateToString(double value, wchar_t* buffer, unsigned int size);
/// DoubleToDBString - a value for a numeric column of `width` characters
/// with `decimals` digits after the point, kept within the column (a value
/// too large becomes the largest that fits). `buffer` must hold width + 1
/// units; width -1 writes nothing.
QXUTIL_API void DoubleToDBString(wchar_t* buffer, int width, int decimals, double value);
/// FormatNumberForUI - canonical text to UI text in place: group separators
/// between digits only (-1234 => "-1,234", -123 stays) while `size` leaves
/// room, and the locale's decimal separator.
QXUTIL_API void FormatNumberForUI(wchar_t* text, unsigned int size);
/// DeformatNumberFromUI - UI text to canonical text: every thousands
/// separator removed, the last decimal separator made ".". `out` must hold
/// as many units as `in`.
QXUTIL_API void DeformatNumberFromUI(const wchar_t* in, wchar_t* out);
/// EqualDoubles - equal, or the same binary exponent and mantissas closer
/// than the tolerance; NaN is never equal. (1.0, 1.0000001, _6) => true.
QXUTIL_API bool EqualDoubles(double a, double b, SIGNIFICANTDIGITS digits);

/// qxSQLStringToDouble, qxSQLDoubleToString - numbers read and written by a
/// picture such as "L9G999D00" or "-0.000E" (the picture language is in
/// docs/numbers.md). A value that does not fit the picture's integer digits
/// is written as '#' characters, one per picture character, and false is
/// returned; so is false with an empty buffer for a bad picture or a
/// buffer too small.
QXUTIL_API bool qxSQLStringToDouble(const wchar_t* text, const wchar_t* picture, double* result);
QXUTIL_API bool qxSQLDoubleToString(double value, const wchar_t* picture, wchar_t* buffer,
                                    unsigned int size);

// ---- Calendar dates and date-time objects ----
//
// qxDATE is a four-byte calendar date (proleptic Gregorian throughout). All
// date arithmetic goes through day numbers: day 0 is 1 January of year 1,
// and 31 December 9999 is day 3,652,058. A date literal packs a date into
// one integer, year * 10000 + month * 100 + day (20240229); 0 is the null
// date (month or day 0).
//
// qxDateTime, qxTime and qxTimeSpan are value objects counted in ticks of
// 100 nanoseconds, made only by the Create... factories below (a new object
// from the memory manager, released with `delete`, or null). Every
// operation that would leave a class's range returns null or false and
// leaves the object as it was; nothing wraps.
//
// Failure rule: functions return false or null and leave the null date in
// the caller's record (LiteralToDate keeps the fields it stored). Only
// Days2MDY and LiteralToDate record an error: level eErrorLevelError,
// message resource 9986, number 5002. The slot order of the three classes
// and the picture language of qxSQLStringToDate / qxSQLDateToString are in
// docs/dates.md.

/// qxDATE - year 0..9999, month 1..12, day 1..month length when valid.
struct qxDATE {
  int16_t year;
  int8_t month;
  int8_t day;
};

/// IsValidDate - year 0..9999, month 1..12, a day of that month (29
/// February only in leap years: 2000 yes, 1900 no).
QXUTIL_API bool IsValidDate(const qxDATE* date);
/// SetDate - stores the fields; an invalid date stores the null date and
/// returns false.
QXUTIL_API bool SetDate(short year, char month, char day, qxDATE* date);
QXUTIL_API void SetNullDate(qxDATE* date);
/// NullDate - month or day is 0.
QXUTIL_API bool NullDate(const qxDATE* date);
/// SystemDate - today in local time; 19 January 2038 when the 32-bit clock
/// cannot say (past 03:14:07 UTC that day). Returns `date`.
QXUTIL_API qxDATE* SystemDate(qxDATE* date);
/// MDY2Days - the day number (1 January 1 => 0); -1 when the month or day
/// is 0 or the year negative. Dates of year 0 give -366..-1. Inline (see
/// the end of this header).
QXUTIL_API inline long MDY2Days(const qxDATE* date);
/// Days2MDY - the date of a day number; a negative number, or one past
/// year 32767, stores the null date, records the error and returns false.
/// 145790 => 29 February 400. Inline (see the end of this header).
QXUTIL_API inline bool Days2MDY(long days, qxDATE* date);
/// DateAdd, DateSubtract - Days2MDY(MDY2Days(date) +- n, date); return
/// `date`.
QXUTIL_API qxDATE* DateAdd(long n, qxDATE* date);
QXUTIL_API qxDATE* DateSubtract(long n, qxDATE* date);
/// DateDiff - MDY2Days(a) - MDY2Days(b).
QXUTIL_API int DateDiff(const qxDATE* a, const qxDATE* b);
/// DateCmp - 1 a later, -1 earlier, 0 equal or both null, -2 exactly one
/// null.
QXUTIL_API int DateCmp(const qxDATE* a, const qxDATE* b);
/// DayOfWeek - 1 Sunday, 2 Monday ... 7 Saturday (day 0 was a Monday).
QXUTIL_API int DayOfWeek(long dayNumber);
/// DateToLiteral - (year * 100 + month) * 100 + day, unchecked.
QXUTIL_API long DateToLiteral(const qxDATE* date);
/// LiteralToDate - 0 gives the null date and true. Otherwise the fields
/// are stored and checked (year >= 0, a day of the month); when they fail,
/// the error is recorded, false returned and the fields kept (20230230 =>
/// 2023, 2, 30).
QXUTIL_API bool LiteralToDate(long literal, qxDATE* date);
/// Str2Date - text to date: eight digits as a literal, else the neutral
/// form M/D[/Y] (or M-D[-Y]) when the host's date format callback asks for
/// neutral settings, else the thread locale's order and delimiter (day
/// month year with "." in de-DE: "5.3.24" => 5 March 2024, "5.3" => 5 March
/// this year). Two-digit years fall in the current century, without pivot.
/// Returns `date`, or null with the null date stored.
QXUTIL_API qxDATE* Str2Date(const wchar_t* text, qxDATE* date);
/// Str2DateEx - Str2Date in the locale form only (the callback chooses the
/// neutral or the locale's settings). With `end`, text may follow the date:
/// *end is the first unit after the year and its blanks; when the second
/// number is followed by anything but the delimiter, the year is this
/// year's and *end points just past that unit; and when the text ends after
/// the second number, *end points one past its terminator (never read
/// through it). *end is null on failure.
QXUTIL_API qxDATE* Str2DateEx(const wchar_t* text, qxDATE* date, wchar_t** end);
/// MakeDateString - "MM/DD/YYYY" (order 0), "DD/MM/YYYY" (1), "YYYY/MM/DD"
/// (2), "YYYY/DD/MM" (5) with `delimiter` (none when 0); other orders write
/// nothing. A buffer of `size` units too small for the text gets "".
QXUTIL_API void MakeDateString(wchar_t* buffer, unsigned int size, qxDATE* date, short order,
                               wchar_t delimiter);
/// MakeDateStringEx - the same layouts with separator strings (null is
/// ""); false, writing nothing, for orders 3, 4 and outside 0..5; false
/// with "" when the text does not fit.
QXUTIL_API bool MakeDateStringEx(wchar_t* buffer, unsigned int size, qxDATE* date, short order,
                                 const wchar_t* separator1, const wchar_t* separator2);
/// FormatDateString - GetDateFormatW with `picture` (null: the locale's
/// short date) for the locale of GetLocaleIdentifier(), cut to `size`
/// units; false when the system refuses the date (years before 1601) or the
/// picture. The second form formats with the locale string of `lctype`
/// (LOCALE_SLONGDATE, ...).
QXUTIL_API bool FormatDateString(wchar_t* buffer, unsigned int size, qxDATE date, wchar_t* picture);
QXUTIL_API bool FormatDateString(wchar_t* buffer, unsigned int size, qxDATE date, short lctype);
/// qxSQLStringToDate, qxSQLDateToString - dates by database pictures such
/// as "dd-mon-yyyy" or "dddd, d mmmm yyyy" (yyyy yy mmmm mmm mm m dddd ddd
/// dd d, "quoted" or 'quoted' literals, separators " \t\n`~!@#$%^&*()-+=[]
/// {}:;<>,.|/\\"). Reading fails on text left over or missing; writing
/// fails, with "", for an invalid date or a buffer too small.
QXUTIL_API bool qxSQLStringToDate(const wchar_t* text, const wchar_t* picture, qxDATE* date);
QXUTIL_API bool qxSQLDateToString(qxDATE date, const wchar_t* picture, wchar_t* buffer,
                                  unsigned int size);

/// QX_CMP - result of the Compare functions (the values of DateCmp).
enum QX_CMP : int {
  QX_CMP_NULL = -2, // exactly one of the two is null
  QX_CMP_LESS = -1,
  QX_CMP_EQUAL = 0, // also two nulls
  QX_CMP_GREATER = 1,
};

class qxTime;
class qxDateTime;

/// qxTimeSpan - a signed duration in ticks. Parts are truncated toward 0,
/// so every part of a negative span is <= 0 (minus 90 minutes: hours -1,
/// minutes -30). Virtual slots are in declaration order (docs/dates.md).
class QXUTIL_API qxTimeSpan : public QXHeapObject {
public:
  virtual ~qxTimeSpan();
  virtual int Days() const = 0;
  virtual int Hours() const = 0;
  virtual int Minutes() const = 0;
  virtual int Seconds() const = 0;
  virtual int Milliseconds() const = 0;
  /// FractionTicks - the fraction of the second in ticks.
  virtual int FractionTicks() const = 0;
  virtual long long Ticks() const = 0;
  virtual double TotalDays() const = 0;
  virtual double TotalHours() const = 0;
  virtual double TotalMinutes() const = 0;
  virtual double TotalSeconds() const = 0;
  virtual double TotalMilliseconds() const = 0;
  /// Set - the sum of the parts; false (unchanged) when it overflows.
  virtual bool Set(int days, int hours, int minutes, int seconds, int milliseconds) = 0;
  virtual void SetTicks(long long ticks) = 0;
  virtual QX_CMP CompareTo(const qxTimeSpan* other) const = 0;
  /// Add, Subtract - this +- other; false (unchanged) on overflow or null.
  virtual bool Add(const qxTimeSpan* other) = 0;
  virtual bool Subtract(const qxTimeSpan* other) = 0;
  /// Negate, Duration - -this and |this|; false for the most negative span.
  virtual bool Negate() = 0;
  virtual bool Duration() = 0;
  /// Multiply, Divide - by a factor, truncated to ticks; false (unchanged)
  /// for a NaN, a zero divisor or a result out of range.
  virtual bool Multiply(double factor) = 0;
  virtual bool Divide(double divisor) = 0;
  virtual bool Equals(const qxTimeSpan* other) const = 0;
  /// ToTime - a new qxTime for a span of 0 up to one day less a tick, else
  /// null.
  virtual qxTime* ToTime() const = 0;
  /// Parse - reads text as CreateTimeSpanFromString; false (unchanged) when
  /// it cannot.
  virtual bool Parse(const wchar_t* text) = 0;
  /// Format - "[-]D[.]hh:mm:ss.fffffff" (the time part by `picture`, in
  /// which each "f" is a fraction digit); `daySeparator` puts "." after the
  /// days. Minus 90 minutes => "-0.01:30:00.0000000". False when it does
  /// not fit.
  virtual bool Format(wchar_t* buffer, unsigned int size, const wchar_t* picture,
                      bool daySeparator) const = 0;
  /// Literal - days and the clock literal HHMMSSfffffff (negative parts for
  /// a negative span); true.
  virtual bool Literal(int* days, long long* clock) const = 0;

  static QX_CMP Compare(const qxTimeSpan* a, const qxTimeSpan* b);
};

/// qxTime - a time of day: 00:00:00 to 23:59:59.9999999.
class QXUTIL_API qxTime : public QXHeapObject {
public:
  virtual ~qxTime();
  virtual int Hours() const = 0;
  virtual int Minutes() const = 0;
  virtual int Seconds() const = 0;
  virtual int Milliseconds() const = 0;
  virtual int FractionTicks() const = 0;
  virtual long long Ticks() const = 0;
  virtual double TotalHours() const = 0;
  virtual double TotalMinutes() const = 0;
  virtual double TotalSeconds() const = 0;
  virtual double TotalMilliseconds() const = 0;
  virtual QX_CMP CompareTo(const qxTime* other) const = 0;
  /// Set, SetTicks - false (unchanged) for a part or a value out of range.
  virtual bool Set(int hours, int minutes, int seconds, int milliseconds) = 0;
  virtual bool SetTicks(long long ticks) = 0;
  /// Add, Subtract - false (unchanged) when the result leaves the day.
  virtual bool Add(const qxTimeSpan* span) = 0;
  virtual bool Subtract(const qxTimeSpan* span) = 0;
  /// Difference - a new span this - other; null when other is null.
  virtual qxTimeSpan* Difference(const qxTime* other) const = 0;
  /// ToTimeSpan - a new span: the time since midnight.
  virtual qxTimeSpan* ToTimeSpan() const = 0;
  virtual bool Equals(const qxTime* other) const = 0;
  /// IsBetween - start <= this < end, across midnight when end < start.
  virtual bool IsBetween(const qxTime* start, const qxTime* end) const = 0;
  /// Parse - reads text as CreateTimeFromString; false (unchanged) when it
  /// cannot.
  virtual bool Parse(const wchar_t* text) = 0;
  /// OnDate - a new qxDateTime of `date` at this time; null for an invalid
  /// date.
  virtual qxDateTime* OnDate(const qxDATE* date) const = 0;
  /// Literal - (hours * 100 + minutes) * 10^9 + seconds * 10^7 + fraction.
  virtual long long Literal() const = 0;
  /// Format - GetTimeFormatW for the system default locale with `picture`
  /// (24-hour unless it has a "t"; null: the locale's format), each "f"
  /// then replaced by a fraction digit (seven at most). False when the
  /// system refuses it or it does not fit.
  virtual bool Format(wchar_t* buffer, unsigned int size, const wchar_t* picture) const = 0;

  static qxTime* MinValue();
  static qxTime* MaxValue();
  static QX_CMP Compare(const qxTime* a, const qxTime* b);
};

/// qxDateTime - a date and time of day, 1 January 1 00:00 to the last tick
/// of 31 December 9999.
class QXUTIL_API qxDateTime : public QXHeapObject {
public:
  virtual ~qxDateTime();
  virtual int Year() const = 0;
  virtual int Month() const = 0;
  virtual int Day() const = 0;
  virtual int Hours() const = 0;
  virtual int Minutes() const = 0;
  virtual int Seconds() const = 0;
  virtual int Milliseconds() const = 0;
  virtual int FractionTicks() const = 0;
  virtual long long Ticks() const = 0;
  virtual double TotalDays() const = 0;
  virtual double TotalHours() const = 0;
  virtual double TotalMinutes() const = 0;
  virtual double TotalSeconds() const = 0;
  virtual double TotalMilliseconds() const = 0;
  /// Date, Time - its own date record and time of day (not copies).
  virtual const qxDATE* Date() const = 0;
  virtual const qxTime* Time() const = 0;
  virtual long DayNumber() const = 0;
  virtual QX_CMP CompareTo(const qxDateTime* other) const = 0;
  virtual bool Equals(const qxDateTime* other) const = 0;
  /// Add, Subtract, AddMonths - false (unchanged) when the result leaves
  /// the range. AddMonths keeps the day, or the month's last day when the
  /// month is shorter (31 January + 1 month => 29 February 2024).
  virtual bool Add(const qxTimeSpan* span) = 0;
  virtual bool Subtract(const qxTimeSpan* span) = 0;
  virtual bool AddMonths(int months) = 0;
  virtual bool SetTicks(long long ticks) = 0;
  /// Difference - a new span this - other; null when other is null.
  virtual qxTimeSpan* Difference(const qxDateTime* other) const = 0;
  /// DayOfWeek - 1 Sunday ... 7 Saturday, as ::DayOfWeek.
  virtual int DayOfWeek() const = 0;
  /// DayOfYear - 1..366.
  virtual int DayOfYear() const = 0;
  /// TimeOfDay - a new span: the time since midnight.
  virtual qxTimeSpan* TimeOfDay() const = 0;
  /// Parse - reads text as CreateDateTimeFromString; false (unchanged) when
  /// it cannot.
  virtual bool Parse(const wchar_t* text) = 0;
  /// Literal - the date literal and the clock literal; true.
  virtual bool Literal(long* date, long long* clock) const = 0;
  /// Format - the date by MakeDateStringEx (its failure is the result),
  /// then, when the buffer has room, a blank and the time by qxTime::Format
  /// with `timePicture`: always with `withTime`, else only when the time is
  /// not midnight. False when the time does not fit (the date stays).
  virtual bool Format(wchar_t* buffer, unsigned int size, short order, const wchar_t* separator1,
                      const wchar_t* separator2, const wchar_t* timePicture,
                      bool withTime) const = 0;

  static qxDateTime* MinValue();
  static qxDateTime* MaxValue();
  static QX_CMP Compare(const qxDateTime* a, const qxDateTime* b);
};

/// The factories: a new object, or null for a part out of range, an
/// invalid date, an overflow or text that cannot be read. Counts in
/// doubles are multiplied by the unit's ticks and truncated toward zero;
/// a NaN or a result out of the class's range gives null. Clock literals
/// are HHMMSSfffffff (hours, minutes, seconds, seven fraction digits).
QXUTIL_API qxTimeSpan* CreateTimeSpan(long long ticks);
QXUTIL_API qxTimeSpan* CreateTimeSpan(const qxTimeSpan* span);
QXUTIL_API qxTimeSpan* CreateTimeSpan(int hours, int minutes, int seconds);
QXUTIL_API qxTimeSpan* CreateTimeSpan(int days, int hours, int minutes, int seconds);
QXUTIL_API qxTimeSpan* CreateTimeSpan(int days, int hours, int minutes, int seconds,
                                      int milliseconds);
QXUTIL_API qxTimeSpan* CreateTimeSpanFromDays(double days);
QXUTIL_API qxTimeSpan* CreateTimeSpanFromHours(double hours);
QXUTIL_API qxTimeSpan* CreateTimeSpanFromMinutes(double minutes);
QXUTIL_API qxTimeSpan* CreateTimeSpanFromSeconds(double seconds);
QXUTIL_API qxTimeSpan* CreateTimeSpanFromMilliseconds(double milliseconds);
/// CreateTimeSpanFromLiteral - days plus the clock literal's parts:
/// (1, 1020304000005) => 1.10:20:30 and 4,000,005 ticks.
QXUTIL_API qxTimeSpan* CreateTimeSpanFromLiteral(int days, long long clock);
/// CreateTimeSpanFromString - [+|-]DDD...HHMMSSfffffff (14 digits or
/// more), else [-][D.]time as ParseTimeString reads it ("-1.12:30").
QXUTIL_API qxTimeSpan* CreateTimeSpanFromString(const wchar_t* text);

QXUTIL_API qxTime* CreateTime(long long ticks);
QXUTIL_API qxTime* CreateTime(const qxTime* time);
QXUTIL_API qxTime* CreateTime(int hours, int minutes, int seconds);
QXUTIL_API qxTime* CreateTime(int hours, int minutes, int seconds, int milliseconds);
QXUTIL_API qxTime* CreateTimeFromHours(double hours);
QXUTIL_API qxTime* CreateTimeFromMinutes(double minutes);
QXUTIL_API qxTime* CreateTimeFromSeconds(double seconds);
QXUTIL_API qxTime* CreateTimeFromMilliseconds(double milliseconds);
QXUTIL_API qxTime* CreateTimeFromLiteral(long long clock);
/// CreateTimeFromString - as ParseTimeString reads it.
QXUTIL_API qxTime* CreateTimeFromString(const wchar_t* text);
/// CreateTimeFromSystemTime - the local time now, to the millisecond.
QXUTIL_API qxTime* CreateTimeFromSystemTime();

QXUTIL_API qxDateTime* CreateDateTime(long long ticks);
QXUTIL_API qxDateTime* CreateDateTime(const qxDateTime* dateTime);
QXUTIL_API qxDateTime* CreateDateTime(qxDATE* date);
QXUTIL_API qxDateTime* CreateDateTime(qxDATE* date, qxTime* time);
QXUTIL_API qxDateTime* CreateDateTime(int year, int month, int day);
QXUTIL_API qxDateTime* CreateDateTime(int year, int month, int day, int hours, int minutes,
                                      int seconds);
QXUTIL_API qxDateTime* CreateDateTime(int year, int month, int day, int hours, int minutes,
                                      int seconds, int milliseconds);
QXUTIL_API qxDateTime* CreateDateTimeFromDays(double days);
QXUTIL_API qxDateTime* CreateDateTimeFromHours(double hours);
QXUTIL_API qxDateTime* CreateDateTimeFromMinutes(double minutes);
QXUTIL_API qxDateTime* CreateDateTimeFromSeconds(double seconds);
QXUTIL_API qxDateTime* CreateDateTimeFromMilliseconds(double milliseconds);
/// CreateDateTimeFromLiteral - a date literal (20240229) and a clock
/// literal; records no error.
QXUTIL_API qxDateTime* CreateDateTimeFromLiteral(int date, long long clock);
/// CreateDateTimeFromString - 21 digits (date and clock literals), or a
/// date as Str2Date reads it, optionally followed by blanks and a time as
/// ParseTimeString reads it.
QXUTIL_API qxDateTime* CreateDateTimeFromString(const wchar_t* text);
QXUTIL_API qxDateTime* CreateDateTimeFromSystemTime();

/// ParseTimeString - a time of day: the clock literal (13 digits), or
/// hours[sep minutes[sep2 seconds]] with the time separators in force
/// (the date format callback chooses neutral ":" or the locale's), seconds
/// possibly with a fraction, and an optional AM/PM designator (the
/// locale's or "am"/"pm") before or after. False for anything else.
QXUTIL_API bool ParseTimeString(const wchar_t* text, int* hours, int* minutes, double* seconds);

// ---- Day numbers, inline -------------------------------------------------
// MDY2Days and Days2MDY are inline so that a loop over many dates pays no
// call. What these bodies leave aside goes to the exported general forms,
// which give the same answer for every input.

namespace qx::detail {
/// MDY2DaysGeneral, Days2MDYGeneral - MDY2Days and Days2MDY for any input;
/// the inline forms call them for a null pointer, a negative year, a month
/// outside 1..12 or day 0, and for a day number out of range.
QXUTIL_API long MDY2DaysGeneral(const qxDATE* date);
QXUTIL_API bool Days2MDYGeneral(long days, qxDATE* date);

/// kMarchMonthStart - for months 1..12, the days from 1 March to the
/// month's first day, January and February counting from the March of the
/// year before (those two carry 0x1000 as well).
inline constexpr uint16_t kMarchMonthStart[13] = {0,   0x1000 + 306, 0x1000 + 337, 0,   31,  61, 92,
                                                  122, 153,          184,          214, 245, 275};

/// kMarchYearDays - month (high byte) and day of each day of a year that
/// begins on 1 March.
inline constexpr std::array<uint16_t, 366> kMarchYearDays = [] {
  constexpr int kLength[12] = {31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 31, 29};
  std::array<uint16_t, 366> days{};
  for (int m = 0, i = 0; m < 12; ++m)
    for (int d = 1; d <= kLength[m]; ++d)
      days[i++] = static_cast<uint16_t>(((m + 2) % 12 + 1) << 8 | d);
  return days;
}();
} // namespace qx::detail

inline long MDY2Days(const qxDATE* date) {
  if (!date || date->year < 0 || static_cast<unsigned>(date->month - 1) > 11 || date->day == 0)
      [[unlikely]]
    return qx::detail::MDY2DaysGeneral(date);
  // Years from 1 March, 400 years early so that January of year 0 stays
  // positive: 365 days, a leap day every 4 years but not every 100 unless
  // every 400. One product holds 1461 y in its low half and 5243 y in its
  // high half, whose bits from 51 are y / 100 (exact below 43,699); 1
  // January of year 1 is day 146404 of this count.
  const uint32_t month = qx::detail::kMarchMonthStart[date->month];
  const uint64_t y = static_cast<uint32_t>(date->year) + 400 - (month >> 12);
  const uint64_t product = y * (1461 + (uint64_t{5243} << 32));
  const uint32_t century = static_cast<uint32_t>(product >> 51);
  const uint32_t yearStart = (static_cast<uint32_t>(product) >> 2) - century + (century >> 2);
  return static_cast<long>(yearStart + (month & 0xFFF)) + date->day - 146404;
}

inline bool Days2MDY(long days, qxDATE* date) {
  if (!date || static_cast<unsigned long>(days) > 11967899) [[unlikely]]
    return qx::detail::Days2MDYGeneral(days, date);
  // Four times the days from 1 March of year 0, plus 3: a century is
  // 146097 / 4 days; within one, the product by 2939745 holds the year of
  // the century in its high half and the day of the year, times 11758980,
  // in its low half.
  const uint32_t n = 4 * static_cast<uint32_t>(days + 306) + 3;
  const uint32_t century = n / 146097;
  const uint64_t product = uint64_t{2939745} * (n % 146097 | 3);
  const uint32_t dayOfYear = static_cast<uint32_t>(product) / 11758980;
  const uint32_t monthDay = qx::detail::kMarchYearDays[dayOfYear];
  date->year = static_cast<int16_t>(100 * century + static_cast<uint32_t>(product >> 32) +
                                    (dayOfYear >= 306));
  date->month = static_cast<int8_t>(monthDay >> 8);
  date->day = static_cast<int8_t>(monthDay & 0xFF);
  return true;
}

#endif // QXUTIL_LOCALE_H
