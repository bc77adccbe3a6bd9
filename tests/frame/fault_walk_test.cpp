// Out-of-memory paths: fail the Nth allocation while building a thread's set
// and while recording errors, for N = 1, 2, ... until the operation no longer
// reaches the failure. Every failure must give the documented null/false
// result, never a crash, a leak (run under LeakSanitizer) or a half-installed
// service.
#include "common/thread_runner.h"
#include "platform/heap.h"
#include "qxutil/frame.h"
#include "qxutil/locale.h"
#include "qxutil/text.h"

#include <gtest/gtest.h>

#include <string>

using qx::platform::AllocationCalls;
using qx::platform::FailAllocations;

namespace {

// ServiceWorks - a present service must be fully usable.
void ExpectUsableOrAbsent() {
  if (cErrorSystem* es = cErrorSystem::Instance()) {
    es->SetError(eErrorLevelError, L"m ^0", GUID{}, 1, L"a", nullptr);
    EXPECT_TRUE(es->HaveErrors());
    es->ClearErrors();
  }
  if (cLocaleInfo* li = cLocaleInfo::Instance()) {
    EXPECT_TRUE(li->Refresh());
    wchar_t decimal = 0;
    li->GetNumberInfo(false, &decimal, nullptr, nullptr);
    EXPECT_EQ(decimal, L'.');
  }
  if (cCheckEsc* esc = cCheckEsc::Instance()) {
    EXPECT_FALSE(esc->Check());
  }
}

TEST(FaultWalk, BuildingAThreadsSet) {
  for (bool persistent : {false, true}) {
    bool reachedTheEnd = false;
    for (long n = 1; !reachedTheEnd && n < 1000; ++n) {
      qxtest::RunOnNewThread([&] {
        FailAllocations(n, persistent);
        InstanceData* data = GetInstanceData();
        long calls = AllocationCalls();
        FailAllocations(0, false);
        reachedTheEnd = calls < n;
        if (reachedTheEnd) {
          ASSERT_NE(data, nullptr);
          EXPECT_NE(cErrorSystem::Instance(), nullptr);
          EXPECT_NE(cLocaleInfo::Instance(), nullptr);
          EXPECT_NE(cCharsetInfo::Instance(), nullptr);
          EXPECT_NE(cCharsetConverter::Instance(), nullptr);
          EXPECT_NE(cCheckEsc::Instance(), nullptr);
        }
        if (!data) // the InstanceData itself could not be made
          return;
        // Services after the failing one are absent; those present work.
        if (!cErrorSystem::Instance()) {
          EXPECT_EQ(cCheckEsc::Instance(), nullptr) << "n = " << n;
        }
        ExpectUsableOrAbsent();
        // Exported functions stay safe whatever is missing.
        SetError(eErrorLevelError, L"x", GUID{}, 2, nullptr, nullptr);
        wchar_t buf[16];
        GetNextError(true, buf, 16);
        EXPECT_FALSE(CheckEsc());
      });
    }
    EXPECT_TRUE(reachedTheEnd) << (persistent ? "persistent" : "once");
  }
}

TEST(FaultWalk, RecordingErrors) {
  class Context : public cErrorFuncs {
  public:
    void Report(const wchar_t*) override {}
    bool IsSuppressed() override { return false; }
    bool KeepDuplicates() override { return false; }
    const wchar_t* GetContext(int) override { return L"In a long context text, "; }
  } context;
  const std::wstring full = L"In a long context text, cannot read first-argument.dat: "
                            L"second argument is rather long as well\n";
  const std::wstring lost = L" Too many errors.  Error information has been lost.";
  bool reachedTheEnd = false;
  for (long n = 1; !reachedTheEnd && n < 1000; ++n) {
    qxtest::RunOnNewThread([&] {
      ASSERT_NE(cErrorSystem::Instance(), nullptr);
      SetErrorFunctions(&context);
      FailAllocations(n, false);
      SetError(eErrorLevelError, L"cannot read ^0: ^1", GUID{}, 3, L"first-argument.dat",
               L"second argument is rather long as well");
      wchar_t buf[256];
      GetNextError(true, buf, 256);
      long calls = AllocationCalls();
      FailAllocations(0, false);
      reachedTheEnd = calls < n;
      // Either the whole message or the documented "lost" text, nothing else.
      std::wstring got = buf;
      if (got != full) {
        EXPECT_EQ(got, lost) << "n = " << n;
      }
      if (reachedTheEnd) {
        EXPECT_EQ(got, full);
      }
      EXPECT_TRUE(HaveErrors());
      SetErrorFunctions(nullptr);
    });
  }
  EXPECT_TRUE(reachedTheEnd);
}

} // namespace
