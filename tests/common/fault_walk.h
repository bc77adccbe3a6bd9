// The fault walk: runs one call again and again, failing its 1st, 2nd, ...
// allocation (on the memory manager's heap and on the C++ heap alike, see
// fault_new.cpp), once and then from that allocation on, until a run makes
// fewer allocations than the one to fail. Every faulted run must end in the
// one outcome its case names: no exception, no crash, no partial answer;
// leaks are left to LeakSanitizer in the sanitizer build.
#ifndef QXUTIL_TESTS_COMMON_FAULT_WALK_H
#define QXUTIL_TESTS_COMMON_FAULT_WALK_H

namespace qxtest {

/// FaultCase - one exported call. `run` makes the call (freeing what it
/// returns) and says how it ended.
struct FaultCase {
  enum Outcome {
    kComplete, // the full, correct result
    kFailed,   // the documented failure result
    kWrong,    // anything else
  };
  /// What a faulted run must give.
  enum Faulted {
    kFails,       // the failure result
    kCompletes,   // the full result: the call does without what failed (a fast path)
    kRetries,     // the full result when one allocation fails (the call tries
                  // again another way); the failure result when all from it on fail
    kShrinksLast, // the failure result, but the full result when the last
                  // allocation fails: a refused shrink keeps the larger block
  };
  const char* name;
  Outcome (*run)();
  Faulted faulted = kFails;
  /// Builds the call's inputs before each run, with no allocation failing.
  void (*prepare)() = nullptr;
};

/// FaultWalkCount - what one walk did.
struct FaultWalkCount {
  long allocations = 0; // made by an unfaulted run
  long faults = 0;      // faulted runs
};

/// WalkFaults - walks `c` on the calling thread (after one unfaulted run to
/// settle the thread's services and one to count) and reports each
/// departure from the rules above as a test failure.
FaultWalkCount WalkFaults(const FaultCase& c);

/// Outcome - kComplete when `ok` and `expected`, kFailed when !ok, else
/// kWrong: the usual shape of a case.
inline FaultCase::Outcome Outcome(bool ok, bool expected) {
  return !ok ? FaultCase::kFailed : expected ? FaultCase::kComplete : FaultCase::kWrong;
}

} // namespace qxtest

#endif
