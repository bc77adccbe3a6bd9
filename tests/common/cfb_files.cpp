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

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s)
    q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

} // namespace

std::vector<std::string> ListFile(const std::string& path) {
  using namespace qx::win;
  IStorage* root = nullptr;
  HRESULT result = StgOpenStorage(Widen(path).c_str(), nullptr,
                                  STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &root);
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
  std::string command = std::string(kPython) + " " + Quote(tmp.Path("lister.py")) + " " +
                        Quote(path) + " > " + Quote(tmp.Path("out.txt"));
  if (std::system(command.c_str()) != 0)
    return {"olefile failed"};
  std::vector<std::string> lines;
  std::string all = tmp.Read("out.txt");
  for (size_t at = 0, end; (end = all.find('\n', at)) != std::string::npos; at = end + 1)
    lines.push_back(all.substr(at, end - at));
  std::sort(lines.begin(), lines.end());
  return lines;
}

bool MakeWithGsf(const std::string& target,
                 const std::vector<std::pair<std::string, std::string>>& tree) {
  if (std::system("command -v gsf >/dev/null 2>&1") != 0)
    return false;
  TempDir tmp;
  std::vector<std::string> top;
  for (const auto& [name, bytes] : tree) {
    std::filesystem::path p = std::filesystem::path(tmp.Path()) / name;
    std::filesystem::create_directories(p.parent_path());
    tmp.Write(name, bytes);
    std::string first = name.substr(0, name.find('/'));
    if (std::find(top.begin(), top.end(), first) == top.end())
      top.push_back(first);
  }
  std::string command = "cd " + Quote(tmp.Path()) + " && gsf createole " + Quote(target);
  for (const std::string& t : top)
    command += " " + Quote(t);
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

} // namespace qxtest
