//===- locale/locale_info.cpp - Locale information ------------------------===//
//
// A cache of the thread locale's conventions, re-read in full at every query
// that asks for the system settings. A value the locale does not give (or
// that does not fit its field) keeps the previous or default value.
//
//===----------------------------------------------------------------------===//
#include "frame/singleton.h"
#include "qxutil/locale.h"

#include "platform/crt_string.h"
#include "qxutil/text.h"

#include <cwchar>

namespace {

const wchar_t kNeutralTimeFormat[] = L"h:mm:ss tt";
// The longest numeric locale value GetLocaleInt reads, terminator included.
constexpr int kMaxIntValue = 128;

class cLocaleInfoImpl final : public cLocaleInfo {
public:
  enum eCreateError { eOutOfMemory = 1 };

  cLocaleInfoImpl() {
    if (!Own(&currency_.lpDecimalSep, 2, L".") || !Own(&currency_.lpThousandSep, 2, L",") ||
        !Own(&currency_.lpCurrencySymbol, 16, L"$") || !Own(&number_.lpDecimalSep, 2, L".") ||
        !Own(&number_.lpThousandSep, 2, L",")) {
      ReleaseBuffers();
      throw eOutOfMemory;
    }
    currency_.NumDigits = number_.NumDigits = 2;
    currency_.Grouping = number_.Grouping = 3;
  }
  ~cLocaleInfoImpl() override { ReleaseBuffers(); }

  bool Refresh() override {
    UpdateLocale();
    ReadInt(LOCALE_IDIGITS, &number_.NumDigits);
    ReadInt(LOCALE_ILZERO, &number_.LeadingZero);
    if (ReadInt(LOCALE_SGROUPING, &number_.Grouping))
      groupSize_ = static_cast<short>(number_.Grouping);
    if (GetLocaleString(LOCALE_SDECIMAL, number_.lpDecimalSep, 2))
      std::wcscpy(decimal_, number_.lpDecimalSep);
    if (GetLocaleString(LOCALE_STHOUSAND, number_.lpThousandSep, 2))
      std::wcscpy(thousands_, number_.lpThousandSep);
    ReadInt(LOCALE_INEGNUMBER, &number_.NegativeOrder);

    ReadInt(LOCALE_ICURRDIGITS, &currency_.NumDigits);
    currency_.LeadingZero = number_.LeadingZero;
    ReadInt(LOCALE_SMONGROUPING, &currency_.Grouping);
    GetLocaleString(LOCALE_SMONDECIMALSEP, currency_.lpDecimalSep, 2);
    GetLocaleString(LOCALE_SMONTHOUSANDSEP, currency_.lpThousandSep, 2);
    ReadInt(LOCALE_INEGCURR, &currency_.NegativeOrder);
    ReadInt(LOCALE_ICURRENCY, &currency_.PositiveOrder);
    GetLocaleString(LOCALE_SCURRENCY, currency_.lpCurrencySymbol, 16);

    // Equal separators would make numbers unreadable: use the neutral pair.
    if (std::wcscmp(thousands_, decimal_) == 0) {
      std::wcscpy(thousands_, L",");
      std::wcscpy(decimal_, L".");
    }

    GetLocaleString(LOCALE_SDATE, dateDelimiter_, 2);
    unsigned int order = 0;
    if (ReadInt(LOCALE_IDATE, &order))
      dateOrder_ = static_cast<short>(order);

    if (!GetLocaleString(LOCALE_STIMEFORMAT, timeFormat_, 36))
      std::wcscpy(timeFormat_, kNeutralTimeFormat);
    if (!GetLocaleString(LOCALE_S1159, am_, 20))
      std::wcscpy(am_, L"AM");
    if (!GetLocaleString(LOCALE_S2359, pm_, 20))
      std::wcscpy(pm_, L"PM");
    if (GetLocaleString(LOCALE_STIME, timeSeparator_, 4))
      std::wcscpy(secondTimeSeparator_, timeSeparator_);
    else
      std::wcscpy(timeSeparator_, L":");

    wchar_t text[256];
    if (GetLocaleString(LOCALE_ITIME, text, 256))
      twelveHour_ = std::wcstol(text, nullptr, 10) == 0;
    if (GetLocaleString(LOCALE_ITIMEMARKPOSN, text, 256))
      markerPosition_ = static_cast<short>(std::wcstol(text, nullptr, 10));
    return true;
  }

  LCID UpdateLocale() override { return locale_ = GetThreadLocale(); }

