#include "common/fault_walk.h"

#include "platform/heap.h"

#include <gtest/gtest.h>

using qx::platform::AllocationCalls;
using qx::platform::FailAllocations;

namespace qxtest {

namespace {

// Run - one run of `c` with the nth allocation failing (0: none); the
// outcome, and the allocations the run asked for.
FaultCase::Outcome Run(const FaultCase& c, long nth, bool persistent, long* calls) {
  FaultCase::Outcome outcome = FaultCase::kWrong;
  bool threw = false;
  if (c.prepare)
    c.prepare();
  FailAllocations(nth, persistent);
  try {
    outcome = c.run();
  } catch (...) {
    threw = true;
  }
  *calls = AllocationCalls();
  FailAllocations(0, false);
  EXPECT_FALSE(threw) << c.name << ": an exception left the call (allocation " << nth << ")";
  return outcome;
}

} // namespace

FaultWalkCount WalkFaults(const FaultCase& c) {
  FaultWalkCount count;
  long calls = 0;
  Run(c, 0, false, &calls); // the thread's services now exist
  EXPECT_EQ(Run(c, 0, false, &count.allocations), FaultCase::kComplete)
      << c.name << ": the unfaulted call";
  for (bool persistent : {false, true}) {
    for (long n = 1; n <= count.allocations; ++n) {
      FaultCase::Outcome outcome = Run(c, n, persistent, &calls);
      ++count.faults;
      EXPECT_GE(calls, n) << c.name << ": the allocations changed between runs";
      const bool complete = c.faulted == FaultCase::kCompletes ||
                            (c.faulted == FaultCase::kRetries && !persistent) ||
                            (c.faulted == FaultCase::kShrinksLast && n == count.allocations);
      EXPECT_EQ(outcome, complete ? FaultCase::kComplete : FaultCase::kFailed)
          << c.name << ": allocation " << n << (persistent ? " on" : " only") << " failing";
    }
  }
  return count;
}

} // namespace qxtest
