// fgets2 over a 64 MB WindowsLatin1 text with CR LF lines against glibc's
// fgetws over the same text in UTF-8 (C.UTF-8 locale), a line at a time.
#include "common/files_scope.h"
#include "common/stream_file.h"
#include "common/temp_dir.h"
#include "qxutil/files.h"

#include <benchmark/benchmark.h>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <random>

namespace {

constexpr size_t kTextBytes = 64u << 20;
constexpr int kLineUnits = 1024;

// The two files, made once: lines of 20 to 120 characters, ASCII letters,
// digits and punctuation with one in sixteen a Latin-1 letter (one byte in
// 1252, two in UTF-8).
struct TextFiles {
  qxtest::TempDir dir;
  std::string latin1, utf8;
  TextFiles() {
    latin1 = dir.Path("latin1.txt");
    utf8 = dir.Path("utf8.txt");
    FILE* a = std::fopen(latin1.c_str(), "wb");
    FILE* u = std::fopen(utf8.c_str(), "wb");
    std::mt19937 random(11);
    const char ascii[] = "abcdefghijklmnopqrstuvwxyz ABCDEFGHIJKLMNOPQRSTUVWXYZ 0123456789,.;";
    const unsigned char latin[] = {0xE9, 0xE8, 0xFC, 0xF1, 0xC7, 0xD6, 0xE0, 0xDF};
    std::string la, ut;
    size_t written = 0;
    while (written < kTextBytes) {
      la.clear();
      ut.clear();
      size_t length = 20 + random() % 101;
      for (size_t i = 0; i < length; ++i) {
        if (random() % 16 == 0) {
          unsigned char c = latin[random() % sizeof latin];
          la.push_back(static_cast<char>(c));
          ut.push_back(static_cast<char>(0xC0 | (c >> 6)));
          ut.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else {
          char c = ascii[random() % (sizeof ascii - 1)];
          la.push_back(c);
          ut.push_back(c);
        }
      }
      la += "\r\n";
      ut += "\r\n";
      std::fwrite(la.data(), 1, la.size(), a);
      std::fwrite(ut.data(), 1, ut.size(), u);
      written += la.size();
    }
    std::fclose(a);
    std::fclose(u);
  }
  static TextFiles& Get() {
    static TextFiles* t = new TextFiles;
    return *t;
  }
};

void BM_Fgets2_1252(benchmark::State& state) {
  TextFiles& t = TextFiles::Get();
  qxtest::ScopedRegistry registry;
  wchar_t line[kLineUnits];
  for (auto _ : state) {
    FILE* f = qxtest::OpenStream(t.latin1, OPEN_READ, QXCHARSET_WINDOWS_LATIN1);
    size_t units = 0;
    while (fgets2(line, kLineUnits, f))
      units += std::wcslen(line);
    benchmark::DoNotOptimize(units);
    qxtest::CloseStream(f);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kTextBytes);
}
BENCHMARK(BM_Fgets2_1252)->Unit(benchmark::kMillisecond);

void BM_Fgetws_Utf8(benchmark::State& state) {
  TextFiles& t = TextFiles::Get();
  std::string saved = std::setlocale(LC_ALL, nullptr);
  std::setlocale(LC_ALL, "C.UTF-8");
  wchar_t line[kLineUnits];
  for (auto _ : state) {
    FILE* f = std::fopen(t.utf8.c_str(), "rb");
    size_t units = 0;
    while (std::fgetws(line, kLineUnits, f))
      units += std::wcslen(line);
    benchmark::DoNotOptimize(units);
    std::fclose(f);
  }
  std::setlocale(LC_ALL, saved.c_str());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kTextBytes);
}
BENCHMARK(BM_Fgetws_Utf8)->Unit(benchmark::kMillisecond);

} // namespace
