// Hostile resource scripts into the reader behind 'qxutil strings compile':
// whatever the bytes, it returns (strings or an error naming a line) without
// crashing, hanging or reading out of bounds. The input is the script; its
// first bytes also stand for a header it may include ("ids.h"), and a
// script that includes itself meets the nesting and include bounds. What it
// reads, the module's source writer must turn into plain ASCII.
#include "rc_script.h"
#include "string_module_source.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string script(reinterpret_cast<const char*>(data), size);
  const std::string header = script.substr(0, script.size() / 3);
  qxcli::RcOptions options;
  options.includeDirs = {"inc"};
  options.read = [&](const std::string& path, std::string* bytes) {
    if (path == "main.rc")
      *bytes = script;
    else if (path == "inc/ids.h" || path == "ids.h")
      *bytes = header;
    else
      return false;
    return true;
  };
  qxcli::RcScript out;
  std::string error;
  if (!qxcli::ReadRcScript("main.rc", options, &out, &error)) {
    if (error.empty())
      std::abort();
    return 0;
  }
  unsigned last = 0;
  for (size_t i = 0; i < out.strings.size(); ++i) {
    const qxcli::RcString& s = out.strings[i];
    if (s.id > 0xFFFF || s.text.size() > 0xFFFF || (i && s.id <= last))
      std::abort();
    last = s.id;
  }
  for (char c : qxcli::StringModuleSource(out.strings, "main.rc"))
    if (static_cast<unsigned char>(c) >= 0x80)
      std::abort();
  return 0;
}
