//===- locale/date_text.cpp - Dates as numeric layouts and pictures -------===//
#include "locale/date_internal.h"
#include "platform/date_format.h"
#include "qxutil/text.h"

#include <cwchar>
#include <vector>

using namespace qx::win;

namespace {

// PutIfFits - `text` of `length` units into `buffer` when it fits with its
// terminator; otherwise "" (when size > 0) and false.
bool PutIfFits(wchar_t* buffer, unsigned int size, const wchar_t* text, int length) {
  if (length < 0 || static_cast<unsigned int>(length) >= size) {
    if (size > 0)
      buffer[0] = 0;
    return false;
  }
  std::wmemcpy(buffer, text, static_cast<size_t>(length) + 1);
  return true;
}

// Layout - the numeric layout of `order` with two separator strings into
// `out`; -1 for an order that is not a layout.
int Layout(std::vector<wchar_t>& out, const qxDATE* date, short order, const wchar_t* s1,
           const wchar_t* s2) {
  out.assign(std::wcslen(s1) + std::wcslen(s2) + 32, 0);
  int year = date->year, month = date->month, day = date->day;
  switch (order) {
  case 0:
    return std::swprintf(out.data(), out.size(), L"%02d%ls%02d%ls%04d", month, s1, day, s2, year);
  case 1:
    return std::swprintf(out.data(), out.size(), L"%02d%ls%02d%ls%04d", day, s1, month, s2, year);
  case 2:
    return std::swprintf(out.data(), out.size(), L"%04d%ls%02d%ls%02d", year, s1, month, s2, day);
  case 5:
    return std::swprintf(out.data(), out.size(), L"%04d%ls%02d%ls%02d", year, s1, day, s2, month);
  default:
    return -1;
  }
}

} // namespace

void MakeDateString(wchar_t* buffer, unsigned int size, qxDATE* date, short order,
                    wchar_t delimiter) {
  if (!buffer || !date)
    return;
  wchar_t separator[2] = {delimiter, 0};
  std::vector<wchar_t> text;
  int length = Layout(text, date, order, separator, separator);
  if (length >= 0)
    PutIfFits(buffer, size, text.data(), length);
}

bool MakeDateStringEx(wchar_t* buffer, unsigned int size, qxDATE* date, short order,
                      const wchar_t* separator1, const wchar_t* separator2) {
  if (!buffer || !date)
    return false;
  std::vector<wchar_t> text;
  int length =
      Layout(text, date, order, separator1 ? separator1 : L"", separator2 ? separator2 : L"");
  return length >= 0 && PutIfFits(buffer, size, text.data(), length);
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
  std::vector<wchar_t> work(static_cast<size_t>(needed) * 2);
  if (GetDateFormatW(locale, 0, &st, picture, work.data(), static_cast<int>(work.size())) <= 0)
    return false;
  strcpyn(buffer, work.data(), size);
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