  bool GetLocaleInt(LCTYPE type, unsigned int* out) override {
    // Numeric values are a few digits (Windows caps any locale value at 80
    // units): a fixed buffer, so a refresh never fails for lack of memory.
    wchar_t text[kMaxIntValue];
    int length = GetLocaleInfoW(locale_, type, nullptr, 0);
    if (length <= 0 || length > kMaxIntValue)
      return false;
    bool ok = GetLocaleInfoW(locale_, type, text, length) != 0;
    if (ok && out)
      *out = static_cast<unsigned int>(qx::crt::_wtoi(text));
    return ok;
  }

  bool GetLocaleString(LCTYPE type, wchar_t* buffer, unsigned int size) override {
    int length = GetLocaleInfoW(locale_, type, nullptr, 0);
    if (length <= 0 || static_cast<unsigned int>(length) > size || !buffer)
      return false;
    return GetLocaleInfoW(locale_, type, buffer, length) != 0;
  }

  void SetNumberFormatCallback(FormatCallback callback) override { numberCallback_ = callback; }
  FormatCallback GetNumberFormatCallback() override { return numberCallback_; }

  void GetNumberInfo(bool system, wchar_t* decimal, wchar_t* thousands, short* group) override {
    if (system)
      Refresh();
    if (decimal)
      *decimal = system ? decimal_[0] : L'.';
    if (thousands)
      *thousands = system ? thousands_[0] : L',';
    if (group)
      *group = system ? groupSize_ : 3;
  }

  const wchar_t* GetCurrencySymbol() override {
    Refresh();
    return currency_.lpCurrencySymbol;
  }

  bool GetNumberFormat(NUMBERFMTW* format) override {
    Refresh();
    if (format)
      *format = number_;
    return true;
  }

  bool GetCurrencyFormat(CURRENCYFMTW* format) override {
    Refresh();
    if (format)
      *format = currency_;
    return true;
  }

  NUMBERFMTW* GetNumberFormatPtr() override {
    Refresh();
    return &number_;
  }

  CURRENCYFMTW* GetCurrencyFormatPtr() override {
    Refresh();
    return &currency_;
  }

  void SetDateFormatCallback(FormatCallback callback) override { dateCallback_ = callback; }
  FormatCallback GetDateFormatCallback() override { return dateCallback_; }

  void GetDateInfo(bool system, short* order, wchar_t* delimiter) override {
    if (system)
      Refresh();
    if (order)
      *order = system ? dateOrder_ : 0;
    if (delimiter)
      *delimiter = system ? dateDelimiter_[0] : L'/';
  }

  void GetTimeFormat(bool system, wchar_t* buffer, unsigned int size) override {
    if (system)
      Refresh();
    strcpyn(buffer, system ? timeFormat_ : kNeutralTimeFormat, size);
  }

  void GetTimeInfo(bool system, bool* twelveHour, short* markerPosition, const wchar_t** am,
                   const wchar_t** pm, const wchar_t** separator,
                   const wchar_t** secondSeparator) override {
    if (system)
      Refresh();
    if (twelveHour)
      *twelveHour = system ? twelveHour_ : true;
    if (markerPosition)
      *markerPosition = system ? markerPosition_ : 0;
    if (am)
      *am = system ? am_ : L"AM";
    if (pm)
      *pm = system ? pm_ : L"PM";
    if (separator)
      *separator = system ? timeSeparator_ : L":";
    if (secondSeparator)
      *secondSeparator = system ? secondTimeSeparator_ : L":";
  }

private:
  static bool Own(LPWSTR* field, unsigned int units, const wchar_t* text) {
    if (!falloc_(units * sizeof(wchar_t), field, true, true))
      return false;
    strcpyn(*field, text, units);
    return true;
  }

  void ReleaseBuffers() {
    ffree(&currency_.lpDecimalSep);
    ffree(&currency_.lpThousandSep);
    ffree(&currency_.lpCurrencySymbol);
    ffree(&number_.lpDecimalSep);
    ffree(&number_.lpThousandSep);
  }

  // ReadInt - an integer setting through the virtual slot, into a UINT.
  bool ReadInt(LCTYPE type, UINT* field) {
    unsigned int value = 0;
    if (!GetLocaleInt(type, &value))
      return false;
    *field = value;
    return true;
  }

  LCID locale_ = 0;
  FormatCallback numberCallback_ = nullptr;
  wchar_t decimal_[2] = L".";
  wchar_t thousands_[2] = L",";
  short groupSize_ = 3;
  FormatCallback dateCallback_ = nullptr;
  wchar_t dateDelimiter_[2] = L"/";
  short dateOrder_ = 0;
  CURRENCYFMTW currency_{};
  NUMBERFMTW number_{};
  bool twelveHour_ = true;
  short markerPosition_ = 0;
  wchar_t am_[20] = L"AM";
  wchar_t pm_[20] = L"PM";
  wchar_t timeSeparator_[4] = L":";
  wchar_t secondTimeSeparator_[4] = L":";
  wchar_t timeFormat_[36] = L"h:mm:ss tt";
};

// SystemFlag - true (the thread's locale) unless the host's callback asks
// for the neutral settings.
bool SystemFlag(cLocaleInfo::FormatCallback callback) { return callback ? !callback() : true; }

} // namespace

