// Damaged compound files: the input picks a committed sample (tests/data/cfb)
// and changes its bytes, cuts it short, or is taken as the whole file. The
// reader must open it or refuse it cleanly; when it opens, every storage is
// listed and every stream read to its end and read again after seeks, all
// under ASan/UBSan and without hanging.
#include "common/cfb_files.h"
#include "common/temp_dir.h"
#include "platform/storage.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::vector<std::string>& Samples() {
  static std::vector<std::string> samples = [] {
    std::vector<std::string> s;
    for (const char* name : {"mini.cfb", "large.cfb", "nested.cfb", "workbook.cfb", "v4.cfb"})
      s.push_back(qxtest::ReadBytes(qxtest::CfbSampleDir() + "/" + name));
    return s;
  }();
  return samples;
}

// Exercise - reads everything the file offers, seeking around in each stream.
void Exercise(qx::win::IStorage* storage, const uint8_t* data, size_t size) {
  using namespace qx::win;
  std::vector<std::string> lines;
  qxtest::ListStorage(storage, "", &lines);
  IEnumSTATSTG* list = nullptr;
  if (storage->EnumElements(0, nullptr, 0, &list) != S_OK)
    return;
  STATSTG st;
  while (list->Next(1, &st, nullptr) == S_OK) {
    IStream* stream = nullptr;
    if (st.type == STGTY_STREAM &&
        storage->OpenStream(st.pwcsName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream) ==
            S_OK) {
      char buffer[5000];
      for (size_t i = 0; i + 3 <= size; i += 3) {
        LARGE_INTEGER move;
        move.QuadPart = (data[i] | data[i + 1] << 8) * (data[i + 2] & 0x0F);
        stream->Seek(move, data[i + 2] >> 4 & 3, nullptr);
        ULONG got = 0;
        stream->Read(buffer, data[i + 1] * 19u % sizeof buffer, &got);
      }
      stream->Release();
    }
    CoTaskMemFree(st.pwcsName);
  }
  list->Release();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace qx::win;
  if (size < 2)
    return 0;
  std::string file;
  if (data[0] & 0x80) {
    file.assign(reinterpret_cast<const char*>(data + 1), size - 1);
  } else {
    file = Samples()[data[0] % Samples().size()];
    if (file.empty())
      std::abort(); // the samples must be found
    if (data[1] < 8)
      file.resize(file.size() * data[1] / 8);
    // Four bytes per change: where (the header when the top bit is set) and the new byte.
    for (size_t i = 2; i + 4 <= size && !file.empty(); i += 4) {
      size_t at = data[i] | data[i + 1] << 8 | (data[i + 2] & 0x7F) << 16;
      at %= (data[i + 2] & 0x80) ? std::min<size_t>(512, file.size()) : file.size();
      file[at] = static_cast<char>(data[i + 3]);
    }
  }
  qxtest::TempDir dir;
  dir.Write("fuzzed.cfb", file);
  IStorage* root = nullptr;
  std::wstring path = qxtest::Widen(dir.Path("fuzzed.cfb"));
  if (StgOpenStorage(path.c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &root) ==
      S_OK) {
    Exercise(root, data, size);
    root->Release();
  }
  return 0;
}
