// GetModuleFileNameW: the main program's and a loaded library's path, and
// the buffer contract (sizes 0, too small, exact, large; the last error).
#include "platform/module_path.h"

#include "common/scaffold.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <string>
#include <unistd.h>

namespace {

constexpr wchar_t kSentinel = 0x7F7F;

std::wstring MainProgram() {
  char path[4096];
  ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  return n > 0 ? std::wstring(path, path + n) : std::wstring(); // ASCII paths here
}

TEST(GetModuleFileNameW, BufferSizes) {
  const std::wstring path = MainProgram();
  ASSERT_GT(path.size(), 2u);
  const DWORD length = static_cast<DWORD>(path.size());
  struct Case {
    DWORD size;
    DWORD result;
    DWORD error;
    size_t written; // units of the path before the terminator
  } cases[] = {
      {length + 10, length, ERROR_SUCCESS, length},
      {length + 1, length, ERROR_SUCCESS, length},                // exactly fits
      {length, length, ERROR_INSUFFICIENT_BUFFER, length - 1},    // no room for the terminator
      {3, 3, ERROR_INSUFFICIENT_BUFFER, 2},                       // cut
      {1, 1, ERROR_INSUFFICIENT_BUFFER, 0},                       // only the terminator
      {0, 0, ERROR_INSUFFICIENT_BUFFER, static_cast<size_t>(-1)}, // nothing written
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "size " << c.size);
    qxtest::Guarded<wchar_t> buf(c.size, kSentinel);
    SetLastError(0xDEAD);
    EXPECT_EQ(qx::win::GetModuleFileNameW(nullptr, buf.data(), c.size), c.result);
    EXPECT_EQ(GetLastError(), c.error);
    if (c.written == static_cast<size_t>(-1)) {
      EXPECT_TRUE(buf.UntouchedFrom(0));
      continue;
    }
    EXPECT_EQ(std::wstring(buf.data(), c.written), path.substr(0, c.written));
    EXPECT_EQ(buf.units[c.written], 0);
    EXPECT_TRUE(buf.UntouchedFrom(c.written + 1));
  }
  SetLastError(0xDEAD);
  EXPECT_EQ(qx::win::GetModuleFileNameW(nullptr, nullptr, 10), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
}

TEST(GetModuleFileNameW, LoadedLibrary) {
  void* libc = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
  ASSERT_NE(libc, nullptr);
  wchar_t buf[512];
  DWORD n = qx::win::GetModuleFileNameW(static_cast<HMODULE>(libc), buf, 512);
  dlclose(libc);
  ASSERT_GT(n, 10u);
  std::wstring path(buf, n);
  EXPECT_EQ(path[0], L'/');
  EXPECT_NE(path.find(L"libc.so.6"), std::wstring::npos);
  EXPECT_NE(path, MainProgram());
}

} // namespace
