// StringNormalizer::Compare against ICU's collator at primary strength
// (ucol_strcoll: case- and accent-insensitive, the closest peer) and against
// the runtime's _wcsicmp (ASCII case only), on the same pairs of 8 to 64
// characters; and Normalize's throughput on short and long text.
//
// Two sets of 256 pairs, words of random letters with accents:
//   sorting - two independent strings, as a sort of an index compares them
//             (they usually differ in the first characters);
//   folded  - one string and a copy with its case changed at random and, in
//             half the pairs, one letter near the end, so every comparison
//             reads (nearly) the whole of both strings.
// Compare's strings are whole-BMP text in "WindowsLatin1" over table 44414.
#include "platform/crt_string.h"
#include "qxutil/text.h"

#include <benchmark/benchmark.h>
#include <unicode/ucol.h>

#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kPairs = 256;

struct Pair {
  std::wstring a, b;
  std::u16string a16, b16;
};

enum PairSet { kSorting, kFolded };

std::vector<Pair> MakePairs(PairSet set) {
  const wchar_t kLetters[] = L"abcdefghijklmnopqrstuvwxyz \u00e9\u00e8\u00e4\u00f6\u00fc\u00e5"
                             L"\u00e7\u00f1";
  std::mt19937 random(7);
  auto word = [&](size_t length) {
    std::wstring w;
    for (size_t i = 0; i < length; ++i)
      w += kLetters[random() % (std::size(kLetters) - 1)];
    return w;
  };
  std::vector<Pair> out(kPairs);
  for (Pair& p : out) {
    size_t length = 8 + random() % 57; // 8..64
    p.a = word(length);
    if (set == kSorting) {
      p.b = word(8 + random() % 57);
    } else {
      for (wchar_t c : p.a)
        p.b += random() % 2 ? qxToUpper(c) : c;
      if (random() % 2)
        p.b[length - 1 - random() % 3] = L'x';
    }
    p.a16.assign(p.a.begin(), p.a.end()); // all in the BMP: one unit each
    p.b16.assign(p.b.begin(), p.b.end());
  }
  return out;
}

const std::vector<Pair>& Pairs(PairSet set) {
  static const std::vector<Pair> pairs[2] = {MakePairs(kSorting), MakePairs(kFolded)};
  return pairs[set];
}

void BM_Compare_Normalizer(benchmark::State& state, PairSet set) {
  StringNormalizer* n = GetNormalizer(QXCHARSET_WINDOWS_LATIN1, 44414);
  const std::vector<Pair>& pairs = Pairs(set);
  size_t i = 0;
  for (auto _ : state) {
    const Pair& p = pairs[i++ % kPairs];
    benchmark::DoNotOptimize(n->Compare(p.a.c_str(), p.b.c_str()));
  }
}

void BM_Compare_IcuPrimary(benchmark::State& state, PairSet set) {
  UErrorCode status = U_ZERO_ERROR;
  UCollator* collator = ucol_open("", &status);
  if (U_FAILURE(status)) {
    state.SkipWithError("ucol_open failed");
    return;
  }
  ucol_setStrength(collator, UCOL_PRIMARY);
  const std::vector<Pair>& pairs = Pairs(set);
  size_t i = 0;
  for (auto _ : state) {
    const Pair& p = pairs[i++ % kPairs];
    benchmark::DoNotOptimize(ucol_strcoll(collator, p.a16.c_str(), -1, p.b16.c_str(), -1));
  }
  ucol_close(collator);
}

void BM_Compare_Wcsicmp(benchmark::State& state, PairSet set) {
  const std::vector<Pair>& pairs = Pairs(set);
  size_t i = 0;
  for (auto _ : state) {
    const Pair& p = pairs[i++ % kPairs];
    benchmark::DoNotOptimize(qx::crt::_wcsicmp(p.a.c_str(), p.b.c_str()));
  }
}

BENCHMARK_CAPTURE(BM_Compare_Normalizer, sorting, kSorting);
BENCHMARK_CAPTURE(BM_Compare_IcuPrimary, sorting, kSorting);
BENCHMARK_CAPTURE(BM_Compare_Wcsicmp, sorting, kSorting);
BENCHMARK_CAPTURE(BM_Compare_Normalizer, folded, kFolded);
BENCHMARK_CAPTURE(BM_Compare_IcuPrimary, folded, kFolded);
BENCHMARK_CAPTURE(BM_Compare_Wcsicmp, folded, kFolded);

// Normalize on copies of one text of state.range(0) characters; items are
// characters.
void BM_Normalize(benchmark::State& state) {
  StringNormalizer* n = GetNormalizer(QXCHARSET_WINDOWS_LATIN1, 44414);
  std::wstring text;
  for (size_t i = 0; text.size() < static_cast<size_t>(state.range(0)); ++i)
    text += Pairs(kSorting)[i % kPairs].a;
  text.resize(static_cast<size_t>(state.range(0)));
  std::wstring work = text;
  for (auto _ : state) {
    work.assign(text);
    n->Normalize(work.data());
    benchmark::DoNotOptimize(work.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Normalize)->Arg(16)->Arg(64)->Arg(4096);

} // namespace
