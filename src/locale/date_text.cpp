//===- locale/date_text.cpp - Dates as numeric layouts and pictures -------===//
#include "frame/wide_buffer.h"
#include "locale/date_internal.h"
#include "platform/date_format.h"
#include "qxutil/text.h"

#include <cwchar>

using namespace qx::win;

namespace {

// Layout - the numeric layout of `order` with two separator strings,
// written into `buffer` when it fits with its terminator (otherwise "" when
// size > 0, and false). False without writing for an order that is not a
// layout.
bool Layout(wchar_t* buffer, unsigned int size, const qxDATE* date, short order, const wchar_t* s1,
            const wchar_t* s2) {
  struct Shape {
    const wchar_t* format;
    int a, b, c;
  } shape;
  switch (order) {
  case 0:
    shape = {L"%02d%ls%02d%ls%04d", date->month, date->day, date->year};
    break;
  case 1:
    shape = {L"%02d%ls%02d%ls%04d", date->day, date->month, date->year};
    break;
  case 2:
    shape = {L"%04d%ls%02d%ls%02d", date->year, date->month, date->day};
    break;
  case 5:
    shape = {L"%04d%ls%02d%ls%02d", date->year, date->day, date->month};
    break;
  default:
    return false;
  }
  if (size == 0)
    return false;
  // swprintf fails (-1) when the text and its terminator do not fit.
  if (std::swprintf(buffer, size, shape.format, shape.a, s1, shape.b, s2, shape.c) < 0) {
    buffer[0] = 0;
    return false;
  }
  return true;
}

} // namespace

void MakeDateString(wchar_t* buffer, unsigned int size, qxDATE* date, short order,
                    wchar_t delimiter) {
  if (!buffer || !date)
    return;
  wchar_t separator[2] = {delimiter, 0};
  Layout(buffer, size, date, order, separator, separator);
}

bool MakeDateStringEx(wchar_t* buffer, unsigned int size, qxDATE* date, short order,
                      const wchar_t* separator1, const wchar_t* separator2) {
  if (!buffer || !date)
    return false;
  return Layout(buffer, size, date, order, separator1 ? separator1 : L"",
                separator2 ? separator2 : L"");
}

bool FormatDateString(wchar_t* buffer, unsigned int size, qxDATE date, wchar_t* picture) {
  if (!buffer)
    return false;
  std::wmemset(buffer, 0, size);
  if (date.year < 0 || date.month < 0 || date.day < 0)
    return false;
  SYSTEMTIME st{};
  st.wYear = static_cast<WORD>(date.year);
  st.wMonth = static_cast<WORD>(date.month);
  st.wDay = static_cast<WORD>(date.day);
  LCID locale = static_cast<LCID>(GetLocaleIdentifier());
  int needed = GetDateFormatW(locale, 0, &st, picture, nullptr, 0);
  if (needed <= 0)
    return false;
  qx::WideBuffer work; // on the memory manager: no exception on exhaustion
  if (!work.Reserve(static_cast<size_t>(needed)) ||
      GetDateFormatW(locale, 0, &st, picture, work.data(), needed) <= 0)
    return false;
  strcpyn(buffer, work.c_str(), size);
  return true;
}

bool FormatDateString(wchar_t* buffer, unsigned int size, qxDATE date, short lctype) {
  wchar_t picture[260];
  if (!GetLocaleString(static_cast<unsigned long>(static_cast<unsigned short>(lctype)), picture,
                       260)) {
    if (buffer)
      std::wmemset(buffer, 0, size);
    return false;
  }
  return FormatDateString(buffer, size, date, picture);
}
