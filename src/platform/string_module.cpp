// Provides: LoadStringW over the table a string module exports (dlsym).
#include "platform/string_module.h"

#include <algorithm>
#include <cwchar>
#include <dlfcn.h>

using qx::win::StringModuleEntry;
using qx::win::StringModuleTable;

const StringModuleTable* qx::win::FindStringTable(HMODULE module) {
  void* handle = module;
  if (!handle)
    handle = dlopen(nullptr, RTLD_LAZY); // the main program: never counted, never unloaded
  if (!handle)
    return nullptr;
  const auto* table = static_cast<const StringModuleTable*>(dlsym(handle, kStringModuleSymbol));
  if (!table || table->magic != kStringModuleMagic || table->version != kStringModuleVersion)
    return nullptr;
  return table;
}

int qx::win::LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int bufferMax) {
  if (!buffer || bufferMax < 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  if (bufferMax > 0)
    buffer[0] = 0;
  const StringModuleTable* table = FindStringTable(module);
  if (!table) {
    SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
    return 0;
  }
  const unsigned int wanted = id & 0xFFFF;
  const StringModuleEntry* end = table->entries + table->count;
  const StringModuleEntry* entry =
      std::lower_bound(table->entries, end, wanted,
                       [](const StringModuleEntry& e, unsigned int v) { return e.id < v; });
  if (entry == end || entry->id != wanted) {
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return 0;
  }
  if (bufferMax == 0) {
    *reinterpret_cast<const wchar_t**>(buffer) = entry->text;
    return static_cast<int>(std::min<unsigned int>(entry->length, 0x7FFFFFFF));
  }
  const unsigned int copied = std::min(entry->length, static_cast<unsigned int>(bufferMax - 1));
  std::wmemcpy(buffer, entry->text, copied);
  buffer[copied] = 0;
  return static_cast<int>(copied);
}
