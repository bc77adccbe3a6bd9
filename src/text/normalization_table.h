//===- text/normalization_table.h - One folding table -----------*- C++ -*-===//
//
// A folding table maps each byte value to its folded value. It is known by
// two CRC-16/ARC checksums: of its 256 bytes (the identifier hosts store)
// and of its entries 32..126 (the printable identifier). Both are computed
// when the table is made, at compile time for the built-in tables.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_TEXT_NORMALIZATION_TABLE_H
#define QXUTIL_TEXT_NORMALIZATION_TABLE_H

#include "frame/crc16.h"

namespace qx {

class NormalizationTable {
public:
  /// A table known by the checksum of its bytes.
  constexpr explicit NormalizationTable(const unsigned char (&map)[256])
      : NormalizationTable(map, 0, false) {}

  /// A table that answers to `listedId` whatever its bytes give: a table
  /// built from its rules whose bytes are not yet confirmed to be the ones
  /// known by that identifier.
  constexpr NormalizationTable(const unsigned char (&map)[256], unsigned short listedId)
      : NormalizationTable(map, listedId, true) {}

  /// map - the 256 folded values.
  constexpr const unsigned char* map() const { return map_; }
  /// id - the identifier the table answers to.
  constexpr unsigned short id() const { return id_; }
  /// printableId - the checksum of entries 32..126.
  constexpr unsigned short printableId() const { return printableId_; }
  /// checksum - the checksum of the 256 bytes.
  constexpr unsigned short checksum() const { return checksum_; }
  /// confirmed - the bytes reproduce the identifier.
  constexpr bool confirmed() const { return checksum_ == id_; }

private:
  constexpr NormalizationTable(const unsigned char (&map)[256], unsigned short listedId,
                               bool listed)
      : map_{}, id_(0), printableId_(0), checksum_(0) {
    unsigned short crcTable[256] = {};
    for (unsigned int i = 0; i < 256; ++i)
      crcTable[i] = Crc16ArcEntry(i);
    for (int i = 0; i < 256; ++i)
      map_[i] = map[i];
    checksum_ = Checksum(crcTable, 0, 256);
    printableId_ = Checksum(crcTable, 32, 127);
    id_ = listed ? listedId : checksum_;
  }

  constexpr unsigned short Checksum(const unsigned short (&crcTable)[256], int first,
                                    int end) const {
    unsigned int crc = 0;
    for (int i = first; i < end; ++i)
      crc = (crc >> 8) ^ crcTable[(map_[i] ^ crc) & 0xFF];
    return static_cast<unsigned short>(crc);
  }

  unsigned char map_[256];
  unsigned short id_;
  unsigned short printableId_;
  unsigned short checksum_;
};

/// kFoldingTableCount - the number of built-in tables.
constexpr int kFoldingTableCount = 11;

/// FoldingTable - built-in table `index` (0..10) in the fixed order.
const NormalizationTable& FoldingTable(int index);

/// FindFoldingTable - the first built-in table, in the fixed order, that
/// answers to `id`; null if none does.
const NormalizationTable* FindFoldingTable(unsigned short id);

} // namespace qx

#endif // QXUTIL_TEXT_NORMALIZATION_TABLE_H
