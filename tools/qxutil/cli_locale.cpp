// The --locale option shared by the commands that depend on a locale.
#include "cli_locale.h"
#include "qxutil/winlocale.h"

#include "platform/utf8.h"

#include <qxutil/wintypes.h>

#include <cstdlib>

namespace qxcli {

bool PinThreadLocale(const char* arg) {
  if (!arg)
    return false;
  char* end = nullptr;
  unsigned long lcid = std::strtoul(arg, &end, 0);
  if (end == arg || *end != 0)
    lcid = LocaleNameToLCID(qx::platform::Utf8ToWide(arg).c_str(), 0);
  return lcid != 0 && SetThreadLocale(static_cast<LCID>(lcid));
}

} // namespace qxcli
