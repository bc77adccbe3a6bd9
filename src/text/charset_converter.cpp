//===- text/charset_converter.cpp - Byte-to-byte translation tables -------===//
//
// cCharsetConverter builds a 256-byte table between two 8-bit members from
// their Unicode maps and keeps the last ten in slots replaced round-robin.
// A source byte takes the lowest target byte in 1..254 with the same
// character; byte 0, unmapped bytes and characters the target lacks become
// the target's unknown code ('_') and are counted (byte 0 is not counted).
//
//===----------------------------------------------------------------------===//
#include "frame/singleton.h"
#include "text/charset_maps.h"

#include <cstdint>
#include <cstring>

namespace {

#include "text/charset_maps.inc"

constexpr int kCacheSlots = 10;

struct ConversionCacheEntry {
  int32_t from;
  int32_t to;
  unsigned char table[256];
};

// ReverseIndex - the target map's character => lowest byte in 1..254, as an
// open-addressed hash on the stack: a build costs a few hundred steps
// instead of a linear search of the target map per source byte.
class ReverseIndex {
public:
  explicit ReverseIndex(const uint16_t* map) {
    std::memset(keys_, 0xFF, sizeof keys_); // 0xFFFF: empty (a marker, never a key)
    for (int b = 254; b >= 1; --b) {        // downwards, so the lowest byte stays
      uint16_t u = map[b];
      if (qx::IsUnmappedMarker(u))
        continue;
      unsigned i = Probe(u);
      keys_[i] = u;
      bytes_[i] = static_cast<unsigned char>(b);
    }
  }

  /// Find - the byte of `u`, 0 when the target has none.
  unsigned char Find(uint16_t u) const {
    unsigned i = Probe(u);
    return keys_[i] == u ? bytes_[i] : 0;
  }

private:
  static constexpr unsigned kSize = 512; // at most 254 keys: half full

  unsigned Probe(uint16_t u) const {
    unsigned i = (u * 40503u) >> 7 & (kSize - 1);
    while (keys_[i] != u && keys_[i] != 0xFFFF)
      i = (i + 1) & (kSize - 1);
    return i;
  }

  uint16_t keys_[kSize];
  unsigned char bytes_[kSize];
};

bool IsMember(QXCHARSET cs) { return cs > 0 && cs < kQXCharsetCount; }

class cCharsetConverterImpl final : public cCharsetConverter {
public:
  cCharsetConverterImpl() {
    for (ConversionCacheEntry& slot : slots_) {
      slot.from = -1;
      slot.to = -1;
      std::memset(slot.table, 0, sizeof slot.table);
    }
  }

  bool GetConversionTable(QXCHARSET from, QXCHARSET to, int* unknownCount,
                          unsigned char** table) override {
    if (!IsMember(from) || !IsMember(to) || from == to || !table)
      return false;
    for (ConversionCacheEntry& slot : slots_) {
      if (slot.from == from && slot.to == to) {
        *table = slot.table; // the count is deliberately not written on a hit
        return true;
      }
    }
    const qx::CharsetUnicodeMap* source = qx::CharsetUnicodeMapOf(from);
    const qx::CharsetUnicodeMap* target = qx::CharsetUnicodeMapOf(to);
    if (!source || !target)
      return false;
    lastSlot_ = lastSlot_ + 1 >= kCacheSlots ? 0 : lastSlot_ + 1;
    ConversionCacheEntry& slot = slots_[lastSlot_];
    uint16_t count = Build(*source, *target, CharsetUnknownCode(to), slot.table);
    slot.from = from;
    slot.to = to;
    if (unknownCount)
      *unknownCount = count;
    *table = slot.table;
    return true;
  }

private:
  static uint16_t Build(const uint16_t* source, const uint16_t* target, unsigned char unknown,
                        unsigned char* table) {
    ReverseIndex reverse(target);
    uint16_t count = 0;
    table[0] = unknown;
    for (int s = 1; s < 256; ++s) {
      uint16_t c = source[s];
      unsigned char b = qx::IsUnmappedMarker(c) ? 0 : reverse.Find(c);
      if (b == 0) {
        b = unknown;
        ++count;
      }
      table[s] = b;
    }
    return count;
  }

  ConversionCacheEntry slots_[kCacheSlots];
  int32_t lastSlot_ = -1;
};

} // namespace

namespace qx {

const CharsetUnicodeMap* CharsetUnicodeMapOf(QXCHARSET cs) {
  if (cs < 0 || cs >= kQXCharsetCount)
    return nullptr;
  return reinterpret_cast<const CharsetUnicodeMap*>(kCharsetUnicodeMaps[cs]);
}

} // namespace qx

cCharsetConverter::~cCharsetConverter() {}

cCharsetConverter* cCharsetConverter::Create() {
  return qx::NewServiceOrNull<cCharsetConverterImpl>();
}

bool ConvertCharset(QXCHARSET from, QXCHARSET to, int* unknownCount, unsigned char** table) {
  cCharsetConverter* converter = cCharsetConverter::Instance();
  return converter && converter->GetConversionTable(from, to, unknownCount, table);
}

bool IsStrConvertNecessary(QXCHARSET from, QXCHARSET to) {
  return IsMember(from) && IsMember(to) && from != to;
}

template class QXSingleton<cCharsetConverter, 4>;
