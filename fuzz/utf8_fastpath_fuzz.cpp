// The fast paths of the UTF-8 codec (ASCII runs 16 at a time, whole
// sequences, blocks of the BMP) against its state machine fed in chunks of
// one to three bytes or units, and all against the reference forms below
// (the well-formed sequences of the Unicode standard, one U+FFFD for each
// maximal subpart of an ill-formed one): the same units, flags, bytes and
// replacement counts for random input at every offset, also through the
// string helpers up to the first NUL; and every decoded text survives the
// trip back through UTF-8. The output never passes the room the codec asks
// for (the buffers are exactly that large).
#include "platform/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
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
    std::unique_ptr<char[]> out(
        new char[Utf8Encoder::MaxBytes(k)]); // on the heap: ASan sees past it
    bytes.append(out.get(), encoder.Encode(w + at, k, at + k == n, out.get(), replacements));
  }
  return bytes;
}

// ReferenceDecode - s[0, n) as UTF-16 units, each replacement flagged '1'.
void ReferenceDecode(const uint8_t* s, size_t n, std::wstring* units, std::string* flags) {
  auto emit = [&](uint32_t u, bool bad) {
    if (u >= 0x10000) {
      units->push_back(static_cast<wchar_t>(0xD800 + ((u - 0x10000) >> 10)));
      units->push_back(static_cast<wchar_t>(0xDC00 + (u & 0x3FF)));
      flags->append("00");
    } else {
      units->push_back(static_cast<wchar_t>(u));
      flags->push_back(bad ? '1' : '0');
    }
  };
  for (size_t i = 0; i < n;) {
    const uint8_t b = s[i];
    // The length and the range of the second byte (the others: 80..BF).
    size_t length = 0;
    uint8_t low = 0x80, high = 0xBF;
    if (b < 0x80) {
      length = 1;
    } else if (b >= 0xC2 && b <= 0xDF) {
      length = 2;
    } else if (b >= 0xE0 && b <= 0xEF) {
      length = 3;
      low = b == 0xE0 ? 0xA0 : 0x80;
      high = b == 0xED ? 0x9F : 0xBF;
    } else if (b >= 0xF0 && b <= 0xF4) {
      length = 4;
      low = b == 0xF0 ? 0x90 : 0x80;
      high = b == 0xF4 ? 0x8F : 0xBF;
    }
    if (length == 0) {
      emit(0xFFFD, true);
      ++i;
      continue;
    }
    uint32_t value = length == 1 ? b : b & (0x7Fu >> length);
    size_t j = i + 1;
    for (; j < i + length && j < n; ++j) {
      const uint8_t lo = j == i + 1 ? low : 0x80, hi = j == i + 1 ? high : 0xBF;
      if (s[j] < lo || s[j] > hi) {
        break;
      }
      value = value << 6 | (s[j] & 0x3Fu);
    }
    emit(j == i + length ? value : 0xFFFD, j != i + length);
    i = j;
  }
}

// ReferenceEncode - w[0, n) as UTF-8: a pair joins, a unit up to U+10FFFF is
// its code point, anything else (a lone surrogate, a larger or negative
// unit) is one U+FFFD.
std::string ReferenceEncode(const wchar_t* w, size_t n, size_t* replacements) {
  std::string out;
  for (size_t i = 0; i < n; ++i) {
    uint32_t u = static_cast<uint32_t>(w[i]);
    if (u >= 0xD800 && u <= 0xDBFF && i + 1 < n && static_cast<uint32_t>(w[i + 1]) >= 0xDC00 &&
        static_cast<uint32_t>(w[i + 1]) <= 0xDFFF) {
      u = 0x10000 + ((u - 0xD800) << 10) + (static_cast<uint32_t>(w[++i]) - 0xDC00);
    } else if ((u >= 0xD800 && u <= 0xDFFF) || u > 0x10FFFF) {
      u = 0xFFFD;
      ++*replacements;
    }
    if (u < 0x80) {
      out += static_cast<char>(u);
    } else if (u < 0x800) {
      out += {static_cast<char>(0xC0 | u >> 6), static_cast<char>(0x80 | (u & 0x3F))};
    } else if (u < 0x10000) {
      out += {static_cast<char>(0xE0 | u >> 12), static_cast<char>(0x80 | (u >> 6 & 0x3F)),
              static_cast<char>(0x80 | (u & 0x3F))};
    } else {
      out += {static_cast<char>(0xF0 | u >> 18), static_cast<char>(0x80 | (u >> 12 & 0x3F)),
              static_cast<char>(0x80 | (u >> 6 & 0x3F)), static_cast<char>(0x80 | (u & 0x3F))};
    }
  }
  return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool nulls = [] {
    Check(qx::platform::WideToUtf8(nullptr).empty() && qx::platform::Utf8ToWide(nullptr).empty());
    return true;
  }();
  (void)nulls;
  const char* s = reinterpret_cast<const char*>(data);
  std::wstring fastUnits;
  std::string fastFlags;
  Decode(s, size, size == 0 ? 1 : size, &fastUnits, &fastFlags);
  std::wstring refUnits;
  std::string refFlags;
  ReferenceDecode(data, size, &refUnits, &refFlags);
  Check(fastUnits == refUnits && fastFlags == refFlags);
  for (size_t step : {1, 2, 3}) {
    std::wstring slowUnits;
    std::string slowFlags;
    Decode(s, size, step, &slowUnits, &slowFlags);
    Check(slowUnits == refUnits && slowFlags == refFlags);
  }
  const std::string text(s, size); // up to the first NUL through the helper
  std::wstring refText;
  std::string ignored;
  ReferenceDecode(data, std::strlen(text.c_str()), &refText, &ignored);
  Check(qx::platform::Utf8ToWide(text.c_str()) == refText);
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
    else if (data[i + 1] >= 0xF0)
      u = 0xD800 + ((data[i + 1] & 7u) << 8) + data[i]; // surrogates
    else if (data[i + 1] >= 0x80)
      u &= 0x7F; // ASCII runs
    w.push_back(static_cast<wchar_t>(u));
  }
  size_t fastBad = 0, refBad = 0;
  std::string fast = Encode(w.data(), w.size(), w.empty() ? 1 : w.size(), &fastBad);
  Check(fast == ReferenceEncode(w.data(), w.size(), &refBad) && fastBad == refBad);
  for (size_t step : {1, 2}) {
    size_t slowBad = 0;
    Check(Encode(w.data(), w.size(), step, &slowBad) == fast && slowBad == refBad);
  }
  w.push_back(0);
  size_t ignoredBad = 0;
  Check(qx::platform::WideToUtf8(w.data()) ==
        ReferenceEncode(w.data(), std::wcslen(w.data()), &ignoredBad));
  return 0;
}
