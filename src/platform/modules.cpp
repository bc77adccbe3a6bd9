// Provides: GetModuleHandleW, GetProcAddress, LoadLibraryW, FreeLibrary,
// AddModuleReference (dlopen with RTLD_NOLOAD, dlsym, dlinfo,
// dl_iterate_phdr).
#include "platform/modules.h"

#include "platform/utf8.h"

#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <new>
#include <string>

namespace {

const char* BaseName(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash ? slash + 1 : path;
}

// Finds the path of a loaded object whose file name (without directories)
// is `name`.
std::string FindLoadedPath(const std::string& name) {
  struct Search {
    const std::string* name;
    std::string path;
  } search{&name, {}};
  dl_iterate_phdr(
      [](dl_phdr_info* info, size_t, void* data) -> int {
        auto* s = static_cast<Search*>(data);
        if (info->dlpi_name && *info->dlpi_name && *s->name == BaseName(info->dlpi_name)) {
          s->path = info->dlpi_name;
          return 1;
        }
        return 0;
      },
      &search);
  return search.path;
}

// A handle of an object that is already loaded, without keeping the extra
// reference that dlopen takes (GetModuleHandleW does not count).
void* PeekLoaded(const char* name) {
  void* handle = dlopen(name, RTLD_LAZY | RTLD_NOLOAD);
  if (handle)
    dlclose(handle);
  return handle;
}

} // namespace

HMODULE qx::win::GetModuleHandleW(LPCWSTR name) {
  void* handle = nullptr;
  if (!name) {
    handle = PeekLoaded(nullptr);
  } else {
    try { // the UTF-8 names are built on the C++ heap
      std::string utf8 = qx::platform::WideToUtf8(name);
      if (!utf8.empty()) {
        handle = PeekLoaded(utf8.c_str());
        if (!handle && utf8.find('/') == std::string::npos) {
          std::string path = FindLoadedPath(utf8);
          if (!path.empty())
            handle = PeekLoaded(path.c_str());
        }
      }
    } catch (const std::bad_alloc&) {
      SetLastError(ERROR_NOT_ENOUGH_MEMORY);
      return nullptr;
    }
  }
  if (!handle)
    SetLastError(ERROR_MOD_NOT_FOUND);
  return static_cast<HMODULE>(handle);
}

FARPROC qx::win::GetProcAddress(HMODULE module, LPCSTR name) {
  if (!module || !name) {
    SetLastError(module ? ERROR_PROC_NOT_FOUND : ERROR_INVALID_HANDLE);
    return nullptr;
  }
  void* symbol = dlsym(module, name);
  if (!symbol) {
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
  }
  return reinterpret_cast<FARPROC>(symbol);
}

HMODULE qx::win::LoadLibraryW(LPCWSTR path) {
  std::string utf8;
  try {
    utf8 = qx::platform::WideToUtf8(path);
  } catch (const std::bad_alloc&) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  if (utf8.empty()) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  void* handle = dlopen(utf8.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle)
    SetLastError(ERROR_MOD_NOT_FOUND);
  return static_cast<HMODULE>(handle);
}

BOOL qx::win::FreeLibrary(HMODULE module) {
  if (!module || dlclose(module) != 0) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  return TRUE;
}

HMODULE qx::win::AddModuleReference(HMODULE module) {
  link_map* map = nullptr;
  if (!module || dlinfo(module, RTLD_DI_LINKMAP, &map) != 0 || !map) {
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  // The main program has no file name in its link map; its handle is the
  // one dlopen(null) gives, and it is never unloaded.
  void* again =
      *map->l_name ? dlopen(map->l_name, RTLD_LAZY | RTLD_NOLOAD) : dlopen(nullptr, RTLD_LAZY);
  if (!again)
    SetLastError(ERROR_MOD_NOT_FOUND);
  return static_cast<HMODULE>(again);
}
