// Provides: GetModuleFileNameW (dlinfo, /proc/self/exe), LoadLibraryExW, SetErrorMode.
#include "platform/module_path.h"

#include "platform/modules.h"
#include "platform/utf8.h"

#include <atomic>
#include <dlfcn.h>
#include <link.h>
#include <new>
#include <string>
#include <unistd.h>

namespace {
std::atomic<UINT> gErrorMode{0};

std::string MainProgramPath() {
  char path[4096];
  ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  return n > 0 ? std::string(path, static_cast<size_t>(n)) : std::string();
}

DWORD ModuleFileName(HMODULE module, LPWSTR buffer, DWORD size) {
  std::string path;
  void* handle = module ? static_cast<void*>(module) : dlopen(nullptr, RTLD_LAZY | RTLD_NOLOAD);
  link_map* map = nullptr;
  if (handle && dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && map)
    path = map->l_name && *map->l_name ? map->l_name : MainProgramPath();
  if (!module && handle)
    dlclose(handle);
  if (path.empty()) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return 0;
  }
  std::wstring wide = qx::platform::Utf8ToWide(path.c_str());
  if (!buffer || size == 0) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  if (wide.size() >= size) {
    wide.copy(buffer, size - 1);
    buffer[size - 1] = 0;
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
  }
  wide.copy(buffer, wide.size());
  buffer[wide.size()] = 0;
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(wide.size());
}
} // namespace

DWORD qx::win::GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) {
  try { // the path is converted on the C++ heap
    return ModuleFileName(module, buffer, size);
  } catch (const std::bad_alloc&) {
    if (buffer && size)
      buffer[0] = 0;
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
  }
}

HMODULE qx::win::LoadLibraryExW(LPCWSTR path, void* file, DWORD) {
  if (file) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  return LoadLibraryW(path);
}

UINT qx::win::SetErrorMode(UINT mode) { return gErrorMode.exchange(mode); }
