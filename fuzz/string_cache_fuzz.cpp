// Long random runs of string caches against a plain list
// (models/string_cache_model.h): the input picks the data size, then for each
// step the name (letters that fold and units that do not; short, long, or of
// the length that meets the 65,500-byte bound give or take a unit), the data,
// sorted or unsorted insertion, and whether the heap fails the growth. After
// every step the result must match; the whole cache is read back every few
// steps and at the end.
#include "models/string_cache_model.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

const wchar_t kLetters[] = L"aAbBzZ_[`@{\u00e9\u00c9\u4e00\uffff";

void Check(const std::string& diff) {
  if (!diff.empty())
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  qxtest::StringCacheModel model(data[0] % 9);
  wchar_t* cache = nullptr;
  size_t at = 1;
  for (int step = 0; at + 2 <= size; ++step) {
    const uint8_t flags = data[at++];
    size_t length = data[at++] % 8;
    if ((flags & 0xA0) == 0xA0) { // a name at the bound: fits, just fits or not
      const long room = 32748 - 2 * model.dataSize() - long(model.Offset(model.entries().size()));
      length = size_t(std::max(1L, room + long(length % 4) - 2));
    } else if (flags & 0x20) { // now and then a long name
      length = length * 150 + (flags & 0x1F);
    }
    std::wstring name(length, L' ');
    for (size_t i = 0; i < length; ++i)
      name[i] = kLetters[(at < size ? data[at + (i % (size - at))] : i) %
                         (sizeof kLetters / sizeof kLetters[0] - 1)];
    at += length < 8 ? length : 8;
    unsigned char record[8] = {};
    for (size_t i = 0; i < sizeof record && at + i < size; ++i)
      record[i] = data[at + i];
    Check(qxtest::CacheStep(&cache, &model, name, flags & 0x40 ? nullptr : record, flags & 1,
                            (flags & 6) == 6));
    if (step % 8 == 0)
      Check(qxtest::CompareCache(cache, model));
  }
  Check(qxtest::CompareCache(cache, model));
  ffree(&cache);
  return 0;
}
