//===- frame/module_loader.cpp - Loading a module beside another one ------===//
//
// A product module is loaded from the directory of a module already in the
// process (or of the program), never from the search path. ".so" plays the
// part of Windows' ".dll".
//
//===----------------------------------------------------------------------===//
#include "qxutil/frame.h"

#include "platform/module_path.h"
#include "platform/modules.h"

#include <cwchar>
#include <string>

using namespace qx::win;

namespace {

bool IsSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

// NameAndExtension - the last path component of `fileName`, with ".so"
// added when it has no extension.
std::wstring NameAndExtension(const wchar_t* fileName) {
  const wchar_t* name = fileName;
  for (const wchar_t* p = fileName; *p; ++p)
    if (IsSeparator(*p))
      name = p + 1;
  std::wstring result(name);
  if (result.find(L'.') == std::wstring::npos)
    result += L".so";
  return result;
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
  std::wstring directory(path, length);
  size_t slash = directory.find_last_of(L"/\\");
  directory.erase(slash == std::wstring::npos ? 0 : slash + 1);
  std::wstring full = directory + NameAndExtension(fileName);
  UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS);
  handle = LoadLibraryExW(full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  SetErrorMode(previous);
  return handle != nullptr;
}
