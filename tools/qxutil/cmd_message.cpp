// qxutil message: expands an error-message template as the error list does.
#include "command.h"
#include "platform/utf8.h"

#include <qxutil/frame.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

int RunMessage(int argc, char** argv) {
  if (argc < 2 || argc > 4)
    return qxcli::Fail(2, "usage: qxutil message TEMPLATE [ARG0 [ARG1]]");
  std::wstring templ = qx::platform::Utf8ToWide(argv[1]);
  std::wstring arg0 = argc > 2 ? qx::platform::Utf8ToWide(argv[2]) : L"";
  std::wstring arg1 = argc > 3 ? qx::platform::Utf8ToWide(argv[3]) : L"";
  ClearErrors();
  SetError(eErrorLevelError, templ.c_str(), GUID{}, 1, argc > 2 ? arg0.c_str() : nullptr,
           argc > 3 ? arg1.c_str() : nullptr);
  std::vector<wchar_t> out(templ.size() + arg0.size() * templ.size() + arg1.size() * templ.size() +
                           2);
  GetErrorMsg(nullptr, 0, out.data(), static_cast<unsigned int>(out.size()));
  ClearErrors();
  std::printf("%s\n", qx::platform::WideToUtf8(out.data()).c_str());
  return 0;
}

} // namespace

QXUTIL_COMMAND(message, "message TEMPLATE [ARG0 [ARG1]]",
               "expand an error template (^0, ^1, ^^) as the error list does", RunMessage);
