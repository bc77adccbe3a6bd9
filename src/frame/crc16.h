//===- frame/crc16.h - CRC-16/ARC table entries -----------------*- C++ -*-===//
//
// One entry of the byte-wise table of CRC-16/ARC (reflected polynomial
// 0xA001), usable at compile time: calculate_crc16 and the folding tables'
// identifiers are both made from it.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_FRAME_CRC16_H
#define QXUTIL_FRAME_CRC16_H

namespace qx {

/// Crc16ArcEntry - entry `index` (0..255) of the CRC-16/ARC table.
constexpr unsigned short Crc16ArcEntry(unsigned int index) {
  unsigned int value = index;
  for (int bit = 0; bit < 8; ++bit)
    value = (value & 1) ? (value >> 1) ^ 0xA001u : value >> 1;
  return static_cast<unsigned short>(value);
}

} // namespace qx

#endif // QXUTIL_FRAME_CRC16_H
