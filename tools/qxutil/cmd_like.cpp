// qxutil like: matches a subject against an SQL LIKE pattern.
#include "command.h"
#include "platform/utf8.h"

#include <qxutil/frame.h>
#include <qxutil/text.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr const char* kUsage = "usage: qxutil like SUBJECT PATTERN [--escape C]";

int RunLike(int argc, char** argv) {
  const char* subject = nullptr;
  const char* pattern = nullptr;
  const char* escape = "";
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--escape") == 0) {
      if (++i == argc)
        return qxcli::Fail(2, "--escape needs a character\n%s", kUsage);
      escape = argv[i];
    } else if (!subject) {
      subject = argv[i];
    } else if (!pattern) {
      pattern = argv[i];
    } else {
      return qxcli::Fail(2, "%s", kUsage);
    }
  }
  if (!pattern)
    return qxcli::Fail(2, "%s", kUsage);
  std::wstring s = qx::platform::Utf8ToWide(subject);
  std::wstring p = qx::platform::Utf8ToWide(pattern);
  std::wstring e = qx::platform::Utf8ToWide(escape);
  if (e.size() > 1)
    return qxcli::Fail(2, "the escape must be one character, not \"%s\"", escape);
  ClearErrors();
  bool match = false;
  bool wellFormed = Like(s.c_str(), p.c_str(), e.c_str(), &match);
  ClearErrors();
  if (!wellFormed)
    return qxcli::Fail(2,
                       "malformed pattern \"%s\": the escape \"%s\" must be followed by "
                       "%%, _ or itself",
                       pattern, escape);
  std::puts(match ? "match" : "no match");
  return match ? 0 : 1;
}

} // namespace

QXUTIL_COMMAND(like, "like SUBJECT PATTERN [--escape C]",
               "SQL LIKE: prints match (exit 0) or no match (exit 1)", RunLike);
