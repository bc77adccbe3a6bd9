// MultiByteToWideChar and WideCharToMultiByte on about 4 KB of realistic text
// (1252: mostly ASCII with accented letters; 932: kana, kanji and ASCII),
// against glibc iconv with a cached iconv_t ("CP1252"/"CP932" <-> "WCHAR_T")
// in the same run. Bytes processed are the code-page text's bytes in both
// directions, so the decode and encode figures compare directly.
//
// Flags: 0, and the library's usual ones (MB_PRECOMPOSED to decode;
// WC_COMPOSITECHECK | WC_DEFAULTCHAR with the default character "_" and a
// used-default flag to encode). Output buffers have the exact size a probe
// gives, as callers that probe first pass them.
#include "platform/codepage.h"

#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

using namespace qx::win;

namespace {

constexpr size_t kTextBytes = 4096;

// Sentences repeated (with a running number) up to about kTextBytes bytes.
const wchar_t* const k1252Sentences[] = {
    L"Le caf\u00E9 de la gare ouvre \u00E0 7 h, m\u00EAme le dimanche. ",
    L"Die Stra\u00DFe nach M\u00FCnchen ist wegen Bauarbeiten gesperrt; bitte die Umleitung "
    L"\u00FCber Freising nehmen. ",
    L"R\u00E9sum\u00E9 of the na\u00EFve fa\u00E7ade study, draft 3 (see the annex). ",
    L"La pr\u00F3xima estaci\u00F3n es Le\u00F3n; el tren contin\u00FAa hacia Espa\u00F1a. ",
    L"Route 66 crosses 8 states and 3 time zones over 2,448 miles. ",
};

const wchar_t* const k932Sentences[] = {
    L"\u6771\u4EAC\u90FD\u306E\u5929\u6C17\u306F\u6674\u308C\u3001\u6700\u9AD8\u6C17\u6E29\u306F"
    L"25\u5EA6\u3067\u3059\u3002",
    L"\u6B21\u306E\u99C5\u306F\u65B0\u5BBF\u3067\u3059\u3002JR\u7DDA\u3068\u5730\u4E0B\u9244"
    L"\u306F\u304A\u4E57\u308A\u63DB\u3048\u3067\u3059\u3002",
    L"\u30C7\u30FC\u30BF\u30D9\u30FC\u30B9\u306E\u30D0\u30C3\u30AF\u30A2\u30C3\u30D7\u3092"
    L"\u53D6\u3063\u3066\u304B\u3089 update.sql \u3092\u5B9F\u884C\u3057\u307E\u3059\u3002",
    L"\u5730\u56F3\u306E\u7E2E\u5C3A\u306F 1:25000 \u3067\u3001\u7B49\u9AD8\u7DDA\u306F10m"
    L"\u3054\u3068\u3067\u3059\u3002",
    L"\uFF76\uFF80\uFF76\uFF85 \u3068 \u30AB\u30BF\u30AB\u30CA\u3001\u3072\u3089\u304C\u306A"
    L"\u3001\u6F22\u5B57\u304C\u6DF7\u3056\u3063\u305F\u6587\u7AE0\u3002\r\n",
};

// Sample - one page's benchmark text in both forms.
struct Sample {
  UINT cp;
  const char* iconvName;
  std::wstring wide;
  std::string bytes;
};

std::string Encode(UINT cp, const std::wstring& w) {
  int n = WideCharToMultiByte(cp, 0, w.data(), static_cast<int>(w.size()), nullptr, 0, nullptr,
                              nullptr);
  std::string out(static_cast<size_t>(n), '\0');
  BOOL used = FALSE;
  WideCharToMultiByte(cp, 0, w.data(), static_cast<int>(w.size()), out.data(), n, nullptr, &used);
  if (used) {
    std::fprintf(stderr, "benchmark text does not fit code page %u\n", cp);
    std::abort();
  }
  return out;
}

Sample MakeSample(UINT cp, const char* iconvName, const wchar_t* const* sentences, size_t count) {
  Sample s{cp, iconvName, {}, {}};
  for (size_t i = 0; s.bytes.size() < kTextBytes; ++i) {
    std::wstring piece = sentences[i % count];
    piece += std::to_wstring(i) + L" ";
    s.bytes += Encode(cp, piece);
    s.wide += piece;
  }
  return s;
}

const Sample& Sample1252() {
  static const Sample s = MakeSample(1252, "CP1252", k1252Sentences, std::size(k1252Sentences));
  return s;
}

const Sample& Sample932() {
  static const Sample s = MakeSample(932, "CP932", k932Sentences, std::size(k932Sentences));
  return s;
}

// ---- qxutil ----------------------------------------------------------------

void Decode(benchmark::State& state, const Sample& s, DWORD flags) {
  const int srclen = static_cast<int>(s.bytes.size());
  std::vector<wchar_t> out(s.wide.size());
  const int cap = static_cast<int>(out.size());
  for (auto _ : state) {
    int n = MultiByteToWideChar(s.cp, flags, s.bytes.data(), srclen, out.data(), cap);
    benchmark::DoNotOptimize(n);
    benchmark::ClobberMemory();
  }
  if (std::wstring_view(out.data(), out.size()) != s.wide) {
    state.SkipWithError("MultiByteToWideChar gave other text");
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * srclen);
}

void EncodeText(benchmark::State& state, const Sample& s, DWORD flags, LPCSTR defaultChar,
                bool wantUsed) {
  const int srclen = static_cast<int>(s.wide.size());
  std::string out(s.bytes.size(), '\0');
  const int cap = static_cast<int>(out.size());
  BOOL used = FALSE;
  for (auto _ : state) {
    int n = WideCharToMultiByte(s.cp, flags, s.wide.data(), srclen, out.data(), cap, defaultChar,
                                wantUsed ? &used : nullptr);
    benchmark::DoNotOptimize(n);
    benchmark::ClobberMemory();
  }
  if (out != s.bytes || used) {
    state.SkipWithError("WideCharToMultiByte gave other bytes");
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * cap);
}

constexpr DWORD kLibraryEncodeFlags = WC_COMPOSITECHECK | WC_DEFAULTCHAR;

void BM_Decode1252(benchmark::State& state) { Decode(state, Sample1252(), 0); }
void BM_Decode1252Precomposed(benchmark::State& state) {
  Decode(state, Sample1252(), MB_PRECOMPOSED);
}
void BM_Encode1252(benchmark::State& state) { EncodeText(state, Sample1252(), 0, nullptr, false); }
void BM_Encode1252LibraryFlags(benchmark::State& state) {
  EncodeText(state, Sample1252(), kLibraryEncodeFlags, "_", true);
}
void BM_Decode932(benchmark::State& state) { Decode(state, Sample932(), 0); }
void BM_Decode932Precomposed(benchmark::State& state) {
  Decode(state, Sample932(), MB_PRECOMPOSED);
}
void BM_Encode932(benchmark::State& state) { EncodeText(state, Sample932(), 0, nullptr, false); }
void BM_Encode932LibraryFlags(benchmark::State& state) {
  EncodeText(state, Sample932(), kLibraryEncodeFlags, "_", true);
}
BENCHMARK(BM_Decode1252);
BENCHMARK(BM_Decode1252Precomposed);
BENCHMARK(BM_Encode1252);
BENCHMARK(BM_Encode1252LibraryFlags);
BENCHMARK(BM_Decode932);
BENCHMARK(BM_Decode932Precomposed);
BENCHMARK(BM_Encode932);
BENCHMARK(BM_Encode932LibraryFlags);

// ---- iconv, the descriptor opened once -----------------------------------

// Iconv - one conversion of `in` into `out` through `cd`; false on failure.
bool Iconv(iconv_t cd, const void* in, size_t inBytes, void* out, size_t outBytes) {
  char* ip = const_cast<char*>(static_cast<const char*>(in));
  char* op = static_cast<char*>(out);
  iconv(cd, nullptr, nullptr, nullptr, nullptr); // reset the shift state
  return iconv(cd, &ip, &inBytes, &op, &outBytes) != static_cast<size_t>(-1) && inBytes == 0;
}

void IconvDecode(benchmark::State& state, const Sample& s) {
  iconv_t cd = iconv_open("WCHAR_T", s.iconvName);
  if (cd == reinterpret_cast<iconv_t>(-1)) {
    state.SkipWithError("iconv_open failed");
    return;
  }
  std::vector<wchar_t> out(s.wide.size());
  bool ok = true;
  for (auto _ : state) {
    ok &= Iconv(cd, s.bytes.data(), s.bytes.size(), out.data(), out.size() * sizeof(wchar_t));
    benchmark::ClobberMemory();
  }
  iconv_close(cd);
  if (!ok) {
    state.SkipWithError("iconv failed");
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * s.bytes.size()));
}

