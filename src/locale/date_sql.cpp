//===- locale/date_sql.cpp - Dates by database pictures -------------------===//
//
// A picture is split into tokens with qxStrtok at the separators below;
// quotes keep separators inside a token. Field tokens (compared without
// regard to ASCII case) are yyyy yy mmmm mmm mm m dddd ddd dd d; a token
// that opens with a quote is a quoted literal, any other token a literal.
// Writing copies the picture's separators as they are and replaces each
// field. Reading splits the text the same way and matches the text's
// tokens one to one with the picture's (empty tokens, from separators in a
// row, are skipped on both sides; which separator stands where is not
// compared). See docs/dates.md for the whole language.
//
// The tokens are walked in place on copies made with the memory manager;
// when a copy cannot be made the call fails like any other (false, the
// output emptied) and nothing throws.
//
//===----------------------------------------------------------------------===//
#include "frame/wide_buffer.h"
#include "locale/date_internal.h"
#include "qxutil/text.h"

#include <cwchar>

namespace {

constexpr const wchar_t* kSeparators = L" \t\n`~!@#$%^&*()-+=[]{}:;<>,.|/\\";
constexpr unsigned int kNameSize = 64;

enum class Field {
  Literal,
  Quoted,
  Year4,
  Year2,
  MonthName,
  MonthAbbrev,
  Month2,
  Month,
  DayName,
  DayAbbrev,
  Day2,
  Day
};

Field Classify(const wchar_t* token) {
  static constexpr struct {
    const wchar_t* text;
    Field field;
  } kVocabulary[] = {
      {L"yyyy", Field::Year4},      {L"yy", Field::Year2},      {L"mmmm", Field::MonthName},
      {L"mmm", Field::MonthAbbrev}, {L"mm", Field::Month2},     {L"m", Field::Month},
      {L"dddd", Field::DayName},    {L"ddd", Field::DayAbbrev}, {L"dd", Field::Day2},
      {L"d", Field::Day},
  };
  for (const auto& entry : kVocabulary)
    if (qxStrICmp(token, entry.text) == 0)
      return entry.field;
  return token[0] == L'\'' || token[0] == L'"' ? Field::Quoted : Field::Literal;
}

// Tokens - the non-empty tokens of a copy of a text, one after the other.
// The copy has the delimiters overwritten, so that each token is
// terminated there.
class Tokens {
public:
  /// Start - copies `text`; false when the copy cannot be made.
  bool Start(const wchar_t* text) {
    if (!work_.Assign(text))
      return false;
    next_ = work_.data();
    return true;
  }
  /// Next - the next non-empty token; null after the last.
  const wchar_t* Next() {
    while (next_) {
      wchar_t* s = next_;
      wchar_t* token = qxStrtok(s, kSeparators, false, &next_);
      if (!token)
        next_ = nullptr;
      else if (*token)
        return token;
    }
    return nullptr;
  }
  /// Offset - where `token` starts in the text.
  size_t Offset(const wchar_t* token) const { return static_cast<size_t>(token - work_.c_str()); }

private:
  qx::WideBuffer work_;
  wchar_t* next_ = nullptr;
};

// Unquote - the content of a quoted token (a doubled quote read as one)
// into `out`; false when the memory for it cannot be had.
bool Unquote(const wchar_t* token, qx::WideBuffer* out) {
  size_t length = std::wcslen(token);
  if (!out->Reserve(length))
    return false;
  wchar_t quote[2] = {token[0], 0};
  unquotestring(out->data(), token, static_cast<unsigned int>(length + 1), quote);
  return true;
}

// Name - a locale string of the locale of GetLocaleIdentifier().
bool Name(LCTYPE type, wchar_t* out) {
  return GetLocaleInfoW(static_cast<LCID>(GetLocaleIdentifier()), type, out, kNameSize) > 0;
}

// DayNameType - the LCTYPE of the day name of `date` (full or abbreviated).
LCTYPE DayNameType(const qxDATE* date, bool abbreviated) {
  int index = (DayOfWeek(MDY2Days(date)) + 5) % 7; // Monday first
  return static_cast<LCTYPE>((abbreviated ? LOCALE_SABBREVDAYNAME1 : LOCALE_SDAYNAME1) + index);
}

// MonthNameType - the LCTYPE of month name `i` (1..13).
LCTYPE MonthNameType(int i, bool abbreviated) {
  if (i == 13)
    return abbreviated ? LOCALE_SABBREVMONTHNAME13 : LOCALE_SMONTHNAME13;
  return static_cast<LCTYPE>((abbreviated ? LOCALE_SABBREVMONTHNAME1 : LOCALE_SMONTHNAME1) + i - 1);
}

// Digits - 1..maxDigits ASCII digits as a number; -1 otherwise.
long Digits(const wchar_t* token, size_t maxDigits) {
  size_t n = std::wcslen(token);
  if (n == 0 || n > maxDigits)
    return -1;
  long value = 0;
  for (size_t i = 0; i < n; ++i) {
    if (token[i] < L'0' || token[i] > L'9')
      return -1;
    value = value * 10 + (token[i] - L'0');
  }
  return value;
}

// FindName - the index (1-based) of `token` among `count` locale names
// starting at the name for index 1; 0 if none matches.
int FindName(const wchar_t* token, int count, LCTYPE (*type)(int, bool), bool abbreviated) {
  wchar_t name[kNameSize];
  for (int i = 1; i <= count; ++i)
    if (Name(type(i, abbreviated), name) && name[0] && qxStrICmp(token, name) == 0)
      return i;
  return 0;
}

LCTYPE DayIndexType(int i, bool abbreviated) {
  return static_cast<LCTYPE>((abbreviated ? LOCALE_SABBREVDAYNAME1 : LOCALE_SDAYNAME1) + i - 1);
}

// Parsed - the fields read so far; -1 for a field not (yet) given.
struct Parsed {
  long year = -1, month = -1, day = -1;
  int weekday = 0; // 1 Monday .. 7 Sunday, 0 when not given
  // Set - stores a field; false when the text gave it before differently.
  static bool Set(long* field, long value) {
    if (value < 0 || (*field >= 0 && *field != value))
      return false;
    *field = value;
    return true;
  }
};

// MatchField - one text token against one picture field.
bool MatchField(Field field, const wchar_t* token, Parsed* parsed) {
  switch (field) {
  case Field::Year4:
    return Parsed::Set(&parsed->year, Digits(token, 4));
  case Field::Year2: {
    long year = Digits(token, 2);
    return year >= 0 && Parsed::Set(&parsed->year, qx::date::ApplyTwoDigitYearRule(year));
  }
  case Field::Month2:
  case Field::Month:
    return Parsed::Set(&parsed->month, Digits(token, 2));
  case Field::Day2:
  case Field::Day:
    return Parsed::Set(&parsed->day, Digits(token, 2));
  case Field::MonthName:
  case Field::MonthAbbrev: {
    int month = FindName(token, 13, MonthNameType, field == Field::MonthAbbrev);
    return month > 0 && Parsed::Set(&parsed->month, month);
  }
  case Field::DayName:
  case Field::DayAbbrev: {
    int weekday = FindName(token, 7, DayIndexType, field == Field::DayAbbrev);
    if (weekday == 0 || (parsed->weekday && parsed->weekday != weekday))
      return false;
    parsed->weekday = weekday;
    return true;
  }
  default:
    return false;
  }
}

// NumberText - the digits of a numeric field of `date`.
void NumberText(Field field, const qxDATE& date, wchar_t* out) {
  bool wide = field == Field::Year4 || field == Field::Year2 || field == Field::Month2 ||
              field == Field::Day2;
  int value = field == Field::Year4                             ? date.year
              : field == Field::Year2                           ? date.year % 100
              : field == Field::Month2 || field == Field::Month ? date.month
                                                                : date.day;
  std::swprintf(out, kNameSize, field == Field::Year4 ? L"%04d" : wide ? L"%02d" : L"%d", value);
}

} // namespace

