//===- text/string_normalizer.cpp - Folding text through one table --------===//
//
// A normalizer converts text to bytes of its character set, maps the bytes
// through its table, and compares the bytes or converts them back. Work
// buffers stay on the stack for short text (Normalize: 2n + 1 bytes below
// 514; Compare: a copy of both strings below 513 units together, and byte
// buffers of 2n + 1 while both lengths stay below 257 units) and come from
// the memory manager otherwise.
//
//===----------------------------------------------------------------------===//
#include "text/string_normalizer.h"

#include "frame/scratch.h"
#include "platform/codepage.h"
#include "platform/unicode.h"

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>

namespace qx {

namespace {

constexpr size_t kLocalBytes = 513;     // a byte buffer of 2n + 1 up to n = 256
constexpr size_t kLocalCopyUnits = 514; // Compare's copy while la + lb < 513

// RoundTripCodePage - the code page Normalize converts back with: the one
// ConvertSystemToMBCSChar converted with, the set's own page or, for a set
// whose page the platform lacks, the system charset's.
UINT RoundTripCodePage(QXCHARSET cs) {
  int cp = GetWinCodePage(cs);
  if (cp == CP_ACP || cp == CP_OEMCP || (cp > 0 && win::IsValidCodePage(static_cast<UINT>(cp))))
    return static_cast<UINT>(cp);
  return static_cast<UINT>(GetWinCodePage(system_charset()));
}

// BytesToText - the NUL-terminated `bytes` of code page `cp` as wide text in
// `text`, when they fit in `capacity` units and a terminator; false (text
// untouched) when they do not or cannot be converted.
bool BytesToText(UINT cp, const char* bytes, wchar_t* text, size_t capacity) {
  size_t length = std::strlen(bytes);
  if (length == 0) {
    text[0] = 0;
    return true;
  }
  if (length > 0x7FFFFFFF)
    return false;
  int n = static_cast<int>(length);
  int needed = win::MultiByteToWideChar(cp, MB_PRECOMPOSED, bytes, n, nullptr, 0);
  if (needed <= 0 || static_cast<size_t>(needed) > capacity)
    return false;
  int written = win::MultiByteToWideChar(cp, MB_PRECOMPOSED, bytes, n, text, needed);
  text[written] = 0;
  return written > 0;
}

// IsMark - a nonspacing mark (none comes before U+0300).
inline bool IsMark(wchar_t u) {
  auto unit = static_cast<uint32_t>(u);
  return unit >= 0x300 && platform::IsNonSpacingMark(unit);
}

// CompareBytes - -1, 0 or 1 as the NUL-terminated `a` and `b` compare byte
// by byte as unsigned values; a prefix comes first.
int CompareBytes(const char* a, const char* b) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(a);
  const unsigned char* q = reinterpret_cast<const unsigned char*>(b);
  while (*p && *p == *q)
    ++p, ++q;
  return *p < *q ? -1 : *p > *q ? 1 : 0;
}

} // namespace

void FoldBytes(QXCHARSET charset, const unsigned char* map, char* bytes) {
  if (!IS_DBCS_CHARSET(charset)) {
    for (unsigned char* p = reinterpret_cast<unsigned char*>(bytes); *p; ++p)
      *p = map[*p];
    return;
  }
  const bool systemDbcs = CharsetDBCS(system_charset());
  for (char* p = bytes; *p;) {
    char* next = win::CharNextA(p);
    BYTE byte = static_cast<BYTE>(*p);
    if (!systemDbcs || !win::IsDBCSLeadByte(byte))
      *p = static_cast<char>(map[byte]);
    p = next;
  }
}

bool FoldText(QXCHARSET charset, const NormalizationTable& table, const wchar_t* text, char* out,
              unsigned int size, bool acceptTruncation) {
  if (!ConvertSystemToMBCSChar(text, out, charset, size, acceptTruncation)) {
    if (!acceptTruncation)
      return false;
    out[0] = 0;
  }
  if (acceptTruncation)
    out[size - 1] = 0;
  FoldBytes(charset, table.map(), out);
  return true;
}

const NormalizationTable* FoldingTableOf(StringNormalizer* normalizer) {
  auto* ours = dynamic_cast<StringNormalizerImpl*>(normalizer);
  return ours ? &ours->table() : nullptr;
}

StringNormalizerImpl::StringNormalizerImpl(QXCHARSET charset, const NormalizationTable& table)
    : charset_(charset), table_(&table),
      id_(charset == QXCHARSET_WINDOWS_LATIN1 && table.id() == kWesternId ? kRenamedWesternId
                                                                          : table.id()),
      quick_(!IS_DBCS_CHARSET(charset) && GetWinCodePage(charset) > 1 &&
             win::IsValidCodePage(static_cast<UINT>(GetWinCodePage(charset)))) {}

StringNormalizerImpl::~StringNormalizerImpl() {
  for (unsigned char*& page : pages_)
    if (page != page0_)
      ffree(&page);
}

