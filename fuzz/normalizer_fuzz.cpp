// Long random runs of the normalizer property against its oracle (below):
// for a table and a character set picked by the first two bytes, Compare of
// any two of three strings equals the order of their folded bytes, is
// antisymmetric and transitive; Normalize gives the folded bytes read back in
// the set's code page (the system's for a set without one of its own), or
// leaves the text as it was when they would be longer. The second
// byte's high bit runs the case on a new thread whose system is Japanese
// (double-byte, so a double-byte set steps over its pairs). The rest of the
// input is the three strings, split at 0xFF bytes, each byte mapped onto the
// oracle's alphabet.
#include "common/thread_runner.h"
#include "platform/codepage.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"
#include "text/normalization_table.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// What Compare must agree with: the text's bytes in the normalizer's
// character set, each mapped through the table (a double-byte set on a
// double-byte system leaving the system's lead bytes and the bytes after them
// alone), compared as unsigned bytes.
// FoldedBytes - the oracle's folded form of `text`.
std::string FoldedBytes(QXCHARSET cs, const unsigned char* map, const std::wstring& text) {
  std::vector<char> bytes(4 * text.size() + 8, 0);
  if (!ConvertSystemToMBCSChar(text.c_str(), bytes.data(), cs, static_cast<unsigned>(bytes.size()),
                               false))
    return "conversion failed";
  std::string out(bytes.data());
  bool systemLeads = CharsetDBCS(system_charset()) && IS_DBCS_CHARSET(cs);
  for (size_t i = 0; i < out.size(); ++i) {
    auto b = static_cast<unsigned char>(out[i]);
    if (systemLeads && qx::win::IsDBCSLeadByteEx(qx::win::GetACP(), b)) {
      ++i; // the trail byte stays as it is
      continue;
    }
    out[i] = static_cast<char>(map[b]);
  }
  return out;
}

// Normalized - what Normalize must make of `text`.
std::wstring Normalized(QXCHARSET cs, const unsigned char* map, const std::wstring& text) {
  std::string folded = FoldedBytes(cs, map, text);
  int cp = GetWinCodePage(cs);
  if (cp < 0 || (cp > 1 && !qx::win::IsValidCodePage(static_cast<UINT>(cp))))
    cp = GetWinCodePage(system_charset());
  if (cp < 0 || text.empty() || folded == "conversion failed")
    return text;
  const UINT page = static_cast<UINT>(cp);
  const int length = static_cast<int>(folded.size());
  int n = qx::win::MultiByteToWideChar(page, MB_PRECOMPOSED, folded.data(), length, nullptr, 0);
  if (n <= 0 || static_cast<size_t>(n) > text.size())
    return text;
  std::wstring out(static_cast<size_t>(n), L'\0');
  qx::win::MultiByteToWideChar(page, MB_PRECOMPOSED, folded.data(), length, out.data(), n);
  return out;
}

// Sign - -1, 0 or 1 as `a` compares with `b` as unsigned bytes.
int Sign(const std::string& a, const std::string& b) {
  int c = a.compare(b); // std::string compares char_traits<char>, i.e. as unsigned bytes
  return c < 0 ? -1 : c > 0 ? 1 : 0;
}

// kAlphabet - what random text is made of: ASCII letters, digits and
// punctuation, accented Latin letters of the Western, Central European and
// Turkish pages, Nordic letters, Cyrillic, Greek with tonos and dialytika,
// quotation marks, kana and ideographs, a character no page holds, and
// nonspacing marks (which compose with the letter before them).
constexpr wchar_t kAlphabet[] =
    L"aAzZ09 _[\\]^`{|}~-.'\""
    L"\u00e9\u00c9\u00e5\u00c5\u00e4\u00c4\u00f6\u00d6\u00e6\u00c6\u00f8\u00d8\u00fc\u00dc\u00df"
    L"\u00ff"
    L"\u0142\u0141\u0105\u0107\u0106\u0119\u0144\u00f3\u00d3\u015b\u017c\u0161\u0160\u0153\u0178"
    L"\u011f\u0130\u0131\u015f"
    L"\u0430\u0410\u0451\u0401\u044f\u042f\u0456\u0491"
    L"\u03b1\u0391\u03ac\u0386\u03ca\u03b0\u03c2\u03c3\u03bf\u03cc"
    L"\u201c\u201d\u2018\u2019\u201e\u00ab\u00bb"
    L"\u30c2\u3042\u6f22\u4e00\u2603"
    L"\u0301\u0308\u0327\u030a";

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
    folded[i] = FoldedBytes(cs, table.map(), text[i]);
  int order[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      order[i][j] = n->Compare(text[i].c_str(), text[j].c_str());
      if (order[i][j] != Sign(folded[i], folded[j]))
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
    if (exact.data() != Normalized(cs, table.map(), t))
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
      text[which] += kAlphabet[data[i] % (std::size(kAlphabet) - 1)];
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