void IconvEncode(benchmark::State& state, const Sample& s) {
  iconv_t cd = iconv_open(s.iconvName, "WCHAR_T");
  if (cd == reinterpret_cast<iconv_t>(-1)) {
    state.SkipWithError("iconv_open failed");
    return;
  }
  std::string out(s.bytes.size(), '\0');
  bool ok = true;
  for (auto _ : state) {
    ok &= Iconv(cd, s.wide.data(), s.wide.size() * sizeof(wchar_t), out.data(), out.size());
    benchmark::ClobberMemory();
  }
  iconv_close(cd);
  if (!ok) {
    state.SkipWithError("iconv failed");
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * s.bytes.size()));
}

void BM_IconvDecode1252(benchmark::State& state) { IconvDecode(state, Sample1252()); }
void BM_IconvEncode1252(benchmark::State& state) { IconvEncode(state, Sample1252()); }
void BM_IconvDecode932(benchmark::State& state) { IconvDecode(state, Sample932()); }
void BM_IconvEncode932(benchmark::State& state) { IconvEncode(state, Sample932()); }
BENCHMARK(BM_IconvDecode1252);
BENCHMARK(BM_IconvEncode1252);
BENCHMARK(BM_IconvDecode932);
BENCHMARK(BM_IconvEncode932);

} // namespace
