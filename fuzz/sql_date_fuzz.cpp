// Fuzz target for the database date pictures: qxSQLStringToDate on random
// text and picture, and qxSQLDateToString of random dates with every
// output size up to a bound. Checks that nothing is written past the size,
// that a text which does not fit leaves the terminator alone, that a date
// read is valid, and that a date written with a numeric picture reads back
// the same. A second picture, made of fields in any case, literals and
// separators, must write what a reference writer writes and read back the
// date its fields give (defaults, two-digit years, weekdays, disagreements).
#include "platform/time32.h"
#include "qxutil/locale.h"
#include "qxutil/winlocale.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr unsigned int kMaxOut = 40;
constexpr wchar_t kSentinel = 0x7F7F;

void Check(bool ok) {
  if (!ok)
    std::abort();
}

// Name - a name of locale `lcid`.
std::wstring Name(LCID lcid, LCTYPE type) {
  wchar_t name[64] = {};
  GetLocaleInfoW(lcid, type, name, 64);
  return name;
}

// Weekday - 0 for a Monday .. 6 for a Sunday, by std::chrono.
int Weekday(const qxDATE& date) {
  using namespace std::chrono;
  const year_month_day ymd{year{date.year}, month{static_cast<unsigned>(date.month)},
                           day{static_cast<unsigned>(date.day)}};
  return static_cast<int>((weekday{sys_days{ymd}}.c_encoding() + 6) % 7);
}

std::wstring Number(int value, int digits) {
  wchar_t text[16];
  std::swprintf(text, 16, L"%0*d", digits, value);
  return text;
}

