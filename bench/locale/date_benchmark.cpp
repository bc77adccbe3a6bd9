// Day numbers: MDY2Days and Days2MDY against std::chrono's civil-date
// conversions (sys_days <-> year_month_day), over the same spread of days.
#include "qxutil/locale.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

namespace {

// Every 97th day of the calendar: all months, leap days and centuries.
const std::vector<long>& DayNumbers() {
  static const std::vector<long> days = [] {
    std::vector<long> v;
    for (long n = 0; n <= 3652058; n += 97)
      v.push_back(n);
    return v;
  }();
  return days;
}

const std::vector<qxDATE>& Dates() {
  static const std::vector<qxDATE> dates = [] {
    std::vector<qxDATE> v;
    for (long n : DayNumbers()) {
      qxDATE d;
      Days2MDY(n, &d);
      v.push_back(d);
    }
    return v;
  }();
  return dates;
}

void BM_MDY2Days(benchmark::State& state) {
  const auto& dates = Dates();
  for (auto _ : state) {
    long sum = 0;
    for (const qxDATE& d : dates)
      sum += MDY2Days(&d);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(dates.size()));
}
BENCHMARK(BM_MDY2Days);

void BM_Chrono_ToDays(benchmark::State& state) {
  using namespace std::chrono;
  std::vector<year_month_day> dates;
  for (const qxDATE& d : Dates())
    dates.push_back(year{d.year} / month(static_cast<unsigned>(d.month)) /
                    day(static_cast<unsigned>(d.day)));
  for (auto _ : state) {
    long sum = 0;
    for (const year_month_day& d : dates)
      sum += sys_days{d}.time_since_epoch().count();
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(dates.size()));
}
BENCHMARK(BM_Chrono_ToDays);

void BM_Days2MDY(benchmark::State& state) {
  const auto& days = DayNumbers();
  for (auto _ : state) {
    long sum = 0;
    for (long n : days) {
      qxDATE d;
      Days2MDY(n, &d);
      sum += d.year + d.month + d.day;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(days.size()));
}
BENCHMARK(BM_Days2MDY);

void BM_Chrono_FromDays(benchmark::State& state) {
  using namespace std::chrono;
  const long epoch = sys_days{year{1} / January / 1}.time_since_epoch().count();
  const auto& days = DayNumbers();
  for (auto _ : state) {
    long sum = 0;
    for (long n : days) {
      year_month_day d{sys_days{std::chrono::days{n + epoch}}};
      sum += int(d.year()) + unsigned(d.month()) + unsigned(d.day());
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(days.size()));
}
BENCHMARK(BM_Chrono_FromDays);

} // namespace
