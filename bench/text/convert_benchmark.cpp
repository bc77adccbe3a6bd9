// Character-set conversion against glibc iconv (a cached iconv_t, "CP1252" /
// "CP932" <-> "WCHAR_T") and ICU's ucnv (a cached converter, to and from
// UTF-16), on the same Western European and Japanese text; and the cost of
// building one byte-to-byte table.
#include "qxutil/text.h"
#include "qxutil/winlocale.h"

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <unicode/ucnv.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr size_t kTextUnits = 64 * 1024;

// Pin the locale before the services are built: system charset WindowsLatin1.
const bool kLocalePinned = SetThreadLocale(1033) != 0;

std::wstring Repeat(const wchar_t* line) {
  std::wstring text;
  while (text.size() < kTextUnits)
    text += line;
  text.resize(kTextUnits);
  return text;
}

// A sample: the same text as wide units and in the member's bytes.
struct Sample {
  QXCHARSET cs;
  std::wstring wide;
  std::string bytes;
};

Sample MakeSample(QXCHARSET cs, const wchar_t* line) {
  Sample s{cs, Repeat(line), {}};
  std::vector<char> bytes(s.wide.size() * 2 + 1);
  if (!ConvertSystemToMBCSChar(s.wide.c_str(), bytes.data(), cs,
                               static_cast<unsigned int>(bytes.size()), false))
    std::abort();
  s.bytes = bytes.data();
  return s;
}

const Sample& Western() {
  static const Sample s = MakeSample(
      QXCHARSET_WINDOWS_LATIN1,
      L"Z\u00fcrich \u2013 Gen\u00e8ve: A1, 278 km; S\u00e3o Paulo \u2013 Bras\u00edlia, "
      L"K\u00f8benhavn \u2013 Malm\u00f6 via \u00d8resundsbron (toll \u20ac 59).\r\n");
  return s;
}

const Sample& Japanese() {
  static const Sample s = MakeSample(
      QXCHARSET_WINDOWS_JAPANESE,
      L"\u56fd\u90531\u53f7\uff08\u6771\u4eac\uff5e\u5927\u962a\uff09\u306f\u3001"
      L"\u5168\u9577 566 km \u306e\u4e00\u822c\u56fd\u9053\u3067\u3059\u3002Route 1.\r\n");
  return s;
}

void SetBytes(benchmark::State& state, size_t units) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * units * sizeof(wchar_t)));
}

// ---- qxutil ----------------------------------------------------------------

void ToWide(benchmark::State& state, const Sample& s) {
  std::vector<wchar_t> out(s.bytes.size() + 1);
  for (auto _ : state) {
    bool ok = ConvertMBCSCharToSystem(s.bytes.data(), static_cast<unsigned int>(s.bytes.size()),
                                      s.cs, out.data(), static_cast<unsigned int>(s.bytes.size()));
    if (!ok) {
      state.SkipWithError("ConvertMBCSCharToSystem failed");
      break;
    }
    benchmark::ClobberMemory();
  }
  SetBytes(state, s.wide.size());
}

void FromWide(benchmark::State& state, const Sample& s) {
  std::vector<char> out(s.wide.size() * 2 + 1);
  for (auto _ : state) {
    bool ok = ConvertSystemToMBCSChar(s.wide.c_str(), out.data(), s.cs,
                                      static_cast<unsigned int>(out.size()), false);
    if (!ok) {
      state.SkipWithError("ConvertSystemToMBCSChar failed");
      break;
    }
    benchmark::ClobberMemory();
  }
  SetBytes(state, s.wide.size());
}

void BM_Qxutil_1252_ToWide(benchmark::State& state) { ToWide(state, Western()); }
void BM_Qxutil_1252_FromWide(benchmark::State& state) { FromWide(state, Western()); }
void BM_Qxutil_932_ToWide(benchmark::State& state) { ToWide(state, Japanese()); }
void BM_Qxutil_932_FromWide(benchmark::State& state) { FromWide(state, Japanese()); }
BENCHMARK(BM_Qxutil_1252_ToWide);
BENCHMARK(BM_Qxutil_1252_FromWide);
BENCHMARK(BM_Qxutil_932_ToWide);
BENCHMARK(BM_Qxutil_932_FromWide);

// ---- glibc iconv -----------------------------------------------------------

void Iconv(benchmark::State& state, const char* to, const char* from, const char* src, size_t n,
           size_t outBytes, size_t units) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) {
    state.SkipWithError("iconv_open failed");
    return;
  }
  std::vector<char> out(outBytes);
  for (auto _ : state) {
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(src);
    size_t inLeft = n;
    char* o = out.data();
    size_t outLeft = out.size();
    size_t r = iconv(cd, &in, &inLeft, &o, &outLeft);
    if (r == static_cast<size_t>(-1) || inLeft != 0) {
      state.SkipWithError("iconv stopped before the end");
      break;
    }
    benchmark::ClobberMemory();
  }
  iconv_close(cd);
  SetBytes(state, units);
}

