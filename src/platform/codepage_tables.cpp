// Provides: the generated code-page tables and their lookups (no Windows calls of its own).
#include "platform/codepage_tables.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace qx::platform {
namespace {

#include "platform/codepage_compose.inc"
#include "platform/codepage_dbcs932.inc"
#include "platform/codepage_dbcs936.inc"
#include "platform/codepage_dbcs949.inc"
#include "platform/codepage_dbcs950.inc"
#include "platform/codepage_sbcs.inc"

#include "platform/codepage_index.inc"

constexpr bool PagesSorted() {
  for (size_t i = 1; i < std::size(kCodePages); ++i) {
    if (kCodePages[i - 1].codePage >= kCodePages[i].codePage) {
      return false;
    }
  }
  return true;
}
static_assert(PagesSorted(), "kCodePages must be sorted by code page");

// kDbcsSlotOf - each page's place among the double-byte pages.
constexpr auto kDbcsSlotOf = [] {
  std::array<uint8_t, std::size(kCodePages)> slot{};
  unsigned next = 0;
  for (size_t i = 0; i < std::size(kCodePages); ++i) {
    slot[i] = static_cast<uint8_t>(next);
    next += kCodePages[i].dbcs ? 1 : 0;
  }
  return slot;
}();
static_assert(kDbcsSlotOf.back() + (kCodePages[std::size(kCodePages) - 1].dbcs ? 1 : 0) <=
                  kMaxDbcsPages,
              "more double-byte pages than kMaxDbcsPages");

} // namespace

const CodePageTable* FindCodePageTable(unsigned cp) {
  const auto* end = std::end(kCodePages);
  const auto* it =
      std::lower_bound(std::begin(kCodePages), end, cp,
                       [](const CodePageTable& t, unsigned v) { return t.codePage < v; });
  return it != end && it->codePage == cp ? it : nullptr;
}

unsigned DbcsSlot(const CodePageTable& t) {
  return kDbcsSlotOf[static_cast<size_t>(&t - std::begin(kCodePages))];
}

unsigned CodePageTableCount() { return static_cast<unsigned>(std::size(kCodePages)); }

const CodePageTable& CodePageTableAt(unsigned i) { return kCodePages[i]; }

uint16_t Compose(uint32_t base, uint32_t mark) {
  const auto* end = std::end(kComposePairs);
  const auto* it = std::lower_bound(std::begin(kComposePairs), end, base,
                                    [](const ComposePair& p, uint32_t b) { return p.base < b; });
  for (; it != end && it->base == base; ++it) {
    if (it->mark == mark) {
      return it->composed;
    }
  }
  return 0;
}

const ComposePair* Decompose(uint32_t c) {
  const auto* end = std::end(kDecomposeOrder);
  const auto* it =
      std::lower_bound(std::begin(kDecomposeOrder), end, c,
                       [](uint16_t i, uint32_t v) { return kComposePairs[i].composed < v; });
  return it != end && kComposePairs[*it].composed == c ? &kComposePairs[*it] : nullptr;
}

} // namespace qx::platform
