//===- frame/crc16.cpp - CRC-16/ARC with a caller-kept table --------------===//
//
// The byte-wise table of the reflected polynomial 0xA001; the caller owns
// the table and may keep it between calls. Entries the caller's table does
// not hold (index at or beyond its size) are computed instead of read.
//
//===----------------------------------------------------------------------===//
#include "frame/crc16.h"
#include "qxutil/frame.h"

using qx::Crc16ArcEntry;

unsigned short calculate_crc16(const unsigned char* data, unsigned int length,
                               unsigned short table[], bool buildTable, int tableSize) {
  if (!table || (!data && length))
    return 0;
  const unsigned int held = tableSize > 0 ? static_cast<unsigned int>(tableSize) : 0;
  if (buildTable)
    for (unsigned int i = 0; i < held; ++i)
      table[i] = Crc16ArcEntry(i);
  unsigned int crc = 0;
  for (unsigned int i = 0; i < length; ++i) {
    unsigned int index = (data[i] ^ crc) & 0xFF;
    crc = (crc >> 8) ^ (index < held ? table[index] : Crc16ArcEntry(index));
  }
  return static_cast<unsigned short>(crc);
}
