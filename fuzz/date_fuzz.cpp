// Fuzz target for the date readers: Str2Date and Str2DateEx on random text
// in several locales and date settings. Checks that a success stores a
// valid date (or, for the literal 0, the null date) and a failure the null date, and that
// Str2DateEx's end pointer is null on failure and otherwise within the text or one past its
// terminator. The first bytes also name a day number, whose date and weekday
// must agree with std::chrono's civil calendar both ways, and a date, order,
// separators and size, whose numeric layouts must be the reference text, ""
// when it does not fit, and nothing for an order that is not a layout.
#include "locale/date_order_override.h"
#include "platform/time32.h"
#include "qxutil/locale.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

bool Neutral() { return true; }

// CheckDayNumber - Days2MDY, MDY2Days and DayOfWeek of day `n` (0 is
// 1 January 1, 3652058 is 31 December 9999) agree with std::chrono.
void CheckDayNumber(long n) {
  using namespace std::chrono;
  static const long epoch = sys_days{year{1} / January / 1}.time_since_epoch().count();
  const sys_days day{days{n + epoch}};
  const year_month_day ymd{day};
  qxDATE d{};
  Check(Days2MDY(n, &d));
  Check(d.year == int(ymd.year()) && d.month == int(unsigned(ymd.month())) &&
        d.day == int(unsigned(ymd.day())));
  Check(MDY2Days(&d) == n);
  Check(DayOfWeek(n) == int(weekday{day}.c_encoding()) + 1);
}

std::wstring Field(int value, int width) {
  wchar_t text[16];
  std::swprintf(text, 16, L"%0*d", width, value);
  return text;
}

// CheckLayouts - MakeDateString and MakeDateStringEx of the date, order,
// separators and size that `b` (8 bytes) names.
void CheckLayouts(const uint8_t* b) {
  static const wchar_t* const kSeparators[] = {L"", L"/", L". ", L"\u5e74", L"--", nullptr};
  qxDATE date{static_cast<int16_t>(b[0] | b[1] << 8), static_cast<int8_t>(b[2]),
              static_cast<int8_t>(b[3])};
  const short order = static_cast<short>(b[4] % 8) - 1;
  const wchar_t *s1 = kSeparators[b[5] % 6], *s2 = kSeparators[b[5] / 6 % 6];
  const unsigned int size = b[6] % 24;
  const std::wstring y = Field(date.year, 4), m = Field(date.month, 2), d = Field(date.day, 2);
  const std::wstring first = s1 ? s1 : L"", second = s2 ? s2 : L"";
  const std::wstring fields[][3] = {{m, d, y}, {d, m, y}, {y, m, d}, {}, {}, {y, d, m}};
  const bool layout = order == 0 || order == 1 || order == 2 || order == 5;
  std::wstring want;
  if (layout)
    want = fields[order][0] + first + fields[order][1] + second + fields[order][2];
  constexpr wchar_t kUnwritten = 0x7F7F;
  for (int ex = 0; ex < 2; ++ex) {
    // MakeDateString takes one delimiter, 0 for none.
    const wchar_t one[2] = {s1 ? s1[0] : L'\0', 0};
    const std::wstring& expected =
        ex || !layout ? want : fields[order][0] + one + fields[order][1] + one + fields[order][2];
    wchar_t out[32];
    std::wmemset(out, kUnwritten, 32);
    bool ok = true;
    if (ex)
      ok = MakeDateStringEx(out, size, &date, order, s1, s2);
    else
      MakeDateString(out, size, &date, order, one[0]);
    const bool fits = layout && expected.size() < size;
    Check(!ex || ok == fits);
    // Past the text, or past the size when it does not fit; all of it when
    // the order is not a layout.
    const size_t from = fits ? expected.size() + 1 : layout ? size : 0;
    for (size_t i = from; i < 32; ++i)
      Check(out[i] == kUnwritten);
    Check(fits ? expected == out : !layout || size == 0 || out[0] == 0);
  }
}

