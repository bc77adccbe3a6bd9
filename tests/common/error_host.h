// A host's error callbacks that record what the error list asks and reports,
// with answers the test sets.
#ifndef QXUTIL_TESTS_COMMON_ERROR_HOST_H
#define QXUTIL_TESTS_COMMON_ERROR_HOST_H

#include "qxutil/frame.h"

#include <string>
#include <vector>

namespace qxtest {

/// ErrorHost - records the reports and the episode counts asked for
/// context; answers with `suppressed`, `keepDuplicates` and `context`.
class ErrorHost : public cErrorFuncs {
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

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_ERROR_HOST_H
