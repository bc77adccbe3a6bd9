//===- text/string_normalizer.h - The library's normalizer ------*- C++ -*-===//
//
// StringNormalizerImpl folds through one built-in table in one character
// set. FoldText is the fold both Normalize and Compare use, so that a
// caller that sorts many strings can fold each once and compare the bytes
// (the qxutil program's sort does).
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_TEXT_STRING_NORMALIZER_H
#define QXUTIL_TEXT_STRING_NORMALIZER_H

#include "qxutil/text.h"
#include "text/normalization_table.h"

namespace qx {

/// kRenamedWesternId - the identifier a "WindowsLatin1" normalizer over the
/// Western table (44414) reports: the one hosts know that table by.
constexpr unsigned short kRenamedWesternId = 5607;
constexpr unsigned short kWesternId = 44414;

class StringNormalizerImpl final : public StringNormalizer {
public:
  /// Create - a normalizer of `charset` over `table`; null when memory
  /// fails.
  static StringNormalizerImpl* Create(QXCHARSET charset, const NormalizationTable& table);

  QXCHARSET GetCharset() override { return charset_; }
  unsigned short GetId() override { return id_; }
  unsigned short GetPrintableId() override { return table_->printableId(); }
  bool IsActive() override { return active_; }
  void Normalize(wchar_t* text) override;
  int Compare(const wchar_t* a, const wchar_t* b) override;
  bool SetActive(bool on) override { return active_ = on; }

  const NormalizationTable& table() const { return *table_; }

private:
  StringNormalizerImpl(QXCHARSET charset, const NormalizationTable& table);
  ~StringNormalizerImpl() override;

  /// CompareConverted - Compare by converting both strings whole (its
  /// buffers kept out of Compare's own frame).
  [[gnu::noinline]] int CompareConverted(const wchar_t* a, const wchar_t* b);
  /// FoldedUnit - the folded byte of `u` converted on its own; 0 for the
  /// terminator and when `u` does not convert to one byte on its own (a
  /// nonspacing mark, a unit outside the BMP) or memory fails.
  int FoldedUnit(wchar_t u);
  const unsigned char* BuildPage(unsigned int page);

  QXCHARSET charset_;
  const NormalizationTable* table_;
  unsigned short id_;
  bool active_ = true;
  /// Whether Compare may fold unit by unit: a single-byte set with a code page of
  /// its own, so a unit's byte never depends on the thread or the system.
  bool quick_;
  /// pages_[u >> 8][u & 0xFF] - the folded byte of unit u on its own, 0 when
  /// it has none; a page is made on first use (page 0 lives in page0_).
  unsigned char* pages_[256] = {};
  unsigned char page0_[256] = {};
};

/// FoldText - `text` converted to bytes of `charset` into `out` of `size`
/// bytes (at least 1) and folded through `table`. With `acceptTruncation`
/// the bytes are cut to fit and always terminated, and the result is true;
/// otherwise a text that does not fit gives false (and `out` is not to be
/// used). Folding walks a double-byte set by characters (see FoldBytes).
bool FoldText(QXCHARSET charset, const NormalizationTable& table, const wchar_t* text, char* out,
              unsigned int size, bool acceptTruncation);

/// FoldBytes - folds the NUL-terminated `bytes` of `charset` in place. In
/// a single-byte set every byte is mapped. In a double-byte set the string
/// is walked with the system code page's character steps and, when the
/// system charset is itself double-byte, its lead bytes and the bytes after
/// them are left unmapped: the set decides whether to walk, the system
/// decides what a lead byte is.
void FoldBytes(QXCHARSET charset, const unsigned char* map, char* bytes);

/// FoldingTableOf - the built-in table `normalizer` folds with; null for a
/// normalizer this library did not make.
const NormalizationTable* FoldingTableOf(StringNormalizer* normalizer);

} // namespace qx

#endif // QXUTIL_TEXT_STRING_NORMALIZER_H
