// The registry and its block cache against the plain system calls, in the
// same run: sequential and random reads, open/read/close cycles over many
// files under the open-file bound, and name lookups among many
// registrations.
#include "common/files_scope.h"
#include "common/temp_dir.h"
#include "qxutil/files.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <unistd.h>
#include <vector>

namespace {

constexpr size_t kBigFile = 64u << 20;
constexpr int kManyFiles = 10000;

// The scratch files, made once for the whole run.
struct Fixture {
  qxtest::TempDir dir;
  std::string big;
  std::vector<std::string> many;
  Fixture() {
    big = dir.Path("big.dat");
    std::string block(1 << 20, 'x');
    FILE* f = std::fopen(big.c_str(), "wb");
    for (size_t i = 0; i < kBigFile / block.size(); ++i)
      std::fwrite(block.data(), 1, block.size(), f);
    std::fclose(f);
    std::filesystem::create_directories(dir.Path("many"));
    std::string small(512, 'y');
    for (int i = 0; i < kManyFiles; ++i) {
      many.push_back(dir.Path("many/f" + std::to_string(i) + ".dat"));
      FILE* g = std::fopen(many.back().c_str(), "wb");
      std::fwrite(small.data(), 1, small.size(), g);
      std::fclose(g);
    }
  }
  static Fixture& Get() {
    static Fixture* f = new Fixture;
    return *f;
  }
};

std::wstring Wide(const std::string& s) { return std::wstring(s.begin(), s.end()); }

void BM_SequentialRead2_4K(benchmark::State& state) {
  Fixture& fx = Fixture::Get();
  qxtest::ScopedRegistry registry; // the default cache
  int h = register_file(Wide(fx.big).c_str(), FILETYPE_ANY, true);
  fileopen(h, OPEN_READ, nullptr);
  char buf[4096];
  for (auto _ : state) {
    if (read2(h, buf, sizeof buf) != static_cast<int>(sizeof buf))
      lseek2(h, 0, 0);
    benchmark::DoNotOptimize(buf);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 4096);
  close2(h);
}
BENCHMARK(BM_SequentialRead2_4K);

void BM_SequentialPread512x8(benchmark::State& state) {
  int fd = ::open(Fixture::Get().big.c_str(), O_RDONLY);
  char buf[4096];
  off_t at = 0;
  for (auto _ : state) {
    for (int i = 0; i < 8; ++i, at += 512)
      if (::pread(fd, buf + i * 512, 512, at) != 512)
        at = 0;
    benchmark::DoNotOptimize(buf);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 4096);
  ::close(fd);
}
BENCHMARK(BM_SequentialPread512x8);

void BM_SequentialFread4K(benchmark::State& state) {
  FILE* f = std::fopen(Fixture::Get().big.c_str(), "rb");
  char buf[4096];
  for (auto _ : state) {
    if (std::fread(buf, 1, sizeof buf, f) != sizeof buf)
      std::rewind(f);
    benchmark::DoNotOptimize(buf);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 4096);
  std::fclose(f);
}
BENCHMARK(BM_SequentialFread4K);

// A working set of 300 blocks: it fits the 400 usable blocks of the cache.
constexpr int kWorkingBlocks = 300;

void BM_RandomRead2_512(benchmark::State& state) {
  qxtest::ScopedRegistry registry;
  int h = register_file(Wide(Fixture::Get().big).c_str(), FILETYPE_ANY, true);
  fileopen(h, OPEN_READ, nullptr);
  std::mt19937 random(1);
  char buf[512];
  for (auto _ : state) {
    lseek2(h, static_cast<long>(random() % kWorkingBlocks) * 512, 0);
    benchmark::DoNotOptimize(read2(h, buf, 512));
  }
  close2(h);
}
BENCHMARK(BM_RandomRead2_512);

void BM_RandomPread512(benchmark::State& state) {
  int fd = ::open(Fixture::Get().big.c_str(), O_RDONLY);
  std::mt19937 random(1);
  char buf[512];
  for (auto _ : state)
    benchmark::DoNotOptimize(
        ::pread(fd, buf, 512, static_cast<off_t>(random() % kWorkingBlocks) * 512));
  ::close(fd);
}
BENCHMARK(BM_RandomPread512);

void BM_ManyFilesOpenReadClose(benchmark::State& state) {
  Fixture& fx = Fixture::Get();
  qxtest::RegistrySettings settings;
  settings.closeAtOnce = false; // idle read-only files are kept, 507 at most
  qxtest::ScopedRegistry registry(settings);
  std::vector<int> handles;
  for (const std::string& p : fx.many)
    handles.push_back(register_file(Wide(p).c_str(), FILETYPE_ANY, true));
  std::mt19937 random(2);
  char buf[512];
  long failures = 0;
  for (auto _ : state) {
    int h = handles[random() % handles.size()];
    if (fileopen(h, OPEN_READ, nullptr) != h) {
      ++failures;
      continue;
    }
    benchmark::DoNotOptimize(read2(h, buf, 512));
    close2(h);
  }
  state.counters["failed_opens"] = static_cast<double>(failures);
}
BENCHMARK(BM_ManyFilesOpenReadClose);

void BM_ManyFilesSystemCalls(benchmark::State& state) {
  Fixture& fx = Fixture::Get();
  std::mt19937 random(2);
  char buf[512];
  for (auto _ : state) {
    int fd = ::open(fx.many[random() % fx.many.size()].c_str(), O_RDONLY);
    benchmark::DoNotOptimize(::pread(fd, buf, 512, 0));
    ::close(fd);
  }
}
BENCHMARK(BM_ManyFilesSystemCalls);

constexpr int kRegistrations = 100000;

// Names[i] - the i-th registered name, made once.
const std::vector<std::wstring>& Names() {
  static std::vector<std::wstring>* names = [] {
    auto* v = new std::vector<std::wstring>;
    for (int i = 0; i < kRegistrations; ++i)
      v->push_back(L"C:\\data\\layers\\region" + std::to_wstring(i % 97) + L"\\layer" +
                   std::to_wstring(i) + L".dbf");
    return v;
  }();
  return *names;
}

void BM_IsFileRegistered100k(benchmark::State& state) {
  qxtest::ScopedRegistry registry;
  for (const std::wstring& n : Names())
    register_file(n.c_str(), FILETYPE_ANY, true);
  std::mt19937 random(3);
  long wrong = 0;
  for (auto _ : state) {
    size_t i = random() % Names().size();
    if (is_file_registered(Names()[i].c_str(), FILETYPE_TABLE) != static_cast<int>(1000 + i))
      ++wrong;
  }
  state.counters["wrong"] = static_cast<double>(wrong);
}
BENCHMARK(BM_IsFileRegistered100k);

void BM_RegisterFile100k(benchmark::State& state) {
  for (auto _ : state) {
    qxtest::ScopedRegistry registry;
    for (const std::wstring& n : Names())
      benchmark::DoNotOptimize(register_file(n.c_str(), FILETYPE_ANY, true));
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kRegistrations);
}
BENCHMARK(BM_RegisterFile100k)->Unit(benchmark::kMillisecond);

} // namespace
