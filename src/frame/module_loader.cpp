//===- frame/module_loader.cpp - Loading a module beside another one ------===//
//
// A product module is loaded from the directory of a module already in the
// process (or of the program), never from the search path. ".so" plays the
// part of Windows' ".dll".
//
//===----------------------------------------------------------------------===//
#include "qxutil/frame.h"

#include "frame/wide_buffer.h"
#include "platform/module_path.h"
#include "platform/modules.h"

#include <cwchar>

using namespace qx::win;

namespace {

bool IsSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

// AppendNameAndExtension - appends the last path component of `fileName`,
// with ".so" added when it has no extension; false when memory runs out.
bool AppendNameAndExtension(const wchar_t* fileName, qx::WideBuffer* out) {
  const wchar_t* name = fileName;
  for (const wchar_t* p = fileName; *p; ++p)
    if (IsSeparator(*p))
      name = p + 1;
  return out->Append(name) && (std::wcschr(name, L'.') || out->Append(L".so"));
}

} // namespace

bool LoadQXLibrary(const wchar_t* fileName, const wchar_t* besideModule, HINSTANCE& handle) {
  handle = nullptr;
  if (!fileName || !*fileName)
    return false;
  HMODULE beside = besideModule ? GetModuleHandleW(besideModule) : nullptr;
  wchar_t path[MAX_PATH];
  DWORD length = GetModuleFileNameW(beside, path, MAX_PATH);
  if (length == 0 || length >= MAX_PATH)
    return false; // no path, or one cut short
  size_t directory = length;
  while (directory > 0 && !IsSeparator(path[directory - 1]))
    --directory;
  qx::WideBuffer full; // on the memory manager: no exception on exhaustion
  if (!full.Append(path, directory) || !AppendNameAndExtension(fileName, &full))
    return false;
  UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS);
  handle = LoadLibraryExW(full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  SetErrorMode(previous);
  return handle != nullptr;
}
