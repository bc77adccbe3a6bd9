// Start-up relays reach loaded companion modules only.
#include "platform/modules.h"
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

using namespace qx::win;

namespace {

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
