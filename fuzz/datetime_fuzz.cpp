// Fuzz target for the time and date-time readers: ParseTimeString,
// CreateTimeSpanFromString, CreateTimeFromString and
// CreateDateTimeFromString. Checks the ranges of every result and that a
// span read back from its own text (with the day separator) is the same.
#include "platform/time32.h"
#include "qxutil/locale.h"

#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  static const LCID kLocales[] = {1033, 1031, 1041, 1035};
  static bool once = [] {
    qx::platform::TimeSource source{1773576000, 0, 0};
    qx::platform::SetThreadTimeSource(&source);
    return true;
  }();
  (void)once;
  SetThreadLocale(kLocales[data[0] % 4]);
  std::vector<wchar_t> text;
  for (size_t i = 1; i < size; ++i)
    if (data[i] != 0)
      text.push_back(data[i] < 0x80 ? data[i] : static_cast<wchar_t>(0x3000 + data[i]));
  text.push_back(0);
  const wchar_t* s = text.data();

  int hours = -1, minutes = -1;
  double seconds = -1;
  if (ParseTimeString(s, &hours, &minutes, &seconds))
    Check(hours >= 0 && hours <= 23 && minutes >= 0 && minutes <= 59 && seconds >= 0 &&
          seconds < 60);

  std::unique_ptr<qxTimeSpan> span(CreateTimeSpanFromString(s));
  if (span) {
    wchar_t buffer[64];
    // Read back where the time separator is the picture's ":" (en-US).
    if (data[0] % 4 == 0 && span->Format(buffer, 64, nullptr, true)) {
      std::unique_ptr<qxTimeSpan> back(CreateTimeSpanFromString(buffer));
      Check(back && back->Ticks() == span->Ticks());
    }
  }
  std::unique_ptr<qxTime> time(CreateTimeFromString(s));
  if (time)
    Check(time->Ticks() >= 0 && time->Ticks() < 864000000000LL);
  std::unique_ptr<qxDateTime> dateTime(CreateDateTimeFromString(s));
  if (dateTime) {
    Check(dateTime->Ticks() >= 0 && dateTime->Ticks() <= 3155378975999999999LL);
    Check(IsValidDate(dateTime->Date()));
  }
  ClearErrors();
  return 0;
}
