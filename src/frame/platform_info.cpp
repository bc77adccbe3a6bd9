//===- frame/platform_info.cpp - Platform identity and metafiles ----------===//
//
// This platform answers as Windows NT does, and it has no metafiles.
//
//===----------------------------------------------------------------------===//
#include "qxutil/frame.h"

namespace {
constexpr int kPlatformWin32NT = 2; // VER_PLATFORM_WIN32_NT
} // namespace

int SystemPlatform() { return kPlatformWin32NT; }

HGLOBAL GetMetaFileBits(HMETAFILE) { return nullptr; }

HGLOBAL GetEnhancedMetaFileBits(HENHMETAFILE) { return nullptr; }
