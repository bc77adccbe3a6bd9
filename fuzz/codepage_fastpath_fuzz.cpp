// Fuzz target for the fast paths of the code-page conversions on long texts:
// each input byte appends a run of one input class (ASCII, double-byte
// characters, characters the page lacks, bases with nonspacing marks, stray
// marks, best-fit characters, NULs, high and lead bytes), so the texts run
// to thousands of units and the runs meet the 16-unit blocks and the spans
// of the output checks everywhere. Both directions are compared with their
// reference forms (fuzz/models/platform_codepage_compare.h) for the exact size, a
// larger one and short sizes taken from the input.
#include "common/code_pages.h"
#include "models/platform_codepage_compare.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

using namespace qx::win;

namespace {

using qxtest::kAllPages;

void Check(bool ok) {
  if (!ok) {
    std::abort();
  }
}

// Piece - the units of one run of class `kind`, `b` choosing among them.
void AppendUnits(uint8_t kind, uint8_t b, std::wstring* w) {
  static const wchar_t* const kPieces[] = {
      L"\u6F22\u5B57\u304B\u306A\u3002",             // Japanese
      L"\u4E2D\u6587\u5B57\u7B26",                   // Chinese
      L"\uD55C\uAD6D\uC5B4",                         // Korean
      L"\u0E01\u10A0\xD800\U0001F600\uFFFF",         // lacking in most pages
      L"e\u0301a\u0302\u0301\u304B\u3099",           // compositions
      L"q\u0301\u6F22\u0301\u0301",                  // marks without one
      L"\uFF21\u221E\u00E4\u00A5\u2252\u2013\u20AC", // best fit and punctuation
  };
  size_t runs = 1 + (b & 7);
  if (kind < 2) {
    for (size_t k = 0; k < runs * 5; ++k) {
      w->push_back(static_cast<wchar_t>('a' + (k + b) % 26));
    }
  } else if (kind == 2) {
    w->push_back(b % 16 == 0 ? L'\0' : static_cast<wchar_t>(0x300 + b % 0x70)); // NUL or a mark
  } else {
    for (size_t k = 0; k < runs; ++k) {
      w->append(kPieces[(kind + b) % std::size(kPieces)]);
    }
  }
}

void AppendBytes(uint8_t kind, uint8_t b, std::string* s) {
  size_t runs = 1 + (b & 15);
  for (size_t k = 0; k < runs; ++k) {
    if (kind < 2) {
      s->push_back(static_cast<char>('a' + (k + b) % 26));
    } else if (kind == 2) {
      s->push_back(static_cast<char>(0x80 | b)); // a high or lead byte alone
    } else {
      s->push_back(static_cast<char>(0x81 + (b + k) % 0x7E)); // a lead byte and a trail byte
      s->push_back(static_cast<char>(0x40 + (b * 7 + k) % 0xBF));
    }
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 4 || size > 4096) {
    return 0;
  }
  const UINT cp = kAllPages[data[0] % std::size(kAllPages)];
  static const DWORD kEncodeFlags[] = {0, WC_COMPOSITECHECK, WC_COMPOSITECHECK | WC_DEFAULTCHAR,
                                       WC_COMPOSITECHECK | WC_DISCARDNS};
  static const char* const kDefaults[] = {nullptr, "_", "\x81\x45", "\x82"};
  const DWORD flags = kEncodeFlags[data[1] & 3];
  const char* defaultChar = kDefaults[(data[1] >> 2) & 3];
  const DWORD decodeFlags = (data[1] & 0x10) != 0 ? MB_PRECOMPOSED : 0;
  const uint8_t cut = data[2];

  std::wstring units;
  std::string bytes;
  for (size_t i = 3; i + 1 < size; i += 2) {
    AppendUnits(data[i] % 8, data[i + 1], &units);
    AppendBytes(data[i] % 4, data[i + 1], &bytes);
  }
  if (units.empty() || bytes.empty()) {
    return 0;
  }
  const int wlen = static_cast<int>(units.size());
  Check(qxtest::EncodeDiffers(cp, flags, units.data(), wlen, defaultChar, cut % 40) < 0);
  const int blen = static_cast<int>(bytes.size());
  Check(qxtest::DecodeDiffers(cp, decodeFlags, bytes.data(), blen, cut % 40) < 0);
  return 0;
}
