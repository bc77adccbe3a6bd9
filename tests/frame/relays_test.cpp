// Relays: escape polling to the host's callback, start-up calls to loaded
// companion modules only, and module lookups that set the last error.
#include "platform/modules.h"
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <vector>

#include <dlfcn.h>

using namespace qx::win;

namespace {

TEST(CheckEsc, RelaysToTheCallbackWithTheUpdateFlag) {
  struct Host : cCheckEscCallback {
    bool Check(bool forUpdate) override {
      calls.push_back(forUpdate);
      return true;
    }
    std::vector<bool> calls;
  } host;
  EXPECT_FALSE(CheckEsc());
  EXPECT_FALSE(CheckEsc4Update(true));
  InitCheckEscCallback(&host);
  EXPECT_TRUE(CheckEsc());
  EXPECT_TRUE(CheckEsc4Update(true));
  EXPECT_TRUE(CheckEsc4Update(false));
  EXPECT_EQ(host.calls, (std::vector<bool>{false, true, false}));
  InitCheckEscCallback(nullptr);
  EXPECT_FALSE(CheckEsc());
  EXPECT_EQ(host.calls.size(), 3u);
}

TEST(Companions, RelaysNeverLoadAModule) {
  ASSERT_EQ(dlopen(QXTEST_COMPANION_PATH, RTLD_LAZY | RTLD_NOLOAD), nullptr);
  UtilDllEnsureInit();
  UtilDllForceTerm();
  EXPECT_EQ(GetModuleHandleW(L"libqxkernel.so"), nullptr);
  EXPECT_EQ(dlopen(QXTEST_COMPANION_PATH, RTLD_LAZY | RTLD_NOLOAD), nullptr);
}

TEST(Companions, EnsureInitCallsAndForceTermOnlyLooksUp) {
  void* module = dlopen(QXTEST_COMPANION_PATH, RTLD_NOW);
  ASSERT_NE(module, nullptr) << dlerror();
  auto* inits = static_cast<int*>(dlsym(module, "gEnsureInitCalls"));
  auto* terms = static_cast<int*>(dlsym(module, "gForceTermCalls"));
  ASSERT_TRUE(inits && terms);
  EXPECT_NE(GetModuleHandleW(L"libqxkernel.so"), nullptr);
  UtilDllEnsureInit();
  EXPECT_EQ(*inits, 1);
  UtilDllForceTerm();
  EXPECT_EQ(*terms, 0);
  dlclose(module);
}

TEST(Modules, LookupFailuresSetTheLastError) {
  EXPECT_EQ(GetModuleHandleW(L"libnot-loaded-anywhere.so"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
  HMODULE self = GetModuleHandleW(nullptr);
  ASSERT_NE(self, nullptr);
  EXPECT_EQ(GetProcAddress(self, "no_such_export_here"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
  EXPECT_EQ(GetProcAddress(nullptr, "x"), nullptr);
}

} // namespace
