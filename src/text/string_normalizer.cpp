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
                                                                          : table.id()) {}

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

int StringNormalizerImpl::Compare(const wchar_t* a, const wchar_t* b) {
  if (!a)
    a = L"";
  if (!b)
    b = L"";
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
