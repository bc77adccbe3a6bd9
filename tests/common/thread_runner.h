// Runs test code on a fresh thread, which starts with no InstanceData.
#ifndef QXUTIL_TESTS_COMMON_THREAD_RUNNER_H
#define QXUTIL_TESTS_COMMON_THREAD_RUNNER_H

#include <thread>
#include <utility>

namespace qxtest {

/// RunOnNewThread - runs `fn` on a new thread and waits for the thread to end
/// (so its thread-exit handling has run when this returns).
template <class Fn> void RunOnNewThread(Fn&& fn) {
  std::thread t(std::forward<Fn>(fn));
  t.join();
}

} // namespace qxtest

#endif
