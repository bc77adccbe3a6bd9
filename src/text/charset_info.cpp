//===- text/charset_info.cpp - The system character set -------------------===//
//
// The system charset is chosen once, when a context's services are built,
// from the default ANSI code page of the context's locale; it does not follow
// later changes of the locale.
//
//===----------------------------------------------------------------------===//
#include "frame/singleton.h"
#include "qxutil/locale.h"
#include "qxutil/text.h"
#include "text/charset_catalogue.h"

namespace {

class cCharsetInfoImpl final : public cCharsetInfo {
public:
  cCharsetInfoImpl()
      : systemCharset_(qx::CharsetForAnsiCodePage(
            qx::LocaleAnsiCodePageOf(static_cast<LCID>(GetLocaleIdentifier())))) {}

  QXCHARSET GetSystemCharset() override { return systemCharset_; }

private:
  QXCHARSET systemCharset_;
};

} // namespace

cCharsetInfo::~cCharsetInfo() {}

cCharsetInfo* cCharsetInfo::Create() { return qx::NewServiceOrNull<cCharsetInfoImpl>(); }

QXCHARSET system_charset() {
  cCharsetInfo* info = cCharsetInfo::Instance();
  return info ? info->GetSystemCharset() : QXCHARSET_NEUTRAL;
}

template class QXSingleton<cCharsetInfo, 5>;
