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
#include <cctype>
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
  const DWORD mode = STGM_READ | STGM_SHARE_EXCLUSIVE;
  while (list->Next(1, &st, nullptr) == S_OK) {
    // A name opens as a stream or as a storage, never as both.
    IStream* stream = nullptr;
    IStorage* inner = nullptr;
    const HRESULT result = storage->OpenStream(st.pwcsName, nullptr, mode, 0, &stream);
    Check(storage->OpenStorage(st.pwcsName, nullptr, mode, nullptr, 0, &inner) != S_OK || !stream);
    if (inner)
      inner->Release();
    if (st.type == STGTY_STREAM) {
      // The name with its ASCII letters' case turned opens the same stream, or fails alike.
      std::wstring turned(st.pwcsName);
      for (wchar_t& c : turned)
        c ^= (c | 0x20) >= 'a' && (c | 0x20) <= 'z' ? 0x20 : 0;
      IStream* same = nullptr;
      Check(storage->OpenStream(turned.c_str(), nullptr, mode, 0, &same) == result);
      STATSTG a, b;
      Check(!same ||
            (same->Stat(&a, STATFLAG_NONAME) == S_OK && stream->Stat(&b, STATFLAG_NONAME) == S_OK &&
             a.cbSize.QuadPart == b.cbSize.QuadPart));
      if (same)
        same->Release();
    }
    if (stream) {
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
struct Layout {
  explicit Layout(std::string* bytes) : b(bytes) {}
  std::string* b;
  uint32_t U32(size_t at) const {
    const auto* p = reinterpret_cast<const unsigned char*>(b->data() + at);
    return p[0] | p[1] << 8 | p[2] << 16 | static_cast<uint32_t>(p[3]) << 24;
  }
  void Put32(size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i)
      (*b)[at + i] = static_cast<char>(v >> (8 * i));
  }
  size_t Sector(uint32_t n) const { return (size_t{n} + 1) << (*b)[30]; }
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
      {0, [](F f) { f.Put32(44, 2), f.Put32(80, f.U32(48)); }}, // the directory's sector
      {0, [](F f) { f.Put32(48, 5000); }},
      {0, [](F f) { f.Put32(f.FatEntry(f.U32(48)), f.U32(48)); }},
      {1, [](F f) { f.Put32(f.FatEntry(f.Start("Data") + 3), 0xFFFFFFFE); }},
      {1, [](F f) { f.Put32(f.Entry("tail") + 116, f.Start("Data") + 5); }},
      {0, [](F f) { f.Put32(f.Entry("small") + 116, f.Start("Notes")); }},
      {1, [](F f) { f.Put32(f.Entry("Data") + 120, 0x7FFFFFF0); }},
      {4, [](F f) { f.Put32(f.Entry("Large") + 124, 0x100); }},
      {4,
       [](F f) { // 2^64 - 1 bytes: no sectors once rounded up
         f.Put32(f.Entry("Large") + 120, 0xFFFFFFFF), f.Put32(f.Entry("Large") + 124, 0xFFFFFFFF);
       }},
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

// GsfFile - a file gsf makes with a DIFAT (more than 109 FAT sectors), 300
// names in one storage, storages three deep and streams on both sides of
// 4,096 bytes; then its DIFAT made to loop. Nothing when gsf is missing.
void GsfFile() {
  auto bytes = [](size_t n, unsigned seed) {
    std::string s(n, '\0');
    for (size_t i = 0; i < n; ++i)
      s[i] = static_cast<char>((i * 2654435761u + seed * 40503u) >> 13);
    return s;
  };
  std::vector<std::pair<std::string, std::string>> tree = {
      {"Huge", bytes(8 << 20, 1)}, {"a/b/c/Deep", bytes(4095, 2)}, {"a/b/Edge", bytes(4096, 3)}};
  for (unsigned i = 0; i < 300; ++i) {
    std::string name = "Name" + std::to_string(i * 7919 % 1000);
    for (size_t k = 0; k < name.size(); k += 2)
      name[k] = static_cast<char>(std::toupper(name[k]));
    tree.push_back({"many/" + name, bytes(i * 37 % 5000, i)});
  }
  qxtest::TempDir dir;
  if (!qxtest::MakeWithGsf(dir.Path("made.cfb"), tree))
    return;
  std::string file = qxtest::ReadBytes(dir.Path("made.cfb"));
  Check(qxtest::CfbModel(file).Open() == qx::win::S_OK);
  Compare(file, nullptr, 0);
  Layout f(&file);
  Check(f.U32(72) > 0); // a DIFAT sector
  f.Put32(f.Sector(f.U32(68)) + 508, f.U32(68));
  f.Put32(44, f.U32(44) + 200);
  Check(qxtest::CfbModel(file).Open() != qx::win::S_OK);
  Compare(file, nullptr, 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool damaged = (Damages(), GsfFile(), true);
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
