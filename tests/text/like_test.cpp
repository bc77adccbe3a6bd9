// Like: what like_fuzz cannot reach: null arguments, the level and module of
// the error it records, and long inputs.
#include "common/thread_runner.h"
#include "qxutil/frame.h"
#include "qxutil/text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

class LikeErrors : public ::testing::Test {
protected:
  void SetUp() override { ClearErrors(); }
  void TearDown() override { ClearErrors(); }
};

TEST_F(LikeErrors, NullArgumentsFailWithoutRecording) {
  bool match = true;
  EXPECT_FALSE(Like(nullptr, L"%", L"", &match));
  EXPECT_FALSE(match);
  match = true;
  EXPECT_FALSE(Like(L"a", nullptr, L"", &match));
  EXPECT_FALSE(match);
  EXPECT_FALSE(Like(L"a", L"a", L"", nullptr));
  EXPECT_FALSE(HaveErrors());
}

// Keeps the level and module SetError is given (like_fuzz checks the rest).
class CapturingErrors final : public cErrorSystem {
public:
  struct Call {
    eErrorLevel level;
    GUID module;
  };
  std::vector<Call> calls;
  bool HaveErrors() override { return !calls.empty(); }
  int NumErrors() override { return static_cast<int>(calls.size()); }
  bool FirstError() override { return calls.empty(); }
  void ClearErrors() override { calls.clear(); }
  bool GetNextError(bool, wchar_t*, unsigned int) override { return false; }
  bool ThisErrorOccurred(int) override { return false; }
  int GetErrorNum(int) override { return 0; }
  int GetResourceID(int) override { return 0; }
  const GUID& GetErrorGUID(int) override { return guid_; }
  void GetErrorMsg(const wchar_t*, unsigned int, wchar_t*, unsigned int) override {}
  void SetError(eErrorLevel level, int, const wchar_t*, const GUID& module, int, const wchar_t*,
                const wchar_t*) override {
    calls.push_back({level, module});
  }
  void SetError(eErrorLevel level, const wchar_t*, const GUID& module, int, const wchar_t*,
                const wchar_t*) override {
    calls.push_back({level, module});
  }
  void EndError() override {}
  void SetErrorFunctions(cErrorFuncs*) override {}
  void ReportErrors() override {}
  void SetQXErrorMode(eErrorMode) override {}
  eErrorMode GetQXErrorMode() override { return eErrorModeDefault; }

private:
  GUID guid_{};
};

TEST(LikeErrorRecord, LevelAndModule) {
  qxtest::RunOnNewThread([] {
    CapturingErrors capture;
    cErrorSystem* own = cErrorSystem::Instance();
    ASSERT_TRUE(cErrorSystem::Instance(&capture));
    bool match = true;
    Like(L"ab", L"a!b", L"!", &match);
    cErrorSystem::Instance(own);
    ASSERT_EQ(capture.calls.size(), 1u);
    EXPECT_EQ(capture.calls[0].level, eErrorLevelError);
    const GUID library = {
        0xEE011B72, 0x700B, 0x11D2, {0xBB, 0x9D, 0x00, 0x60, 0x08, 0x9F, 0x5A, 0x53}};
    EXPECT_EQ(std::memcmp(&capture.calls[0].module, &library, sizeof(GUID)), 0);
  });
}

TEST_F(LikeErrors, LongInputsNeedNoBacktracking) {
  const std::wstring many(4096, L'a');
  const struct {
    const wchar_t* pattern;
    bool match;
  } cases[] = {
      {L"%a%a%a%a%a%a%b", false}, // the most backtracking: like_fuzz holds the rest
      {L"_%_%_%_", true},
  };
  for (const auto& c : cases) {
    bool match = !c.match;
    EXPECT_TRUE(Like(many.c_str(), c.pattern, L"", &match)) << c.pattern;
    EXPECT_EQ(match, c.match) << c.pattern;
  }
  // A pattern as long as the subject, and one far longer.
  std::wstring underscores(4096, L'_');
  bool match = false;
  EXPECT_TRUE(Like(many.c_str(), underscores.c_str(), L"", &match));
  EXPECT_TRUE(match);
  std::wstring longer = std::wstring(5000, L'%') + L"a!x";
  EXPECT_FALSE(Like(many.c_str(), longer.c_str(), L"!", &match));
  EXPECT_FALSE(match);
}

} // namespace
