//===- frame/check_esc.cpp - Escape polling -------------------------------===//
//
// Long operations ask from time to time whether to cancel; the question goes
// to the host's callback. Without one the answer is always "go on".
//
//===----------------------------------------------------------------------===//
#include "frame/singleton.h"
#include "qxutil/frame.h"

namespace {

class cCheckEscImpl final : public cCheckEsc {
public:
  void SetCallback(cCheckEscCallback* callback) override { callback_ = callback; }
  bool Check() override { return callback_ && callback_->Check(false); }
  bool CheckForUpdate(bool forUpdate) override { return callback_ && callback_->Check(forUpdate); }

private:
  cCheckEscCallback* callback_ = nullptr; // not owned
};

} // namespace

cCheckEsc::~cCheckEsc() {}
cCheckEscCallback::~cCheckEscCallback() {}

cCheckEsc* cCheckEsc::Create() { return qx::NewServiceOrNull<cCheckEscImpl>(); }

void InitCheckEscCallback(cCheckEscCallback* callback) {
  if (cCheckEsc* esc = cCheckEsc::Instance())
    esc->SetCallback(callback);
}

bool CheckEsc() {
  cCheckEsc* esc = cCheckEsc::Instance();
  return esc && esc->Check();
}

bool CheckEsc4Update(bool forUpdate) {
  cCheckEsc* esc = cCheckEsc::Instance();
  return esc && esc->CheckForUpdate(forUpdate);
}

template class QXSingleton<cCheckEsc, 1>;