// CheckFields - IsValidDate and SetDate of any fields, and LiteralToDate of
// their literal, against std::chrono's calendar (years 0 to 9999 for a
// date, from 0 for a literal): an invalid literal keeps its fields and
// reports error 5002.
void CheckFields(const qxDATE& date) {
  using namespace std::chrono;
  const bool valid = date.year >= 0 && date.year <= 9999 && date.month >= 1 && date.day >= 1 &&
                     year_month_day{year{date.year}, month{static_cast<unsigned>(date.month)},
                                    day{static_cast<unsigned>(date.day)}}
                         .ok();
  Check(IsValidDate(&date) == valid);
  qxDATE set{1, 1, 1};
  Check(SetDate(date.year, date.month, date.day, &set) == valid &&
        (valid ? DateCmp(&set, &date) == 0 : NullDate(&set) && DateToLiteral(&set) == 0));
  const long literal = (date.year * 100L + date.month) * 100 + date.day;
  Check(DateToLiteral(&date) == literal);
  // LiteralToDate takes the literal apart with div and mod.
  const qxDATE parts{static_cast<int16_t>(literal / 10000),
                     static_cast<int8_t>(literal / 100 % 100), static_cast<int8_t>(literal % 100)};
  const bool readable =
      literal == 0 || (parts.year >= 0 && parts.month >= 1 && parts.month <= 12 && parts.day >= 1 &&
                       year_month_day{year{parts.year}, month{static_cast<unsigned>(parts.month)},
                                      day{static_cast<unsigned>(parts.day)}}
                           .ok());
  ClearErrors();
  qxDATE back{1999, 9, 9};
  Check(LiteralToDate(literal, &back) == readable && DateToLiteral(&back) == literal &&
        ThisErrorOccurred(5002) == !readable);
  ClearErrors();
}

// A successful read stores a valid date, or the null date when the text is
// the literal 0 ("00000000", which LiteralToDate reads as the null date).
bool ReadDate(const wchar_t* s, const qxDATE* d) {
  return IsValidDate(d) || (NullDate(d) && std::wcscmp(s, L"00000000") == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  static const LCID kLocales[] = {1033, 1031, 1041, 1036};
  static bool once = [] {
    qx::platform::TimeSource source{1773576000, 0, 0}; // 15 March 2026
    qx::platform::SetThreadTimeSource(&source);
    return true;
  }();
  (void)once;
  // The days where the leap rules turn, then a random one.
  static const bool turns = [] {
    using namespace std::chrono;
    const sys_days epoch{year{1} / January / 1};
    for (year_month_day d : {year{1} / 1 / 1, year{4} / 2 / 29, year{100} / 3 / 1,
                             year{400} / 2 / 29, year{1900} / 2 / 28, year{1900} / 3 / 1,
                             year{2000} / 2 / 29, year{2024} / 12 / 31, year{9999} / 12 / 31})
      CheckDayNumber(static_cast<long>((sys_days{d} - epoch).count()));
    return true;
  }();
  (void)turns;
  uint32_t number = 0;
  std::memcpy(&number, data, size < 4 ? size : 4);
  CheckDayNumber(static_cast<long>(number % 3652059));
  if (size >= 8) {
    CheckLayouts(data);
    // Fields: the years at the ends of the calendar now and then, months
    // mostly near 1..12.
    static const int16_t kYears[] = {-1, 0, 1, 9999, 10000};
    const int16_t year = data[3] & 1 ? kYears[data[0] % 5]
                                     : static_cast<int16_t>((data[0] | data[1] << 8) % 10002 - 1);
    const int8_t month = static_cast<int8_t>(data[3] & 2 ? data[2] : data[2] % 15 - 1);
    CheckFields(qxDATE{year, month, static_cast<int8_t>(data[7] % 34)});
  }
  uint8_t mode = data[0];
  SetThreadLocale(kLocales[mode % 4]);
  SetDateFormatCallback((mode & 4) ? Neutral : nullptr);
  // The text: pairs of bytes as units, mostly ASCII.
  std::vector<wchar_t> text;
  for (size_t i = 1; i + 1 < size + 1; i += 2) {
    wchar_t c = (mode & 8) && i + 1 < size ? static_cast<wchar_t>(data[i] | data[i + 1] << 8)
                                           : static_cast<wchar_t>(data[i]);
    if (c != 0)
      text.push_back(c);
  }
  text.push_back(0);
  const wchar_t* s = text.data();
  size_t length = text.size() - 1;

  qxDATE d{1, 1, 1};
  if (Str2Date(s, &d))
    Check(ReadDate(s, &d));
  else
    Check(NullDate(&d) && d.year == 0);

  wchar_t* end = reinterpret_cast<wchar_t*>(&d);
  if (Str2DateEx(s, &d, &end)) {
    Check(ReadDate(s, &d));
    Check(end >= s && end <= s + length + 1);
  } else {
    Check(NullDate(&d) && end == nullptr);
  }
  if (Str2DateEx(s, &d, nullptr))
    Check(ReadDate(s, &d));
  ClearErrors();
  return 0;
}