bool qxSQLStringToDate(const wchar_t* text, const wchar_t* picture, qxDATE* date) {
  if (!date)
    return false;
  SetNullDate(date);
  if (!text || !picture)
    return false;
  Tokens pictureTokens, textTokens;
  if (!pictureTokens.Start(picture) || !textTokens.Start(text))
    return false;
  Parsed parsed;
  qx::WideBuffer literal, plain;
  while (const wchar_t* ptoken = pictureTokens.Next()) {
    Field field = Classify(ptoken);
    if (field == Field::Literal || field == Field::Quoted) {
      // A literal matches as many text tokens as it has itself.
      Tokens literalTokens;
      if (field == Field::Quoted ? !Unquote(ptoken, &literal) : !literal.Assign(ptoken))
        return false;
      if (!literalTokens.Start(literal.c_str()))
        return false;
      while (const wchar_t* ltoken = literalTokens.Next()) {
        const wchar_t* ttoken = textTokens.Next();
        if (!ttoken)
          return false;
        bool quoted = ttoken[0] == L'\'' || ttoken[0] == L'"';
        if (quoted ? !Unquote(ttoken, &plain) : !plain.Assign(ttoken))
          return false;
        if (!strequ(plain.c_str(), ltoken))
          return false;
      }
      continue;
    }
    const wchar_t* ttoken = textTokens.Next();
    if (!ttoken || !MatchField(field, ttoken, &parsed))
      return false;
  }
  if (textTokens.Next()) // text left over
    return false;
  qxDATE result{static_cast<int16_t>(parsed.year >= 0 ? parsed.year : qx::date::CurrentYear()),
                static_cast<int8_t>(parsed.month >= 0 ? parsed.month : 1),
                static_cast<int8_t>(parsed.day >= 0 ? parsed.day : 1)};
  if (parsed.year > 9999 || parsed.month > 12 || parsed.day > 31 || !IsValidDate(&result))
    return false;
  if (parsed.weekday && (DayOfWeek(MDY2Days(&result)) + 5) % 7 + 1 != parsed.weekday)
    return false;
  *date = result;
  return true;
}

