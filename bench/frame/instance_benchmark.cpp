// The cost of reaching a service: cErrorSystem::Instance() and HaveErrors()
// against the floor, a raw thread_local pointer read, in the same run.
#include "qxutil/frame.h"

#include <benchmark/benchmark.h>

namespace {

thread_local void* tRawPointer = &tRawPointer;

void BM_RawThreadLocalRead(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(tRawPointer);
}
BENCHMARK(BM_RawThreadLocalRead);

void BM_ErrorSystemInstance(benchmark::State& state) {
  cErrorSystem::Instance(); // build the thread's set outside the loop
  for (auto _ : state)
    benchmark::DoNotOptimize(cErrorSystem::Instance());
}
BENCHMARK(BM_ErrorSystemInstance);

void BM_HaveErrors(benchmark::State& state) {
  ClearErrors();
  for (auto _ : state)
    benchmark::DoNotOptimize(HaveErrors());
}
BENCHMARK(BM_HaveErrors);

void BM_SetErrorClearErrorsCycle(benchmark::State& state) {
  const GUID module{};
  for (auto _ : state) {
    SetError(eErrorLevelError, L"Cannot open ^0: ^1", module, 12, L"roads.dat", L"denied");
    ClearErrors();
  }
}
BENCHMARK(BM_SetErrorClearErrorsCycle);

} // namespace
