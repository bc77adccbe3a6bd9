//===- frame/crc16.cpp - CRC-16/ARC with a caller-kept table --------------===//
//
// The byte-wise table of the reflected polynomial 0xA001; the caller owns
// the table and may keep it between calls. Entries the caller's table does
// not hold (index at or beyond its size) are computed instead of read.
//
//===----------------------------------------------------------------------===//
#include "qxutil/frame.h"

namespace {

unsigned short TableEntry(unsigned int index) {
  unsigned int value = index;
  for (int bit = 0; bit < 8; ++bit)
    value = (value & 1) ? (value >> 1) ^ 0xA001u : value >> 1;
  return static_cast<unsigned short>(value);
}

} // namespace

unsigned short calculate_crc16(const unsigned char* data, unsigned int length,
                               unsigned short table[], bool buildTable, int tableSize) {
  if (!table || (!data && length))
    return 0;
  const unsigned int held = tableSize > 0 ? static_cast<unsigned int>(tableSize) : 0;
  if (buildTable)
    for (unsigned int i = 0; i < held; ++i)
      table[i] = TableEntry(i);
  unsigned int crc = 0;
  for (unsigned int i = 0; i < length; ++i) {
    unsigned int index = (data[i] ^ crc) & 0xFF;
    crc = (crc >> 8) ^ (index < held ? table[index] : TableEntry(index));
  }
  return static_cast<unsigned short>(crc);
}
