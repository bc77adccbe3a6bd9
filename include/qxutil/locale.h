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

/// cLocaleInfo - locale information of one context (slot key 3).
class cLocaleInfo : public QXSingleton<cLocaleInfo, 3> {
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

bool ResetQXLocaleInfo();
unsigned long GetLocaleIdentifier();
bool GetLocaleInt(unsigned long type, unsigned int* out);
bool GetLocaleString(unsigned long type, wchar_t* buffer, unsigned int size);
bool SetNumberFormatCallback(bool (*callback)());
bool (*GetNumberFormatCallback())();
void GetQXLocaleNumInfo(bool system, wchar_t* decimal, wchar_t* thousands, short* group);
const wchar_t* GetCurrencySymbol();
bool GetNumberFmt(NUMBERFMTW* format);
/// GetCurrentFmt - the currency format (the name is historical).
bool GetCurrentFmt(CURRENCYFMTW* format);
NUMBERFMTW* GetNumberFmtPtr();
CURRENCYFMTW* GetCurrencyFmtPtr();
bool SetDateFormatCallback(bool (*callback)());
bool (*GetDateFormatCallback())();
void GetQXLocaleDateInfo(bool system, short* order, wchar_t* delimiter);
void GetQXLocaleTimeFormat(bool system, wchar_t* buffer, unsigned int size);
void GetQXLocaleTimeInfo(bool system, bool* twelveHour, short* markerPosition, const wchar_t** am,
                         const wchar_t** pm, const wchar_t** separator,
                         const wchar_t** secondSeparator);

/// The settings in force (the thread's locale, or neutral when the host's
/// callback asks for it).
wchar_t GetDecimalSeparator();
wchar_t GetThousandsSeparator();
short GetThousandsGroupSize();
/// GetDateOrder - 0 month-day-year, 1 day-month-year, 2 year-month-day.
short GetDateOrder();
wchar_t GetDateDelim();

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
bool StringToShort(const wchar_t* text, short* result, wchar_t** end);
/// StringToInt - wcstol: L"12abc" => 12, end at 'a'; L"abc" fails.
bool StringToInt(const wchar_t* text, int* result, wchar_t** end);
bool StringToUnsignedInt(const wchar_t* text, unsigned int* result, wchar_t** end);
/// StringToLong - wcstol, then min <= value <= max.
bool StringToLong(const wchar_t* text, long* result, wchar_t** end, long min, long max);
/// StringToUnsignedLong - wcstoul with `radix` (0 or 2..36).
bool StringToUnsignedLong(const wchar_t* text, unsigned long* result, wchar_t** end, int radix);
bool StringToUnsignedLong16(const wchar_t* text, unsigned long* result);
/// StringToInt64, StringToUnsignedInt64 - an overflow saturates and still
/// succeeds.
bool StringToInt64(const wchar_t* text, long long* result);
bool StringToUnsignedInt64(const wchar_t* text, unsigned long long* result);
/// StringToDouble - correctly rounded. While the C runtime's numeric locale
/// is "C" the whole of wcstod's syntax is read (hexadecimal, "inf", "nan");
/// in any other runtime locale the number is scanned here ([blanks][sign]
/// digits[.digits][e|E|d|D[sign]digits]) so that "." is the decimal point
/// whatever that locale says, and the text is briefly modified during the
/// call (and restored): it must then be writable. L"1.5d3" => 1.5, end at
/// 'd'.
bool StringToDouble(const wchar_t* text, double* result, wchar_t** end);

/// The FmtCtl parsers: with `fromUI` the text is first turned into
/// canonical text by DeformatNumberFromUI (text of 1024 units or more then
/// fails).
bool StringToLongFmtCtl(const wchar_t* text, long* result, bool fromUI, long min, long max);
bool StringToShortFmtCtl(const wchar_t* text, short* result, bool fromUI);
bool StringToIntFmtCtl(const wchar_t* text, int* result, bool fromUI);
bool StringToUnsignedLongFmtCtl(const wchar_t* text, unsigned long* result, bool fromUI);
bool StringToInt64FmtCtl(const wchar_t* text, long long* result, bool fromUI);
bool StringToUnsignedInt64FmtCtl(const wchar_t* text, unsigned long long* result, bool fromUI);
bool StringToDoubleFmtCtl(const wchar_t* text, double* result, bool fromUI);

/// DoubleToString - printf's "%*.*e", "%*.*f" or "%*.*g" (without the width
/// when it is -1), made canonical, then UI text when `forUI`. Precision -1
/// with PRINTF_G is automatic: trunc(log10|value|) + 3, or 6 when that is
/// below 6 or above 14 (or the value is 0); other formats use 6.
/// 12345.678, -1, PRINTF_G => "12345.68".
wchar_t* DoubleToString(double value, wchar_t* buffer, unsigned int size, bool forUI, int precision,
                        PRINTF_FORMAT format, int width);
/// DoubleToStringEditCtl - DoubleToString with "%.*g" and precision 14.
wchar_t* DoubleToStringEditCtl(double value, wchar_t* buffer, int size, bool forUI);
/// CoordinateToString - "%.12f" without trailing zeros (and point): 3.0 =>
/// "3", -0.5 => "-0.5". Canonical; at most 29 characters.
wchar_t* CoordinateToString(double value, wchar_t* buffer, unsigned int size);
/// DoubleToDBString - a value for a numeric column of `width` characters
/// with `decimals` digits after the point, kept within the column (a value
/// too large becomes the largest that fits). `buffer` must hold width + 1
/// units; width -1 writes nothing.
void DoubleToDBString(wchar_t* buffer, int width, int decimals, double value);
/// FormatNumberForUI - canonical text to UI text in place: group separators
/// between digits only (-1234 => "-1,234", -123 stays) while `size` leaves
/// room, and the locale's decimal separator.
void FormatNumberForUI(wchar_t* text, unsigned int size);
/// DeformatNumberFromUI - UI text to canonical text: every thousands
/// separator removed, the last decimal separator made ".". `out` must hold
/// as many units as `in`.
void DeformatNumberFromUI(const wchar_t* in, wchar_t* out);
/// EqualDoubles - equal, or the same binary exponent and mantissas closer
/// than the tolerance; NaN is never equal. (1.0, 1.0000001, _6) => true.
bool EqualDoubles(double a, double b, SIGNIFICANTDIGITS digits);

/// qxSQLStringToDouble, qxSQLDoubleToString - numbers read and written by a
/// picture such as "L9G999D00" or "-0.000E" (the picture language is in
/// docs/numbers.md). A value that does not fit the picture's integer digits
/// is written as '#' characters, one per picture character, and false is
/// returned; so is false with an empty buffer for a bad picture or a
/// buffer too small.
bool qxSQLStringToDouble(const wchar_t* text, const wchar_t* picture, double* result);
bool qxSQLDoubleToString(double value, const wchar_t* picture, wchar_t* buffer, unsigned int size);

#endif // QXUTIL_LOCALE_H
