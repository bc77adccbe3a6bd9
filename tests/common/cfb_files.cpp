#include "common/cfb_files.h"

#include "common/temp_dir.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace qxtest {

namespace {

// The system's Python, where Debian's python3-olefile is installed.
constexpr const char* kPython = "/usr/bin/python3";

constexpr const char* kOlefileLister = R"(
import sys, olefile
ole = olefile.OleFileIO(sys.argv[1])
def fnv(data):
    h = 1469598103934665603
    for c in data:
        h = ((h ^ c) * 1099511628211) & 0xFFFFFFFFFFFFFFFF
    return h
for path in ole.listdir(streams=True, storages=True):
    name = "/".join(path)
    if ole.get_type(path) == olefile.STGTY_STORAGE:
        print(name + "/ storage")
    else:
        data = ole.openstream(path).read()
        print("%s %d %016x" % (name, len(data), fnv(data)))
)";

} // namespace

std::vector<std::string> ListFile(const std::string& path) {
  using namespace qx::win;
  IStorage* root = nullptr;
  HRESULT result = StgOpenStorage(Widen(path).c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE,
                                  nullptr, 0, &root);
  if (result != S_OK) {
    char line[32];
    std::snprintf(line, sizeof line, "error 0x%08X", static_cast<unsigned>(result));
    return {line};
  }
  std::vector<std::string> lines;
  ListStorage(root, "", &lines);
  root->Release();
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<std::string> ListWithOlefile(const std::string& path) {
  if (std::system((std::string(kPython) + " -c 'import olefile' 2>/dev/null").c_str()) != 0)
    return {};
  TempDir tmp;
  tmp.Write("lister.py", kOlefileLister);
  std::string command = std::string(kPython) + " " + ShellQuote(tmp.Path("lister.py")) + " " +
                        ShellQuote(path) + " > " + ShellQuote(tmp.Path("out.txt"));
  if (std::system(command.c_str()) != 0)
    return {"olefile failed"};
  std::vector<std::string> lines;
  std::string all = tmp.Read("out.txt");
  for (size_t at = 0, end; (end = all.find('\n', at)) != std::string::npos; at = end + 1)
    lines.push_back(all.substr(at, end - at));
  std::sort(lines.begin(), lines.end());
  return lines;
}

} // namespace qxtest
