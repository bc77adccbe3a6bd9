// Fuzz target for the date readers: Str2Date and Str2DateEx on random text
// in several locales and date settings. Checks that a success stores a
// valid date (or, for the literal 0, the null date) and a failure the null date, and that
// Str2DateEx's end pointer is null on failure and otherwise within the text or one past its
// terminator. The first bytes also name a day number, whose date and weekday
// must agree with std::chrono's civil calendar both ways.
#include "locale/date_order_override.h"
#include "platform/time32.h"
#include "qxutil/locale.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
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
