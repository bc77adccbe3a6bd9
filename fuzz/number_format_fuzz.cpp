// DeformatNumberFromUI and FormatNumberForUI, and DoubleToString, with small
// buffer sizes: nothing is written past the size given. With room enough,
// DoubleToString's text in the "C" runtime locale is swprintf's, for any
// value, precision (the automatic one too), width and conversion. In en-US
// and de-DE, UI text (grouped within the size) and canonical text both ways
// are a reference grouping's, and DoubleToString's and
// DoubleToStringEditCtl's UI text is swprintf's grouped and cut to the size.
// CoordinateToString's text is swprintf's with its trailing zeros trimmed.
#include "qxutil/locale.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr wchar_t kGuard = L'\x7E57';

void CheckGuard(const std::vector<wchar_t>& buf, size_t size) {
  for (size_t i = size; i < buf.size(); ++i)
    if (buf[i] != kGuard)
      std::abort();
}

void Check(bool ok) {
  if (!ok)
    std::abort();
}

// Printed - swprintf's text of DoubleToString's arguments; precision -1 is
// 6, or for PRINTF_G (not another format printed as %g) of a value that is
// not 0 the integer digits + 3 when that is 6 to 14.
std::wstring Printed(double value, int precision, PRINTF_FORMAT format, int width) {
  const wchar_t* picture = format == PRINTF_F ? L"%*.*f" : format == PRINTF_E ? L"%*.*e" : L"%*.*g";
  if (precision == -1) {
    const double digits = std::trunc(std::log10(std::fabs(value))) + 3;
    precision = format == PRINTF_G && value != 0 && digits >= 6 && digits < 15
                    ? static_cast<int>(digits)
                    : 6;
  }
  static wchar_t ref[1100];
  std::swprintf(ref, 1100, picture, width == -1 ? 0 : width, precision, value);
  return ref;
}

// SameAsSwprintf - DoubleToString(value, ..., precision, format, width)
// and swprintf with the matching picture give the same text.
void SameAsSwprintf(double value, int precision, PRINTF_FORMAT format, int width) {
  static wchar_t ours[1100];
  DoubleToString(value, ours, 1100, false, precision, format, width);
  Check(Printed(value, precision, format, width) == ours);
}

// Grouped - canonical text as UI text in `size` units: while there is room
// for one more unit, a separator goes three places before the first
// separator (at first before the ".", or the end) when the four units
// before it are digits; then the last "." becomes the decimal separator.
std::wstring Grouped(std::wstring t, unsigned int size, wchar_t group, wchar_t decimal) {
  const bool dot = t.find(L'.') != std::wstring::npos;
  for (bool first = true; t.size() + 2 <= size; first = false) {
    size_t at = first ? std::min(t.find(L'.'), t.size()) : t.find(group);
    if (at <= 3 ||
        !std::all_of(t.begin() + static_cast<long>(at - 4), t.begin() + static_cast<long>(at),
                     [](wchar_t c) { return c >= L'0' && c <= L'9'; }))
      break;
    t.insert(at - 3, 1, group);
  }
  if (dot)
    t[t.rfind(L'.')] = decimal;
  return t;
}

