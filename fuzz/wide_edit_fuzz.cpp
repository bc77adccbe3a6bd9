// The mode-free wide-string edits and comparisons on arbitrary text against
// the plain rules below: trimming and white space, the CR and LF rewrites,
// unit replacement, the wide copies and concat_backslash (into sentinel
// buffers: the bytes past what the rule writes stay untouched), and the
// ordinal and ASCII-folding comparisons, at sizes on both sides of the
// length and, with long texts, past strniequ's stack scratch.
#include "qxutil/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr wchar_t kSentinel = L'\uFDD0';

void Check(bool ok) {
  if (!ok)
    std::abort();
}

wchar_t Unit(uint8_t b) {
  static const wchar_t kAlphabet[] = L"aAzZ_\\n\r\n\t \x01\x7f\x0b\x0c\x80\u00e9\u00c9\uffff/,";
  return kAlphabet[b % (sizeof(kAlphabet) / sizeof(wchar_t) - 1)];
}

bool White(wchar_t c) { return c == 9 || c == 10 || c == 12 || c == 13 || c == 32; }
bool Trimmable(wchar_t c) { return White(c) || c < 32 || c == 127; }
unsigned Fold(wchar_t c) { return unsigned(c) + (c >= L'A' && c <= L'Z' ? 32 : 0); }

// FoldDiff - the folded difference of the first n units of a and b, up to a
// terminator; Order - the unfolded sign.
int FoldDiff(const std::wstring& a, const std::wstring& b, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    unsigned x = i < a.size() ? Fold(a[i]) : 0, y = i < b.size() ? Fold(b[i]) : 0;
    if (x != y || x == 0)
      return int(x) - int(y);
  }
  return 0;
}
int Order(const std::wstring& a, const std::wstring& b) {
  int c = a.compare(b);
  return c < 0 ? -1 : c > 0;
}

void CheckCompare(const std::wstring& a, const std::wstring& b, size_t n) {
  const wchar_t *pa = a.c_str(), *pb = b.c_str();
  Check(qxStrCmp(pa, pb) == Order(a, b) && qxStrCmp(nullptr, pb) == -1 &&
        !qxStrCmp(nullptr, nullptr) && qxStrCmp(pa, nullptr) == 1);
  Check(strequ(pa, pb) == (a == b) && striequ(pa, pb) == (FoldDiff(a, b, SIZE_MAX) == 0));
  Check(strnequ(pa, pb, n) == (a.substr(0, n) == b.substr(0, n)));
  Check(strniequ(pa, pb, n) == (FoldDiff(a, b, n) == 0));
  Check(qxStrICmp(pa, pb) == FoldDiff(a, b, SIZE_MAX) &&
        qxStrNICmp(pa, pb, n) == FoldDiff(a, b, n));
  Check(!strequ(pa, nullptr) && !striequ(nullptr, pb) && !strnequ(pa, nullptr, n) &&
        !strniequ(nullptr, pb, n));
}

// Edit - runs `fn` on `s` and its terminator in a buffer of sentinels, which
// must then start with `want`, the sentinels past both still in place.
template <class Fn> void Edit(const std::wstring& s, const std::wstring& want, Fn fn) {
  std::vector<wchar_t> buf(s.begin(), s.end());
  buf.push_back(0);
  buf.resize(std::max(s.size(), want.size()) + 8, kSentinel);
  fn(buf.data());
  Check(std::wstring(buf.data(), want.size()) == want &&
        std::all_of(buf.begin() + long(std::max(want.size(), s.size() + 1)), buf.end(),
                    [](wchar_t c) { return c == kSentinel; }));
}

void CheckTrims(const std::wstring& s) {
  size_t lead = 0, spaces = 0, white = 0, end = s.size();
  while (lead < s.size() && Trimmable(s[lead]))
    ++lead;
  while (spaces < s.size() && s[spaces] == L' ')
    ++spaces;
  while (white < s.size() && White(s[white]))
    ++white;
  while (end > 0 && Trimmable(s[end - 1]))
    --end;
  const wchar_t* skipped = skipwhite(s.c_str());
  Check(white == s.size() ? !skipped : skipped == s.c_str() + white);
  const bool keep = lead == s.size();
  Edit(s, (keep ? s : s.substr(lead)) + L'\0',
       [&](wchar_t* b) { Check(ltrim(b) == (keep ? 0 : lead)); });
  Edit(s, s.substr(spaces) + L'\0', [&](wchar_t* b) { Check(ltrim2(b) == spaces); });
  Edit(s, s.substr(0, end) + std::wstring(s.size() - end + 1, 0),
       [&](wchar_t* b) { Check(rtrim(b) == end); });
}

