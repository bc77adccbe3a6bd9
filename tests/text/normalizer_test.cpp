// String normalizers: the tables and their identifiers, the default's choice,
// the manager's list and its place in the service set, and failing allocations.
#include "common/fault_walk.h"
#include "platform/heap.h"
#include "qxutil/frame.h"
#include "qxutil/text.h"
#include "text/normalization_table.h"
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <vector>

namespace {

using qx::FoldingTable;
using qxtest::RunOnNewThread;

constexpr QXCHARSET kWestern = QXCHARSET_WINDOWS_LATIN1;

using qxtest::InLocale;

TEST(FoldingTables, IdentifiersChecksumsAndWhichAreConfirmed) {
  struct Row {
    unsigned short id, printableId, checksum;
  };
  // The tables whose bytes reproduce their identifier; the others are built
  // from their rules and answer to their identifier (docs/normalizers.md).
  const std::vector<int> kConfirmed = {0, 1, 3, 4, 6, 7, 8, 9, 10};
  const Row kRows[qx::kFoldingTableCount] = {
      {65496, 24861, 65496}, {44414, 24861, 44414}, {40623, 24861, 15491}, {55762, 24861, 55762},
      {32694, 24861, 32694}, {21121, 24861, 60810}, {34070, 24861, 34070}, {41909, 24861, 41909},
      {1298, 24861, 1298},   {56485, 44564, 56485}, {54273, 24861, 54273},
  };
  std::vector<int> confirmed;
  for (int i = 0; i < qx::kFoldingTableCount; ++i) {
    const qx::NormalizationTable& t = FoldingTable(i);
    EXPECT_EQ(t.id(), kRows[i].id) << i;
    EXPECT_EQ(t.printableId(), kRows[i].printableId) << i;
    EXPECT_EQ(t.checksum(), kRows[i].checksum) << i;
    // The frame's CRC-16/ARC, an implementation of its own, agrees.
    unsigned short crcTable[256];
    EXPECT_EQ(calculate_crc16(t.map(), 256, crcTable, true, 256), t.checksum()) << i;
    EXPECT_EQ(calculate_crc16(t.map() + 32, 95, crcTable, false, 256), t.printableId()) << i;
    if (t.confirmed())
      confirmed.push_back(i);
    EXPECT_EQ(qx::FindFoldingTable(t.id()), &t) << i;
  }
  EXPECT_EQ(confirmed, kConfirmed);
  EXPECT_EQ(qx::FindFoldingTable(5607), nullptr);
}

TEST(StringNormalizer, DefaultFollowsTheSystemCharsetAndTheLanguage) {
  const std::pair<LCID, unsigned short> kCases[] = {
      {1033, 5607},  {1053, 1298},  {1030, 34070}, {1045, 40623},
      {1049, 55762}, {1032, 32694}, {1055, 21121}, {1041, 65496},
  };
  for (const auto& c : kCases)
    InLocale(c.first, [&] {
      StringNormalizer* n = GetDefaultNormalizer();
      ASSERT_NE(n, nullptr) << c.first;
      EXPECT_EQ(n->GetId(), c.second) << c.first;
      EXPECT_EQ(n->GetCharset(), system_charset()) << c.first;
      EXPECT_EQ(GetDefaultNormalizer(), n);
    });
}

TEST(StringNormalizer, RequestDefaultNormalizerChoosesTheLanguageOnce) {
  // The two lists' ends; the system locale's language when given none.
  const std::pair<int, unsigned short> kLanguages[] = {
      {1030, 34070}, {6203, 34070}, {1035, 1298}, {9275, 1298}, {1031, 5607}, {0, 5607},
  };
  for (const auto& l : kLanguages)
    InLocale(1033, [&] {
      EXPECT_TRUE(RequestDefaultNormalizer(l.first));
      EXPECT_EQ(GetDefaultNormalizer()->GetId(), l.second) << l.first;
      EXPECT_FALSE(RequestDefaultNormalizer(1053)); // the default stays
      EXPECT_EQ(GetDefaultNormalizer()->GetId(), l.second) << l.first;
    });
}

TEST(StringNormalizer, GetNormalizerKeepsOneNormalizerPerRequest) {
  InLocale(1033, [] {
    StringNormalizer* western = GetNormalizer(kWestern, 44414);
    ASSERT_NE(western, nullptr);
    EXPECT_EQ(western->GetId(), 5607);
    EXPECT_EQ(GetNormalizer(kWestern, 5607), western);
    EXPECT_EQ(GetNormalizer(kWestern, 44414), western);
    EXPECT_NE(GetDefaultNormalizer(), western); // the default is never in the list

    StringNormalizer* neutral = GetNormalizer(QXCHARSET_NEUTRAL, 44414); // renamed only in 10
    ASSERT_NE(neutral, nullptr);
    EXPECT_EQ(neutral->GetId(), 44414);
    EXPECT_NE(neutral, western);
    EXPECT_EQ(GetNormalizer(QXCHARSET_NEUTRAL, 44414), neutral);

    EXPECT_TRUE(western->IsActive());
    EXPECT_FALSE(western->SetActive(false));
    EXPECT_FALSE(western->IsActive());
    EXPECT_EQ(GetNormalizer(kWestern, 5607), western);
    EXPECT_TRUE(western->IsActive()); // handing it out again makes it active
    EXPECT_EQ(GetNormalizer(QXCHARSET_WINDOWS_GREEK, 56485)->GetPrintableId(), 44564);
  });
}

TEST(StringNormalizer, UnknownTableRecordsError74) {
  const std::pair<QXCHARSET, unsigned short> kUnknown[] = {
      {kWestern, 12345}, {QXCHARSET_WINDOWS_LATIN2, 5607}, {kWestern, 0}};
  RunOnNewThread([&] {
    for (const auto& [cs, id] : kUnknown) {
      ClearErrors();
      EXPECT_EQ(GetNormalizer(cs, id), nullptr);
      ASSERT_EQ(NumErrors(), 1);
      EXPECT_EQ(GetErrorNum(0), 74);
      EXPECT_EQ(GetResourceID(0), 74);
      wchar_t arg[16];
      GetErrorMsg(L"^0", 0, arg, 16);
      EXPECT_EQ(std::wstring(arg), std::to_wstring(id));
    }
    ClearErrors();
  });
}

TEST(StringNormalizer, Compare) {
  struct Case {
    unsigned short id;
    const wchar_t *a, *b;
    int expected;
  };
  // The order of folded bytes is normalizer_fuzz's (it seldom meets a mark
  // beside the first difference); long text is the fault walk's.
  const Case kCases[] = {
      {44414, nullptr, L"", 0},
      {44414, L"e\u0301t\u00e9", L"\u00c9TE", 0}, // a mark is no unit of its own
      {65496, L"xe\u0301", L"xf", 1},             // the mark after a difference past the first
  };
  RunOnNewThread([&] {
    for (const Case& c : kCases) {
      StringNormalizer* n = GetNormalizer(kWestern, c.id);
      ASSERT_NE(n, nullptr) << c.id;
      EXPECT_EQ(n->Compare(c.a, c.b), c.expected) << c.id;
      EXPECT_EQ(n->Compare(c.b, c.a), -c.expected) << c.id;
    }
    GetNormalizer(kWestern, 44414)->Normalize(nullptr);
  });
}

TEST(StringNormalizerSet, AFailedManagerFailsTheCallThatBuildsTheSet) {
  // Walk the allocations of building a set until the manager's fails.
  bool seen = false;
  for (long n = 1; !seen && n < 1000; ++n)
    RunOnNewThread([&] {
      qx::platform::FailAllocations(n, false);
      InstanceData* first = GetInstanceData();
      qx::platform::FailAllocations(0, false);
      // The InstanceData itself failing also gives null, and then the next
      // call builds a whole set.
      if (first || StringNormalizerManager::Instance())
        return;
      seen = true; // the set stopped at the manager: null, then the partial set
      EXPECT_NE(GetInstanceData(), nullptr);
      EXPECT_NE(cCharsetConverter::Instance(), nullptr);
      EXPECT_EQ(cCheckEsc::Instance(), nullptr);
      EXPECT_EQ(GetDefaultNormalizer(), nullptr);
      EXPECT_EQ(GetNormalizer(kWestern, 44414), nullptr);
      EXPECT_FALSE(RequestDefaultNormalizer(0));
    });
  EXPECT_TRUE(seen);
}

using qxtest::FaultCase;
using qxtest::Outcome;

bool AllOf(const wchar_t* text, wchar_t c) {
  const wchar_t one[] = {c, 0};
  return text[std::wcsspn(text, one)] == 0;
}

const FaultCase kAllocatingCalls[] = {
    {"StringNormalizerManager",
     [] {
       StringNormalizerManager* m = StringNormalizerManager::Create();
       if (!m)
         return FaultCase::kFailed;
       StringNormalizer* d = m->GetDefaultNormalizer();
       StringNormalizer* made[5] = {};
       const unsigned short kIds[] = {44414, 5607, 1298, 55762, 65496};
       bool all = d != nullptr, right = !d || d->GetId() == 5607;
       for (int i = 0; i < 5; ++i) {
         made[i] = m->GetNormalizer(kWestern, kIds[i]);
         all = all && made[i];
         right = right && (!made[i] || made[i]->GetId() == (i < 2 ? 5607 : kIds[i]));
       }
       delete m;
       return right ? Outcome(all, true) : FaultCase::kWrong;
     }},
    // The texts are static: the case itself must not allocate.
    {"Normalize (long text)",
     [] {
       static wchar_t text[601];
       std::wmemset(text, L'\u00e9', 600);
       GetNormalizer(kWestern, 44414)->Normalize(text);
       return AllOf(text, L'E')        ? FaultCase::kComplete
              : AllOf(text, L'\u00e9') ? FaultCase::kFailed
                                       : FaultCase::kWrong;
     }},
    {"Compare (long texts, converted whole)",
     [] {
       static wchar_t a[601], b[301]; // a: 300 times e and a combining acute accent
       for (int i = 0; i < 600; i += 2)
         a[i] = L'e', a[i + 1] = L'\u0301';
       std::wmemset(b, L'E', 300);
       int c = GetNormalizer(kWestern, 44414)->Compare(a, b);
       return c == 0                ? FaultCase::kComplete
              : c == qxStrCmp(a, b) ? FaultCase::kFailed
                                    : FaultCase::kWrong;
     }},
};

TEST(FaultWalk, NormalizerCallsThatAllocate) {
  InLocale(1033, [] {
    for (const FaultCase& c : kAllocatingCalls)
      EXPECT_GT(qxtest::WalkFaults(c).faults, 0) << c.name;
  });
}

} // namespace
