// The error list: merging, the 30-record bound, episodes, expansion, reporting.
#include "common/thread_runner.h"
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const GUID kModule = {0x12345678, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};
const wchar_t kLost[] = L" Too many errors.  Error information has been lost.";

// Each test gets a fresh, empty error list on the test thread.
class ErrorList : public ::testing::Test {
protected:
  void SetUp() override {
    SetErrorFunctions(nullptr);
    ClearErrors();
  }
  void TearDown() override {
    SetErrorFunctions(nullptr);
    ClearErrors();
  }

  static std::wstring Next(bool fromStart, unsigned int size = 500, bool* result = nullptr) {
    std::vector<wchar_t> buf(size + 8, L'#');
    bool r = GetNextError(fromStart, buf.data(), size);
    if (result)
      *result = r;
    for (size_t i = size; i < buf.size(); ++i)
      EXPECT_EQ(buf[i], L'#') << "written past the size at " << i;
    return std::wstring(buf.data());
  }
};

class HostFuncs : public cErrorFuncs {
public:
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
  bool suppressed = false;
  bool keepDuplicates = false;
  const wchar_t* context = nullptr;
};

TEST_F(ErrorList, SameNumberMergesAndRaisesTheLevel) {
  SetError(eErrorLevelWarning, L"first", kModule, 42, nullptr, nullptr);
  SetError(eErrorLevelError, L"second", kModule, 42, nullptr, nullptr);
  SetError(eErrorLevelInfo, L"third", kModule, 42, nullptr, nullptr);
  EXPECT_EQ(NumErrors(), 1);
  wchar_t msg[32];
  GetErrorMsg(nullptr, 0, msg, 32);
  EXPECT_STREQ(msg, L"first"); // nothing but the level changes
  EXPECT_EQ(GetResourceID(0), -1);
  EXPECT_EQ(GetErrorGUID(0).Data1, kModule.Data1);
}

TEST_F(ErrorList, KeepDuplicatesStoresRepeats) {
  HostFuncs host;
  host.keepDuplicates = true;
  SetErrorFunctions(&host);
  SetError(eErrorLevelWarning, L"a", kModule, 42, nullptr, nullptr);
  SetError(eErrorLevelError, L"a", kModule, 42, nullptr, nullptr);
  EXPECT_EQ(NumErrors(), 2);
  EXPECT_EQ(host.keepDuplicatesCalls, 2);
  EndError(); // a separator is never merged, so the host is not asked
  EXPECT_EQ(host.keepDuplicatesCalls, 2);
  EXPECT_EQ(NumErrors(), 3);
}

TEST_F(ErrorList, ThirtyRecordsThenLost) {
  for (int i = 1; i <= 30; ++i)
    SetError(eErrorLevelError, L"e", kModule, i, nullptr, nullptr);
  EXPECT_NE(Next(true), kLost);
  SetError(eErrorLevelError, L"e", kModule, 31, nullptr, nullptr);
  EXPECT_EQ(Next(true), kLost);
  EXPECT_TRUE(HaveErrors());
  EXPECT_EQ(NumErrors(), 30);
  // Saturated: even a merge candidate or a new number stores nothing more.
  SetError(eErrorLevelError, L"e", kModule, 99, nullptr, nullptr);
  EXPECT_FALSE(ThisErrorOccurred(99));
  EXPECT_EQ(Next(true, 10), std::wstring(kLost, 9)); // truncated to fit
  ClearErrors();
  EXPECT_FALSE(HaveErrors());
  SetError(eErrorLevelError, L"back", kModule, 1, nullptr, nullptr);
  EXPECT_EQ(Next(true), L"back\n");
}

