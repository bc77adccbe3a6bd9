// Numbers by picture: random pictures, values, texts and sizes. Nothing is
// written past the size, a text that does not fit is never cut (an
// overflow's "#"s are), and what a picture writes it reads back.
#include "qxutil/locale.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

namespace {

constexpr wchar_t kGuard = L'\x7E57';

// Picture bytes map onto the picture vocabulary, with an odd character now
// and then.
wchar_t PictureUnit(uint8_t b) {
  static const wchar_t kUnits[] = L"9990000,G.D$L+-EegdlX ";
  return kUnits[b % (sizeof kUnits / sizeof kUnits[0] - 1)];
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 10 || size > 400)
    return 0;
  static const LCID kLocales[] = {1033, 1031, 1036, 1041};
  SetThreadLocale(kLocales[data[0] % 4]);
  const unsigned int room = data[1] % 48;
  double value;
  std::memcpy(&value, data + 2, sizeof value);
  size_t pictureLength = data[0] % 24;
  std::vector<wchar_t> picture;
  size_t i = 10;
  for (; i < size && picture.size() < pictureLength; ++i)
    picture.push_back(PictureUnit(data[i]));
  picture.push_back(0);
  std::vector<wchar_t> text;
  for (; i < size; ++i)
    text.push_back(static_cast<wchar_t>(data[i]));
  text.push_back(0);

  std::vector<wchar_t> buf(room + 8, kGuard);
  bool ok = qxSQLDoubleToString(value, picture.data(), buf.data(), room);
  for (size_t k = room; k < buf.size(); ++k)
    if (buf[k] != kGuard)
      std::abort();
  // Any room: the whole text when it fits with its terminator; otherwise
  // an empty text, or for an overflow as many "#"s as fit.
  std::vector<wchar_t> whole(64, kGuard);
  const bool wholeOk = qxSQLDoubleToString(value, picture.data(), whole.data(), 48);
  const size_t length = std::wcslen(whole.data());
  if (room > 0 && (wholeOk || whole[0] == L'#')) {
    const size_t kept = wholeOk ? (length < room ? length : 0) : std::min<size_t>(length, room - 1);
    if (ok != (wholeOk && length < room) || std::wcslen(buf.data()) != kept ||
        std::wcsncmp(buf.data(), whole.data(), kept) != 0)
      std::abort();
  }
  if (ok) {
    double back = 0;
    if (!qxSQLStringToDouble(buf.data(), picture.data(), &back))
      std::abort();
    std::vector<wchar_t> again(room + 8, kGuard);
    if (!qxSQLDoubleToString(back, picture.data(), again.data(), room) ||
        std::wcscmp(again.data(), buf.data()) != 0)
      std::abort();
  }
  double parsed = 1;
  if (!qxSQLStringToDouble(text.data(), picture.data(), &parsed) && parsed != 0)
    std::abort();
  return 0;
}
