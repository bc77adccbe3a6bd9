//===- containers/point_parser.cpp - PointParserFactory -------------------===//
//
// Reads "x y" pairs into a DPNTContainer. The text ends at `length` units or
// at its terminator, whichever comes first, and nothing after that end is
// read. Each number is read as StringToDouble reads the text cut off at that
// end. The units that could belong to the number are found first: its
// leading blanks, then signs, digits, letters, points, underscores and
// parentheses (hexadecimal, "inf" and "nan(...)" forms included) and
// anything beyond ASCII. A reading never goes past a unit outside that
// class, so when such a unit comes before the end the number is read in
// place; otherwise (and whenever the runtime's decimal point is not ".", as
// StringToDouble then writes into its text) it is read from a terminated
// copy of those units. The runtime's numeric locale is asked once per call.
//
//===----------------------------------------------------------------------===//
#include "locale/number_internal.h"
#include "qxutil/containers.h"

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>

namespace {

constexpr wchar_t kWhitespace[] = L" \t\n";

// IsPlainBlank - a blank that every reading of a number skips on its own.
bool IsPlainBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

// Unit - a unit as an unsigned number (wchar_t is signed here).
uint32_t Unit(wchar_t c) { return static_cast<uint32_t>(c); }

// MayLead - a unit that may come before a number: blanks and controls, and
// anything beyond ASCII (other spaces, combining marks).
bool MayLead(wchar_t c) { return c != 0 && (Unit(c) <= 0x20 || Unit(c) >= 0x7F); }

// MayBelong - a unit that may be part of a number.
bool MayBelong(wchar_t c) {
  if (Unit(c) >= 0x7F)
    return true;
  return (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') ||
         c == L'+' || c == L'-' || c == L'.' || c == L'(' || c == L')' || c == L'_';
}

// SeparatorSet - an owned copy of a separator set, with a bit table for the
// ASCII units.
class SeparatorSet {
public:
  ~SeparatorSet() { ffree(&units_); }

  bool Copy(const wchar_t* set, bool addWhitespace) {
    const size_t length = set ? std::wcslen(set) : 0;
    const size_t total = length + (addWhitespace ? std::wcslen(kWhitespace) : 0) + 1;
    if (total > 0xFFFFFFFFu / sizeof(wchar_t) ||
        !falloc_(static_cast<unsigned int>(total * sizeof(wchar_t)), &units_, true, true))
      return false;
    if (length > 0)
      std::wmemcpy(units_, set, length);
    if (addWhitespace)
      std::wcscpy(units_ + length, kWhitespace);
    for (const wchar_t* p = units_; *p; ++p)
      if (*p < 128)
        ascii_[*p / 64] |= uint64_t{1} << (*p % 64);
    return true;
  }

  bool Has(wchar_t c) const {
    if (Unit(c) < 128)
      return (ascii_[c / 64] >> (c % 64)) & 1;
    return std::wcschr(units_, c) != nullptr;
  }

private:
  wchar_t* units_ = nullptr;
  uint64_t ascii_[2] = {};
};

class PointParserFactoryImpl final : public PointParserFactory {
public:
  explicit PointParserFactoryImpl(DPNTContainer* container) : container_(container) {}

  bool Copy(const wchar_t* coordinateSeparators, const wchar_t* pointSeparators,
            bool addWhitespace) {
    return coordinateSeparators_.Copy(coordinateSeparators, addWhitespace) &&
           pointSeparators_.Copy(pointSeparators, addWhitespace);
  }

  bool Parse(const wchar_t* text, unsigned length, bool replace) override {
    unsigned held = 0;
    container_->GetPoints(&held);
    const uint64_t wanted = uint64_t{held} + length / 20;
    const bool room =
        replace ? container_->Reset(length / 20)
                : wanted <= 0xFFFFFFFFu && container_->Reserve(static_cast<unsigned>(wanted));
    if (!room)
      return false;
    if (!text)
      text = L"";
    const bool neutral = qx::number::RuntimeLocaleIsNeutral();
    unsigned position = Skip(pointSeparators_, text, 0, length);
    while (position < length) {
      DPNT point;
      if (!ReadNumber(text, length, neutral, &position, &point.x))
        return false;
      position = Skip(coordinateSeparators_, text, position, length);
      if (!ReadNumber(text, length, neutral, &position, &point.y))
        return false;
      if (!container_->Append(&point, 1))
        return false; // out of memory: reported, not a silent loss of points
      position = Skip(pointSeparators_, text, position, length);
    }
    return true;
  }

private:
  // Skip - the position after the units of `set` from `position` on.
  static unsigned Skip(const SeparatorSet& set, const wchar_t* text, unsigned position,
                       unsigned length) {
    while (position < length && text[position] != 0 && set.Has(text[position]))
      ++position;
    return position;
  }

  // ReadNumber - StringToDouble on the text from *position, cut off at
  // `length`; on success *position moves past what it read.
  static bool ReadNumber(const wchar_t* text, unsigned length, bool neutral, unsigned* position,
                         double* value) {
    const wchar_t* p = text + *position;
    const size_t limit = length - *position;
    size_t start = 0; // plain blanks before ASCII: skipped the same way by every reading
    while (start + 1 < limit && IsPlainBlank(p[start]) && Unit(p[start + 1]) < 0x80)
      ++start;
    size_t end = start;
    while (end < limit && MayLead(p[end]))
      ++end;
    while (end < limit && MayBelong(p[end]))
      ++end;
    wchar_t* stop = nullptr;
    if (neutral && end < limit) { // a unit no number takes ends the reading in place
      if (!qx::number::ReadDouble(p + start, value, &stop, true))
        return false;
      *position += static_cast<unsigned>(stop - p);
      return true;
    }
    const size_t units = end - start;
    wchar_t local[128];
    wchar_t* copy = local;
    if (units >= sizeof local / sizeof local[0] &&
        (units >= 0xFFFFFFFFu / sizeof(wchar_t) || // its byte size must fit the request
         !falloc_(static_cast<unsigned int>((units + 1) * sizeof(wchar_t)), &copy, true, false)))
      return false;
    std::wmemcpy(copy, p + start, units);
    copy[units] = 0;
    const bool ok = qx::number::ReadDouble(copy, value, &stop, neutral);
    if (ok)
      *position += static_cast<unsigned>(start + (stop - copy));
    if (copy != local)
      ffree(&copy);
    return ok;
  }

  SeparatorSet coordinateSeparators_;
  SeparatorSet pointSeparators_;
  DPNTContainer* container_; // not owned
};

} // namespace

PointParserFactory::~PointParserFactory() = default;

PointParserFactory* PointParserFactory::Create(DPNTContainer* container,
                                               const wchar_t* coordinateSeparators,
                                               const wchar_t* pointSeparators, bool addWhitespace) {
  if (!container)
    return nullptr;
  PointParserFactoryImpl* parser = new (std::nothrow) PointParserFactoryImpl(container);
  if (parser && !parser->Copy(coordinateSeparators, pointSeparators, addWhitespace)) {
    delete parser;
    return nullptr;
  }
  return parser;
}