void BM_Iconv_1252_ToWide(benchmark::State& state) {
  const Sample& s = Western();
  Iconv(state, "WCHAR_T", "CP1252", s.bytes.data(), s.bytes.size(),
        (s.bytes.size() + 1) * sizeof(wchar_t), s.wide.size());
}
void BM_Iconv_1252_FromWide(benchmark::State& state) {
  const Sample& s = Western();
  Iconv(state, "CP1252", "WCHAR_T", reinterpret_cast<const char*>(s.wide.data()),
        s.wide.size() * sizeof(wchar_t), s.wide.size() * 2 + 1, s.wide.size());
}
void BM_Iconv_932_ToWide(benchmark::State& state) {
  const Sample& s = Japanese();
  Iconv(state, "WCHAR_T", "CP932", s.bytes.data(), s.bytes.size(),
        (s.bytes.size() + 1) * sizeof(wchar_t), s.wide.size());
}
void BM_Iconv_932_FromWide(benchmark::State& state) {
  const Sample& s = Japanese();
  Iconv(state, "CP932", "WCHAR_T", reinterpret_cast<const char*>(s.wide.data()),
        s.wide.size() * sizeof(wchar_t), s.wide.size() * 2 + 1, s.wide.size());
}
BENCHMARK(BM_Iconv_1252_ToWide);
BENCHMARK(BM_Iconv_1252_FromWide);
BENCHMARK(BM_Iconv_932_ToWide);
BENCHMARK(BM_Iconv_932_FromWide);

// ---- ICU ucnv --------------------------------------------------------------

std::u16string Utf16(const std::wstring& w) { return std::u16string(w.begin(), w.end()); }

UConverter* OpenIcu(benchmark::State& state, const char* name) {
  UErrorCode err = U_ZERO_ERROR;
  UConverter* cnv = ucnv_open(name, &err);
  if (U_FAILURE(err)) {
    state.SkipWithError("ucnv_open failed");
    return nullptr;
  }
  return cnv;
}

void IcuToUnicode(benchmark::State& state, const char* name, const Sample& s) {
  UConverter* cnv = OpenIcu(state, name);
  if (!cnv)
    return;
  std::vector<UChar> out(s.bytes.size() + 1);
  for (auto _ : state) {
    UErrorCode err = U_ZERO_ERROR;
    int32_t n = ucnv_toUChars(cnv, out.data(), static_cast<int32_t>(out.size()), s.bytes.data(),
                              static_cast<int32_t>(s.bytes.size()), &err);
    if (U_FAILURE(err) || n != static_cast<int32_t>(s.wide.size())) {
      state.SkipWithError("ucnv_toUChars failed");
      break;
    }
    benchmark::ClobberMemory();
  }
  ucnv_close(cnv);
  SetBytes(state, s.wide.size());
}

void IcuFromUnicode(benchmark::State& state, const char* name, const Sample& s) {
  UConverter* cnv = OpenIcu(state, name);
  if (!cnv)
    return;
  std::u16string src = Utf16(s.wide);
  std::vector<char> out(s.wide.size() * 2 + 1);
  for (auto _ : state) {
    UErrorCode err = U_ZERO_ERROR;
    int32_t n = ucnv_fromUChars(cnv, out.data(), static_cast<int32_t>(out.size()), src.data(),
                                static_cast<int32_t>(src.size()), &err);
    if (U_FAILURE(err) || n != static_cast<int32_t>(s.bytes.size())) {
      state.SkipWithError("ucnv_fromUChars failed");
      break;
    }
    benchmark::ClobberMemory();
  }
  ucnv_close(cnv);
  SetBytes(state, s.wide.size());
}

void BM_Icu_1252_ToWide(benchmark::State& state) { IcuToUnicode(state, "windows-1252", Western()); }
void BM_Icu_1252_FromWide(benchmark::State& state) {
  IcuFromUnicode(state, "windows-1252", Western());
}
void BM_Icu_932_ToWide(benchmark::State& state) { IcuToUnicode(state, "windows-31j", Japanese()); }
void BM_Icu_932_FromWide(benchmark::State& state) {
  IcuFromUnicode(state, "windows-31j", Japanese());
}
BENCHMARK(BM_Icu_1252_ToWide);
BENCHMARK(BM_Icu_1252_FromWide);
BENCHMARK(BM_Icu_932_ToWide);
BENCHMARK(BM_Icu_932_FromWide);

// ---- Byte-to-byte tables ---------------------------------------------------

// Eleven distinct pairs in turn: with ten cache slots every call builds.
void BM_ConvertCharset_Build(benchmark::State& state) {
  const QXCHARSET sources[] = {
      QXCHARSET_ISO8859_1,    QXCHARSET_ISO8859_2,    QXCHARSET_ISO8859_5,     QXCHARSET_MAC_ROMAN,
      QXCHARSET_CODEPAGE_850, QXCHARSET_CODEPAGE_437, QXCHARSET_WINDOWS_GREEK, QXCHARSET_LICS,
      QXCHARSET_MAC_CYRILLIC, QXCHARSET_WINDOWS_THAI, QXCHARSET_CODEPAGE_864};
  size_t i = 0;
  for (auto _ : state) {
    int count = 0;
    unsigned char* table = nullptr;
    bool ok = ConvertCharset(sources[i], QXCHARSET_WINDOWS_LATIN1, &count, &table);
    benchmark::DoNotOptimize(ok);
    benchmark::DoNotOptimize(table);
    i = i + 1 == 11 ? 0 : i + 1;
  }
}
BENCHMARK(BM_ConvertCharset_Build);

void BM_ConvertCharset_Hit(benchmark::State& state) {
  for (auto _ : state) {
    int count = 0;
    unsigned char* table = nullptr;
    bool ok = ConvertCharset(QXCHARSET_MAC_ROMAN, QXCHARSET_WINDOWS_LATIN1, &count, &table);
    benchmark::DoNotOptimize(ok);
    benchmark::DoNotOptimize(table);
  }
}
BENCHMARK(BM_ConvertCharset_Hit);

} // namespace
