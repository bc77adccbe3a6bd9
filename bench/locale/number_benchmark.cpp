// Number text: StringToDouble against glibc's wcstod and std::from_chars,
// and DoubleToString ("%.*g", "%.*f", "%.*e") against swprintf, in the same
// run, over the same mixed inputs (short and long decimals, exponents).
#include "qxutil/locale.h"

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <random>
#include <string>
#include <vector>

namespace {

// A fixed mix of the texts a data file holds: coordinates, measures,
// shortest round-trip forms and the odd long mantissa.
const std::vector<std::wstring>& WideInputs() {
  static const std::vector<std::wstring> inputs = [] {
    std::mt19937_64 random(42);
    std::vector<std::wstring> v;
    char buf[64];
    for (int i = 0; i < 4096; ++i) {
      double d;
      switch (i % 4) {
      case 0:
        d = static_cast<double>(random() % 100000000) / 1000.0;
        break; // 12345.678
      case 1:
        d = static_cast<double>(random() % 2000000) / 10000.0 - 100;
        break;
      case 2:
        d = std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 80) - 70);
        break;
      default:
        d = (static_cast<double>(random() % 1000000) + 0.5) * 1e-7;
        break;
      }
      int n = i % 8 == 7 ? std::snprintf(buf, sizeof buf, "%.17g", d)
                         : static_cast<int>(std::to_chars(buf, buf + sizeof buf, d).ptr - buf);
      v.emplace_back(buf, buf + n);
    }
    return v;
  }();
  return inputs;
}

const std::vector<std::string>& NarrowInputs() {
  static const std::vector<std::string> inputs = [] {
    std::vector<std::string> v;
    for (const std::wstring& w : WideInputs())
      v.emplace_back(w.begin(), w.end());
    return v;
  }();
  return inputs;
}

const std::vector<double>& Values() {
  static const std::vector<double> values = [] {
    std::vector<double> v;
    for (const std::wstring& w : WideInputs())
      v.push_back(std::wcstod(w.c_str(), nullptr));
    return v;
  }();
  return values;
}

void BM_StringToDouble(benchmark::State& state) {
  const auto& in = WideInputs();
  size_t i = 0;
  double d;
  for (auto _ : state) {
    StringToDouble(in[i++ & 4095].c_str(), &d, nullptr);
    benchmark::DoNotOptimize(d);
  }
}
BENCHMARK(BM_StringToDouble);

void BM_Wcstod(benchmark::State& state) {
  const auto& in = WideInputs();
  size_t i = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(std::wcstod(in[i++ & 4095].c_str(), nullptr));
}
BENCHMARK(BM_Wcstod);

void BM_FromChars(benchmark::State& state) {
  const auto& in = NarrowInputs();
  size_t i = 0;
  double d;
  for (auto _ : state) {
    const std::string& s = in[i++ & 4095];
    std::from_chars(s.data(), s.data() + s.size(), d);
    benchmark::DoNotOptimize(d);
  }
}
BENCHMARK(BM_FromChars);

// DoubleToString against swprintf: argument 0 is the format (1 e, 2 f, 3 g).
// Both write into a 64-unit buffer, the size callers give a number;
// DoubleToString zero-fills what its text leaves of it (strcpyn's contract).
constexpr int kBufferUnits = 64;
void BM_DoubleToString(benchmark::State& state) {
  const auto& values = Values();
  const auto format = static_cast<PRINTF_FORMAT>(state.range(0));
  wchar_t buffer[kBufferUnits];
  size_t i = 0;
  for (auto _ : state) {
    DoubleToString(values[i++ & 4095], buffer, kBufferUnits, false, 10, format, -1);
    benchmark::DoNotOptimize(buffer);
  }
}
BENCHMARK(BM_DoubleToString)->Arg(PRINTF_G)->Arg(PRINTF_F)->Arg(PRINTF_E);

void BM_Swprintf(benchmark::State& state) {
  const auto& values = Values();
  const wchar_t* picture = state.range(0) == PRINTF_E   ? L"%.*e"
                           : state.range(0) == PRINTF_F ? L"%.*f"
                                                        : L"%.*g";
  wchar_t buffer[kBufferUnits];
  size_t i = 0;
  for (auto _ : state) {
    std::swprintf(buffer, kBufferUnits, picture, 10, values[i++ & 4095]);
    benchmark::DoNotOptimize(buffer);
  }
}
BENCHMARK(BM_Swprintf)->Arg(PRINTF_G)->Arg(PRINTF_F)->Arg(PRINTF_E);

} // namespace
