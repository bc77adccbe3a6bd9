// DeformatNumberFromUI and FormatNumberForUI, and DoubleToString, with small
// buffer sizes: nothing is written past the size given. With room enough,
// DoubleToString's text in the "C" runtime locale is swprintf's, for any
// value, precision, width and conversion.
#include "qxutil/locale.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

namespace {

constexpr wchar_t kGuard = L'\x7E57';

void CheckGuard(const std::vector<wchar_t>& buf, size_t size) {
  for (size_t i = size; i < buf.size(); ++i)
    if (buf[i] != kGuard)
      std::abort();
}

// SameAsSwprintf - DoubleToString(value, ..., precision, format, width)
// and swprintf with the matching picture give the same text.
void SameAsSwprintf(double value, int precision, PRINTF_FORMAT format, int width) {
  const wchar_t* picture = format == PRINTF_F ? L"%*.*f" : format == PRINTF_E ? L"%*.*e" : L"%*.*g";
  static wchar_t ours[1100], ref[1100];
  DoubleToString(value, ours, 1100, false, precision, format, width);
  std::swprintf(ref, 1100, picture, width == -1 ? 0 : width, precision, value);
  if (std::wcscmp(ours, ref) != 0)
    std::abort();
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
  return 0;
}
