// qxutil find: finds a file by name, ignoring case, as FindFileInfo does.
#include "command.h"
#include "platform/file_path.h"
#include "platform/utf8.h"

#include <qxutil/files.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr const char* kUsage = "usage: qxutil find NAME [--in DIR;DIR...] [--tree]";

// Print - the found name, qualified, as the file system spells it.
void Print(const wchar_t* found) {
  wchar_t full[261];
  strcpyn(full, found, 261);
  qualify_filename(full);
  char path[qx::platform::kKernelPathSize];
  if (!qx::platform::KernelPath(full, path))
    return;
  qx::platform::ResolveCase(path, false); // keeps the spelling given on failure
  std::printf("%s\n", path);
}

int RunFind(int argc, char** argv) {
  const char* name = nullptr;
  const char* dirs = ".";
  bool tree = false;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--in") == 0) {
      if (++i == argc)
        return qxcli::Fail(2, "--in needs a list of directories\n%s", kUsage);
      dirs = argv[i];
    } else if (std::strcmp(argv[i], "--tree") == 0) {
      tree = true;
    } else if (!name && argv[i][0] != '-') {
      name = argv[i];
    } else {
      return qxcli::Fail(2, "%s", kUsage);
    }
  }
  if (!name || !*name)
    return qxcli::Fail(2, "%s", kUsage);
  std::wstring wideName = qx::platform::Utf8ToWide(name);
  std::wstring wideDirs = qx::platform::Utf8ToWide(dirs);
  if (wideDirs.size() >= 1024)
    return qxcli::Fail(2, "the list of directories is longer than 1,023 characters");
  wchar_t found[261];
  bool ok = false;
  if (tree) {
    // The name as given, then depth first in each directory's tree.
    FindFileInfo* finder = FindFileInfo::Create(wideDirs.c_str(), true);
    if (!finder)
      return qxcli::Fail(2, "out of memory");
    ok = finder->Find(wideName.c_str(), found, 261);
    delete finder;
  } else {
    // The name as given, then directly in each directory.
    FindFileInfo* finder = FindFileInfo::Create(L"", false);
    if (!finder)
      return qxcli::Fail(2, "out of memory");
    ok = finder->Find(wideName.c_str(), found, 261);
    for (size_t at = 0; !ok && at <= wideDirs.size();) {
      size_t end = wideDirs.find(L';', at);
      if (end == std::wstring::npos)
        end = wideDirs.size();
      std::wstring dir = wideDirs.substr(at, end - at);
      if (!dir.empty()) {
        std::wstring candidate = dir;
        if (candidate.back() != L'/' && candidate.back() != L'\\')
          candidate += L'\\';
        candidate += wideName;
        ok = finder->Find(candidate.c_str(), found, 261);
      }
      at = end + 1;
    }
    delete finder;
  }
  if (!ok) {
    std::fprintf(stderr, "qxutil: %s: not found\n", name);
    return 1;
  }
  Print(found);
  return 0;
}

} // namespace

QXUTIL_COMMAND(find, "find NAME [--in DIR;DIR...] [--tree]",
               "find a file by name, ignoring case (--tree: in subdirectories too)", RunFind);
