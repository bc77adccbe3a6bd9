//===- text/literals.cpp - The default rotatable font ---------------------===//
//
// The font name is looked up once per process by the system character set.
// The names are Windows TrueType face names (what a host written for Windows
// passes on to its drawing layer): a CJK or Thai face for those scripts,
// Arial for every other set.
//
//===----------------------------------------------------------------------===//
#include "qxutil/frame.h"
#include "qxutil/text.h"

#include <atomic>
#include <mutex>

namespace {

// LF_FACESIZE: a face name and its terminator.
constexpr unsigned int kFaceSize = 32;

// RotatableFontFor - the lookup: the face name for the key (character set +
// 1), null for key 0 (no system character set) and unknown keys.
const wchar_t* RotatableFontFor(int key) {
  if (key < 1 || key > kQXCharsetCount)
    return nullptr;
  switch (static_cast<QXCHARSET>(key - 1)) {
  case QXCHARSET_WINDOWS_JAPANESE:
  case QXCHARSET_MAC_JAPANESE:
  case QXCHARSET_PACKED_EUC_JAPANESE:
    return L"MS Gothic";
  case QXCHARSET_WINDOWS_SIMP_CHINESE:
  case QXCHARSET_MAC_SIMP_CHINESE:
  case QXCHARSET_PACKED_EUC_SIMP_CHINESE:
    return L"SimSun";
  case QXCHARSET_WINDOWS_TRAD_CHINESE:
  case QXCHARSET_MAC_TRAD_CHINESE:
  case QXCHARSET_PACKED_EUC_TRAD_CHINESE:
    return L"MingLiU";
  case QXCHARSET_WINDOWS_KOREAN:
  case QXCHARSET_MAC_KOREAN:
  case QXCHARSET_PACKED_EUC_KOREAN:
    return L"Gulim";
  case QXCHARSET_WINDOWS_THAI:
  case QXCHARSET_MAC_THAI:
    return L"Tahoma";
  default:
    return L"Arial";
  }
}

std::mutex gLiteralsLock;
bool gLiteralsDone = false;
wchar_t gFaceName[kFaceSize];
// The face name handed out: "Arial" until InitLiterals succeeds, then
// gFaceName (published after it is written).
std::atomic<const wchar_t*> gRotatableFont{L"Arial"};

} // namespace

bool InitLiterals() {
  std::lock_guard<std::mutex> hold(gLiteralsLock);
  if (gLiteralsDone)
    return true;
  const wchar_t* name = RotatableFontFor(static_cast<int>(system_charset()) + 1);
  if (!name || !*name)
    return false;
  strcpyn(gFaceName, name, kFaceSize);
  gRotatableFont.store(gFaceName, std::memory_order_release);
  gLiteralsDone = true;
  return true;
}

const wchar_t* GetDefaultRotatableFont() { return gRotatableFont.load(std::memory_order_acquire); }
