// PointParserFactory::Parse on random text, random separator sets and
// random lengths shorter and longer than the text: the text lies in a block
// of exactly `length` units (or the text and its terminator when `length`
// goes beyond), so a read past either shows under AddressSanitizer; the
// result and the points must equal those of a plain reader that cuts the
// text at `length` and reads each number with StringToDouble from a copy of
// the rest; the caller's text is never modified, in either runtime-locale
// path of StringToDouble.
#include "platform/crt_locale.h"
#include "qxutil/containers.h"
#include "qxutil/locale.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>
#include <vector>

namespace {

// The units text is made of: number parts, separators, blanks, units
// beyond ASCII that number readers treat specially, and the terminator.
const wchar_t kAlphabet[] = L"0123456789.,;: \t\n-+eEdDxXpPinfaINFA()_"
                            L"\u00A0\u3000\u0301\u0661\uFF15";
constexpr size_t kAlphabetSize = sizeof kAlphabet / sizeof kAlphabet[0]; // the last is L'\0'

void Check(bool condition) {
  if (!condition)
    std::abort();
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

struct Reference {
  std::wstring coordinate, point; // the sets, with the blanks added
  bool In(const std::wstring& set, wchar_t c) const {
    return c != 0 && set.find(c) != std::wstring::npos;
  }
  // Parse - the text cut at `length` (and at its terminator).
  bool Parse(const wchar_t* text, unsigned length, std::vector<DPNT>* out) const {
    size_t end = 0;
    while (end < length && text[end])
      ++end;
    const std::wstring cut(text, end);
    unsigned position = 0;
    auto skip = [&](const std::wstring& set) {
      while (position < length && position < end && In(set, cut[position]))
        ++position;
    };
    auto number = [&](double* value) {
      std::wstring rest = position < end ? cut.substr(position) : std::wstring();
      wchar_t* stop = nullptr;
      if (!StringToDouble(rest.data(), value, &stop))
        return false;
      position += static_cast<unsigned>(stop - rest.data());
      return true;
    };
    skip(point);
    while (position < length) {
      DPNT p;
      if (!number(&p.x))
        return false;
      skip(coordinate);
      if (!number(&p.y))
        return false;
      out->push_back(p);
      skip(point);
    }
    return true;
  }
};

// Room - the points the container's block holds.
unsigned Room(DPNTContainer* c) { return memSize(c->GetPoints(nullptr)) / sizeof(DPNT); }

// Grew - the block grew from `room` for `needed` points by the step at
// least and, with no step, by what is needed (as the heap rounds it: two
// points more at most).
void Grew(DPNTContainer* c, unsigned needed, unsigned room, unsigned step) {
  const unsigned least = std::max(needed, room + step);
  Check(Room(c) >= least && Room(c) <= least + 2);
}

// Containers - DPNTContainer against a vector, each byte an operation:
// appends (of null points too), reservations and resets, huge ones
// included. Whatever is refused keeps the points and the block.
void Containers(const uint8_t* data, size_t size) {
  const unsigned kHuge = 0x10000000u; // 2^32 bytes
  Check(DPNTContainer::Create(kHuge, 0) == nullptr);
  const unsigned step = size ? data[0] % 3 * 50 : 0;
  std::unique_ptr<DPNTContainer> c(DPNTContainer::Create(size > 1 ? data[1] % 8 : 0, step));
  Check(c != nullptr && Room(c.get()) >= (size > 1 ? data[1] % 8u : 0));
  std::vector<DPNT> model;
  DPNT pool[40];
  for (int i = 0; i < 40; ++i)
    pool[i] = {i + 0.5, -i - 0.5};
  for (size_t at = 2; at < size && at < 64; ++at) {
    const unsigned n = data[at] / 4 % 40, room = Room(c.get());
    DPNT* const block = c->GetPoints(nullptr);
    switch (data[at] % 4) {
    case 0: { // Append, from null now and then
      const bool null = data[at] >= 0xF0;
      const bool ok = c->Append(null ? nullptr : pool, n);
      Check(ok == (!null || n == 0));
      if (ok && model.size() + n > room)
        Grew(c.get(), static_cast<unsigned>(model.size()) + n, room, step);
      if (ok)
        model.insert(model.end(), pool, pool + n);
      else
        Check(c->GetPoints(nullptr) == block && Room(c.get()) == room);
      break;
    }
    case 1:
    case 2: { // Reserve, or Reset; huge now and then
      const unsigned needed = data[at] >= 0xF0 ? kHuge : room + n;
      const bool ok = data[at] % 4 == 1 ? c->Reserve(needed) : c->Reset(needed);
      if (data[at] % 4 == 2)
        model.clear();
      Check(ok == (needed != kHuge));
      if (!ok)
        Check(c->GetPoints(nullptr) == block && Room(c.get()) == room);
      else if (needed > room)
        Grew(c.get(), needed, room, step);
      break;
    }
    default:
      Check(c->Reset(0) && Room(c.get()) == room);
      model.clear();
    }
    unsigned count = 0;
    const DPNT* got = c->GetPoints(&count);
    Check(count == model.size() && Room(c.get()) >= count);
    for (unsigned i = 0; i < count; ++i)
      Check(SameBits(got[i].x, model[i].x) && SameBits(got[i].y, model[i].y));
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Containers(data, size);
  if (size < 4 || size > 4000)
    return 0;
  const bool addWhitespace = data[0] & 1, replace = data[0] & 2, otherPoint = data[0] & 4;
  const size_t coordinateCount = data[1] % 4, pointCount = data[2] % 4;
  size_t at = 3;
  auto unit = [&](uint8_t byte) { return kAlphabet[byte % (kAlphabetSize - 1)]; };
  std::wstring coordinate, point;
  for (size_t i = 0; i < coordinateCount && at < size; ++i)
    coordinate += unit(data[at++]);
  for (size_t i = 0; i < pointCount && at < size; ++i)
    point += unit(data[at++]);
  const int delta = at < size ? static_cast<int8_t>(data[at++]) : 0;
  std::wstring text;
  for (; at < size; ++at)
    text += data[at] == 0xFF ? L'\0' : unit(data[at]);
  const long wanted = static_cast<long>(text.size()) + (delta % 16);
  const unsigned length = static_cast<unsigned>(wanted < 0 ? 0 : wanted);

  // Exactly `length` units, or the text and its terminator.
  const size_t units = length <= text.size() ? length : text.size() + 1;
  std::unique_ptr<wchar_t[]> block(new wchar_t[units ? units : 1]);
  std::wmemcpy(block.get(), text.c_str(), units);
  const std::vector<wchar_t> before(block.get(), block.get() + units);

  Reference reference{coordinate, point};
  if (addWhitespace) {
    reference.coordinate += L" \t\n";
    reference.point += L" \t\n";
  }
  std::unique_ptr<DPNTContainer> points(DPNTContainer::Create(data[1] % 3, data[2] % 5));
  const DPNT held{-1, -2};
  Check(points && points->Append(&held, 1));
  // An empty set is passed now and then as a null pointer, an empty text as null.
  const bool nulls = data[0] & 8;
  std::unique_ptr<PointParserFactory> parser(PointParserFactory::Create(
      points.get(), nulls && coordinate.empty() ? nullptr : coordinate.c_str(),
      nulls && point.empty() ? nullptr : point.c_str(), addWhitespace));
  Check(parser != nullptr && !PointParserFactory::Create(nullptr, L",", L";", addWhitespace));
  const wchar_t* const source = nulls && text.empty() ? nullptr : block.get();

  if (otherPoint)
    qx::platform::SetThreadNumericLocaleOverride("xx_XX.UTF-8", data[3] & 1 ? L',' : L'.');
  const bool ok = parser->Parse(source, length, replace);
  std::vector<DPNT> expected;
  if (!replace)
    expected.push_back(held);
  const bool expectedOk = reference.Parse(source ? block.get() : L"", length, &expected);
  qx::platform::SetThreadNumericLocaleOverride(nullptr, 0);

  Check(ok == expectedOk);
  unsigned count = 0;
  const DPNT* got = points->GetPoints(&count);
  Check(count == expected.size());
  for (unsigned i = 0; i < count; ++i)
    Check(SameBits(got[i].x, expected[i].x) && SameBits(got[i].y, expected[i].y));
  Check(std::equal(before.begin(), before.end(), block.get()));
  return 0;
}