// CheckLineEnds - TextRemoveCrs on s; TextAddCrs and FilterNewline (into
// another buffer and in place) on its first m units.
void CheckLineEnds(const std::wstring& s, size_t m) {
  std::wstring noCrs, addCrs;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] != L'\r' || i + 1 == s.size() || s[i + 1] != L'\n')
      noCrs += s[i];
    if (i < m)
      addCrs += s[i] == L'\n' ? L"\r\n" : s.substr(i, 1);
  }
  Edit(s, noCrs + L'\0', [&](wchar_t* b) { Check(TextRemoveCrs(b) == noCrs.size()); });
  wchar_t* out = nullptr;
  Check(TextAddCrs(&out, s.c_str(), unsigned(m)) == addCrs.size() && out &&
        std::wstring(out, addCrs.size() + 1) == addCrs + L'\0');
  ffree(&out);
  for (bool decode : {false, true}) {
    const wchar_t first = decode ? L'\\' : L'\r', second = decode ? L'n' : L'\n';
    std::wstring want;
    for (size_t i = 0; i < m; ++i) {
      const bool pair = s[i] == first && i + 1 < m && s[i + 1] == second;
      want += pair ? (decode ? L"\r\n" : L"\\n") : s.substr(i, 1);
      i += pair;
    }
    std::vector<wchar_t> dst(m + 4, kSentinel);
    FilterNewline(dst.data(), s.c_str(), unsigned(m), decode);
    Check(std::wstring(dst.data(), m) == want &&
          std::all_of(dst.begin() + long(m), dst.end(), [](wchar_t c) { return c == kSentinel; }));
    Edit(s, want + s.substr(m), [&](wchar_t* b) { FilterNewline(b, b, unsigned(m), decode); });
  }
}

// CheckReplace - every unit `from` (never the terminator), or of a set of
// `from` and ',', replaced by `to` (0 included).
void CheckReplace(const std::wstring& s, wchar_t from, wchar_t to) {
  std::wstring one = s, set = from ? std::wstring(1, from) + L',' : L",", inSet = s;
  std::replace(one.begin(), one.end(), from, to);
  for (wchar_t& c : inSet)
    c = set.find(c) != std::wstring::npos ? to : c;
  Edit(s, one + L'\0', [&](wchar_t* b) { TextReplaceChar(b, from, to); });
  Edit(s, inSet + L'\0', [&](wchar_t* b) { qxCharReplace(b, set.c_str(), to); });
}

// CheckCopies - strcpyn, and the wide copies when the source fits, fill all
// n units; a source that does not fit is copied as wcsncpy copies it;
// concat_backslash appends a backslash and a terminator (the latter may take
// unit n) to the copy unless it is empty or ends in a separator.
void CheckCopies(const std::wstring& s, unsigned n, unsigned srcLen) {
  const std::wstring cut = s.substr(0, n ? n - 1 : 0);
  const std::wstring filled = cut + std::wstring(n - cut.size(), 0);
  const std::wstring head = s.substr(0, n) + std::wstring(n - std::min<size_t>(s.size(), n), 0);
  Edit(L"", filled, [&](wchar_t* b) { Check(strcpyn(b, s.c_str(), n) == b); });
  Edit(L"", s.size() < n ? filled : head, [&](wchar_t* b) {
    Check(ConvertSystemToWideChar(s.c_str(), b, n, false) == (s.size() < n));
  });
  Edit(L"", s.size() < n ? filled : head, [&](wchar_t* b) {
    Check(ConvertSystemToWideChar(s.c_str(), b, n, true) == (s.size() <= n));
  });
  Edit(L"", srcLen < n ? filled : head, [&](wchar_t* b) {
    Check(ConvertWideCharToSystem(s.c_str(), srcLen, b, QXCHARSET_MAC_ROMAN, n) == (srcLen < n));
  });
  if (n == 0)
    return;
  std::wstring withSlash = filled;
  if (!cut.empty() && cut.back() != L'\\' && cut.back() != L'/')
    withSlash.replace(cut.size(), 2, std::wstring{L'\\', 0});
  Edit(L"", withSlash, [&](wchar_t* b) { concat_backslash(s.c_str(), b, n); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2 || size > 512)
    return 0;
  std::wstring a, b;
  bool second = false;
  for (size_t i = 2; i < size; ++i) {
    if (data[i] == 0xFF && !second)
      second = true;
    else
      (second ? b : a) += Unit(data[i]);
  }
  CheckTrims(a);
  CheckLineEnds(a, a.size() - data[1] % (a.size() + 1) / 2);
  CheckReplace(a, data[1] & 0x20 ? 0 : Unit(data[1]), data[1] & 0x80 ? 0 : Unit(data[1] >> 3));
  CheckCopies(a, data[0] % 24, data[1] % 24);

  // Comparisons: a with b, and with itself cased otherwise, at sizes around
  // the length; with the top bit of byte 0, both repeated past 256 units.
  if (data[0] & 0x80)
    while (!a.empty() && a.size() < 300) {
      a += a;
      b += b;
    }
  std::wstring flipped = a;
  for (size_t i = 0; i < flipped.size(); ++i)
    if (data[2 + i % (size - 2)] & 1)
      flipped[i] = flipped[i] == L'a' ? L'A' : flipped[i] == L'A' ? L'a' : flipped[i];
  if (!flipped.empty() && (data[1] & 0x40))
    flipped[data[1] % flipped.size()] = L'z';
  for (const std::wstring& other : {b, flipped})
    for (size_t n : {size_t(data[0] % 24), a.size(), a.size() + 1, a.size() ? a.size() - 1 : 0})
      CheckCompare(a, other, n);
  return 0;
}
