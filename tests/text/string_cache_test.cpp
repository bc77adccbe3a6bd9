// String caches: reads that must stay inside the block, and failed growths
// (string_cache_fuzz holds insertion, sorting, folded names, data and the
// 65,500-byte bound to a plain model).
#include "common/fault_walk.h"
#include "common/thread_runner.h"
#include "qxutil/text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <string>

namespace {

wchar_t* W(const wchar_t* s) { return const_cast<wchar_t*>(s); }

TEST(StringCache, ReadsStayInsideTheBlock) {
  wchar_t* cache = nullptr;
  int data = 7, out = -1;
  ASSERT_EQ(CacheString(&cache, W(L"one"), &data, 4, false), 1u);
  const unsigned units = memSize(cache) / sizeof(wchar_t);
  wchar_t name[8] = L"xxxxxxx";
  GetCachedString(cache, units, name, 8, &out, 4); // past the block: "" and no data
  EXPECT_EQ(name[0], 0);
  EXPECT_EQ(out, -1);
  char big[64]; // from the last unit: what the block cannot supply reads as zero
  std::memset(big, 0x55, sizeof big);
  GetCachedString(cache, units - 1, name, 8, big, 64);
  EXPECT_EQ(big[63], 0);
  GetCachedString(cache, 1, name, 3, nullptr, 4); // a name cut to the caller's size
  EXPECT_EQ(std::wstring(name), L"on");
  // Another data size makes the walks fail, never read past the block.
  EXPECT_FALSE(GetCachedStructure(cache, W(L"one"), &out, 4000));
  EXPECT_FALSE(GetIthCachedString(cache, 0, name, 8, nullptr, 4000));
  EXPECT_EQ(CacheString(&cache, W(L"two"), &data, 4000, false), 0u);
  EXPECT_FALSE(GetIthCachedString(cache, -1, name, 8, nullptr, 4));
  EXPECT_TRUE(GetIthCachedString(cache, 0, name, 8, &out, 4));
  EXPECT_EQ(out, 7);
  EXPECT_EQ(CacheString(nullptr, name, &data, 4, false), 0u);
  EXPECT_EQ(CacheString(&cache, nullptr, &data, 4, false), 0u);
  EXPECT_EQ(CacheString(&cache, name, &data, -1, false), 0u);
  EXPECT_FALSE(GetCachedStructure(nullptr, name, &out, 4));
  ffree(&cache);
}

using qxtest::FaultCase;
using qxtest::Outcome;

// A new cache, then its growth: either failure leaves the caller's cache as
// it was.
const FaultCase kCacheCalls[] = {
    {"CacheString (a new cache, then growth)",
     [] {
       wchar_t* cache = nullptr;
       if (!CacheString(&cache, W(L"rivers"), nullptr, 2, true))
         return cache ? FaultCase::kWrong : FaultCase::kFailed;
       wchar_t before[13], name[16]; // compared without the C++ heap
       std::wmemcpy(before, cache, 13);
       unsigned offset = CacheString(&cache, W(L"lakes"), nullptr, 2, true);
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