TEST_F(ErrorList, EpisodesAreReadOneAtATime) {
  SetError(eErrorLevelError, L"one", kModule, 1, nullptr, nullptr);
  EXPECT_FALSE(FirstError());
  SetError(eErrorLevelError, L"two\n", kModule, 2, nullptr, nullptr);
  EndError();
  EXPECT_TRUE(FirstError());
  EndError(); // an empty episode adds no separator
  SetError(eErrorLevelError, L"three", kModule, 3, nullptr, nullptr);
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

TEST_F(ErrorList, TooSmallBufferSetsLost) {
  SetError(eErrorLevelError, L"abcd", kModule, 1, nullptr, nullptr);
  EXPECT_EQ(Next(true, 6), L"abcd\n"); // exact fit: 4 + LF + terminator
  EXPECT_EQ(Next(true, 5), std::wstring(kLost, 4));
  EXPECT_EQ(Next(true, 500), kLost); // lost stays until cleared
  wchar_t untouched[2] = {L'#', L'#'};
  GetNextError(true, untouched, 0); // size 0: nothing written at all
  EXPECT_EQ(untouched[0], L'#');
}

TEST_F(ErrorList, TemplateExpansion) {
  struct Case {
    const wchar_t* templ;
    const wchar_t* arg0;
    const wchar_t* arg1;
    const wchar_t* expected;
  } cases[] = {
      {L"^0 ^^", L"a.txt", nullptr, L"a.txt ^"},
      {L"^1 before ^0", L"x", L"y", L"y before x"},
      {L"50^% done^", nullptr, nullptr, L"50^% done^"}, // other carets are literal
      {L"^^0", L"arg", nullptr, L"^0"},
      {L"^0^0", L"ab", nullptr, L"abab"},
      {L"missing ^1.", L"a", nullptr, L"missing ."},
      {L"", L"a", L"b", L""},
  };
  for (const Case& c : cases) {
    ClearErrors();
    SetError(eErrorLevelError, c.templ, kModule, 7, c.arg0, c.arg1);
    wchar_t out[64];
    GetErrorMsg(nullptr, 0, out, 64);
    EXPECT_STREQ(out, c.expected) << c.templ;
  }
}

TEST_F(ErrorList, GetErrorMsgRespectsTheSizeAndTakesANewTemplate) {
  SetError(eErrorLevelError, 77, nullptr, kModule, 9, L"file.dat", L"3");
  EXPECT_EQ(GetResourceID(0), 77);
  wchar_t out[16];
  std::fill(std::begin(out), std::end(out), L'#');
  GetErrorMsg(L"Cannot open ^0 (^1)", 0, out, 8);
  EXPECT_STREQ(out, L"Cannot ");
  EXPECT_EQ(out[8], L'#');
  GetErrorMsg(nullptr, 0, out, 16);
  EXPECT_STREQ(out, L"Cannot open fil");
  GetErrorMsg(nullptr, 1000, out, 16); // out of range: empty, no crash
  EXPECT_STREQ(out, L"");
}

TEST_F(ErrorList, ContextTextComesFirstAndAlone) {
  HostFuncs host;
  host.context = L"While loading: ";
  SetErrorFunctions(&host);
  SetError(eErrorLevelError, L"bad ^0", kModule, 1, L"x", nullptr);
  SetError(eErrorLevelError, L"worse", kModule, 2, nullptr, nullptr);
  EXPECT_EQ(host.contextCalls, (std::vector<int>{0, 1}));
  EXPECT_EQ(Next(true), L"While loading: bad x\nWhile loading: worse\n");
}

TEST_F(ErrorList, SuppressionHidesAndDropsErrors) {
  HostFuncs host;
  SetErrorFunctions(&host);
  SetError(eErrorLevelError, L"kept", kModule, 1, nullptr, nullptr);
  host.suppressed = true;
  EXPECT_FALSE(HaveErrors());
  SetError(eErrorLevelError, L"dropped", kModule, 2, nullptr, nullptr);
  host.suppressed = false;
  EXPECT_TRUE(HaveErrors());
  EXPECT_EQ(NumErrors(), 1);
}

TEST_F(ErrorList, ReportErrorsSendsTheFirstEpisodeAndClears) {
  HostFuncs host;
  SetErrorFunctions(&host);
  SetError(eErrorLevelError, L"one", kModule, 1, nullptr, nullptr);
  EndError();
  SetError(eErrorLevelError, L"two", kModule, 2, nullptr, nullptr);
  ReportErrors();
  ASSERT_EQ(host.reports.size(), 1u);
  EXPECT_EQ(host.reports[0], L"one\n");
  EXPECT_FALSE(HaveErrors());
  ReportErrors(); // nothing to report
  EXPECT_EQ(host.reports.size(), 1u);

  SetErrorFunctions(nullptr);
  SetError(eErrorLevelError, L"unheard", kModule, 3, nullptr, nullptr);
  ReportErrors();
  EXPECT_FALSE(HaveErrors());
}

TEST_F(ErrorList, NumberFifteenCarriesTheRealNumberAsText) {
  SetError(eErrorLevelError, L"x", kModule, 15, L"1234", nullptr);
  SetError(eErrorLevelError, L"y", kModule, 16, nullptr, nullptr);
  EXPECT_EQ(GetErrorNum(0), 1234);
  EXPECT_EQ(GetErrorNum(1), 16);
  EXPECT_EQ(GetErrorNum(-1), 0);
}

TEST_F(ErrorList, ClearKeepsResourceIdsAndFreeSlotsMatchZero) {
  SetError(eErrorLevelError, 501, nullptr, kModule, 1, nullptr, nullptr);
  EXPECT_TRUE(ThisErrorOccurred(0)); // free slots hold number 0
  ClearErrors();
  EXPECT_EQ(GetResourceID(0), 501);
  EXPECT_FALSE(ThisErrorOccurred(1));
}

TEST_F(ErrorList, LiteralFormIgnoresNullMessage) {
  SetError(eErrorLevelError, nullptr, kModule, 3, nullptr, nullptr);
  EXPECT_FALSE(HaveErrors());
}

TEST_F(ErrorList, ModeIsStoredOnly) {
  SetQXErrorMode(eErrorModeQuiet);
  EXPECT_EQ(GetQXErrorMode(), eErrorModeQuiet);
  SetQXErrorMode(eErrorModeDefault);
}

} // namespace
