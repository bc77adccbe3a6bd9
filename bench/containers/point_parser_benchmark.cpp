// PointParserFactory::Parse on 10,000,000 characters of coordinate text
// ("x,y" pairs, one per line, as a data file holds them) against a loop of
// glibc's wcstod over the same text that stores the same numbers, in the same
// run and the "C" runtime locale.
#include "qxutil/containers.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cwchar>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t kCharacters = 10000000;

const std::wstring& Text() {
  static const std::wstring text = [] {
    std::wstring t;
    t.reserve(kCharacters + 64);
    std::mt19937_64 random(3);
    wchar_t line[64];
    while (t.size() < kCharacters) {
      const double x = static_cast<double>(random() % 100000000) / 1000.0;  // 12345.678
      const double y = static_cast<double>(random() % 900000000) / 10000.0; // 4567.8912
      const int n = std::swprintf(line, 64, L"%.3f,%.4f\n", x, y);
      t.append(line, static_cast<size_t>(n));
    }
    return t;
  }();
  return text;
}

void BM_PointParser(benchmark::State& state) {
  const std::wstring& text = Text();
  std::unique_ptr<DPNTContainer> points(DPNTContainer::Create(0, 1024));
  std::unique_ptr<PointParserFactory> parser(
      PointParserFactory::Create(points.get(), L",", L"\n", false));
  unsigned count = 0;
  for (auto _ : state) {
    if (!parser->Parse(text.c_str(), static_cast<unsigned>(text.size()), true))
      state.SkipWithError("the parse failed");
    benchmark::DoNotOptimize(points->GetPoints(&count));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
  state.counters["points"] = count;
}
BENCHMARK(BM_PointParser)->Unit(benchmark::kMillisecond);

void BM_WcstodLoop(benchmark::State& state) {
  const std::wstring& text = Text();
  std::vector<double> numbers;
  for (auto _ : state) {
    numbers.clear();
    const wchar_t* p = text.c_str();
    for (;;) {
      wchar_t* end = nullptr;
      const double v = std::wcstod(p, &end);
      if (end == p)
        break;
      numbers.push_back(v);
      p = end;
      while (*p == L',' || *p == L'\n')
        ++p;
    }
    benchmark::DoNotOptimize(numbers.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
  state.counters["points"] = static_cast<double>(numbers.size() / 2);
}
BENCHMARK(BM_WcstodLoop)->Unit(benchmark::kMillisecond);

} // namespace
