// Escape polling relays to the host's callback.
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class Host : public cCheckEscCallback {
public:
  bool Check(bool forUpdate) override {
    calls.push_back(forUpdate);
    return answer;
  }
  std::vector<bool> calls;
  bool answer = true;
};

TEST(CheckEsc, RelaysToTheCallbackWithTheUpdateFlag) {
  EXPECT_FALSE(CheckEsc());
  EXPECT_FALSE(CheckEsc4Update(true));
  Host host;
  InitCheckEscCallback(&host);
  EXPECT_TRUE(CheckEsc());
  EXPECT_TRUE(CheckEsc4Update(true));
  EXPECT_TRUE(CheckEsc4Update(false));
  EXPECT_EQ(host.calls, (std::vector<bool>{false, true, false}));
  InitCheckEscCallback(nullptr);
  EXPECT_FALSE(CheckEsc());
  EXPECT_EQ(host.calls.size(), 3u);
}

} // namespace
