// qxutil number: reads numbers as canonical text (or, with --ui, as the
// locale's UI text) and prints their canonical, UI and database forms.
#include "cli_locale.h"
#include "command.h"
#include "platform/utf8.h"

#include <qxutil/locale.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// The picture of the "sql" line: currency, groups, two decimals.
const wchar_t kPicture[] = L"L999G999G999G990D00";

std::string Utf8(const wchar_t* text) { return qx::platform::WideToUtf8(text); }

void PrintNumber(const char* arg, bool fromUI) {
  std::wstring text = qx::platform::Utf8ToWide(arg);
  double value = 0;
  if (!StringToDoubleFmtCtl(text.c_str(), &value, fromUI)) {
    std::printf("%s: not a number\n", arg);
    return;
  }
  wchar_t canonical[64], ui[64], column[32], picture[64];
  DoubleToString(value, canonical, 64, false, -1, PRINTF_G, -1);
  DoubleToString(value, ui, 64, true, -1, PRINTF_G, -1);
  DoubleToDBString(column, 24, 6, value);
  const wchar_t* trimmed = column;
  while (*trimmed == L' ')
    ++trimmed;
  if (!qxSQLDoubleToString(value, kPicture, picture, 64) && !*picture)
    std::wcscpy(picture, L"(does not fit)");
  std::printf("%s\n  canonical  %s\n  ui         %s\n  database   %s\n  sql        %s\n", arg,
              Utf8(canonical).c_str(), Utf8(ui).c_str(), Utf8(trimmed).c_str(),
              Utf8(picture).c_str());
}

int RunNumber(int argc, char** argv) {
  const char* locale = nullptr;
  bool fromUI = false;
  int first = 1;
  for (; first < argc; ++first) {
    if (!std::strcmp(argv[first], "--locale") && first + 1 < argc)
      locale = argv[++first];
    else if (!std::strcmp(argv[first], "--ui"))
      fromUI = true;
    else
      break;
  }
  if (first >= argc)
    return qxcli::Fail(2, "usage: qxutil number [--locale NAME|LCID] [--ui] VALUE...");
  // The thread locale is pinned before the library's first call.
  if (locale) {
    if (!qxcli::PinThreadLocale(locale))
      return qxcli::Fail(2, "unknown locale %s", locale);
  }
  for (int i = first; i < argc; ++i)
    PrintNumber(argv[i], fromUI);
  return 0;
}

} // namespace

QXUTIL_COMMAND(number, "number [--locale NAME|LCID] [--ui] VALUE...",
               "read numbers (canonical, or UI text with --ui) and print their forms", RunNumber);
