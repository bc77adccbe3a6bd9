// Provides: GetDateFormatW, GetTimeFormatW (pictures expanded from the
// built-in locale database).
#include "platform/date_format.h"
#include "qxutil/winlocale.h"

#include "platform/clock.h"
#include "platform/locale_db.h"

#include <cwchar>
#include <string>
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

void AppendNumber(std::wstring* out, unsigned value, int minDigits) {
  wchar_t digits[16];
  std::swprintf(digits, 16, L"%0*u", minDigits, value);
  out->append(digits);
}

void Append(std::wstring* out, std::u16string_view text) {
  for (char16_t c : text)
    out->push_back(static_cast<wchar_t>(c));
}

bool LocaleValue(LCID lcid, LCTYPE type, std::wstring* out) {
  std::u16string_view text;
  if (!qx::platform::LocaleText(lcid, type, &text))
    return false;
  out->clear();
  Append(out, text);
  return true;
}

// Expands one picture. In date mode d, M, y and g are fields; in time mode
// h, H, m, s and t are, and the flags may drop some of them together with the
// literal text that separates them from the field before (or, for a field at
// the start, from the field after).
class PictureWriter {
public:
  PictureWriter(LCID lcid, const SYSTEMTIME& t, DWORD flags, bool dateMode)
      : lcid_(lcid), t_(t), flags_(flags), dateMode_(dateMode) {}

  std::wstring Expand(const wchar_t* picture) {
    for (const wchar_t* p = picture; *p;) {
      if (*p == L'\'') {
        p = Quoted(p + 1);
        continue;
      }
      wchar_t c = *p;
      int count = 0;
      while (p[count] == c)
        ++count;
      p += count;
      if (!Field(c, count))
        Literal(std::wstring(count, c));
    }
    return out_;
  }

private:
  // Quoted - literal text after an opening quote; '' inside it is one
  // quote, and so is '' outside it.
  const wchar_t* Quoted(const wchar_t* p) {
    if (*p == L'\'') {
      Literal(L"'");
      return p + 1;
    }
    std::wstring text;
    for (; *p; ++p) {
      if (*p == L'\'') {
        if (p[1] != L'\'') {
          ++p;
          break;
        }
        ++p;
      }
      text.push_back(*p);
    }
    Literal(text); // an unclosed quote runs to the end
    return p;
  }

  void Literal(const std::wstring& text) {
    if (!skipLiterals_)
      out_ += text;
  }

  // Field - writes field `c` repeated `count` times; false if `c` is not a
  // field letter in this mode.
  bool Field(wchar_t c, int count) { return dateMode_ ? DateField(c, count) : TimeField(c, count); }

  bool DateField(wchar_t c, int count) {
    std::wstring text;
    switch (c) {
    case L'd':
      if (count <= 2)
        AppendNumber(&text, t_.wDay, count);
      else
        Append(&text, qx::platform::LocaleDayName(lcid_, DayOfWeek(t_.wYear, t_.wMonth, t_.wDay),
                                                  count == 3));
      break;
    case L'M':
      if (count <= 2)
        AppendNumber(&text, t_.wMonth, count);
      else
        Append(&text, qx::platform::LocaleMonthName(lcid_, t_.wMonth, count == 3));
      break;
    case L'y':
      if (count == 1)
        AppendNumber(&text, t_.wYear % 10, 1);
      else if (count == 2)
        AppendNumber(&text, t_.wYear % 100, 2);
      else
        AppendNumber(&text, t_.wYear, 1);
      break;
    case L'g':
      text = kEra;
      break;
    default:
      return false;
    }
    Emit(text);
    return true;
  }

  bool TimeField(wchar_t c, int count) {
    bool noMinutes = flags_ & TIME_NOMINUTESORSECONDS;
    bool noSeconds = noMinutes || (flags_ & TIME_NOSECONDS);
    unsigned hour = t_.wHour;
    std::wstring text;
    switch (c) {
    case L'h':
      if (!(flags_ & TIME_FORCE24HOURFORMAT))
        hour = hour % 12 == 0 ? 12 : hour % 12;
      [[fallthrough]];
    case L'H':
      AppendNumber(&text, hour, count >= 2 ? 2 : 1);
      break;
    case L'm':
      if (noMinutes)
        return Drop();
      AppendNumber(&text, t_.wMinute, count >= 2 ? 2 : 1);
      break;
    case L's':
      if (noSeconds)
        return Drop();
      AppendNumber(&text, t_.wSecond, count >= 2 ? 2 : 1);
      break;
    case L't': {
      if (flags_ & TIME_NOTIMEMARKER)
        return Drop();
      std::wstring marker;
      LocaleValue(lcid_, t_.wHour < 12 ? LOCALE_S1159 : LOCALE_S2359, &marker);
      text = count == 1 ? marker.substr(0, 1) : marker;
      break;
    }
    default:
      return false;
    }
    Emit(text);
    return true;
  }

  void Emit(const std::wstring& text) {
    out_ += text;
    fieldEnd_ = out_.size();
    haveField_ = true;
    skipLiterals_ = false;
  }

  // Drop - a field the flags leave out, with the separator before it.
  bool Drop() {
    out_.resize(fieldEnd_);
    if (!haveField_)
      skipLiterals_ = true;
    return true;
  }

  LCID lcid_;
  const SYSTEMTIME& t_;
  DWORD flags_;
  bool dateMode_;
  std::wstring out_;
  size_t fieldEnd_ = 0;
  bool haveField_ = false;
  bool skipLiterals_ = false;
};

int Deliver(const std::wstring& text, LPWSTR out, int size) {
  int needed = static_cast<int>(text.size()) + 1;
  if (size == 0)
    return needed;
  if (size < needed) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  std::wmemcpy(out, text.data(), text.size());
  out[text.size()] = 0;
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

  std::wstring picture;
  if (format) {
    picture = format;
  } else {
    LCTYPE type = pictures == DATE_LONGDATE    ? LOCALE_SLONGDATE
                  : pictures == DATE_YEARMONTH ? LOCALE_SYEARMONTH
                  : pictures == DATE_MONTHDAY  ? 0
                                               : LOCALE_SSHORTDATE;
    if (!type || !LocaleValue(locale, type, &picture))
      return Fail(ERROR_INVALID_FLAGS);
  }
  return Deliver(PictureWriter(locale, *date, flags, true).Expand(picture.c_str()), out, size);
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

  std::wstring picture;
  if (format)
    picture = format;
  else if (!LocaleValue(locale, LOCALE_STIMEFORMAT, &picture))
    return Fail(ERROR_INVALID_PARAMETER);
  return Deliver(PictureWriter(locale, *time, flags, false).Expand(picture.c_str()), out, size);
}
