//===- frame/companions.cpp - Start-up relays to companion modules --------===//
//
// Companion modules export "DllEnsureInit" and "DllForceTerm".
// The relays look only at modules the process has already loaded: they never
// load one, and they report nothing when a module or export is missing.
//
//===----------------------------------------------------------------------===//
#include "platform/modules.h"
#include "qxutil/frame.h"

using namespace qx::win;

namespace {

// The companion modules, in the order they are visited.
const wchar_t* const kCompanionModules[] = {
    L"libqxkernel.so",
    L"libqxdisplay.so",
    L"libqxdata.so",
};

using EntryFunction = void (*)();

template <class Visit> void ForEachCompanionExport(const char* name, Visit visit) {
  for (const wchar_t* module : kCompanionModules) {
    HMODULE handle = GetModuleHandleW(module);
    if (!handle)
      continue;
    if (FARPROC entry = GetProcAddress(handle, name))
      visit(reinterpret_cast<EntryFunction>(entry));
  }
}

} // namespace

void UtilDllEnsureInit() {
  ForEachCompanionExport("DllEnsureInit", [](EntryFunction init) { init(); });
}

void UtilDllForceTerm() {
  // The shut-down entry points are looked up and deliberately not called:
  // each companion shuts itself down when it is unloaded.
  ForEachCompanionExport("DllForceTerm", [](EntryFunction) {});
}
