// stream_read of a 64 MB stream inside a compound file (made by gsf, in one
// piece as a writer lays it out) against a plain read of a 64 MB file and
// against Python's olefile reading the same stream, in the same run. Each
// iteration opens, reads everything in 64 KB requests and closes, so the
// compound file's checks at open are part of the figure.
#include "common/cfb_files.h"
#include "common/files_scope.h"
#include "common/temp_dir.h"
#include "models/cfb_model.h"
#include "qxutil/files.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr size_t kStreamBytes = 64u << 20;
constexpr unsigned kRequest = 64u << 10;

struct Fixture {
  qxtest::TempDir dir;
  std::string compound, plain;
  bool made = false;
  Fixture() {
    std::string bytes(kStreamBytes, '\0');
    uint64_t x = 88172645463325252ull;
    for (size_t i = 0; i < bytes.size(); i += 8) {
      x ^= x << 13, x ^= x >> 7, x ^= x << 17;
      std::memcpy(&bytes[i], &x, 8);
    }
    plain = dir.Path("plain.dat");
    dir.Write("plain.dat", bytes);
    compound = dir.Path("big.cfb");
    made = qxtest::MakeWithGsf(compound, {{"Data", bytes}, {"Small", "tiny"}});
    // Written again in one piece, as the plain file is, so that both lie in
    // the page cache alike (gsf's many small writes leave small pages).
    if (made)
      dir.Write("big.cfb", qxtest::ReadBytes(compound));
  }
  static Fixture& Get() {
    static Fixture* f = new Fixture;
    return *f;
  }
};

void BM_StreamRead64MB(benchmark::State& state) {
  Fixture& fx = Fixture::Get();
  if (!fx.made) {
    state.SkipWithError("gsf (libgsf-bin) is not installed");
    return;
  }
  qxtest::ScopedRegistry registry;
  int h = register_file(qxtest::Widen(fx.compound).c_str(), FILETYPE_ANY, true);
  std::vector<char> buffer(kRequest);
  for (auto _ : state) {
    if (stream_fileopen(h, OPEN_READ, nullptr, L"Data") != h) {
      state.SkipWithError("stream_fileopen failed");
      return;
    }
    size_t total = 0;
    for (int got; (got = stream_read(h, buffer.data(), kRequest)) > 0;)
      total += static_cast<size_t>(got);
    stream_close(h);
    if (total != kStreamBytes)
      state.SkipWithError("short stream");
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kStreamBytes);
}
BENCHMARK(BM_StreamRead64MB)->Unit(benchmark::kMillisecond);

void BM_PlainRead64MB(benchmark::State& state) {
  Fixture& fx = Fixture::Get();
  std::vector<char> buffer(kRequest);
  for (auto _ : state) {
    int fd = ::open(fx.plain.c_str(), O_RDONLY);
    size_t total = 0;
    for (ssize_t got; (got = ::read(fd, buffer.data(), kRequest)) > 0;)
      total += static_cast<size_t>(got);
    ::close(fd);
    if (total != kStreamBytes)
      state.SkipWithError("short file");
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kStreamBytes);
}
BENCHMARK(BM_PlainRead64MB)->Unit(benchmark::kMillisecond);

// olefile's open and read of the stream, timed inside Python (its start-up
// is left out).
void BM_OlefileRead64MB(benchmark::State& state) {
  Fixture& fx = Fixture::Get();
  if (!fx.made) {
    state.SkipWithError("gsf (libgsf-bin) is not installed");
    return;
  }
  std::string script = fx.dir.Path("read.py");
  fx.dir.Write("read.py", "import sys, time, olefile\n"
                          "t = time.perf_counter()\n"
                          "ole = olefile.OleFileIO(sys.argv[1])\n"
                          "n = len(ole.openstream('Data').read())\n"
                          "ole.close()\n"
                          "print(time.perf_counter() - t if n == 64 << 20 else -1)\n");
  std::string command = "/usr/bin/python3 " + script + " " + fx.compound + " 2>/dev/null";
  for (auto _ : state) {
    FILE* p = ::popen(command.c_str(), "r");
    double seconds = -1;
    if (!p || std::fscanf(p, "%lf", &seconds) != 1)
      seconds = -1;
    if (p)
      ::pclose(p);
    if (seconds < 0) {
      state.SkipWithError("python3-olefile is not installed or failed");
      return;
    }
    state.SetIterationTime(seconds);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kStreamBytes);
}
BENCHMARK(BM_OlefileRead64MB)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

} // namespace
