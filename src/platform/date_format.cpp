// Provides: GetDateFormatW, GetTimeFormatW (pictures expanded from the
// built-in locale database). Nothing here allocates: a picture is expanded
// twice, once to count and once into the caller's buffer.
#include "platform/date_format.h"
#include "qxutil/winlocale.h"

#include "platform/clock.h"
#include "platform/locale_db.h"

#include <cwchar>
#include <string_view>

namespace {

constexpr DWORD kLocaleFlags = LOCALE_NOUSEROVERRIDE | LOCALE_USE_CP_ACP;
constexpr DWORD kDatePictureFlags = DATE_SHORTDATE | DATE_LONGDATE | DATE_YEARMONTH | DATE_MONTHDAY;
constexpr DWORD kDateFlags = kDatePictureFlags | DATE_USE_ALT_CALENDAR | DATE_LTRREADING |
                             DATE_RTLREADING | DATE_AUTOLAYOUT | kLocaleFlags;
constexpr DWORD kTimeFlags = TIME_NOMINUTESORSECONDS | TIME_NOSECONDS | TIME_NOTIMEMARKER |
                             TIME_FORCE24HOURFORMAT | kLocaleFlags;

// The era of the Gregorian calendar, the only calendar of the database.
const wchar_t kEra[] = L"A.D.";

bool IsLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int MonthLength(int year, int month) {
  static const int kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kLengths[month - 1];
}

// DayOfWeek - 0 Sunday .. 6 Saturday, from the date alone.
int DayOfWeek(int year, int month, int day) {
  static const int kOffsets[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
  if (month < 3)
    --year;
  return (year + year / 4 - year / 100 + year / 400 + kOffsets[month - 1] + day) % 7;
}

bool ValidDate(const SYSTEMTIME& d) {
  return d.wYear >= 1601 && d.wYear <= 30827 && d.wMonth >= 1 && d.wMonth <= 12 && d.wDay >= 1 &&
         d.wDay <= MonthLength(d.wYear, d.wMonth);
}

bool ValidTime(const SYSTEMTIME& t) {
  return t.wHour <= 23 && t.wMinute <= 59 && t.wSecond <= 59 && t.wMilliseconds <= 999;
}

// A locale value (picture, AM/PM designator) copied for expansion; the
// database's values are far shorter (Windows caps a picture at 80 units).
constexpr size_t kMaxLocaleValue = 128;

bool LocaleValue(LCID lcid, LCTYPE type, wchar_t (&out)[kMaxLocaleValue]) {
  std::u16string_view text;
  if (!qx::platform::LocaleText(lcid, type, &text) || text.size() >= kMaxLocaleValue)
    return false;
  for (size_t i = 0; i < text.size(); ++i)
    out[i] = static_cast<wchar_t>(text[i]);
  out[text.size()] = 0;
  return true;
}

// Sink - where a picture is expanded: counts every unit, and stores those
// that fall inside the buffer (none when it has none).
class Sink {
public:
  Sink(wchar_t* out, size_t size) : out_(out), size_(size) {}
  void Put(wchar_t c) {
    if (length_ < size_)
      out_[length_] = c;
    ++length_;
  }
  void Put(const wchar_t* text) {
    for (; *text; ++text)
      Put(*text);
  }
  void Put(std::u16string_view text) {
    for (char16_t c : text)
      Put(static_cast<wchar_t>(c));
  }
  void PutNumber(unsigned value, int minDigits) {
    wchar_t digits[16];
    std::swprintf(digits, 16, L"%0*u", minDigits, value);
    Put(digits);
  }
  size_t Length() const { return length_; }
  void Truncate(size_t length) { length_ = length; }

private:
  wchar_t* out_;
  size_t size_;
  size_t length_ = 0;
};

// Expands one picture. In date mode d, M, y and g are fields; in time mode
// h, H, m, s and t are, and the flags may drop some of them together with the
// literal text that separates them from the field before (or, for a field at
// the start, from the field after).
class PictureWriter {
public:
  PictureWriter(LCID lcid, const SYSTEMTIME& t, DWORD flags, bool dateMode, Sink* out)
      : lcid_(lcid), t_(t), flags_(flags), dateMode_(dateMode), out_(*out) {}

  /// Expand - writes the picture; returns its length without a terminator.
  size_t Expand(const wchar_t* picture) {
    for (const wchar_t* p = picture; *p;) {
      if (*p == L'\'') {
        p = Quoted(p + 1);
        continue;
      }
      wchar_t c = *p;
      int count = 0;
      while (p[count] == c)
        ++count;
      if (!Field(c, count))
        Literal(p, p + count);
      p += count;
    }
    return out_.Length();
  }

private:
  // Quoted - literal text after an opening quote; '' inside it is one
  // quote, and so is '' outside it. An unclosed quote runs to the end.
  const wchar_t* Quoted(const wchar_t* p) {
    if (*p == L'\'') {
      Literal(p, p + 1);
      return p + 1;
    }
    for (; *p; ++p) {
      if (*p == L'\'') {
        if (p[1] != L'\'')
          return p + 1;
        ++p;
      }
      Literal(p, p + 1);
    }
    return p;
  }

  void Literal(const wchar_t* from, const wchar_t* to) {
    if (!skipLiterals_)
      for (; from < to; ++from)
        out_.Put(*from);
  }

  // Field - writes field `c` repeated `count` times; false if `c` is not a
  // field letter in this mode.
  bool Field(wchar_t c, int count) { return dateMode_ ? DateField(c, count) : TimeField(c, count); }

  bool DateField(wchar_t c, int count) {
    switch (c) {
    case L'd':
      if (count <= 2)
        out_.PutNumber(t_.wDay, count);
      else
        out_.Put(qx::platform::LocaleDayName(lcid_, DayOfWeek(t_.wYear, t_.wMonth, t_.wDay),
                                             count == 3));
      break;
    case L'M':
      if (count <= 2)
        out_.PutNumber(t_.wMonth, count);
      else
        out_.Put(qx::platform::LocaleMonthName(lcid_, t_.wMonth, count == 3));
      break;
    case L'y':
      if (count == 1)
        out_.PutNumber(t_.wYear % 10, 1);
      else if (count == 2)
        out_.PutNumber(t_.wYear % 100, 2);
      else
        out_.PutNumber(t_.wYear, 1);
      break;
    case L'g':
      out_.Put(kEra);
      break;
    default:
      return false;
    }
    FieldWritten();
    return true;
  }

  bool TimeField(wchar_t c, int count) {
    bool noMinutes = flags_ & TIME_NOMINUTESORSECONDS;
    bool noSeconds = noMinutes || (flags_ & TIME_NOSECONDS);
    unsigned hour = t_.wHour;
    switch (c) {
    case L'h':
      if (!(flags_ & TIME_FORCE24HOURFORMAT))
        hour = hour % 12 == 0 ? 12 : hour % 12;
      [[fallthrough]];
    case L'H':
      out_.PutNumber(hour, count >= 2 ? 2 : 1);
      break;
    case L'm':
      if (noMinutes)
        return Drop();
      out_.PutNumber(t_.wMinute, count >= 2 ? 2 : 1);
      break;
    case L's':
      if (noSeconds)
        return Drop();
      out_.PutNumber(t_.wSecond, count >= 2 ? 2 : 1);
      break;
    case L't': {
      if (flags_ & TIME_NOTIMEMARKER)
        return Drop();
      wchar_t marker[kMaxLocaleValue] = {};
      LocaleValue(lcid_, t_.wHour < 12 ? LOCALE_S1159 : LOCALE_S2359, marker);
      if (count == 1 && marker[0])
        marker[1] = 0;
      out_.Put(marker);
      break;
    }
    default:
      return false;
    }
    FieldWritten();
    return true;
  }

  void FieldWritten() {
    fieldEnd_ = out_.Length();
    haveField_ = true;
    skipLiterals_ = false;
  }

  // Drop - a field the flags leave out, with the separator before it.
  bool Drop() {
    out_.Truncate(fieldEnd_);
    if (!haveField_)
      skipLiterals_ = true;
    return true;
  }

  LCID lcid_;
  const SYSTEMTIME& t_;
  DWORD flags_;
  bool dateMode_;
  Sink& out_;
  size_t fieldEnd_ = 0;
  bool haveField_ = false;
  bool skipLiterals_ = false;
};

// Deliver - expands `picture` into `out` in the Windows contract: size 0
// asks for the size needed; a buffer too small is left untouched.
int Deliver(LCID lcid, const SYSTEMTIME& t, DWORD flags, bool dateMode, const wchar_t* picture,
            LPWSTR out, int size) {
  Sink counter(nullptr, 0);
  size_t length = PictureWriter(lcid, t, flags, dateMode, &counter).Expand(picture);
  if (length >= 0x7FFFFFFF) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  int needed = static_cast<int>(length) + 1;
  if (size == 0)
    return needed;
  if (size < needed) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  Sink writer(out, static_cast<size_t>(size));
  PictureWriter(lcid, t, flags, dateMode, &writer).Expand(picture);
  out[length] = 0;
  return needed;
}

int Fail(DWORD error) {
  SetLastError(error);
  return 0;
}

bool KnownLocale(LCID lcid) {
  std::u16string_view text;
  return qx::platform::LocaleText(lcid, LOCALE_SSHORTDATE, &text);
}

} // namespace

int qx::win::GetDateFormatW(LCID locale, DWORD flags, const SYSTEMTIME* date, LPCWSTR format,
                            LPWSTR out, int size) {
  if (size < 0 || (size > 0 && !out))
    return Fail(ERROR_INVALID_PARAMETER);
  DWORD pictures = flags & kDatePictureFlags;
  if ((flags & ~kDateFlags) || (pictures & (pictures - 1)) ||
      ((flags & DATE_LTRREADING) && (flags & DATE_RTLREADING)) ||
      (format && (pictures || (flags & LOCALE_NOUSEROVERRIDE))))
    return Fail(ERROR_INVALID_FLAGS);
  if (!KnownLocale(locale))
    return Fail(ERROR_INVALID_PARAMETER);

  SYSTEMTIME now;
  if (!date) {
    GetLocalTime(&now);
    date = &now;
  }
  if (!ValidDate(*date))
    return Fail(ERROR_INVALID_PARAMETER);

  wchar_t picture[kMaxLocaleValue];
  if (!format) {
    LCTYPE type = pictures == DATE_LONGDATE    ? LOCALE_SLONGDATE
                  : pictures == DATE_YEARMONTH ? LOCALE_SYEARMONTH
                  : pictures == DATE_MONTHDAY  ? 0
                                               : LOCALE_SSHORTDATE;
    if (!type || !LocaleValue(locale, type, picture))
      return Fail(ERROR_INVALID_FLAGS);
  }
  return Deliver(locale, *date, flags, true, format ? format : picture, out, size);
}

int qx::win::GetTimeFormatW(LCID locale, DWORD flags, const SYSTEMTIME* time, LPCWSTR format,
                            LPWSTR out, int size) {
  if (size < 0 || (size > 0 && !out))
    return Fail(ERROR_INVALID_PARAMETER);
  if ((flags & ~kTimeFlags) || (format && (flags & LOCALE_NOUSEROVERRIDE)))
    return Fail(ERROR_INVALID_FLAGS);
  if (!KnownLocale(locale))
    return Fail(ERROR_INVALID_PARAMETER);

  SYSTEMTIME now;
  if (!time) {
    GetLocalTime(&now);
    time = &now;
  }
  if (!ValidTime(*time))
    return Fail(ERROR_INVALID_PARAMETER);

  wchar_t picture[kMaxLocaleValue];
  if (!format && !LocaleValue(locale, LOCALE_STIMEFORMAT, picture))
    return Fail(ERROR_INVALID_PARAMETER);
  return Deliver(locale, *time, flags, false, format ? format : picture, out, size);
}
