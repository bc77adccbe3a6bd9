//===- locale/date_order_override.h - Fixed date settings -------*- C++ -*-===//
//
// A cLocaleInfo that answers every query from another cLocaleInfo except
// the date order and delimiter, which it fixes. Installed with
// cLocaleInfo::Instance(p), it makes the date parsers read a layout that no
// locale has (order 5, a delimiter of one's choosing): the command-line
// program's --order/--delim, and the tests of those layouts.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_LOCALE_DATE_ORDER_OVERRIDE_H
#define QXUTIL_LOCALE_DATE_ORDER_OVERRIDE_H

#include "qxutil/locale.h"

namespace qx::date {

class DateOrderOverride final : public cLocaleInfo {
public:
  /// `inner` answers everything else and is deleted with this object.
  DateOrderOverride(cLocaleInfo* inner, short order, wchar_t delimiter)
      : inner_(inner), order_(order), delimiter_(delimiter) {}
  ~DateOrderOverride() override;

  bool Refresh() override { return inner_->Refresh(); }
  LCID UpdateLocale() override { return inner_->UpdateLocale(); }
  bool GetLocaleInt(LCTYPE type, unsigned int* out) override {
    return inner_->GetLocaleInt(type, out);
  }
  bool GetLocaleString(LCTYPE type, wchar_t* buffer, unsigned int size) override {
    return inner_->GetLocaleString(type, buffer, size);
  }
  void SetNumberFormatCallback(FormatCallback callback) override {
    inner_->SetNumberFormatCallback(callback);
  }
  FormatCallback GetNumberFormatCallback() override { return inner_->GetNumberFormatCallback(); }
  void GetNumberInfo(bool system, wchar_t* decimal, wchar_t* thousands, short* group) override {
    inner_->GetNumberInfo(system, decimal, thousands, group);
  }
  const wchar_t* GetCurrencySymbol() override { return inner_->GetCurrencySymbol(); }
  bool GetNumberFormat(NUMBERFMTW* format) override { return inner_->GetNumberFormat(format); }
  bool GetCurrencyFormat(CURRENCYFMTW* format) override {
    return inner_->GetCurrencyFormat(format);
  }
  NUMBERFMTW* GetNumberFormatPtr() override { return inner_->GetNumberFormatPtr(); }
  CURRENCYFMTW* GetCurrencyFormatPtr() override { return inner_->GetCurrencyFormatPtr(); }
  void SetDateFormatCallback(FormatCallback callback) override {
    inner_->SetDateFormatCallback(callback);
  }
  FormatCallback GetDateFormatCallback() override { return inner_->GetDateFormatCallback(); }
  /// GetDateInfo - the fixed order and delimiter, whatever `system` says.
  void GetDateInfo(bool, short* order, wchar_t* delimiter) override {
    if (order)
      *order = order_;
    if (delimiter)
      *delimiter = delimiter_;
  }
  void GetTimeFormat(bool system, wchar_t* buffer, unsigned int size) override {
    inner_->GetTimeFormat(system, buffer, size);
  }
  void GetTimeInfo(bool system, bool* twelveHour, short* markerPosition, const wchar_t** am,
                   const wchar_t** pm, const wchar_t** separator,
                   const wchar_t** secondSeparator) override {
    inner_->GetTimeInfo(system, twelveHour, markerPosition, am, pm, separator, secondSeparator);
  }

private:
  cLocaleInfo* inner_;
  short order_;
  wchar_t delimiter_;
};

inline DateOrderOverride::~DateOrderOverride() { delete inner_; }

} // namespace qx::date

#endif // QXUTIL_LOCALE_DATE_ORDER_OVERRIDE_H