bool qxSQLDateToString(qxDATE date, const wchar_t* picture, wchar_t* buffer, unsigned int size) {
  if (!buffer)
    return false;
  if (size > 0)
    buffer[0] = 0;
  if (!picture || !IsValidDate(&date))
    return false;
  Tokens tokens;
  qx::WideBuffer out, quoted;
  if (!tokens.Start(picture))
    return false;
  size_t copied = 0; // picture units already accounted for
  wchar_t piece[kNameSize];
  while (const wchar_t* text = tokens.Next()) {
    size_t start = tokens.Offset(text);
    if (!out.Append(picture + copied, start - copied))
      return false;
    copied = start + std::wcslen(text);
    Field field = Classify(text);
    const wchar_t* written = piece;
    switch (field) {
    case Field::Year4:
    case Field::Year2:
    case Field::Month2:
    case Field::Month:
    case Field::Day2:
    case Field::Day:
      NumberText(field, date, piece);
      break;
    case Field::MonthName:
    case Field::MonthAbbrev:
      if (!Name(MonthNameType(date.month, field == Field::MonthAbbrev), piece))
        return false;
      break;
    case Field::DayName:
    case Field::DayAbbrev:
      if (!Name(DayNameType(&date, field == Field::DayAbbrev), piece))
        return false;
      break;
    case Field::Quoted:
      if (!Unquote(text, &quoted))
        return false;
      written = quoted.c_str();
      break;
    case Field::Literal:
      written = text;
      break;
    }
    if (!out.Append(written))
      return false;
  }
  if (!out.Append(picture + copied) || out.size() >= size)
    return false;
  std::wmemcpy(buffer, out.c_str(), out.size() + 1);
  return true;
}
