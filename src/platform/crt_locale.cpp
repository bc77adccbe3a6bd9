// Provides: the C runtime's locale name (setlocale(LC_CTYPE, NULL)).
#include "platform/crt_locale.h"

#include <clocale>
#include <cstring>
#include <mutex>

namespace qx::platform {

namespace {
// setlocale's answer is process-wide and may be overwritten by a concurrent
// setlocale call; read it under one lock and copy it out.
std::mutex gCrtLocaleLock;
} // namespace

size_t CrtLocaleName(char* buf, size_t size) {
  std::lock_guard<std::mutex> hold(gCrtLocaleLock);
  const char* name = std::setlocale(LC_CTYPE, nullptr);
  if (!name)
    name = "C";
  size_t len = std::strlen(name);
  if (buf && size) {
    size_t n = len < size - 1 ? len : size - 1;
    std::memcpy(buf, name, n);
    buf[n] = '\0';
  }
  return len;
}

bool CrtLocaleIsC() {
  char name[16];
  size_t len = CrtLocaleName(name, sizeof name);
  if (len >= sizeof name)
    return false;
  return std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0;
}

} // namespace qx::platform
