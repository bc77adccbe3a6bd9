// A scratch directory for file tests: made fresh under the system's
// temporary directory, removed with everything in it at the end.
#ifndef QXUTIL_TESTS_COMMON_TEMP_DIR_H
#define QXUTIL_TESTS_COMMON_TEMP_DIR_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace qxtest {

class TempDir {
public:
  TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qxfiles-XXXXXX").string();
    if (char* made = ::mkdtemp(pattern.data()))
      path_ = made;
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  /// Path - the directory (no trailing separator), or a file in it.
  std::string Path(const std::string& name = "") const {
    return name.empty() ? path_ : path_ + "/" + name;
  }
  /// Wide - the same as a wide string.
  std::wstring Wide(const std::string& name = "") const {
    std::string p = Path(name);
    return std::wstring(p.begin(), p.end());
  }
  /// Write - creates or replaces `name` with `bytes`.
  void Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
  }
  /// Read - the bytes of `name` ("" when absent).
  std::string Read(const std::string& name) const {
    std::ifstream in(Path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  bool Exists(const std::string& name) const { return std::filesystem::exists(Path(name)); }

private:
  std::string path_;
};

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_TEMP_DIR_H
