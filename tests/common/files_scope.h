// A fresh file registry (and block cache, or none) installed in the calling
// thread's context for one test, and the context's own put back after it.
#ifndef QXUTIL_TESTS_COMMON_FILES_SCOPE_H
#define QXUTIL_TESTS_COMMON_FILES_SCOPE_H

#include "qxutil/files.h"

namespace qxtest {

struct RegistrySettings {
  int maxOpenFiles = 507;
  bool closeAtOnce = true;
  FileRetryCallback retry = nullptr;
  int cacheBlocks = 401; // 0: no cache
  long blockSize = 512;
};

class ScopedRegistry {
public:
  explicit ScopedRegistry(const RegistrySettings& s = RegistrySettings())
      : savedFs_(cFileSystem::Instance()), savedCache_(cFileCache::Instance()) {
    fs_ = cFileSystem::Create(s.maxOpenFiles, s.closeAtOnce, s.retry);
    cache_ = s.cacheBlocks ? cFileCache::Create(s.cacheBlocks, s.blockSize) : nullptr;
    cFileSystem::Instance(fs_);
    cFileCache::Instance(cache_);
  }
  ~ScopedRegistry() {
    delete fs_; // closes what is open, through the cache
    cFileSystem::Instance(savedFs_);
    cFileCache::Instance(savedCache_);
    delete cache_;
  }
  ScopedRegistry(const ScopedRegistry&) = delete;
  ScopedRegistry& operator=(const ScopedRegistry&) = delete;
  cFileSystem* fs() const { return fs_; }
  cFileCache* cache() const { return cache_; }

private:
  cFileSystem* savedFs_;
  cFileCache* savedCache_;
  cFileSystem* fs_;
  cFileCache* cache_;
};

} // namespace qxtest

#endif // QXUTIL_TESTS_COMMON_FILES_SCOPE_H
