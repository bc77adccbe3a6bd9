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

#endif // QXUTIL_LOCALE_H
