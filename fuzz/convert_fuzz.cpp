// Random input into the conversions: bytes into ConvertMBCSCharToSystem for
// each double-byte member (bad lead and trail bytes, cut sequences), single-
// byte ones and members without a page, which must write what the platform
// call writes with the member's page and a terminator after it, random units
// into ConvertSystemToMBCSChar, with every buffer size from 0 to a small bound;
// the bytes past each size must stay untouched. For members with a code
// page, ConvertSystemToMBCSChar must equal WideCharToMultiByte with
// WC_COMPOSITECHECK on text rich in nonspacing marks. The byte table of a
// pair of members with maps and its count must follow the rule below. The
// line-end rewriters must give what the plain rules below give (under system
// charsets whose line end is CR LF, CR or LF), on text rich in CR and LF.
#include "platform/codepage.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"
#include "text/charset_maps.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr unsigned int kMaxSize = 24;
// The members and the code page each must convert with (none: -1); the
// system's pages are 932 here.
const struct {
  QXCHARSET cs;
  UINT cp;
} kMembers[] = {{QXCHARSET_WINDOWS_TRAD_CHINESE, 950},     {QXCHARSET_WINDOWS_SIMP_CHINESE, 936},
                {QXCHARSET_WINDOWS_JAPANESE, 932},         {QXCHARSET_WINDOWS_KOREAN, 949},
                {QXCHARSET_WINDOWS_LATIN1, 1252},          {QXCHARSET_MAC_ROMAN, UINT(-1)},
                {QXCHARSET_PACKED_EUC_JAPANESE, UINT(-1)}, {QXCHARSET_NEUTRAL, CP_ACP},
                {QXCHARSET_CODEPAGE_437, CP_OEMCP}};

void Check(bool ok) {
  if (!ok)
    std::abort();
}

// CheckTable - the byte table from `a` to `b` and its count against the
// rule: a byte takes the lowest byte in 1..254 of `b` with its character;
// byte 0, unmapped bytes and characters `b` lacks become '_', counted but for
// byte 0 (a count of -1: a cache hit, which writes none).
void CheckTable(QXCHARSET a, QXCHARSET b, const unsigned char* table, int count) {
  const qx::CharsetUnicodeMap* mapA = qx::CharsetUnicodeMapOf(a);
  const qx::CharsetUnicodeMap* mapB = qx::CharsetUnicodeMapOf(b);
  Check(mapA && mapB && table[0] == '_');
  std::vector<unsigned char> lowest(65536, 0);
  for (int t = 254; t >= 1; --t)
    lowest[(*mapB)[t]] = static_cast<unsigned char>(t);
  int unknown = 0;
  for (int s = 1; s < 256; ++s) {
    const uint16_t c = (*mapA)[s];
    const int want = qx::IsUnmappedMarker(c) ? 0 : lowest[c];
    unknown += want == 0;
    Check(table[s] == (want ? want : '_'));
  }
  Check(count == -1 || count == unknown);
}

// SameAsCompositeCheck - ConvertSystemToMBCSChar on units drawn from a pool
// of letters, marks and wide characters against the platform call.
void SameAsCompositeCheck(const uint8_t* data, size_t n) {
  static const wchar_t kPool[] = {L'a',      L'e',      L'Z',      L' ',      L'\u00e9', L'\u0301',
                                  L'\u0300', L'\u0308', L'\u20ac', L'\u3042', L'\u3099', L'\u4e00',
                                  L'\uff21', L'\u0152', L'\u05b4', L'\u0e31', L'\u2026', L'\u00a0'};
  static const struct {
    QXCHARSET cs;
    UINT cp;
  } kPages[] = {{QXCHARSET_WINDOWS_LATIN1, 1252},
                {QXCHARSET_WINDOWS_JAPANESE, 932},
                {QXCHARSET_WINDOWS_VIETNAMESE, 1258},
                {QXCHARSET_WINDOWS_HEBREW, 1255},
                {QXCHARSET_WINDOWS_THAI, 874}};
  if (n < 2)
    return;
  const auto& page = kPages[data[0] % 5];
  const unsigned int size = 1 + data[1] % 30;
  std::wstring s;
  for (size_t i = 2; i < n && s.size() < 24; ++i)
    s += kPool[data[i] % (sizeof kPool / sizeof kPool[0])];
  std::vector<char> ours(32, '\x5A'), theirs(32, '\x5A');
  bool ok = ConvertSystemToMBCSChar(s.c_str(), ours.data(), page.cs, size, false);
  int got = qx::win::WideCharToMultiByte(page.cp, WC_COMPOSITECHECK, s.c_str(), -1, theirs.data(),
                                         static_cast<int>(size), nullptr, nullptr);
  Check(ok == (got > 0) && ours == theirs);
}

