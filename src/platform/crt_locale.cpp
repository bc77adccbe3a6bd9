// Provides: the C runtime's locale names (setlocale(LC_CTYPE / LC_NUMERIC,
// NULL)) and decimal point (localeconv), read under one lock.
#include "platform/crt_locale.h"

#include <atomic>
#include <clocale>
#include <cstring>
#include <mutex>
#include <thread>

namespace qx::platform {

namespace {
// setlocale's and localeconv's answers are process-wide and may be
// overwritten by a concurrent setlocale call; read them under one lock and
// copy them out. The sections it guards are a few loads and a short copy,
// and the number functions take it on every call: a test-and-set lock, a
// waiting thread yielding, is cheaper than a mutex and its two calls.
class RuntimeLocaleLock {
public:
  void lock() {
    while (held_.exchange(true, std::memory_order_acquire))
      std::this_thread::yield();
  }
  void unlock() { held_.store(false, std::memory_order_release); }

private:
  std::atomic<bool> held_{false};
};
RuntimeLocaleLock gCrtLocaleLock;

// The calling thread's numeric locale as a test set it (null: none).
__thread const char* tOverrideName __attribute__((tls_model("initial-exec"))) = nullptr;
__thread wchar_t tOverridePoint __attribute__((tls_model("initial-exec"))) = L'.';

// CopyName - the runtime's name for `category` into `buf`; its full length.
size_t CopyName(int category, char* buf, size_t size) {
  std::lock_guard<RuntimeLocaleLock> hold(gCrtLocaleLock);
  const char* name = std::setlocale(category, nullptr);
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

// IsCLocale - the runtime's locale for `category` is the "C" locale (the
// name compared in place, under the lock).
bool IsCLocale(int category) {
  std::lock_guard<RuntimeLocaleLock> hold(gCrtLocaleLock);
  return IsCLocaleName(std::setlocale(category, nullptr));
}

// DecodeFirst - the first character of UTF-8 `text`; 0 when it does not
// start with a well-formed sequence.
wchar_t DecodeFirst(const char* text) {
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  unsigned c = p[0];
  int extra = c < 0x80                ? 0
              : c >= 0xC2 && c < 0xE0 ? 1
              : c >= 0xE0 && c < 0xF0 ? 2
              : c >= 0xF0 && c < 0xF5 ? 3
                                      : -1;
  if (extra < 0)
    return 0;
  unsigned value = extra == 0 ? c : c & (0x3F >> extra);
  for (int i = 1; i <= extra; ++i) {
    if ((p[i] & 0xC0) != 0x80)
      return 0;
    value = (value << 6) | (p[i] & 0x3F);
  }
  bool overlong = (extra == 2 && value < 0x800) || (extra == 3 && value < 0x10000);
  if (overlong || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
    return 0;
  return static_cast<wchar_t>(value);
}
} // namespace

bool IsCLocaleName(const char* name) {
  return !name || std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0;
}

size_t CrtLocaleName(char* buf, size_t size) { return CopyName(LC_CTYPE, buf, size); }

bool CrtLocaleIsC() { return IsCLocale(LC_CTYPE); }

bool CrtNumericLocaleIsC() {
  if (tOverrideName)
    return IsCLocaleName(tOverrideName);
  return IsCLocale(LC_NUMERIC);
}

wchar_t CrtDecimalPoint() {
  if (tOverrideName)
    return tOverridePoint;
  char point[8] = {};
  {
    std::lock_guard<RuntimeLocaleLock> hold(gCrtLocaleLock);
    const char* p = std::localeconv()->decimal_point;
    if (p)
      std::strncpy(point, p, sizeof point - 1);
  }
  wchar_t c = DecodeFirst(point);
  return c ? c : L'.';
}

void SetThreadNumericLocaleOverride(const char* name, wchar_t decimalPoint) {
  tOverrideName = name;
  tOverridePoint = decimalPoint ? decimalPoint : L'.';
}

} // namespace qx::platform
