// Damaged compound files: the input picks a committed sample (tests/data/cfb)
// and changes its bytes, cuts it short, or is taken as the whole file (a fixed
// list of damages, one rule each, comes first). Opening it must give the code
// the model (fuzz/models/cfb_model.h) gives; when it opens, its listing must be
// the model's, and every stream is read again after seeks that must land where
// the stream's size says and give the same bytes, all under ASan/UBSan and
// without hanging.
#include "common/cfb_files.h"
#include "common/temp_dir.h"
#include "models/cfb_model.h"
#include "platform/storage.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

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
      // The whole stream first; then each seek and read must agree with it.
      char buffer[5000];
      std::string whole;
      ULONG got = 0;
      HRESULT read;
      while ((read = stream->Read(buffer, sizeof buffer, &got)) == S_OK && got > 0)
        whole.append(buffer, got);
      const bool checked = read == S_OK;
      long long position = 0;
      LARGE_INTEGER move;
      move.QuadPart = 0;
      stream->Seek(move, STREAM_SEEK_SET, nullptr);
      for (size_t i = 0; i + 3 <= size; i += 3) {
        const DWORD origin = data[i + 2] >> 4 & 3;
        const long long base = origin == STREAM_SEEK_SET   ? 0
                               : origin == STREAM_SEEK_CUR ? position
                               : origin == STREAM_SEEK_END ? static_cast<long long>(whole.size())
                                                           : -1;
        move.QuadPart = (data[i] | data[i + 1] << 8) * (data[i + 2] & 0x0F);
        if (data[i + 2] & 0x40)
          move.QuadPart = -move.QuadPart;
        if (data[i + 2] & 0x80) // to just before, at or just after the stream's start
          move.QuadPart = data[i] % 3 - 1 - std::max(base, 0LL);
        const bool valid = base >= 0 && base + move.QuadPart >= 0;
        ULARGE_INTEGER at;
        const HRESULT sought = stream->Seek(move, origin, &at);
        if (checked) {
          Check(sought == (valid ? S_OK : STG_E_INVALIDFUNCTION));
          if (valid)
            position = base + move.QuadPart;
          Check(!valid || at.QuadPart == static_cast<ULONGLONG>(position));
        }
        const ULONG want = data[i + 1] * 19u % sizeof buffer;
        read = stream->Read(buffer, want, &got);
        if (checked) {
          const size_t left = position < static_cast<long long>(whole.size())
                                  ? whole.size() - static_cast<size_t>(position)
                                  : 0;
          Check(read == S_OK && got == std::min<size_t>(want, left) &&
                whole.compare(static_cast<size_t>(std::min<long long>(position, whole.size())), got,
                              buffer, got) == 0);
          position += got;
        }
      }
      stream->Release();
    }
    CoTaskMemFree(st.pwcsName);
  }
  list->Release();
}

// Compare - opens `file` as the library and as the model; the two must agree.
void Compare(const std::string& file, const uint8_t* data, size_t size) {
  using namespace qx::win;
  qxtest::TempDir dir;
  dir.Write("fuzzed.cfb", file);
  IStorage* root = nullptr;
  std::wstring path = qxtest::Widen(dir.Path("fuzzed.cfb"));
  qxtest::CfbModel model(file);
  const HRESULT expected = model.Open();
  const HRESULT result =
      StgOpenStorage(path.c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &root);
  Check(result == expected);
  if (result != S_OK)
    return;
  if (model.NamesAreAscii()) {
    std::vector<std::string> lines;
    qxtest::ListStorage(root, "", &lines);
    std::sort(lines.begin(), lines.end());
    Check(lines == model.List());
  }
  Exercise(root, data, size);
  root->Release();
}

// Layout - finds the places in a sample that a damage changes.
struct Layout : qxtest::CfbLayout {
  using CfbLayout::CfbLayout;
  void Put16(size_t at, uint16_t v) { (*b)[at] = char(v), (*b)[at + 1] = char(v >> 8); }
  /// FatEntry - the byte offset of sector `n`'s FAT entry (first 109 FAT sectors).
  size_t FatEntry(uint32_t n) const {
    uint32_t per = (1u << (*b)[30]) / 4;
    return Sector(U32(76 + 4 * (n / per))) + 4 * (n % per);
  }
  /// Start - the first sector of the stream named `name`.
  uint32_t Start(const std::string& name) const { return U32(Entry(name) + 116); }
  /// Entry - the byte offset of the directory entry named `name` (ASCII),
  /// found by its UTF-16 name and name length; npos when none.
  size_t Entry(const std::string& name) const {
    std::string utf16;
    for (char c : name)
      utf16 += c, utf16 += '\0';
    for (size_t at = 0; (at = b->find(utf16, at)) != std::string::npos; ++at)
      if (at % 128 == 0 && static_cast<unsigned char>((*b)[at + 64]) == 2 * name.size() + 2)
        return at;
    return std::string::npos;
  }
};

