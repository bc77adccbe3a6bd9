//===- text/folding_tables.cpp - The eleven built-in folding tables -------===//
//
// The tables come from tools/gen/gen_foldtables.py, which builds each from
// its rules (docs/normalizers.md). Each is made at compile time, and the
// build fails if a table marked confirmed does not reproduce its identifier.
//
//===----------------------------------------------------------------------===//
#include "text/normalization_table.h"

namespace qx {

namespace {

struct FoldingTableData {
  unsigned short id;
  bool confirmed;
  unsigned char map[256];
};

#include "text/folding_tables.inc"

constexpr NormalizationTable Make(const FoldingTableData& data) {
  return data.confirmed ? NormalizationTable(data.map) : NormalizationTable(data.map, data.id);
}

constexpr NormalizationTable kTables[kFoldingTableCount] = {
    Make(kFoldingTableData[0]), Make(kFoldingTableData[1]),  Make(kFoldingTableData[2]),
    Make(kFoldingTableData[3]), Make(kFoldingTableData[4]),  Make(kFoldingTableData[5]),
    Make(kFoldingTableData[6]), Make(kFoldingTableData[7]),  Make(kFoldingTableData[8]),
    Make(kFoldingTableData[9]), Make(kFoldingTableData[10]),
};

constexpr bool IdentifiersHold() {
  for (int i = 0; i < kFoldingTableCount; ++i)
    if (kTables[i].id() != kFoldingTableData[i].id ||
        kTables[i].confirmed() != kFoldingTableData[i].confirmed)
      return false;
  return true;
}
static_assert(IdentifiersHold(), "a confirmed folding table does not reproduce its identifier");

} // namespace

const NormalizationTable& FoldingTable(int index) { return kTables[index]; }

const NormalizationTable* FindFoldingTable(unsigned short id) {
  for (const NormalizationTable& table : kTables)
    if (table.id() == id)
      return &table;
  return nullptr;
}

} // namespace qx
