//===- text/string_resource.cpp - Numbered strings and their fallbacks ----===//
//
// cStringResource hands a looked-up text out in the calling context's ring
// of buffers; a string its source does not have becomes a fixed fallback
// text, so a host always has something to show.
//
//===----------------------------------------------------------------------===//
#include "frame/singleton.h"
#include "qxutil/text.h"

#include <cwchar>

namespace {

constexpr unsigned int kBufferUnits = 256;

// FillFallback - the fixed text for a string that could not be found.
void FillFallback(int id, wchar_t* buffer) {
  switch (id) {
  case 58:
    strcpyn(buffer, L"Internal Error: %u", kBufferUnits);
    break;
  case 59:
    strcpyn(buffer, L"System Error", kBufferUnits);
    break;
  case 60:
    strcpyn(buffer,
            L"Program cannot run because required resource was not found.  "
            L"Executable file may be damaged.",
            kBufferUnits);
    break;
  default:
    std::swprintf(buffer, kBufferUnits, L"The string resource (%d) could not be accessed.", id);
    break;
  }
}

} // namespace

cResourceHandle::cResourceHandle() {}
cResourceHandle::cResourceHandle(const cResourceHandle&) {}
cResourceHandle& cResourceHandle::operator=(const cResourceHandle&) { return *this; }
cResourceHandle::~cResourceHandle() {}

cStringResource::cStringResource() {}
cStringResource::cStringResource(const cStringResource& other) : cResourceHandle(other) {}
cStringResource& cStringResource::operator=(const cStringResource&) { return *this; }
cStringResource::~cStringResource() {}

wchar_t* cStringResource::operator[](int id) const {
  wchar_t* buffer = GetNextBuffer();
  if (!buffer)
    return nullptr;
  if (!FindString(id, buffer))
    FillFallback(id, buffer);
  return buffer;
}

wchar_t* cStringResource::GetNextBuffer() const {
  cStringResourceBuffers* ring = cStringResourceBuffers::Instance();
  return ring ? ring->GetNextBuffer() : nullptr;
}