// SwitchableSystem - the system charset, settable per input so that the
// line-end rewriter meets each of the three line ends.
class SwitchableSystem final : public cCharsetInfo {
public:
  QXCHARSET GetSystemCharset() override { return cs; }
  QXCHARSET cs = QXCHARSET_WINDOWS_JAPANESE;
};
SwitchableSystem* gSystem = nullptr;

// LineEnds - `text` with CR LF and CR made LF (toLF), or every CR LF, CR and
// LF made `lineEnd`; null when it holds no CR (toLF) or no CR or LF.
std::optional<std::wstring> LineEnds(const std::wstring& text, bool toLF, const wchar_t* lineEnd) {
  std::wstring out;
  bool rewritten = false;
  for (size_t i = 0; i < text.size(); ++i) {
    wchar_t c = text[i];
    if (c != L'\r' && (toLF || c != L'\n')) {
      out += c;
      continue;
    }
    rewritten = true;
    if (c == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n')
      ++i;
    out += toLF ? L"\n" : lineEnd;
  }
  return rewritten ? std::optional<std::wstring>(out) : std::nullopt;
}

// CheckLineEnds - both rewriters under a system charset whose line end is
// CR LF, CR or LF (picked by the first byte).
void CheckLineEnds(const uint8_t* data, size_t n) {
  static const struct {
    QXCHARSET cs;
    const wchar_t* lineEnd;
  } kSystems[] = {{QXCHARSET_WINDOWS_JAPANESE, L"\r\n"},
                  {QXCHARSET_MAC_ROMAN, L"\r"},
                  {QXCHARSET_ISO8859_1, L"\n"}};
  const auto& system = kSystems[(data[0] >> 4) % 3];
  std::wstring text;
  for (size_t i = 0; i < n; ++i)
    text += L"\r\n\nab\u3042"[data[i] % 6];
  gSystem->cs = system.cs;
  for (bool toLF : {false, true}) {
    wchar_t* out =
        toLF ? ConvertPlatformCRLFToLF(text.data()) : ConvertLFToPlatformCRLF(text.data());
    std::optional<std::wstring> want = LineEnds(text, toLF, system.lineEnd);
    Check(want ? out && *want == out : !out);
    if (out)
      ffree(&out);
  }
  gSystem->cs = QXCHARSET_WINDOWS_JAPANESE;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool pinned = [] { // system page 932, through a stand-in
    SetThreadLocale(1041);
    cCharsetInfo* original = cCharsetInfo::Instance();
    gSystem = new SwitchableSystem;
    cCharsetInfo::Instance(gSystem);
    delete original;
    return true;
  }();
  (void)pinned;
  if (size < 1)
    return 0;
  const auto& member = kMembers[data[0] % (sizeof kMembers / sizeof kMembers[0])];
  const QXCHARSET cs = member.cs;
  const char* bytes = reinterpret_cast<const char*>(data + 1);
  size_t n = size - 1;

  // Bytes => wide, every size: what the platform call writes with the
  // member's page, then a terminator when the count is at most dstLen.
  for (unsigned int len = 0; len <= kMaxSize; ++len) {
    std::vector<wchar_t> dst(kMaxSize + 4, 0x5A5A), want(dst);
    bool ok = ConvertMBCSCharToSystem(bytes, static_cast<unsigned int>(n), cs, dst.data(), len);
    int got = 0;
    if (n && len)
      got = qx::win::MultiByteToWideChar(member.cp, MB_PRECOMPOSED, bytes, static_cast<int>(n),
                                         want.data(), static_cast<int>(len));
    if (n && len && got <= static_cast<int>(len))
      want[static_cast<size_t>(got)] = 0;
    Check(ok == (got > 0) && dst == want);
  }

  // Units => bytes: the input read as 16-bit units (the library's range).
  std::vector<wchar_t> wide;
  for (size_t i = 0; i + 1 < n; i += 2) {
    wchar_t u = static_cast<wchar_t>(data[1 + i] | data[2 + i] << 8);
    if (u != 0)
      wide.push_back(u);
  }
  wide.push_back(0);
  for (unsigned int len = 0; len <= kMaxSize; ++len) {
    for (bool truncate : {false, true}) {
      std::vector<char> dst(kMaxSize + 4, '\x5A');
      ConvertSystemToMBCSChar(wide.data(), dst.data(), cs, len, truncate);
      for (size_t i = len; i < dst.size(); ++i)
        Check(dst[i] == '\x5A');
    }
  }

  SameAsCompositeCheck(data, size);

  // The byte tables and the line-end rewriters on the same input.
  int count = -1;
  unsigned char* table = nullptr;
  const auto from = static_cast<QXCHARSET>(data[1 % size] % 58);
  const auto to = static_cast<QXCHARSET>(data[2 % size] % 58);
  if (n >= 2 && ConvertCharset(from, to, &count, &table))
    CheckTable(from, to, table, count);
  CheckLineEnds(data, size);
  return 0;
}
