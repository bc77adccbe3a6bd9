// String caches: the edge cases, the 65,500-byte bound, reads that must stay
// inside the block, and short random runs against a plain model with the
// heap failing growths (the long runs are fuzz/string_cache_fuzz.cpp).
#include "common/fault_walk.h"
#include "common/string_cache_model.h"
#include "common/thread_runner.h"
#include "qxutil/text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <random>
#include <string>

namespace {

using qxtest::CacheStep;
using qxtest::CompareCache;
using qxtest::StringCacheModel;

std::wstring NameAt(wchar_t* cache, unsigned offset, int dataSize, int* data = nullptr) {
  wchar_t name[64];
  GetCachedString(cache, offset, name, 64, data, dataSize);
  return name;
}

TEST(StringCache, SortedInsertionAndCaseInsensitiveNames) {
  wchar_t* cache = nullptr;
  int beta = 2, alpha = 1, again = 11;
  EXPECT_EQ(CacheString(&cache, const_cast<wchar_t*>(L"beta"), &beta, 4, true), 1u);
  EXPECT_EQ(CacheString(&cache, const_cast<wchar_t*>(L"Alpha"), &alpha, 4, true), 1u);
  EXPECT_EQ(NameAt(cache, 1, 4), L"Alpha");
  EXPECT_EQ(NameAt(cache, 11, 4), L"beta"); // moved up by 4 + 5 + 1 units
  // The same name in other letters: the data is replaced, the name is kept.
  EXPECT_EQ(CacheString(&cache, const_cast<wchar_t*>(L"ALPHA"), &again, 4, true), 1u);
  int data = 0;
  EXPECT_EQ(NameAt(cache, 1, 4, &data), L"Alpha");
  EXPECT_EQ(data, 11);
  // Unsorted: at the end whatever the order; an empty name is refused.
  EXPECT_EQ(CacheString(&cache, const_cast<wchar_t*>(L"a"), nullptr, 4, false), 20u);
  EXPECT_EQ(CacheString(&cache, const_cast<wchar_t*>(L""), nullptr, 4, false), 0u);
  EXPECT_TRUE(GetCachedStructure(cache, const_cast<wchar_t*>(L"BETA"), &data, 4));
  EXPECT_EQ(data, 2);
  EXPECT_FALSE(GetCachedStructure(cache, const_cast<wchar_t*>(L"gamma"), &data, 4));
  ffree(&cache);
}

TEST(StringCache, NeverGrowsBeyond65500BytesOf16BitUnits) {
  // The first entry: (n + 2 x dataSize) x 2 + 6 bytes.
  wchar_t* cache = nullptr;
  std::wstring name(32748, L'n');
  EXPECT_EQ(CacheString(&cache, name.data(), nullptr, 0, false), 0u); // 65502 bytes
  EXPECT_EQ(cache, nullptr);
  name.resize(32747); // 65500 bytes: just fits
  EXPECT_EQ(CacheString(&cache, name.data(), nullptr, 0, false), 1u);
  ffree(&cache);

  // Growth: (n + end + 2 x dataSize + 2) x 2 bytes, checked on every entry.
  for (int dataSize : {0, 3}) {
    StringCacheModel model(dataSize);
    int added = 0, refused = 0;
    for (int i = 0; refused == 0; ++i) {
      std::wstring entry = L"entry" + std::to_wstring(i) + std::wstring(90, L'x');
      unsigned char data[3] = {1, 2, 3};
      std::string diff = CacheStep(&cache, &model, entry, data, false, false);
      ASSERT_EQ(diff, "") << "entry " << i;
      (model.entries().size() > static_cast<size_t>(added) ? added : refused) += 1;
    }
    EXPECT_GT(added, 300);
    size_t bytes16 = (model.Offset(model.entries().size()) + 3 * dataSize + 1) * 2;
    EXPECT_LE(bytes16, 65500u);
    EXPECT_EQ(CompareCache(cache, model), "");
    ffree(&cache);
  }
}

TEST(StringCache, ReadsStayInsideTheBlock) {
  wchar_t* cache = nullptr;
  int data = 7;
  ASSERT_EQ(CacheString(&cache, const_cast<wchar_t*>(L"one"), &data, 4, false), 1u);
  const unsigned units = memSize(cache) / sizeof(wchar_t);
  wchar_t name[8] = L"xxxxxxx";
  int out = -1;
  GetCachedString(cache, units, name, 8, &out, 4); // past the block: "" and no data
  EXPECT_EQ(name[0], 0);
  EXPECT_EQ(out, -1);
  GetCachedString(nullptr, 1, name, 8, &out, 4);
  EXPECT_EQ(name[0], 0);
  // The last unit: what the block cannot supply reads as zero.
  char big[64];
  std::memset(big, 0x55, sizeof big);
  GetCachedString(cache, units - 1, name, 8, big, 64);
  EXPECT_EQ(big[63], 0);
  // A name cut to the caller's size.
  GetCachedString(cache, 1, name, 3, nullptr, 4);
  EXPECT_EQ(std::wstring(name), L"on");

  // The wrong data size makes the walks fail, never read past the block.
  EXPECT_FALSE(GetCachedStructure(cache, const_cast<wchar_t*>(L"one"), &out, 4000));
  EXPECT_FALSE(GetIthCachedString(cache, 0, name, 8, nullptr, 4000));
  EXPECT_EQ(CacheString(&cache, const_cast<wchar_t*>(L"two"), &data, 4000, false), 0u);
  EXPECT_FALSE(GetIthCachedString(cache, -1, name, 8, nullptr, 4));
  EXPECT_FALSE(GetIthCachedString(cache, 1, name, 8, nullptr, 4));
  EXPECT_TRUE(GetIthCachedString(cache, 0, name, 8, &out, 4));
  EXPECT_EQ(out, 7);

  // Null arguments.
  EXPECT_EQ(CacheString(nullptr, name, &data, 4, false), 0u);
  EXPECT_EQ(CacheString(&cache, nullptr, &data, 4, false), 0u);
  EXPECT_EQ(CacheString(&cache, name, &data, -1, false), 0u);
  EXPECT_FALSE(GetCachedStructure(nullptr, name, &out, 4));
  EXPECT_FALSE(GetCachedStructure(cache, nullptr, &out, 4));
  EXPECT_FALSE(GetIthCachedString(nullptr, 0, name, 8, &out, 4));
  ffree(&cache);
}

// Random names from letters that fold and units that do not (the "C"
// runtime folds ASCII letters only), random data sizes, sorted and unsorted
// insertion, and a failing heap on a quarter of the calls.
TEST(StringCache, AgreesWithAPlainList) {
  const wchar_t kLetters[] = L"aAbBzZ_[`\u00e9\u00c9\u4e00";
  qxtest::RunOnNewThread([&] {
    for (unsigned seed = 1; seed <= 24; ++seed) {
      std::mt19937 random(seed);
      const int dataSize = static_cast<int>(random() % 9);
      const int sortedMode = static_cast<int>(seed % 3); // never, always, mixed
      StringCacheModel model(dataSize);
      wchar_t* cache = nullptr;
      for (int step = 0; step < 150; ++step) {
        std::wstring name(random() % 6, L' ');
        for (wchar_t& c : name)
          c = kLetters[random() % (sizeof kLetters / sizeof kLetters[0] - 1)];
        unsigned char data[8];
        for (unsigned char& b : data)
          b = static_cast<unsigned char>(random());
        const bool sorted = sortedMode == 1 || (sortedMode == 2 && random() % 2);
        const std::string diff = CacheStep(&cache, &model, name, random() % 5 ? data : nullptr,
                                           sorted, random() % 4 == 0);
        ASSERT_EQ(diff, "") << "seed " << seed << " step " << step;
        ASSERT_EQ(CompareCache(cache, model), "") << "seed " << seed << " step " << step;
      }
      ffree(&cache);
    }
  });
}

using qxtest::FaultCase;
using qxtest::Outcome;

// A new cache, then its growth: either failure leaves the caller's cache as
// it was.
const FaultCase kCacheCalls[] = {
    {"CacheString (a new cache, then growth)",
     [] {
       wchar_t* cache = nullptr;
       if (!CacheString(&cache, const_cast<wchar_t*>(L"rivers"), nullptr, 2, true))
         return cache ? FaultCase::kWrong : FaultCase::kFailed;
       wchar_t before[13], name[16]; // compared without the C++ heap
       std::wmemcpy(before, cache, 13);
       unsigned offset = CacheString(&cache, const_cast<wchar_t*>(L"lakes"), nullptr, 2, true);
       bool unchanged = std::wmemcmp(before, cache, 13) == 0;
       GetCachedString(cache, 9, name, 16, nullptr, 2);
       bool right = offset == 1 && std::wcscmp(name, L"rivers") == 0;
       ffree(&cache);
       if (!offset)
         return unchanged ? FaultCase::kFailed : FaultCase::kWrong;
       return Outcome(true, right);
     }},
};

TEST(FaultWalk, StringCaches) {
  qxtest::RunOnNewThread([] {
    for (const FaultCase& c : kCacheCalls)
      qxtest::WalkFaults(c);
  });
}

} // namespace
