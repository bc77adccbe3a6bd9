// Thread-local storage and critical sections with Windows' contracts.
#include "frame/memory.h"
#include "platform/threads.h"
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace qx::win;

namespace {

TEST(ThreadLocalStorage, SlotsArePerThreadAndStartEmpty) {
  DWORD index = TlsAlloc();
  ASSERT_NE(index, TLS_OUT_OF_INDEXES);
  int mine = 1, theirs = 2;
  ASSERT_TRUE(TlsSetValue(index, &mine));
  void* seen = &mine;
  std::thread([&] {
    seen = TlsGetValue(index);
    TlsSetValue(index, &theirs);
  }).join();
  EXPECT_EQ(seen, nullptr);
  EXPECT_EQ(TlsGetValue(index), &mine);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
  ASSERT_TRUE(TlsFree(index));
  // A slot allocated again reads as empty in every thread.
  DWORD again = TlsAlloc();
  ASSERT_EQ(again, index); // the lowest free index
  EXPECT_EQ(TlsGetValue(again), nullptr);
  TlsFree(again);
}

TEST(ThreadLocalStorage, BadIndexesFail) {
  const DWORD bad[] = {TLS_OUT_OF_INDEXES, 64, 1u << 20};
  for (DWORD index : bad) {
    SetLastError(0);
    EXPECT_EQ(TlsGetValue(index), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_FALSE(TlsSetValue(index, &index));
    EXPECT_FALSE(TlsFree(index));
  }
  DWORD index = TlsAlloc();
  ASSERT_TRUE(TlsFree(index));
  EXPECT_FALSE(TlsFree(index)); // already free
}

TEST(ThreadLocalStorage, RunsOutAtSixtyFourSlots) {
  std::vector<DWORD> taken;
  for (DWORD index; (index = TlsAlloc()) != TLS_OUT_OF_INDEXES;)
    taken.push_back(index);
  EXPECT_LE(taken.size(), 64u);
  EXPECT_GE(taken.size(), 60u); // the library and this test hold a few
  for (DWORD index : taken)
    TlsFree(index);
}

TEST(CriticalSection, IsRecursiveAndExcludesOtherThreads) {
  QXGuard guard;
  std::atomic<int> inside{0};
  int counter = 0;
  auto work = [&] {
    for (int i = 0; i < 20000; ++i) {
      QXGuardLock outer(&guard);
      QXGuardLock inner(&guard); // the owner may lock again
      if (inside.fetch_add(1) != 0)
        ADD_FAILURE() << "two threads inside";
      ++counter;
      inside.fetch_sub(1);
    }
  };
  std::thread a(work), b(work);
  a.join();
  b.join();
  EXPECT_EQ(counter, 40000);
}

TEST(LibraryUnload, ShutsTheMemoryManagerDownAndAMemoryCallRestartsIt) {
  void* block = nullptr;
  ASSERT_TRUE(falloc_(8, &block, false, true));
  EXPECT_TRUE(qx::MemoryManagerRunning());
  qx::ShutDownMemoryManager();
  EXPECT_FALSE(qx::MemoryManagerRunning());
  ffree(&block); // blocks outlive the manager
  EXPECT_TRUE(qx::MemoryManagerRunning());
}

} // namespace
