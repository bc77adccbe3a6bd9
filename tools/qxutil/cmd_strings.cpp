// qxutil strings: makes string modules from Windows resource scripts
// (compile) and shows what a module holds (list).
#include "atomic_file.h"
#include "command.h"
#include "platform/modules.h"
#include "platform/string_module.h"
#include "platform/utf8.h"
#include "rc_script.h"
#include "string_module_source.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr const char* kUsage =
    "usage: qxutil strings compile FILE.rc -o FILE.cpp [-I DIR]... [--depfile FILE]\n"
    "       qxutil strings list MODULE.so";

// WriteWhole - `text` to `path` ("-": standard output), replaced whole or not at all.
bool WriteWhole(const char* path, const std::string& text) {
  qxcli::AtomicFile out;
  if (!out.Open(path) || !out.Write(text.data(), text.size()) || !out.Commit()) {
    qxcli::Fail(1, "%s: %s", path, std::strerror(errno));
    return false;
  }
  return true;
}

// DepfilePath - a path as a make rule spells it.
std::string DepfilePath(const std::string& path) {
  std::string out;
  for (char c : path) {
    if (c == ' ' || c == '#' || c == '\\')
      out += '\\';
    if (c == '$')
      out += '$';
    out += c;
  }
  return out;
}

int Compile(int argc, char** argv) {
  const char* input = nullptr;
  const char* output = nullptr;
  const char* depfile = nullptr;
  qxcli::RcOptions options;
  for (int i = 2; i < argc; ++i) {
    const char* a = argv[i];
    if (!std::strcmp(a, "-o") && i + 1 < argc)
      output = argv[++i];
    else if (!std::strcmp(a, "--depfile") && i + 1 < argc)
      depfile = argv[++i];
    else if (!std::strcmp(a, "-I") && i + 1 < argc)
      options.includeDirs.push_back(argv[++i]);
    else if (!std::strncmp(a, "-I", 2) && a[2])
      options.includeDirs.push_back(a + 2);
    else if (a[0] == '-' || input)
      return qxcli::Fail(2, "%s", kUsage);
    else
      input = a;
  }
  if (!input || !output)
    return qxcli::Fail(2, "%s", kUsage);

  qxcli::RcScript script;
  std::string error;
  bool ok = qxcli::ReadRcScript(input, options, &script, &error);
  for (const std::string& warning : script.warnings)
    std::fprintf(stderr, "qxutil: warning: %s\n", warning.c_str());
  if (!ok)
    return qxcli::Fail(1, "%s", error.c_str());

  const char* slash = std::strrchr(input, '/');
  if (!WriteWhole(output, qxcli::StringModuleSource(script.strings, slash ? slash + 1 : input)))
    return 1;
  if (depfile) {
    std::string rule = DepfilePath(output) + ":";
    for (const std::string& file : script.files) {
      rule += ' '; // not " " + path: g++ 12 warns falsely (-Wrestrict) on that at -O3
      rule += DepfilePath(file);
    }
    if (!WriteWhole(depfile, rule + "\n"))
      return 1;
  }
  return 0;
}

// Printable - a text for the terminal: UTF-8, with the backslash and the
// control characters written as escapes.
std::string Printable(const wchar_t* text, size_t length) {
  std::wstring shown;
  for (size_t i = 0; i < length; ++i) {
    const wchar_t c = text[i];
    const wchar_t* escape = c == L'\\'   ? L"\\\\"
                            : c == L'\n' ? L"\\n"
                            : c == L'\r' ? L"\\r"
                            : c == L'\t' ? L"\\t"
                                         : nullptr;
    if (escape) {
      shown += escape;
    } else if (c < 0x20 || (c >= 0x7F && c < 0xA0)) {
      wchar_t hex[8];
      std::swprintf(hex, 8, L"\\x%02X", static_cast<unsigned>(c));
      shown += hex;
    } else {
      shown += c;
    }
  }
  return qx::platform::WideToUtf8(shown.c_str());
}

int List(int argc, char** argv) {
  if (argc != 3)
    return qxcli::Fail(2, "%s", kUsage);
  std::string path = argv[2];
  if (path.find('/') == std::string::npos)
    path = "./" + path; // a file here, not a library on the search path
  FILE* probe = std::fopen(path.c_str(), "rb");
  if (!probe)
    return qxcli::Fail(1, "%s: %s", argv[2], std::strerror(errno));
  std::fclose(probe);
  std::wstring wide = qx::platform::Utf8ToWide(path.c_str());
  HMODULE module = qx::win::LoadLibraryW(wide.c_str());
  if (!module)
    return qxcli::Fail(1, "%s: cannot be loaded as a module", argv[2]);
  const qx::win::StringModuleTable* table = qx::win::FindStringTable(module);
  if (!table) {
    qx::win::FreeLibrary(module);
    return qxcli::Fail(1, "%s: not a string module (it exports no '%s')", argv[2],
                       qx::win::kStringModuleSymbol);
  }
  for (unsigned int i = 0; i < table->count; ++i) {
    const qx::win::StringModuleEntry& e = table->entries[i];
    std::printf("%u\t%s\n", e.id, Printable(e.text, e.length).c_str());
  }
  qx::win::FreeLibrary(module);
  return 0;
}

int RunStrings(int argc, char** argv) {
  if (argc >= 2 && !std::strcmp(argv[1], "compile"))
    return Compile(argc, argv);
  if (argc >= 2 && !std::strcmp(argv[1], "list"))
    return List(argc, argv);
  return qxcli::Fail(2, "%s", kUsage);
}

} // namespace

QXUTIL_COMMAND(strings, "strings compile FILE.rc -o FILE.cpp [-I DIR]... | list MODULE.so",
               "make a string module from a resource script's STRINGTABLEs, or list one",
               RunStrings);
