//===- text/string_resource_buffers.cpp - The ring of ten text buffers ----===//
//
// Each context keeps ten buffers that looked-up texts are handed out in, one
// after the other, so that a text stays valid until ten more have been
// fetched.
//
//===----------------------------------------------------------------------===//
#include "frame/singleton.h"
#include "qxutil/text.h"

#include <cwchar>

namespace {

class cStringResourceBuffersImpl final : public cStringResourceBuffers {
public:
  static constexpr int kBuffers = 10;
  static constexpr int kUnits = 256;

  cStringResourceBuffersImpl() {
    for (wchar_t* buffer : buffers_)
      std::wmemset(buffer, 0, kUnits / 2);
  }

  wchar_t* GetNextBuffer() override {
    current_ = (current_ + 1) % kBuffers;
    return buffers_[current_];
  }

private:
  wchar_t buffers_[kBuffers][kUnits];
  int current_ = 0;
};

} // namespace

cStringResourceBuffers::~cStringResourceBuffers() {}

cStringResourceBuffers* cStringResourceBuffers::Create() {
  return qx::NewServiceOrNull<cStringResourceBuffersImpl>();
}

template class QXSingleton<cStringResourceBuffers, 9>;