const unsigned char* StringNormalizerImpl::BuildPage(unsigned int page) {
  unsigned char* bytes = page0_;
  if (page != 0 && !falloc_(256, &bytes, true, true))
    return nullptr;
  for (unsigned int low = 0; low < 256; ++low) {
    const wchar_t unit[2] = {static_cast<wchar_t>(page << 8 | low), 0};
    char converted[4] = {};
    if (unit[0] != 0 && !platform::IsNonSpacingMark(static_cast<uint32_t>(unit[0])) &&
        ConvertSystemToMBCSChar(unit, converted, charset_, sizeof converted, false) &&
        converted[0] != 0 && converted[1] == 0)
      bytes[low] = table_->map()[static_cast<unsigned char>(converted[0])];
  }
  pages_[page] = bytes;
  return bytes;
}

int StringNormalizerImpl::FoldedUnit(wchar_t u) {
  auto unit = static_cast<uint32_t>(u);
  if (unit > 0xFFFF)
    return 0;
  const unsigned char* page = pages_[unit >> 8];
  if (!page && !(page = BuildPage(unit >> 8)))
    return 0;
  return page[unit & 0xFF];
}

StringNormalizerImpl* StringNormalizerImpl::Create(QXCHARSET charset,
                                                   const NormalizationTable& table) {
  return new (std::nothrow) StringNormalizerImpl(charset, table);
}

void StringNormalizerImpl::Normalize(wchar_t* text) {
  if (!text)
    return;
  size_t n = std::wcslen(text);
  if (n == 0 || n >= 0x7FFFFFFF)
    return;
  size_t size = 2 * n + 1;
  Scratch<char, kLocalBytes> bytes(size, size <= kLocalBytes);
  if (!bytes.ok() ||
      !FoldText(charset_, *table_, text, bytes.data(), static_cast<unsigned int>(size), false))
    return;
  BytesToText(RoundTripCodePage(charset_), bytes.data(), text, n);
}

// Compare - first without converting the strings: each unit folded on its
// own, compared as it goes. That is what converting the strings gives unless
// a nonspacing mark is involved (it composes with the unit before it), so a
// mark before the first difference, or right after it, leaves the answer to
// the conversion; so does a unit that is no single byte on its own.
int StringNormalizerImpl::Compare(const wchar_t* a, const wchar_t* b) {
  if (!a)
    a = L"";
  if (!b)
    b = L"";
  if (quick_ && (pages_[0] || BuildPage(0))) {
    size_t i = 0;
    int fa, fb;
    // fold - the folded byte of s[at] on its own.
    auto fold = [this](const wchar_t* s, size_t at) {
      auto u = static_cast<uint32_t>(s[at]);
      return u < 256 ? page0_[u] : FoldedUnit(s[at]);
    };
    for (;; i += 2) { // unrolled once: the strings are mostly short
      fa = fold(a, i), fb = fold(b, i);
      if (fa != fb || fa == 0)
        break;
      fa = fold(a, i + 1), fb = fold(b, i + 1); // a[i] was no terminator
      if (fa != fb || fa == 0) {
        ++i;
        break;
      }
    }
    // A 0 is the terminator, or a unit with no byte of its own.
    bool decided = (fa != 0 || a[i] == 0) && (fb != 0 || b[i] == 0) &&
                   (fa == fb || !((a[i] && IsMark(a[i + 1])) || (b[i] && IsMark(b[i + 1]))));
    if (decided)
      return (fa > fb) - (fa < fb);
  }
  return CompareConverted(a, b);
}

int StringNormalizerImpl::CompareConverted(const wchar_t* a, const wchar_t* b) {
  size_t la = std::wcslen(a), lb = std::wcslen(b);
  Scratch<wchar_t, kLocalCopyUnits> copy(la + lb + 2, la + lb < 513);
  if (!copy.ok())
    return qxStrCmp(a, b);
  wchar_t* ca = copy.data();
  wchar_t* cb = ca + la + 1;
  std::wmemcpy(ca, a, la + 1);
  std::wmemcpy(cb, b, lb + 1);
  if (la == 0 && lb == 0)
    return 0;
  size_t sa = 2 * la + 1, sb = 2 * lb + 1;
  bool local = 2 * la < 513 && 2 * lb < 513;
  Scratch<char, kLocalBytes> ba(sa, local), bb(sb, local);
  if (!ba.ok() || !bb.ok() || sa > 0xFFFFFFFFu || sb > 0xFFFFFFFFu)
    return qxStrCmp(a, b);
  FoldText(charset_, *table_, ca, ba.data(), static_cast<unsigned int>(sa), true);
  FoldText(charset_, *table_, cb, bb.data(), static_cast<unsigned int>(sb), true);
  return CompareBytes(ba.data(), bb.data());
}

} // namespace qx

StringNormalizer::~StringNormalizer() {}
