//===- locale/number_internal.h - Shared pieces of the number functions -*- C++ -*-===//
//
// The runtime-locale test (under the library's locale critical section),
// the separators in force, and the sizes of the working buffers.
//
//===----------------------------------------------------------------------===//
#ifndef QXUTIL_LOCALE_NUMBER_INTERNAL_H
#define QXUTIL_LOCALE_NUMBER_INTERNAL_H

#include "platform/crt_locale.h"
#include "qxutil/locale.h"

namespace qx::number {

/// The working buffers of the formatters and the FmtCtl parsers, in units.
constexpr unsigned int kWorkSize = 1024;

/// ReadDouble - StringToDouble with the answer of RuntimeLocaleIsNeutral()
/// given, for a caller that reads many numbers under one runtime locale.
bool ReadDouble(const wchar_t* text, double* result, wchar_t** end, bool neutral);

/// RuntimeLocaleIsNeutral - true when the C runtime's LC_NUMERIC locale is
/// the "C" locale (named "C" or "POSIX", or unreadable;
/// platform/crt_locale.h).
inline bool RuntimeLocaleIsNeutral() { return qx::platform::CrtNumericLocaleIsC(); }

/// SeparatorsInForce - the decimal and thousands separators and the group
/// size of the locale record, with the system flag the number format
/// callback chooses (GetDecimalSeparator's rule), in one refresh.
void SeparatorsInForce(wchar_t* decimal, wchar_t* thousands, short* group);

/// AutomaticPrecision - the "%g" precision for `value`: trunc(log10|value|)
/// + 3, or 6 when that is below 6 or above 14, for 0 and for non-finite
/// values.
int AutomaticPrecision(double value);

/// RuntimePoint - the runtime's decimal point: "." in the neutral locale.
wchar_t RuntimePoint(bool neutral);

/// Neutralise - the runtime's printf text made canonical into `out` (at most
/// `size` units): in a runtime locale other than "C" (`neutral` false)
/// through DeformatNumberFromUI, else a bounded copy.
void Neutralise(const wchar_t* text, wchar_t* out, unsigned int size, bool neutral);

} // namespace qx::number

#endif // QXUTIL_LOCALE_NUMBER_INTERNAL_H