// CheckUiText - in en-US or de-DE: FormatNumberForUI of a canonical number
// made from `b` (3 bytes) in `size` units, DeformatNumberFromUI of that and
// of `text`, and UI text from DoubleToString and DoubleToStringEditCtl.
void CheckUiText(bool german, const uint8_t* b, unsigned int size, const std::vector<wchar_t>& text,
                 double value, int precision, int width) {
  const wchar_t group = german ? L'.' : L',', decimal = german ? L',' : L'.';
  SetThreadLocale(german ? 1031 : 1033);
  static const wchar_t* const kPrefixes[] = {L"", L"-", L"$", L"+", L"   -"};
  wchar_t canonical[40];
  std::swprintf(canonical, 40, L"%ls%u%ls%u", kPrefixes[b[0] % 5], b[1] << 16 | b[2] << 8 | b[0],
                b[1] & 1 ? L"." : L"", b[2] % 100);
  std::vector<wchar_t> ui(std::max<size_t>(size, std::wcslen(canonical) + 1) + 8, kGuard);
  std::wcscpy(ui.data(), canonical);
  FormatNumberForUI(ui.data(), size);
  const std::wstring want = Grouped(canonical, size, group, decimal);
  Check(want == ui.data());
  std::vector<wchar_t> back(want.size() + 1, kGuard);
  DeformatNumberFromUI(want.c_str(), back.data());
  Check(std::wstring(canonical) == back.data());

  std::wstring deformatted;
  for (wchar_t c : text)
    if (c && c != group)
      deformatted += c;
  const size_t last = deformatted.rfind(decimal);
  if (last != std::wstring::npos)
    deformatted[last] = L'.';
  std::vector<wchar_t> out(text.size() + 8, kGuard);
  DeformatNumberFromUI(text.data(), out.data());
  Check(deformatted == out.data());

  // The C runtime prints "."; cut to the size, then grouped.
  const PRINTF_FORMAT format = static_cast<PRINTF_FORMAT>(b[0] % 4);
  std::wstring printed = Printed(value, precision, format, width);
  std::vector<wchar_t> buf(size + 8, kGuard);
  DoubleToString(value, buf.data(), size, true, precision, format, width);
  if (size > 0)
    Check(Grouped(printed.substr(0, size - 1), size, group, decimal) == buf.data());
  std::fill(buf.begin(), buf.end(), kGuard);
  DoubleToStringEditCtl(value, buf.data(), static_cast<int>(size), b[1] & 8);
  printed = Printed(value, 14, PRINTF_G, -1);
  if (size > 0)
    Check((b[1] & 8 ? Grouped(printed.substr(0, size - 1), size, group, decimal)
                    : printed.substr(0, size - 1)) == buf.data());
  CheckGuard(buf, size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 12 || size > 600)
    return 0;
  static const LCID kLocales[] = {1033, 1031, 1036, 1041, 2057, 1049, 1025, 1054};
  static bool pinned = [] { return SetThreadLocale(1031) != 0; }();
  (void)pinned;
  SetThreadLocale(kLocales[data[0] % 8]);
  const unsigned int room = data[1] % 40;
  double value;
  std::memcpy(&value, data + 2, sizeof value);
  const int precision = static_cast<int8_t>(data[10]) % 40;
  const int width = static_cast<int8_t>(data[11]) % 50;

  // Text: bytes as units ("0".."9", ".", ",", "-" and blanks are common).
  std::vector<wchar_t> text;
  for (size_t i = 12; i < size; ++i)
    text.push_back(data[i] ? static_cast<wchar_t>(data[i]) : L'\u00A0');
  text.push_back(0);

  std::vector<wchar_t> out(text.size() + 8, kGuard);
  DeformatNumberFromUI(text.data(), out.data());
  CheckGuard(out, text.size());

  // FormatNumberForUI grows the text in place, within `room` units.
  std::vector<wchar_t> ui(room + 8, kGuard);
  if (room > 0) {
    size_t n = std::min<size_t>(text.size() - 1, room - 1);
    std::wmemcpy(ui.data(), text.data(), n);
    ui[n] = 0;
  }
  FormatNumberForUI(room > 0 ? ui.data() : nullptr, room);
  CheckGuard(ui, room);

  std::vector<wchar_t> buf(room + 8, kGuard);
  DoubleToString(value, buf.data(), room, data[0] & 8, precision,
                 static_cast<PRINTF_FORMAT>(data[1] % 5), width);
  CheckGuard(buf, room);
  std::fill(buf.begin(), buf.end(), kGuard);
  CoordinateToString(value, buf.data(), room);
  CheckGuard(buf, room);
  // "%.12f" cut to 29 units, without trailing zeros after a point, nor the
  // point then left last, cut to the size.
  std::wstring coordinate = Printed(value, 12, PRINTF_F, -1).substr(0, 29);
  if (coordinate.find(L'.') != std::wstring::npos) {
    coordinate.erase(coordinate.find_last_not_of(L'0') + 1);
    if (coordinate.back() == L'.')
      coordinate.pop_back();
  }
  Check(room == 0 || coordinate.substr(0, room - 1) == buf.data());
  std::vector<wchar_t> column(static_cast<size_t>(room) + 9, kGuard);
  DoubleToDBString(column.data(), static_cast<int>(room), data[10] % 12 - 1, value);
  CheckGuard(column, room + 1);

  // Mostly everyday precisions, now and then a long one (short for %f of
  // a huge value, whose integer digits alone run to 309).
  const int digits = (data[11] & 0x80) ? data[10] * 19 % 420 : data[10] % 30;
  const int padTo = (data[11] & 0x40) ? data[11] % 40 : -1;
  SameAsSwprintf(value, digits, PRINTF_G, padTo);
  SameAsSwprintf(value, digits, PRINTF_E, padTo);
  SameAsSwprintf(value, std::fabs(value) > 1e30 ? digits % 4 : digits, PRINTF_F, padTo);
  SameAsSwprintf(value, -1, static_cast<PRINTF_FORMAT>(data[1] % 5), padTo);
  // A power of ten apart: the automatic precision's bounds.
  SameAsSwprintf((1 + data[10] / 256.0) * std::pow(10.0, data[11] % 40 - 10), -1, PRINTF_G, -1);
  CheckUiText(data[0] & 16, data + 1, room, text, value,
              std::fabs(value) > 1e30 ? digits % 4 - 1 : digits - 1, padTo);
  return 0;
}
