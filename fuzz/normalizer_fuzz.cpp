// Long random runs of the normalizer property (tests/text/normalizer_oracle.h):
// for a table and a character set picked by the first two bytes, Compare of
// any two of three strings equals the order of their folded bytes, is
// antisymmetric and transitive; Normalize stays within the text. The second
// byte's high bit runs the case on a new thread whose system is Japanese
// (double-byte, so a double-byte set steps over its pairs). The rest of the
// input is the three strings, split at 0xFF bytes, each byte mapped onto the
// oracle's alphabet.
#include "../tests/text/normalizer_oracle.h"
#include "common/thread_runner.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"
#include "text/normalization_table.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr size_t kMaxLength = 40;

const QXCHARSET kCharsets[] = {
    QXCHARSET_WINDOWS_LATIN1,   QXCHARSET_WINDOWS_LATIN2,     QXCHARSET_WINDOWS_CYRILLIC,
    QXCHARSET_WINDOWS_GREEK,    QXCHARSET_WINDOWS_TURKISH,    QXCHARSET_WINDOWS_BALTIC_RIM,
    QXCHARSET_WINDOWS_JAPANESE, QXCHARSET_WINDOWS_KOREAN,     QXCHARSET_MAC_ROMAN,
    QXCHARSET_CODEPAGE_850,     QXCHARSET_WINDOWS_VIETNAMESE, QXCHARSET_NEUTRAL,
};

// CheckCase - the property on the three texts, in this thread's system.
void CheckCase(const qx::NormalizationTable& table, QXCHARSET cs, const std::wstring (&text)[3]) {
  StringNormalizer* n = GetNormalizer(cs, table.id());
  if (!n)
    std::abort();
  std::string folded[3];
  for (int i = 0; i < 3; ++i)
    folded[i] = qxtest::FoldedBytes(cs, table.map(), text[i]);
  int order[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      order[i][j] = n->Compare(text[i].c_str(), text[j].c_str());
      if (order[i][j] != qxtest::Sign(folded[i], folded[j]))
        std::abort();
    }
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      if (order[i][j] != -order[j][i])
        std::abort();
      for (int k = 0; k < 3; ++k)
        if (order[i][j] <= 0 && order[j][k] <= 0 && order[i][k] > 0)
          std::abort();
    }
  for (const std::wstring& t : text) {
    std::vector<wchar_t> exact(t.begin(), t.end());
    exact.push_back(0); // exactly the text and its terminator: ASan sees any overrun
    n->Normalize(exact.data());
    if (std::wcslen(exact.data()) > t.size())
      std::abort();
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2)
    return 0;
  const qx::NormalizationTable& table = qx::FoldingTable(data[0] % qx::kFoldingTableCount);
  QXCHARSET cs = kCharsets[data[1] % std::size(kCharsets)];
  std::wstring text[3];
  int which = 0;
  for (size_t i = 2; i < size && which < 3; ++i) {
    if (data[i] == 0xFF)
      ++which;
    else if (text[which].size() < kMaxLength)
      text[which] += qxtest::kAlphabet[data[i] % (std::size(qxtest::kAlphabet) - 1)];
  }
  if (data[1] & 0x80)
    qxtest::RunOnNewThread([&] {
      SetThreadLocale(1041);
      CheckCase(table, cs, text);
    });
  else
    CheckCase(table, cs, text);
  return 0;
}