// CheckPictureLanguage - a picture of tokens chosen by `bytes`, each followed
// by separators: qxSQLDateToString of `date` gives the reference text.
// qxSQLStringToDate reads that text (with other separators and names in
// capitals) as the date its fields name (this year, January and the 1st
// where none is given; two-digit years in 2000..2099), failing when fields
// disagree, the weekday is another or the date is not valid; it fails when
// one token is spoiled (a digit too many, a number out of range, a full name
// for an abbreviation, a literal in another case), when text is left over
// and when the last token is missing.
void CheckPictureLanguage(LCID lcid, const qxDATE& date, const uint8_t* bytes, size_t n) {
  static const wchar_t* const kFields[] = {L"yyyy", L"yy",   L"mmmm", L"mmm", L"mm",
                                           L"m",    L"dddd", L"ddd",  L"dd",  L"d"};
  static const wchar_t* const kLiterals[][2] = {
      {L"week", L"week"},     {L"yyyymmdd", L"yyyymmdd"}, {L"'Day of'", L"Day of"},
      {L"\"It's\"", L"It's"}, {L"'a-b'", L"a-b"},         {L"mmmmm", L"mmmmm"}};
  static const wchar_t* const kSeparators[] = {L" ", L"-",      L"/", L", ",
                                               L".", L"  --  ", L":", L")("};
  const bool valid = IsValidDate(&date);
  const int weekday = valid ? Weekday(date) : 0;
  const int month = valid ? date.month : 1, day = valid ? date.day : 1;
  const size_t spoilAt = n > 0 ? bytes[n - 1] % 16 : 16;
  std::wstring picture, written, text;
  if (n % 2) { // a picture that opens with separators
    picture = written = L" (";
    text = L"(";
  }
  size_t lastToken = std::wstring::npos; // where the text's last token starts
  long y = -1, m = -1, d = -1;
  bool agree = true, spoiled = false;
  std::vector<int> weekdays;
  auto set = [&](long* field, long value) {
    agree = agree && (*field < 0 || *field == value);
    *field = value;
  };
  for (size_t i = 0; i + 1 < n && i < 24; i += 2) {
    const uint8_t kind = bytes[i] % 16, flips = bytes[i + 1];
    std::wstring token, spoilt;
    if (kind < 10) {
      std::wstring field = kFields[kind];
      for (size_t k = 0; k < field.size(); ++k)
        if (flips >> k & 1)
          field[k] = static_cast<wchar_t>(field[k] - L'a' + L'A');
      picture += field;
      switch (kind) {
      case 0:
        token = Number(date.year, 4);
        spoilt = L"0" + token;
        set(&y, date.year);
        break;
      case 1:
        token = Number(date.year % 100, 2);
        spoilt = L"0" + token;
        set(&y, 2000 + date.year % 100);
        break;
      case 2:
      case 3:
        token = Name(lcid, (kind == 2 ? LOCALE_SMONTHNAME1 : LOCALE_SABBREVMONTHNAME1) + month - 1);
        spoilt = kind == 2 ? token + L"x" : Name(lcid, LOCALE_SMONTHNAME1 + month - 1);
        set(&m, month);
        break;
      case 4:
      case 5:
        token = Number(month, kind == 4 ? 2 : 1);
        spoilt = kind == 4 ? L"13" : L"0" + Number(month, 2);
        set(&m, month);
        break;
      case 6:
      case 7:
        token = Name(lcid, (kind == 6 ? LOCALE_SDAYNAME1 : LOCALE_SABBREVDAYNAME1) + weekday);
        spoilt = kind == 6 ? token + L"x" : Name(lcid, LOCALE_SDAYNAME1 + weekday);
        weekdays.push_back(weekday);
        break;
      default: // a spoilt d reads the 31st, valid or not in its month
        token = Number(day, kind == 8 ? 2 : 1);
        spoilt = kind == 8 ? L"0" + token : L"31";
        set(&d, kind == 9 && i / 2 == spoilAt ? 31 : day);
      }
    } else {
      const auto& literal = kLiterals[kind % 6];
      picture += literal[0];
      token = literal[1];
      spoilt = token;
      spoilt[0] = static_cast<wchar_t>(spoilt[0] ^ 0x20);
    }
    written += token;
    lastToken = text.size();
    if (i / 2 == spoilAt) {
      spoiled = token != spoilt && kind != 9;
      token = spoilt;
    } else if (flips & 0x80) { // names are read whatever their ASCII case
      for (wchar_t& c : token)
        if (kind < 10 && c >= L'a' && c <= L'z')
          c = static_cast<wchar_t>(c - L'a' + L'A');
    }
    text += token;
    picture += kSeparators[flips % 8];
    written += kSeparators[flips % 8];
    text += kSeparators[flips / 8 % 8];
  }
  wchar_t out[256];
  const bool wrote = qxSQLDateToString(date, picture.c_str(), out, 256);
  Check(wrote == valid && (valid ? written == out : out[0] == 0));
  if (!valid || text.find(L'\'') != std::wstring::npos) // a quote in the text opens a token
    return;
  qxDATE expected{static_cast<int16_t>(y < 0 ? 2026 : y), static_cast<int8_t>(m < 0 ? 1 : m),
                  static_cast<int8_t>(d < 0 ? 1 : d)};
  bool ok = agree && !spoiled && IsValidDate(&expected);
  for (int w : weekdays)
    ok = ok && w == Weekday(expected);
  qxDATE back{1, 1, 1};
  Check(qxSQLStringToDate(text.c_str(), picture.c_str(), &back) == ok &&
        (ok ? DateCmp(&back, &expected) == 0 : NullDate(&back)));
  Check(!qxSQLStringToDate((text + L" x").c_str(), picture.c_str(), &back) && NullDate(&back));
  if (lastToken != std::wstring::npos)
    Check(!qxSQLStringToDate(text.substr(0, lastToken).c_str(), picture.c_str(), &back));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 5)
    return 0;
  static bool once = [] {
    qx::platform::TimeSource source{1773576000, 0, 0}; // 15 March 2026
    qx::platform::SetThreadTimeSource(&source);
    return true;
  }();
  (void)once;
  const LCID lcid = data[0] & 1 ? 1031 : 1033;
  SetThreadLocale(lcid);
  qxDATE date{static_cast<int16_t>((data[1] | data[2] << 8) % 10001),
              static_cast<int8_t>(data[3] % 14), static_cast<int8_t>(data[4] % 33)};
  // Text and picture: the rest of the input, split at the first 0 byte.
  std::vector<wchar_t> text, picture;
  std::vector<wchar_t>* into = &text;
  for (size_t i = 5; i < size; ++i) {
    if (data[i] == 0 && into == &text) {
      into = &picture;
      continue;
    }
    if (data[i] != 0)
      into->push_back(data[i]);
  }
  text.push_back(0);
  picture.push_back(0);

  qxDATE parsed{};
  if (qxSQLStringToDate(text.data(), picture.data(), &parsed))
    Check(IsValidDate(&parsed));
  else
    Check(NullDate(&parsed));

  // Every size: the whole text when it fits with its terminator, otherwise
  // false and the terminator alone.
  wchar_t whole[kMaxOut + 8];
  const bool wrote = qxSQLDateToString(date, picture.data(), whole, kMaxOut);
  for (unsigned int n = 0; n <= kMaxOut; ++n) {
    wchar_t out[kMaxOut + 8];
    std::wmemset(out, kSentinel, kMaxOut + 8);
    bool ok = qxSQLDateToString(date, picture.data(), out, n);
    for (unsigned int i = n; i < kMaxOut + 8; ++i)
      Check(out[i] == kSentinel);
    if (ok)
      Check(IsValidDate(&date) && std::wcslen(out) < n);
    if (wrote)
      Check(ok == (std::wcslen(whole) < n) &&
            (ok ? std::wcscmp(out, whole) == 0 : n == 0 || out[0] == 0));
  }
  CheckPictureLanguage(lcid, date, data + 5, size - 5);
  if (IsValidDate(&date)) {
    wchar_t out[32];
    Check(qxSQLDateToString(date, L"yyyy-mm-dd", out, 32));
    qxDATE back{};
    Check(qxSQLStringToDate(out, L"yyyy-mm-dd", &back) && DateCmp(&back, &date) == 0);
  }
  return 0;
}
