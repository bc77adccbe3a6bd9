// The fast paths of the UTF-8 codec (ASCII runs 16 at a time, whole
// sequences, blocks of the BMP) against its state machine fed one byte or
// one unit at a time, where no fast path applies: the same units, flags,
// bytes and replacement counts for random input at every offset; and every
// decoded text survives the trip back through UTF-8.
#include "platform/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using qx::platform::Utf8Decoder;
using qx::platform::Utf8Encoder;

void Check(bool ok) {
  if (!ok)
    std::abort();
}

// Decode - the units and flags of s[0, n) in chunks of `step` bytes.
void Decode(const char* s, size_t n, size_t step, std::wstring* units, std::string* flags) {
  Utf8Decoder decoder;
  for (size_t at = 0; at < n || at == 0; at += step) {
    size_t k = std::min(step, n - at);
    std::vector<wchar_t> out(Utf8Decoder::MaxUnits(k));
    std::unique_ptr<bool[]> replaced(new bool[Utf8Decoder::MaxUnits(k)]);
    size_t got = decoder.Decode(s + at, k, at + k == n, out.data(), replaced.get());
    units->append(out.data(), got);
    for (size_t i = 0; i < got; ++i)
      flags->push_back(replaced[i] ? '1' : '0');
    if (n == 0)
      break;
  }
}

// Encode - the bytes of w[0, n) in chunks of `step` units.
std::string Encode(const wchar_t* w, size_t n, size_t step, size_t* replacements) {
  Utf8Encoder encoder;
  std::string bytes;
  for (size_t at = 0; at < n; at += step) {
    size_t k = std::min(step, n - at);
    std::string out(Utf8Encoder::MaxBytes(k), '\0');
    bytes.append(out.data(), encoder.Encode(w + at, k, at + k == n, out.data(), replacements));
  }
  return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const char* s = reinterpret_cast<const char*>(data);
  std::wstring fastUnits, slowUnits;
  std::string fastFlags, slowFlags;
  Decode(s, size, size == 0 ? 1 : size, &fastUnits, &fastFlags);
  Decode(s, size, 1, &slowUnits, &slowFlags);
  Check(fastUnits == slowUnits && fastFlags == slowFlags);
  // Decoded units are well-formed UTF-16: they go back to UTF-8 without a
  // replacement and decode to themselves.
  size_t backBad = 0;
  std::string back = Encode(fastUnits.data(), fastUnits.size(), fastUnits.size() + 1, &backBad);
  std::wstring again;
  std::string againFlags;
  Decode(back.data(), back.size(), back.size() + 1, &again, &againFlags);
  Check(backBad == 0 && again == fastUnits);

  // Units from pairs of bytes: mostly small values (ASCII, Latin, kana),
  // surrogates and values past U+10FFFF from the high bits.
  std::vector<wchar_t> w;
  for (size_t i = 0; i + 1 < size; i += 2) {
    uint32_t u = static_cast<uint32_t>(data[i] | data[i + 1] << 8);
    if (data[i + 1] >= 0xF8) // the top of the range: beyond the BMP, negative
      u = data[i + 1] == 0xFF ? 0x80000000u | data[i] : 0x10000u * (data[i + 1] - 0xF7) + data[i];
    else if (data[i + 1] >= 0x80)
      u &= 0x7F; // ASCII runs
    w.push_back(static_cast<wchar_t>(u));
  }
  size_t fastBad = 0, slowBad = 0;
  std::string fast = Encode(w.data(), w.size(), w.empty() ? 1 : w.size(), &fastBad);
  std::string slow = Encode(w.data(), w.size(), 1, &slowBad);
  Check(fast == slow && fastBad == slowBad);
  return 0;
}
