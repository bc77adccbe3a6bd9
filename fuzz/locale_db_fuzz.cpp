// Fuzz target for the locale database's buffer contract. Once, before the
// first input, every locale: its name leads back to it, and each value of a
// set of types obeys the contract below (the locales are counted). Then
// random locales, types (with and without LOCALE_RETURN_NUMBER) and buffer
// sizes: a negative size or a size without a buffer is refused with
// ERROR_INVALID_PARAMETER, the probe's length is what a fetch returns, the text has no
// embedded terminator, a shorter buffer fails with ERROR_INSUFFICIENT_BUFFER
// and writes nothing, nothing is written past the size, a failure fails the
// same way at every size, and a number reads back as its text gives it.
#include "qxutil/winlocale.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <vector>

namespace {

constexpr WCHAR kSentinel = 0xBEEF;
constexpr int kRoom = 128;

void Check(bool ok) {
  if (!ok) {
    std::abort();
  }
}

// Types whose values are numbers (read with LOCALE_RETURN_NUMBER too) or texts.
const struct {
  LCTYPE type;
  bool numeric;
} kTypes[] = {
    {LOCALE_IDEFAULTANSICODEPAGE, true},
    {LOCALE_IDEFAULTCODEPAGE, true},
    {LOCALE_SDECIMAL, false},
    {LOCALE_STHOUSAND, false},
    {LOCALE_SLONGDATE, false},
    {LOCALE_S1159, false},
    {LOCALE_SMONTHNAME13, false},
    {LOCALE_SABBREVDAYNAME7, false},
    {LOCALE_SNAME, false},
    {LOCALE_SNATIVEDIGITS, false},
    {LOCALE_ICALENDARTYPE, true},
    {LOCALE_IFIRSTDAYOFWEEK, true},
    {LOCALE_SCURRENCY, false},
    {LOCALE_INEGCURR, true},
};

// Contract - one locale and type against the contract, through a buffer of
// `cch` units (any size); for a numeric type also its number.
void Contract(LCID lcid, LCTYPE type, int cch, bool numeric) {
  std::vector<WCHAR> buf(kRoom + 16, kSentinel);
  auto untouchedFrom = [&](size_t from) {
    for (size_t i = from; i < buf.size(); ++i) {
      if (buf[i] != kSentinel) {
        return false;
      }
    }
    return true;
  };
  // A negative size, or a size without a buffer, comes before every other check.
  SetLastError(0);
  Check(GetLocaleInfoW(lcid, type, buf.data(), -1 - cch % 8) == 0 &&
        GetLastError() == ERROR_INVALID_PARAMETER && untouchedFrom(0));
  SetLastError(0);
  Check(GetLocaleInfoW(lcid, type, nullptr, 1 + cch % 8) == 0 &&
        GetLastError() == ERROR_INVALID_PARAMETER);
  SetLastError(0);
  const int need = GetLocaleInfoW(lcid, type, nullptr, 0);
  const DWORD probeError = GetLastError();
  cch = cch % (kRoom + 1);
  SetLastError(0);
  const int got = GetLocaleInfoW(lcid, type, cch == 0 ? nullptr : buf.data(), cch);
  const DWORD error = GetLastError();
  if (need == 0) { // refused whatever the size
    Check(got == 0 && error == probeError && probeError != 0 && untouchedFrom(0));
    return;
  }
  Check(need <= kRoom);
  if (cch == 0) {
    Check(got == need && untouchedFrom(0));
  } else if (cch < need) {
    Check(got == 0 && error == ERROR_INSUFFICIENT_BUFFER && untouchedFrom(0));
  } else {
    Check(got == need && std::wcslen(buf.data()) == static_cast<size_t>(need - 1) &&
          untouchedFrom(static_cast<size_t>(need)));
  }
  if (numeric) {
    WCHAR text[kRoom];
    WCHAR number[2] = {kSentinel, kSentinel};
    Check(GetLocaleInfoW(lcid, type, text, kRoom) == need);
    Check(GetLocaleInfoW(lcid, type | LOCALE_RETURN_NUMBER, number, 1) == 1);
    DWORD value = 0;
    std::memcpy(&value, number, sizeof value);
    Check(value == std::wcstoul(text, nullptr, 10) && number[1] == kSentinel);
  }
}

// EveryLocale - the supported locales, each checked once at every size that
// matters (the probe, one short, exact).
std::vector<LCID> EveryLocale() {
  std::vector<LCID> locales;
  for (LCID lcid = 1; lcid <= 0xFFFF; ++lcid) {
    if (ConvertDefaultLocale(lcid) != lcid || !IsValidLocale(lcid, LCID_SUPPORTED)) {
      continue;
    }
    locales.push_back(lcid);
    WCHAR name[LOCALE_NAME_MAX_LENGTH];
    Check(LCIDToLocaleName(lcid, name, LOCALE_NAME_MAX_LENGTH, 0) > 0);
    Check(LocaleNameToLCID(name, 0) == lcid);
    for (const auto& t : kTypes) {
      const int need = GetLocaleInfoW(lcid, t.type, nullptr, 0);
      Check(need >= 1);
      for (int cch : {0, need - 1, need}) {
        Contract(lcid, t.type, cch, t.numeric);
      }
    }
  }
  Check(locales.size() == 142);
  return locales;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::vector<LCID> kLocales = EveryLocale();
  for (size_t i = 0; i + 4 <= size && i < 256; i += 4) {
    // A supported locale or any LCID; one of the types above or any LCTYPE.
    LCID lcid = data[i] < 0xC0 ? kLocales[(data[i] | data[i + 1] << 8) % kLocales.size()]
                               : static_cast<LCID>(data[i + 1] | (data[i] << 8 & 0x3F00));
    const auto& known = kTypes[data[i + 2] % std::size(kTypes)];
    bool anyType = (data[i + 2] & 0x80) != 0;
    LCTYPE type = anyType ? (data[i + 2] & 0x7F) | (data[i + 3] & 0x80 ? 0x1000 : 0) : known.type;
    if (data[i + 3] & 0x40) {
      type |= LOCALE_NOUSEROVERRIDE;
    }
    Contract(lcid, type, data[i + 3] & 0x3F, !anyType && known.numeric);
  }
  return 0;
}
