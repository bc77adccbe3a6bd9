//===- services/service_set.cpp - Creation and destruction order ----------===//
//
// The one place that knows which services a set holds, the order in which
// they are created and the order in which they are deleted. A new service is
// one line in each list.
//
//===----------------------------------------------------------------------===//
#include "frame/service_set.h"

#include "qxutil/files.h"
#include "qxutil/frame.h"
#include "qxutil/locale.h"
#include "qxutil/text.h"

namespace qx {

namespace {

// The block cache every context gets: 401 descriptors (400 usable blocks)
// of 512 bytes.
constexpr int kCacheBlocks = 401;
constexpr long kCacheBlockSize = 512;

// Install - creates one service with `create` and installs it under its key.
template <class Service, class Factory> bool Install(InstanceData* data, Factory create) {
  Service* service = create();
  if (!service)
    return false;
  if (!data->SetSlot(Service::kSlotKey, service)) {
    delete service;
    return false;
  }
  return true;
}

template <class Service> bool Install(InstanceData* data) {
  return Install<Service>(data, [] { return Service::Create(); });
}

template <class Service> void Delete(InstanceData* data) {
  delete static_cast<Service*>(data->GetSlot(Service::kSlotKey));
}

} // namespace

InstanceData* CreateServices(InstanceData* data) {
  // Creation order.
  if (!Install<cStringResourceBuffers>(data))
    return data;
  if (!Install<cErrorSystem>(data))
    return data;
  if (!Install<cLocaleInfo>(data))
    return data;
  if (!Install<cCharsetInfo>(data))
    return data;
  if (!Install<cCharsetConverter>(data))
    return data;
  if (!Install<StringNormalizerManager>(data))
    return nullptr; // a failed set: this call answers null, the next finds the set
  if (!Install<cCheckEsc>(data))
    return data;
  if (!Install<cFileSystem>(data))
    return data;
  if (!Install<cFileCache>(data, [] { return cFileCache::Create(kCacheBlocks, kCacheBlockSize); }))
    return data;
  return data;
}

void DestroyServices(InstanceData* data) {
  // Destruction order.
  Delete<cStringResourceBuffers>(data);
  Delete<cErrorSystem>(data);
  Delete<StringNormalizerManager>(data);
  Delete<cCharsetInfo>(data);
  Delete<cCharsetConverter>(data);
  Delete<cLocaleInfo>(data);
  Delete<cCheckEsc>(data);
  Delete<cFileSystem>(data);
  Delete<cFileCache>(data);
}

} // namespace qx
