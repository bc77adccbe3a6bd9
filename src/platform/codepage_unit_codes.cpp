// Provides: DbcsUnitCodes, the flat reverse tables of the double-byte pages (codepage_tables.h).
//
// The generated reverse map takes two dependent loads a unit (high byte ->
// block, low byte -> code) and a nonspacing-mark test two more. The flat
// table answers both with one load: a zero entry sends the unit to the
// general step (U+0000, a unit the page lacks, a mark, U+FFFF and, through
// the clamp, every unit above it).
#include "platform/codepage_tables.h"
#include "platform/unicode.h"

#include <atomic>

namespace qx::platform {
namespace {

constexpr size_t kUnits = 0x10000;

// The tables live in static storage: pages never touched cost no memory.
struct UnitCodeTable {
  uint16_t code[kUnits];
};

UnitCodeTable gTables[kMaxDbcsPages];

// Per slot: 0 empty, 1 being filled, 2 ready (published with release).
enum : uint8_t { kEmpty, kFilling, kReady };
std::atomic<uint8_t> gState[kMaxDbcsPages];

void Fill(const CodePageTable& t, uint16_t* code) {
  for (size_t hi = 0; hi < 256; ++hi) {
    uint16_t* row = code + hi * 256;
    const uint16_t* block = t.dbcsBlocks[t.encodeHi[hi]];
    for (size_t lo = 0; lo < 256; ++lo) {
      uint16_t c = block[lo];
      row[lo] = c > 0xFF ? static_cast<uint16_t>(c >> 8 | (c & 0xFF) << 8) : c; // lead byte low
    }
    if (kMarkBlockOf[hi] != 0) {
      for (size_t lo = 0; lo < 256; ++lo) {
        if (IsNonSpacingMark(static_cast<uint32_t>(hi << 8 | lo))) {
          row[lo] = 0;
        }
      }
    }
  }
  code[kUnits - 1] = 0; // the clamp target of the units above U+FFFF
}

} // namespace

const uint16_t* DbcsUnitCodes(const CodePageTable& t) {
  if (!t.dbcs) {
    return nullptr;
  }
  unsigned slot = DbcsSlot(t);
  std::atomic<uint8_t>& state = gState[slot];
  if (state.load(std::memory_order_acquire) == kReady) {
    return gTables[slot].code;
  }
  uint8_t expected = kEmpty;
  if (!state.compare_exchange_strong(expected, kFilling, std::memory_order_acquire)) {
    return expected == kReady ? gTables[slot].code : nullptr;
  }
  Fill(t, gTables[slot].code);
  state.store(kReady, std::memory_order_release);
  return gTables[slot].code;
}

} // namespace qx::platform
