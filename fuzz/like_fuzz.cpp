// Like against the recursive rules it must reproduce (models/like_oracle.h):
// the result, *match and the error recorded must agree.
// Input: byte 0 picks the escape (a longer one escapes with its first unit),
// the rest is the pattern, a 0xFF byte, and the subject, each byte mapped onto
// a small alphabet (with a letter in both cases) so that wildcards, escapes
// and repeats are common. Sizes are bounded so the oracle stays
// fast.
#include "models/like_oracle.h"
#include "qxutil/frame.h"
#include "qxutil/text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

constexpr size_t kMaxPattern = 14;
constexpr size_t kMaxSubject = 24;
constexpr int kMaxPercents = 4; // keeps the oracle's search polynomial and small

wchar_t Unit(uint8_t b) {
  static const wchar_t kAlphabet[] = L"ab%_!%a\\bA\u00e9\u0301";
  return kAlphabet[b % (sizeof(kAlphabet) / sizeof(wchar_t) - 1)];
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  static const wchar_t* const kEscapes[] = {L"", L"!", L"%", L"_", L"a", L"\\", L"!x", nullptr};
  const wchar_t* escape = kEscapes[data[0] % 8];
  std::wstring pattern, subject;
  bool inSubject = false;
  int percents = 0;
  for (size_t i = 1; i < size; ++i) {
    if (data[i] == 0xFF && !inSubject) {
      inSubject = true;
      continue;
    }
    wchar_t c = Unit(data[i]);
    if (!inSubject) {
      if (c == L'%' && ++percents > kMaxPercents)
        continue;
      if (pattern.size() < kMaxPattern)
        pattern += c;
    } else if (subject.size() < kMaxSubject) {
      subject += c;
    }
  }
  bool expectMatch = false, malformed = false;
  bool expected =
      qxtest::LikeOracle(subject.c_str(), pattern.c_str(), escape, &expectMatch, &malformed);
  ClearErrors();
  bool match = !expectMatch;
  bool result = Like(subject.c_str(), pattern.c_str(), escape, &match);
  bool recorded = NumErrors() == 1 && GetErrorNum(0) == 61 && GetResourceID(0) == 19;
  if (result != expected || match != expectMatch || recorded != !expected ||
      (expected && HaveErrors()))
    std::abort();
  ClearErrors();
  return 0;
}