// Damages - each breaks one rule of a sample; the file must be refused.
void Damages() {
  using F = Layout&;
  const struct {
    int sample; // in Samples()
    void (*apply)(F);
  } damages[] = {
      {0, [](F f) { f.b->resize(7); }},
      {0, [](F f) { (*f.b)[7] = 0; }},
      {0, [](F f) { f.b->replace(0, 8, "\x0E\x11\xFC\x0D\xD0\xCF\x11\x0E", 8); }},
      {0, [](F f) { f.b->resize(300); }},
      {0, [](F f) { f.Put16(28, 0xFEFF); }},
      {0, [](F f) { f.Put16(26, 5); }},
      {0, [](F f) { f.Put16(30, 12); }},
      {4, [](F f) { f.Put16(30, 9); }},
      {0, [](F f) { f.Put16(32, 7); }},
      {0, [](F f) { f.Put32(56, 8192); }},
      {0, [](F f) { f.Put32(44, 0x7FFFFFFF); }},
      {1, [](F f) { f.Put32(76, 0x00FFFFF0); }},
      {1, [](F f) { f.Put32(80, f.U32(76)); }},
      {0, [](F f) { f.Put32(48, 5000); }},
      {0, [](F f) { f.Put32(f.FatEntry(f.U32(48)), f.U32(48)); }},
      {1, [](F f) { f.Put32(f.FatEntry(f.Start("Data") + 3), 0xFFFFFFFE); }},
      {1, [](F f) { f.Put32(f.Entry("tail") + 116, f.Start("Data") + 5); }},
      {0, [](F f) { f.Put32(f.Entry("small") + 116, f.Start("Notes")); }},
      {1, [](F f) { f.Put32(f.Entry("Data") + 120, 0x7FFFFFF0); }},
      {4, [](F f) { f.Put32(f.Entry("Large") + 124, 0x100); }},
      {2, [](F f) { f.Put32(f.Entry("Middle") + 68, f.U32(f.Sector(f.U32(48)) + 76)); }},
      {2, [](F f) { f.Put32(f.Entry("Middle") + 76, 0x00FFFFFF); }},
      {2, [](F f) { (*f.b)[f.Entry("Side") + 66] = 0; }},
      {2, [](F f) { f.Put16(f.Entry("Side") + 64, 9); }},
      {0, [](F f) { (*f.b)[f.Sector(f.U32(48)) + 66] = 1; }},
      {1, [](F f) { f.b->resize(f.b->size() / 2); }},
      {4, [](F f) { f.b->resize(1000); }},
      {4, [](F f) { f.b->resize(f.b->size() - 500); }}, // Large ends 480 bytes before the end
      {0, [](F f) { f.Put32(f.Sector(f.U32(48)) + 120, 330); }}, // small ends at 334
      {0,
       [](F f) { // an empty stream reached twice
         f.Put32(f.Entry("small") + 120, 0);
         f.Put32(f.Entry("Notes") + 68, (f.Entry("small") - f.Sector(f.U32(48))) / 128);
       }},
  };
  for (const auto& d : damages) {
    std::string bytes = Samples()[d.sample];
    Layout layout(&bytes);
    d.apply(layout);
    Check(qxtest::CfbModel(bytes).Open() != qx::win::S_OK);
    Compare(bytes, nullptr, 0);
  }
  // A valid file whose chain jumps forward and back: tail, tail + 2 ... tail + 7, tail + 1.
  std::string bytes = Samples()[1];
  Layout f(&bytes);
  const uint32_t tail = f.Start("tail");
  f.Put32(f.FatEntry(tail), tail + 2);
  f.Put32(f.FatEntry(tail + 7), tail + 1);
  f.Put32(f.FatEntry(tail + 1), 0xFFFFFFFE);
  Check(qxtest::CfbModel(bytes).Open() == qx::win::S_OK);
  Compare(bytes, nullptr, 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool damaged = (Damages(), true);
  (void)damaged;
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
  Compare(file, data, size);
  return 0;
}
