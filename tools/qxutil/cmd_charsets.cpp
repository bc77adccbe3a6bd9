// qxutil charsets: the character-set catalogue as a table or CSV.
#include "command.h"
#include "platform/utf8.h"

#include <qxutil/text.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

std::string LineEndName(const wchar_t* lineEnd) {
  std::string name;
  for (const wchar_t* p = lineEnd; *p; ++p)
    name += name.empty() ? "" : " ", name += *p == L'\r' ? "CR" : *p == L'\n' ? "LF" : "?";
  return name;
}

int RunCharsets(int argc, char** argv) {
  bool csv = false;
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--csv"))
      csv = true;
    else
      return qxcli::Fail(2, "usage: qxutil charsets [--csv]");
  }
  if (csv)
    std::printf("value,name,old name,code page,dbcs,line end\n");
  else
    std::printf("%5s  %-22s %-7s %9s  %-4s  %s\n", "value", "name", "old", "code page", "DBCS",
                "line end");
  for (int i = 0; i < kQXCharsetCount; ++i) {
    QXCHARSET cs = static_cast<QXCHARSET>(i);
    std::string name = qx::platform::WideToUtf8(CS2Str(cs));
    std::string old = qx::platform::WideToUtf8(CS2OldStr(cs));
    std::string lineEnd = LineEndName(CharsetSlashN(cs));
    const char* dbcs = CharsetDBCS(cs) ? "yes" : "no";
    if (csv)
      std::printf("%d,%s,%s,%d,%s,%s\n", i, name.c_str(), old.c_str(), GetWinCodePage(cs), dbcs,
                  lineEnd.c_str());
    else
      std::printf("%5d  %-22s %-7s %9d  %-4s  %s\n", i, name.c_str(), old.c_str(),
                  GetWinCodePage(cs), dbcs, lineEnd.c_str());
  }
  return 0;
}

} // namespace

QXUTIL_COMMAND(charsets, "charsets [--csv]",
               "list the character-set catalogue (value, names, code page, DBCS, line end)",
               RunCharsets);
