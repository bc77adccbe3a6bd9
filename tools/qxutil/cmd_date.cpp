// qxutil date: reads dates as the library does and shows what it made of
// them, or formats one with a date picture.
#include "cli_locale.h"
#include "command.h"
#include "locale/date_order_override.h"
#include "platform/utf8.h"

#include <qxutil/locale.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const char* const kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                 "Thursday", "Friday", "Saturday"};

void PrintDate(const std::wstring& text) {
  qxDATE date{};
  if (!Str2Date(text.c_str(), &date)) {
    std::printf("%s: not a date\n", qx::platform::WideToUtf8(text.c_str()).c_str());
    return;
  }
  long days = MDY2Days(&date);
  std::printf("%s: %04d-%02d-%02d  day %ld  literal %ld  %s\n",
              qx::platform::WideToUtf8(text.c_str()).c_str(), date.year, date.month, date.day, days,
              DateToLiteral(&date), kWeekdays[DayOfWeek(days) - 1]);
}

int RunDate(int argc, char** argv) {
  const char* locale = nullptr;
  const char* picture = nullptr;
  int order = -1;
  const char* delimiter = nullptr;
  int i = 1;
  for (; i < argc && std::strncmp(argv[i], "--", 2) == 0; i += 2) {
    if (i + 1 >= argc)
      return qxcli::Fail(2, "%s needs a value", argv[i]);
    if (std::strcmp(argv[i], "--locale") == 0)
      locale = argv[i + 1];
    else if (std::strcmp(argv[i], "--format") == 0)
      picture = argv[i + 1];
    else if (std::strcmp(argv[i], "--order") == 0)
      order = std::atoi(argv[i + 1]);
    else if (std::strcmp(argv[i], "--delim") == 0)
      delimiter = argv[i + 1];
    else
      return qxcli::Fail(2, "unknown option %s", argv[i]);
  }
  if (i >= argc)
    return qxcli::Fail(2, "usage: qxutil date [--locale NAME|LCID] [--order N --delim C] "
                          "[--format PICTURE] TEXT...");
  // The locale is pinned before the library's first call on this thread.
  if (locale && !qxcli::PinThreadLocale(locale))
    return qxcli::Fail(2, "unknown locale %s", locale);
  if (order >= 0 || delimiter) {
    short fixedOrder = 0;
    wchar_t fixedDelimiter = L'/';
    GetQXLocaleDateInfo(true, &fixedOrder, &fixedDelimiter);
    if (order >= 0)
      fixedOrder = static_cast<short>(order);
    if (delimiter)
      fixedDelimiter = qx::platform::Utf8ToWide(delimiter)[0];
    cLocaleInfo::Instance(
        new qx::date::DateOrderOverride(cLocaleInfo::Instance(), fixedOrder, fixedDelimiter));
  }
  int status = 0;
  for (; i < argc; ++i) {
    std::wstring text = qx::platform::Utf8ToWide(argv[i]);
    if (!picture) {
      PrintDate(text);
      continue;
    }
    qxDATE date{};
    std::wstring pictureText = qx::platform::Utf8ToWide(picture);
    wchar_t out[256];
    if (!Str2Date(text.c_str(), &date) || !FormatDateString(out, 256, date, pictureText.data())) {
      std::printf("%s: cannot format\n", argv[i]);
      status = 1;
      continue;
    }
    std::printf("%s\n", qx::platform::WideToUtf8(out).c_str());
  }
  return status;
}

} // namespace

QXUTIL_COMMAND(date, "date [--locale NAME|LCID] [--order N --delim C] [--format PICTURE] TEXT...",
               "read dates as the library does: date, day number, literal, weekday", RunDate);
