// What a normalizer's Compare must agree with: the text's bytes in the
// normalizer's character set, each mapped through the table (a double-byte
// set on a double-byte system leaving the system's lead bytes and the bytes
// after them alone), compared as unsigned bytes. Shared by the unit test and
// the fuzz target, with the alphabet both draw random text from.
#ifndef QXUTIL_TESTS_TEXT_NORMALIZER_ORACLE_H
#define QXUTIL_TESTS_TEXT_NORMALIZER_ORACLE_H

#include "platform/codepage.h"
#include "qxutil/text.h"

#include <string>
#include <vector>

namespace qxtest {

/// FoldedBytes - the oracle's folded form of `text`.
inline std::string FoldedBytes(QXCHARSET cs, const unsigned char* map, const std::wstring& text) {
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

/// Sign - -1, 0 or 1 as `a` compares with `b` as unsigned bytes.
inline int Sign(const std::string& a, const std::string& b) {
  int c = a.compare(b); // std::string compares char_traits<char>, i.e. as unsigned bytes
  return c < 0 ? -1 : c > 0 ? 1 : 0;
}

/// kAlphabet - what random text is made of: ASCII letters, digits and
/// punctuation, accented Latin letters of the Western, Central European and
/// Turkish pages, Nordic letters, Cyrillic, Greek with tonos and dialytika,
/// quotation marks, kana and ideographs, a character no page holds, and
/// nonspacing marks (which compose with the letter before them).
inline constexpr wchar_t kAlphabet[] =
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

} // namespace qxtest

#endif
