// qxutil cfb: looks inside compound files through the library's read-only
// reader (platform/storage.h). `list` prints the tree of storages and
// streams with their sizes; `cat` writes one stream's bytes into an output
// replaced whole or not at all (atomic_file.h).
#include "atomic_file.h"
#include "command.h"
#include "platform/storage.h"
#include "platform/utf8.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using namespace qx::win;

namespace {

constexpr const char* kUsage = "usage: qxutil cfb list FILE | qxutil cfb cat FILE STREAM [OUT]";
constexpr DWORD kChildMode = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr ULONG kChunk = 1 << 20;

// Why - a sentence for a failed open of a compound file.
const char* Why(HRESULT result) {
  switch (result) {
  case STG_E_FILENOTFOUND:
    return "no such file";
  case STG_E_PATHNOTFOUND:
    return "no such directory";
  case STG_E_SHAREVIOLATION:
    return "another program holds it";
  case STG_E_FILEALREADYEXISTS:
  case STG_E_OLDFORMAT:
    return "not a compound file";
  case STG_E_INVALIDHEADER:
    return "damaged compound file (bad header)";
  case STG_E_DOCFILECORRUPT:
    return "damaged compound file";
  case STG_E_INSUFFICIENTMEMORY:
    return "out of memory";
  default:
    return "cannot be read";
  }
}

// Printable - a name in UTF-8 with control characters as \xNN.
std::string Printable(const wchar_t* name) {
  std::wstring shown;
  for (const wchar_t* p = name; *p; ++p) {
    if (*p < 0x20) {
      wchar_t escape[8];
      std::swprintf(escape, 8, L"\\x%02X", static_cast<unsigned>(*p));
      shown += escape;
    } else {
      shown += *p;
    }
  }
  return qx::platform::WideToUtf8(shown.c_str());
}

std::wstring Wide(const char* utf8) { return qx::platform::Utf8ToWide(utf8); }

class OpenFile {
public:
  explicit OpenFile(const char* path) : path_(path) {
    result_ = StgOpenStorage(Wide(path).c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE,
                             nullptr, 0, &root_);
  }
  ~OpenFile() {
    if (root_)
      root_->Release();
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  IStorage* root() const { return root_; }
  int Fail() const { return qxcli::Fail(1, "%s: %s", path_, Why(result_)); }

private:
  const char* path_;
  IStorage* root_ = nullptr;
  HRESULT result_;
};

bool List(IStorage* storage, int depth) {
  IEnumSTATSTG* list = nullptr;
  if (storage->EnumElements(0, nullptr, 0, &list) != S_OK)
    return false;
  bool ok = true;
  STATSTG st;
  while (ok && list->Next(1, &st, nullptr) == S_OK) {
    std::string name = Printable(st.pwcsName);
    if (st.type == STGTY_STORAGE) {
      std::printf("%*s%s/\n", 2 * depth, "", name.c_str());
      IStorage* inner = nullptr;
      ok = storage->OpenStorage(st.pwcsName, nullptr, kChildMode, nullptr, 0, &inner) == S_OK &&
           List(inner, depth + 1);
      if (inner)
        inner->Release();
    } else {
      std::printf("%*s%s  %llu\n", 2 * depth, "", name.c_str(),
                  static_cast<unsigned long long>(st.cbSize.QuadPart));
    }
    CoTaskMemFree(st.pwcsName);
  }
  list->Release();
  return ok;
}

int RunList(const char* path) {
  OpenFile file(path);
  if (!file.root())
    return file.Fail();
  std::printf("%s\n", path);
  if (!List(file.root(), 1))
    return qxcli::Fail(1, "%s: the listing stopped (out of memory)", path);
  return 0;
}

// OpenPath - the stream at `path` ("Storage/Inner/Stream"); a last part
// "Book" that is not there opens "Workbook", as stream_fileopen does.
HRESULT OpenPath(IStorage* root, const std::wstring& path, IStream** out) {
  IStorage* storage = root;
  storage->AddRef();
  size_t at = 0;
  HRESULT result = S_OK;
  for (size_t slash; (slash = path.find(L'/', at)) != std::wstring::npos; at = slash + 1) {
    IStorage* inner = nullptr;
    result = storage->OpenStorage(path.substr(at, slash - at).c_str(), nullptr, kChildMode, nullptr,
                                  0, &inner);
    storage->Release();
    if (result != S_OK)
      return result;
    storage = inner;
  }
  std::wstring name = path.substr(at);
  result = storage->OpenStream(name.c_str(), nullptr, kChildMode, 0, out);
  if (result == STG_E_FILENOTFOUND && name == L"Book")
    result = storage->OpenStream(L"Workbook", nullptr, kChildMode, 0, out);
  storage->Release();
  return result;
}

int RunCat(const char* path, const char* streamName, const char* output) {
  OpenFile file(path);
  if (!file.root())
    return file.Fail();
  IStream* stream = nullptr;
  HRESULT result = OpenPath(file.root(), Wide(streamName), &stream);
  if (result == STG_E_FILENOTFOUND || result == STG_E_INVALIDNAME)
    return qxcli::Fail(1, "%s: no stream '%s' (try 'qxutil cfb list %s')", path, streamName, path);
  if (result != S_OK)
    return qxcli::Fail(1, "%s: stream '%s': %s", path, streamName, Why(result));
  qxcli::AtomicFile out;
  if (!out.Open(output)) {
    stream->Release();
    return qxcli::Fail(1, "%s: %s", output, std::strerror(errno));
  }
  std::vector<char> buffer(kChunk);
  for (;;) {
    ULONG got = 0;
    if (stream->Read(buffer.data(), kChunk, &got) != S_OK) {
      stream->Release();
      out.Abandon();
      return qxcli::Fail(1, "%s: stream '%s' cannot be read", path, streamName);
    }
    if (got == 0)
      break;
    if (!out.Write(buffer.data(), got)) {
      stream->Release();
      out.Abandon();
      return qxcli::Fail(1, "write failed: %s", std::strerror(errno));
    }
  }
  stream->Release();
  if (!out.Commit())
    return qxcli::Fail(1, "%s: %s", output, std::strerror(errno));
  return 0;
}

int RunCfb(int argc, char** argv) {
  if (argc == 3 && !std::strcmp(argv[1], "list"))
    return RunList(argv[2]);
  if ((argc == 4 || argc == 5) && !std::strcmp(argv[1], "cat"))
    return RunCat(argv[2], argv[3], argc == 5 ? argv[4] : nullptr);
  return qxcli::Fail(2, "%s", kUsage);
}

} // namespace

QXUTIL_COMMAND(cfb, "cfb list FILE | cfb cat FILE STREAM [OUT]",
               "list a compound file's storages and streams, or write one stream", RunCfb);
