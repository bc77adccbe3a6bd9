//===- text/resource_dll.cpp - Numbered strings from a string module ------===//
//
// The module is loaded on the first lookup that needs it and kept until the
// object is destroyed. Every object releases the load it holds, so a copy
// takes a counted load of its own.
//
//===----------------------------------------------------------------------===//
#include "platform/modules.h"
#include "platform/string_module.h"
#include "qxutil/text.h"

namespace {
constexpr int kPlatformWin32Windows = 1; // VER_PLATFORM_WIN32_WINDOWS: Windows 9x
} // namespace

cResourceDLL::cResourceDLL(const wchar_t* fileName) : module_(nullptr) {
  strcpyn(fileName_, fileName, MAX_PATH);
}

cResourceDLL::cResourceDLL(HINSTANCE const& module) : module_(module) { fileName_[0] = 0; }

cResourceDLL::cResourceDLL(const cResourceDLL& other)
    : cStringResource(other), module_(qx::win::AddModuleReference(other.module_)) {
  fileName_[0] = 0;
}

cResourceDLL& cResourceDLL::operator=(const cResourceDLL& other) {
  if (this == &other)
    return *this;
  HINSTANCE taken = qx::win::AddModuleReference(other.module_);
  if (module_ && !bIsWIN95())
    qx::win::FreeLibrary(module_);
  module_ = taken;
  fileName_[0] = 0;
  return *this;
}

cResourceDLL::~cResourceDLL() {
  if (module_ && !bIsWIN95())
    qx::win::FreeLibrary(module_);
}

void cResourceDLL::SetResource(const wchar_t* fileName) {
  if (fileName)
    strcpyn(fileName_, fileName, MAX_PATH);
}

HINSTANCE cResourceDLL::GetResource() const {
  if (!module_)
    module_ = qx::win::LoadLibraryW(fileName_);
  return module_;
}

bool cResourceDLL::FindString(int id, wchar_t* buffer) const {
  HINSTANCE module = GetResource();
  return module && qx::win::LoadStringW(module, static_cast<UINT>(id), buffer, 255) > 0;
}

bool cResourceDLL::bIsWIN95() const { return SystemPlatform() == kPlatformWin32Windows; }
