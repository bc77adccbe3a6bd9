// Compound files for the storage tests, the fuzz target and the benchmark: the committed
// samples (tests/data/cfb) and a listing through the library's storage calls.
#ifndef QXUTIL_TESTS_COMMON_CFB_FILES_H
#define QXUTIL_TESTS_COMMON_CFB_FILES_H

#include "common/temp_dir.h"
#include "platform/storage.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace qxtest {

/// CfbSampleDir - the folder of the committed samples. A relative __FILE__
/// is relative to the folder the compiler ran in, which is the binary's.
inline std::string CfbSampleDir() {
  std::string here = __FILE__; // .../tests/common/cfb_files.h
  if (here[0] != '/') {
    std::error_code ec;
    std::string exe = std::filesystem::read_symlink("/proc/self/exe", ec).string();
    here = exe.substr(0, exe.rfind('/') + 1) + here;
  }
  return here.substr(0, here.rfind("/common/")) + "/data/cfb";
}

inline std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline std::wstring Widen(const std::string& s) { return std::wstring(s.begin(), s.end()); }

/// Fnv - a 64-bit FNV-1a digest, to compare streams in listings.
inline uint64_t Fnv(const void* data, size_t n, uint64_t h = 1469598103934665603ull) {
  for (size_t i = 0; i < n; ++i)
    h = (h ^ static_cast<const unsigned char*>(data)[i]) * 1099511628211ull;
  return h;
}

/// ListStorage - one line per element below `storage`, sorted:
/// "path/ storage" or "path SIZE DIGEST"; an "error ..." line on failure.
inline void ListStorage(qx::win::IStorage* storage, const std::string& prefix,
                        std::vector<std::string>* lines) {
  using namespace qx::win;
  IEnumSTATSTG* list = nullptr;
  if (storage->EnumElements(0, nullptr, 0, &list) != S_OK) {
    lines->push_back("error enumerating " + prefix);
    return;
  }
  STATSTG st;
  while (list->Next(1, &st, nullptr) == S_OK) {
    std::string name;
    for (const wchar_t* p = st.pwcsName; *p; ++p)
      name += *p < 0x80 ? static_cast<char>(*p) : '?';
    std::string path = prefix + name;
    if (st.type == STGTY_STORAGE) {
      lines->push_back(path + "/ storage");
      IStorage* inner = nullptr;
      if (storage->OpenStorage(st.pwcsName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0,
                               &inner) == S_OK) {
        ListStorage(inner, path + "/", lines);
        inner->Release();
      } else {
        lines->push_back("error opening " + path);
      }
    } else {
      IStream* stream = nullptr;
      uint64_t h = Fnv(nullptr, 0), total = 0;
      if (storage->OpenStream(st.pwcsName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream) ==
          S_OK) {
        char buffer[4096];
        ULONG got = 0;
        while (stream->Read(buffer, sizeof buffer, &got) == S_OK && got > 0)
          h = Fnv(buffer, got, h), total += got;
        stream->Release();
      }
      char line[64];
      std::snprintf(line, sizeof line, " %llu %016llx", static_cast<unsigned long long>(total),
                    static_cast<unsigned long long>(h));
      lines->push_back(path + line);
    }
    CoTaskMemFree(st.pwcsName);
  }
  list->Release();
}

/// ShellQuote - `s` quoted for the shell.
inline std::string ShellQuote(const std::string& s) {
  std::string q = "'";
  for (char c : s)
    q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_CFB_FILES_H