cLocaleInfo::~cLocaleInfo() {}

cLocaleInfo* cLocaleInfo::Create() { return qx::NewServiceOrNull<cLocaleInfoImpl>(); }

bool ResetQXLocaleInfo() {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li && li->Refresh();
}

unsigned long GetLocaleIdentifier() {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li ? li->UpdateLocale() : GetThreadLocale();
}

bool GetLocaleInt(unsigned long type, unsigned int* out) {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li && li->GetLocaleInt(static_cast<LCTYPE>(type), out);
}

bool GetLocaleString(unsigned long type, wchar_t* buffer, unsigned int size) {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li && li->GetLocaleString(static_cast<LCTYPE>(type), buffer, size);
}

bool SetNumberFormatCallback(bool (*callback)()) {
  if (cLocaleInfo* li = cLocaleInfo::Instance())
    li->SetNumberFormatCallback(callback);
  return true;
}

bool (*GetNumberFormatCallback())() {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li ? li->GetNumberFormatCallback() : nullptr;
}

void GetQXLocaleNumInfo(bool system, wchar_t* decimal, wchar_t* thousands, short* group) {
  if (cLocaleInfo* li = cLocaleInfo::Instance())
    li->GetNumberInfo(system, decimal, thousands, group);
}

const wchar_t* GetCurrencySymbol() {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li ? li->GetCurrencySymbol() : L"$";
}

bool GetNumberFmt(NUMBERFMTW* format) {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li && li->GetNumberFormat(format);
}

bool GetCurrentFmt(CURRENCYFMTW* format) {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li && li->GetCurrencyFormat(format);
}

NUMBERFMTW* GetNumberFmtPtr() {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li ? li->GetNumberFormatPtr() : nullptr;
}

CURRENCYFMTW* GetCurrencyFmtPtr() {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li ? li->GetCurrencyFormatPtr() : nullptr;
}

bool SetDateFormatCallback(bool (*callback)()) {
  if (cLocaleInfo* li = cLocaleInfo::Instance())
    li->SetDateFormatCallback(callback);
  return true;
}

bool (*GetDateFormatCallback())() {
  cLocaleInfo* li = cLocaleInfo::Instance();
  return li ? li->GetDateFormatCallback() : nullptr;
}

void GetQXLocaleDateInfo(bool system, short* order, wchar_t* delimiter) {
  if (cLocaleInfo* li = cLocaleInfo::Instance())
    li->GetDateInfo(system, order, delimiter);
}

void GetQXLocaleTimeFormat(bool system, wchar_t* buffer, unsigned int size) {
  if (cLocaleInfo* li = cLocaleInfo::Instance())
    li->GetTimeFormat(system, buffer, size);
  else
    strcpyn(buffer, kNeutralTimeFormat, size);
}

void GetQXLocaleTimeInfo(bool system, bool* twelveHour, short* markerPosition, const wchar_t** am,
                         const wchar_t** pm, const wchar_t** separator,
                         const wchar_t** secondSeparator) {
  if (cLocaleInfo* li = cLocaleInfo::Instance())
    li->GetTimeInfo(system, twelveHour, markerPosition, am, pm, separator, secondSeparator);
}

wchar_t GetDecimalSeparator() {
  wchar_t decimal = L'.';
  GetQXLocaleNumInfo(SystemFlag(GetNumberFormatCallback()), &decimal, nullptr, nullptr);
  return decimal;
}

wchar_t GetThousandsSeparator() {
  wchar_t thousands = L',';
  GetQXLocaleNumInfo(SystemFlag(GetNumberFormatCallback()), nullptr, &thousands, nullptr);
  return thousands;
}

short GetThousandsGroupSize() {
  short group = 3;
  GetQXLocaleNumInfo(SystemFlag(GetNumberFormatCallback()), nullptr, nullptr, &group);
  return group;
}

short GetDateOrder() {
  short order = 0;
  GetQXLocaleDateInfo(SystemFlag(GetDateFormatCallback()), &order, nullptr);
  return order;
}

wchar_t GetDateDelim() {
  wchar_t delimiter = L'/';
  GetQXLocaleDateInfo(SystemFlag(GetDateFormatCallback()), nullptr, &delimiter);
  return delimiter;
}

template class QXSingleton<cLocaleInfo, 3>;
