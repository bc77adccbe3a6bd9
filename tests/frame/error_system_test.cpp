// The error list: merging, the 30-record bound, episodes, the host's
// callbacks and reporting (templates: error_template_fuzz).
#include "common/guarded_write.h"
#include "common/recording_services.h"
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>
#include <vector>

namespace {

const GUID kModule = {0x12345678, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};
const wchar_t kLost[] = L" Too many errors.  Error information has been lost.";

void Set(int number, const wchar_t* message, const wchar_t* arg0 = nullptr,
         eErrorLevel level = eErrorLevelError) {
  SetError(level, message, kModule, number, arg0, nullptr);
}

// Each test gets a fresh, empty error list on the test thread.
class ErrorList : public ::testing::Test {
protected:
  void SetUp() override { TearDown(); }
  void TearDown() override {
    SetErrorFunctions(nullptr);
    ClearErrors();
  }

  // Next - what GetNextError wrote into `size` units.
  static std::wstring Next(bool fromStart, unsigned int size = 500, bool* result = nullptr) {
    return qxtest::Written(
        size, [&](wchar_t* buf) { return GetNextError(fromStart, buf, size); }, result);
  }
};

// HostFuncs - a host's callbacks that record the reports and the episode
// counts asked for context, and answer as the test sets.
struct HostFuncs : cErrorFuncs {
  void Report(const wchar_t* text) override { reports.push_back(text); }
  bool IsSuppressed() override { return suppressed; }
  bool KeepDuplicates() override {
    ++keepDuplicatesCalls;
    return keepDuplicates;
  }
  const wchar_t* GetContext(int episodeCount) override {
    contextCalls.push_back(episodeCount);
    return context;
  }
  std::vector<std::wstring> reports;
  std::vector<int> contextCalls;
  int keepDuplicatesCalls = 0;
  bool suppressed = false, keepDuplicates = false;
  const wchar_t* context = nullptr;
};

// HaveErrors asks whichever list is installed: a host's list put in with
// Instance(p), then the library's own list put back; a record on another
// thread answers only there.
TEST_F(ErrorList, HaveErrorsAsksTheListInstalled) {
  Set(1, L"kept");
  cErrorSystem* own = cErrorSystem::Instance();
  qxtest::DestructionLog log;
  qxtest::RecordingErrorSystem host(&log);
  ASSERT_TRUE(cErrorSystem::Instance(&host));
  EXPECT_FALSE(HaveErrors());
  own->ClearErrors(); // no list of the library holds a record now
  host.haveErrors = true;
  EXPECT_TRUE(HaveErrors());
  ASSERT_TRUE(cErrorSystem::Instance(own));
  EXPECT_FALSE(HaveErrors());
  Set(1, L"kept");
  EXPECT_TRUE(HaveErrors());

  ClearErrors();
  std::promise<void> stored, checked;
  std::thread other([&] {
    Set(2, L"elsewhere");
    stored.set_value();
    checked.get_future().wait();
  });
  stored.get_future().wait();
  EXPECT_FALSE(HaveErrors());
  checked.set_value();
  other.join();
}

TEST_F(ErrorList, SameNumberMergesUnlessTheHostKeepsDuplicates) {
  Set(42, L"first", nullptr, eErrorLevelWarning);
  Set(42, L"second");
  Set(42, L"third", nullptr, eErrorLevelInfo);
  EXPECT_EQ(NumErrors(), 1);
  wchar_t msg[32];
  GetErrorMsg(nullptr, 0, msg, 32);
  EXPECT_STREQ(msg, L"first"); // nothing but the level changes
  EXPECT_EQ(GetResourceID(0), -1);
  EXPECT_EQ(GetErrorGUID(0).Data1, kModule.Data1);

  HostFuncs host;
  host.keepDuplicates = true;
  SetErrorFunctions(&host);
  Set(42, L"a");
  Set(42, L"a");
  EXPECT_EQ(NumErrors(), 3);
  EXPECT_EQ(host.keepDuplicatesCalls, 2);
  EndError(); // a separator is never merged, so the host is not asked
  EXPECT_EQ(host.keepDuplicatesCalls, 2);
  EXPECT_EQ(NumErrors(), 4);
}

TEST_F(ErrorList, ThirtyRecordsOrATooSmallBufferThenLost) {
  for (int i = 1; i <= 30; ++i)
    Set(i, L"e");
  EXPECT_NE(Next(true), kLost);
  Set(31, L"e");
  EXPECT_EQ(Next(true), kLost);
  EXPECT_TRUE(HaveErrors());
  EXPECT_EQ(NumErrors(), 30);
  // Saturated: even a merge candidate or a new number stores nothing more.
  Set(99, L"e");
  EXPECT_FALSE(ThisErrorOccurred(99));
  EXPECT_EQ(Next(true, 10), std::wstring(kLost, 9)); // truncated to fit
  ClearErrors();
  EXPECT_FALSE(HaveErrors());
  Set(1, L"abcd");
  EXPECT_EQ(Next(true, 6), L"abcd\n"); // exact fit: 4 + LF + terminator
  EXPECT_EQ(Next(true, 5), std::wstring(kLost, 4));
  EXPECT_EQ(Next(true, 500), kLost); // lost stays until cleared
  EXPECT_EQ(Next(true, 0), qxtest::kNothingWritten);
}

TEST_F(ErrorList, EpisodesAreReadOneAtATime) {
  Set(1, L"one");
  EXPECT_FALSE(FirstError());
  Set(2, L"two\n");
  EndError();
  EXPECT_TRUE(FirstError());
  EndError(); // an empty episode adds no separator
  Set(3, L"three");
  EXPECT_EQ(NumErrors(), 4); // the separator counts
  bool result = false;
  EXPECT_EQ(Next(true, 500, &result), L"one\ntwo\n"); // one trailing LF dropped
  EXPECT_TRUE(result);
  EXPECT_EQ(Next(false, 500, &result), L"three\n");
  EXPECT_TRUE(result);
  EXPECT_EQ(Next(false, 500, &result), L"");
  EXPECT_FALSE(result);
  EXPECT_EQ(Next(true), L"one\ntwo\n");
}

TEST_F(ErrorList, TheHostsContextComesFirstAndSuppressionDropsErrors) {
  HostFuncs host;
  host.context = L"While loading: ";
  SetErrorFunctions(&host);
  Set(1, L"bad ^0", L"x");
  Set(2, L"worse");
  EXPECT_EQ(host.contextCalls, (std::vector<int>{0, 1}));
  EXPECT_EQ(Next(true), L"While loading: bad x\nWhile loading: worse\n");
  host.suppressed = true;
  EXPECT_FALSE(HaveErrors());
  Set(3, L"dropped");
  host.suppressed = false;
  EXPECT_TRUE(HaveErrors());
  EXPECT_EQ(NumErrors(), 2);
}

TEST_F(ErrorList, ReportErrorsSendsTheFirstEpisodeAndClears) {
  HostFuncs host;
  SetErrorFunctions(&host);
  Set(1, L"one");
  EndError();
  Set(2, L"two");
  ReportErrors();
  EXPECT_EQ(host.reports, (std::vector<std::wstring>{L"one\n"}));
  EXPECT_FALSE(HaveErrors());
  ReportErrors(); // nothing to report
  EXPECT_EQ(host.reports.size(), 1u);
  SetErrorFunctions(nullptr);
  Set(3, L"unheard");
  ReportErrors();
  EXPECT_FALSE(HaveErrors());
}

TEST_F(ErrorList, RecordFields) {
  Set(15, L"x", L"1234"); // number 15 carries the real number as text
  Set(16, L"y");
  EXPECT_EQ(GetErrorNum(0), 1234);
  EXPECT_EQ(GetErrorNum(1), 16);
  EXPECT_EQ(GetErrorNum(-1), 0);
  ClearErrors();
  SetError(eErrorLevelError, 501, nullptr, kModule, 1, nullptr, nullptr);
  EXPECT_TRUE(ThisErrorOccurred(0)); // free slots hold number 0
  ClearErrors();
  EXPECT_EQ(GetResourceID(0), 501); // kept by ClearErrors
  EXPECT_FALSE(ThisErrorOccurred(1));
  Set(3, nullptr); // the literal form ignores a null message
  EXPECT_FALSE(HaveErrors());
  wchar_t out[4] = L"xyz";
  GetErrorMsg(nullptr, 1000, out, 4); // out of range: empty
  EXPECT_STREQ(out, L"");
}

} // namespace
