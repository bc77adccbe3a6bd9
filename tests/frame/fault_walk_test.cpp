// Out-of-memory paths: fail the Nth allocation while building a thread's set,
// while recording errors, and inside every exported call that allocates, for
// N = 1, 2, ... until the operation no longer reaches the failure. Every
// failure must give the documented null/false result, never an exception, a
// crash, a leak (run under LeakSanitizer) or a half-installed service.
#include "common/fault_walk.h"
#include "common/thread_runner.h"
#include "platform/crt_locale.h"
#include "platform/heap.h"
#include "platform/modules.h"
#include "qxutil/frame.h"
#include "qxutil/locale.h"
#include "qxutil/text.h"
#include "qxutil/winlocale.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>

using qx::platform::AllocationCalls;
using qx::platform::FailAllocations;

namespace {

// ServiceWorks - a present service must be fully usable.
void ExpectUsableOrAbsent() {
  if (cErrorSystem* es = cErrorSystem::Instance()) {
    es->SetError(eErrorLevelError, L"m ^0", GUID{}, 1, L"a", nullptr);
    EXPECT_TRUE(es->HaveErrors());
    es->ClearErrors();
  }
  if (cLocaleInfo* li = cLocaleInfo::Instance()) {
    EXPECT_TRUE(li->Refresh());
    wchar_t decimal = 0;
    li->GetNumberInfo(false, &decimal, nullptr, nullptr);
    EXPECT_EQ(decimal, L'.');
  }
  if (cCheckEsc* esc = cCheckEsc::Instance()) {
    EXPECT_FALSE(esc->Check());
  }
}

TEST(FaultWalk, BuildingAThreadsSet) {
  for (bool persistent : {false, true}) {
    bool reachedTheEnd = false;
    for (long n = 1; !reachedTheEnd && n < 1000; ++n) {
      qxtest::RunOnNewThread([&] {
        FailAllocations(n, persistent);
        InstanceData* data = GetInstanceData();
        long calls = AllocationCalls();
        FailAllocations(0, false);
        reachedTheEnd = calls < n;
        if (reachedTheEnd) {
          ASSERT_NE(data, nullptr);
          EXPECT_NE(cErrorSystem::Instance(), nullptr);
          EXPECT_NE(cLocaleInfo::Instance(), nullptr);
          EXPECT_NE(cCharsetInfo::Instance(), nullptr);
          EXPECT_NE(cCharsetConverter::Instance(), nullptr);
          EXPECT_NE(cCheckEsc::Instance(), nullptr);
        }
        if (!data) // the InstanceData itself could not be made
          return;
        // Services after the failing one are absent; those present work.
        if (!cErrorSystem::Instance()) {
          EXPECT_EQ(cCheckEsc::Instance(), nullptr) << "n = " << n;
        }
        ExpectUsableOrAbsent();
        // Exported functions stay safe whatever is missing.
        SetError(eErrorLevelError, L"x", GUID{}, 2, nullptr, nullptr);
        wchar_t buf[16];
        GetNextError(true, buf, 16);
        EXPECT_FALSE(CheckEsc());
      });
    }
    EXPECT_TRUE(reachedTheEnd) << (persistent ? "persistent" : "once");
  }
}

TEST(FaultWalk, RecordingErrors) {
  class Context : public cErrorFuncs {
  public:
    void Report(const wchar_t*) override {}
    bool IsSuppressed() override { return false; }
    bool KeepDuplicates() override { return false; }
    const wchar_t* GetContext(int) override { return L"In a long context text, "; }
  } context;
  const std::wstring full = L"In a long context text, cannot read first-argument.dat: "
                            L"second argument is rather long as well\n";
  const std::wstring lost = L" Too many errors.  Error information has been lost.";
  bool reachedTheEnd = false;
  for (long n = 1; !reachedTheEnd && n < 1000; ++n) {
    qxtest::RunOnNewThread([&] {
      ASSERT_NE(cErrorSystem::Instance(), nullptr);
      SetErrorFunctions(&context);
      FailAllocations(n, false);
      SetError(eErrorLevelError, L"cannot read ^0: ^1", GUID{}, 3, L"first-argument.dat",
               L"second argument is rather long as well");
      wchar_t buf[256];
      GetNextError(true, buf, 256);
      long calls = AllocationCalls();
      FailAllocations(0, false);
      reachedTheEnd = calls < n;
      // Any failed allocation loses the record: the documented "lost" text,
      // never a part of the message.
      EXPECT_EQ(std::wstring(buf), reachedTheEnd ? full : lost) << "n = " << n;
      EXPECT_TRUE(HaveErrors());
      SetErrorFunctions(nullptr);
    });
  }
  EXPECT_TRUE(reachedTheEnd);
}

// ---- Every exported call that allocates -------------------------------------

using qxtest::FaultCase;
using qxtest::Outcome;

bool Is(const wchar_t* got, const wchar_t* want) { return std::wcscmp(got, want) == 0; }

// Owned - deletes a library object when the case ends.
template <class T> struct Owned {
  T* p;
  ~Owned() { delete p; }
};

const wchar_t kFullMessage[] = L"cannot read a.dat: disk\n";
const wchar_t kLostMessage[] = L" Too many errors.  Error information has been lost.";

const FaultCase kExportedCalls[] = {
    // Frame: the memory manager, the error list, the module loader.
    {"falloc_",
     [] {
       void* block = nullptr;
       bool ok = falloc_(64, &block, true, true);
       ffree(&block);
       return Outcome(ok, true);
     }},
    {"frealloc_",
     [] {
       void* block = nullptr;
       if (!falloc_(16, &block, true, true))
         return FaultCase::kFailed;
       void* old = block;
       bool ok = frealloc_(4096, &block);
       if (!ok)
         block = old; // a failed resize leaves the old block to its owner
       ffree(&block);
       return Outcome(ok, true);
     }},
    {"SetError, GetNextError",
     [] {
       ClearErrors();
       SetError(eErrorLevelError, L"cannot read ^0: ^1", GUID{}, 3, L"a.dat", L"disk");
       wchar_t text[64];
       GetNextError(true, text, 64);
       ClearErrors();
       return Outcome(!Is(text, kLostMessage), Is(text, kFullMessage));
     }},
    {"GetErrorMsg (new template)",
     [] {
       ClearErrors();
       SetError(eErrorLevelError, L"x", GUID{}, 3, L"a.dat", L"disk");
       wchar_t text[64] = L"?";
       bool recorded = NumErrors() == 1;
       if (recorded)
         GetErrorMsg(L"cannot read ^0: ^1", 0, text, 64);
       ClearErrors();
       return Outcome(recorded && text[0] != 0, Is(text, L"cannot read a.dat: disk"));
     }},
    {"ReportErrors",
     [] {
       static struct Reporter : cErrorFuncs {
         wchar_t text[64];
         void Report(const wchar_t* t) override { std::wcsncpy(text, t, 63); }
         bool IsSuppressed() override { return false; }
         bool KeepDuplicates() override { return false; }
         const wchar_t* GetContext(int) override { return nullptr; }
       } reporter;
       reporter.text[0] = 0;
       ClearErrors();
       SetErrorFunctions(&reporter);
       SetError(eErrorLevelError, L"cannot read ^0: ^1", GUID{}, 3, L"a.dat", L"disk");
       ReportErrors();
       SetErrorFunctions(nullptr);
       return Outcome(!Is(reporter.text, kLostMessage), Is(reporter.text, kFullMessage));
     }},
    {"cErrorSystem::Create",
     [] {
       Owned<cErrorSystem> es{cErrorSystem::Create()};
       return Outcome(es.p != nullptr, es.p && !es.p->HaveErrors());
     }},
    {"LoadQXLibrary",
     [] {
       HINSTANCE h = nullptr;
       bool ok = LoadQXLibrary(L"libqxtest_beside", L"libqxtest_beside.so", h);
       if (h)
         qx::win::FreeLibrary(h);
       return Outcome(ok, h != nullptr);
     }},
    // Text: conversions.
    {"ConvertLFToPlatformCRLF",
     [] {
       wchar_t text[] = L"a\nb";
       wchar_t* out = ConvertLFToPlatformCRLF(text);
       bool right = out && Is(out, L"a\r\nb");
       ffree(reinterpret_cast<void**>(&out));
       return Outcome(right || out, right);
     }},
    {"ConvertPlatformCRLFToLF",
     [] {
       wchar_t text[] = L"a\r\nb\rc";
       wchar_t* out = ConvertPlatformCRLFToLF(text);
       bool right = out && Is(out, L"a\nb\nc");
       ffree(reinterpret_cast<void**>(&out));
       return Outcome(right || out, right);
     }},
    {"TextAddCrs",
     [] {
       wchar_t* out = nullptr;
       unsigned int n = TextAddCrs(&out, L"a\nb", 3);
       bool right = out && n == 4 && Is(out, L"a\r\nb");
       ffree(reinterpret_cast<void**>(&out));
       return Outcome(n != 0, right);
     }},
    {"cCharsetConverter::GetConversionTable",
     [] {
       Owned<cCharsetConverter> c{cCharsetConverter::Create()};
       int unknown = 0;
       unsigned char* table = nullptr;
       bool ok = c.p && c.p->GetConversionTable(QXCHARSET_WINDOWS_LATIN1, QXCHARSET_CODEPAGE_437,
                                                &unknown, &table);
       return Outcome(ok, table && table[0xE9] == 0x82);
     }},
    {"strniequ (long texts)",
     [] {
       static wchar_t a[600], b[600];
       std::wmemset(a, L'a', 599);
       std::wmemset(b, L'A', 599);
       return Outcome(true, strniequ(a, b, 599));
     },
     true},
    // Locale: the locale record, numbers, dates, date-time objects.
    {"cLocaleInfo::Create",
     [] {
       Owned<cLocaleInfo> li{cLocaleInfo::Create()};
       wchar_t decimal = 0;
       if (li.p)
         li.p->GetNumberInfo(false, &decimal, nullptr, nullptr);
       return Outcome(li.p != nullptr, decimal == L'.');
     }},
    {"GetLocaleInt",
     [] {
       unsigned int digits = 0;
       bool ok = GetLocaleInt(LOCALE_IDIGITS, &digits);
       return Outcome(ok, digits == 2);
     }},
    {"GetLocaleString",
     [] {
       wchar_t text[32] = {};
       bool ok = GetLocaleString(LOCALE_SDECIMAL, text, 32);
       return Outcome(ok, Is(text, L"."));
     }},
    {"GetLocaleInfoW",
     [] {
       wchar_t text[32] = {};
       bool ok = GetLocaleInfoW(1033, LOCALE_SMONTHNAME3, text, 32) > 0;
       return Outcome(ok, Is(text, L"March"));
     }},
    {"LCIDToLocaleName",
     [] {
       wchar_t text[32] = {};
       bool ok = LCIDToLocaleName(1033, text, 32, 0) > 0;
       return Outcome(ok, Is(text, L"en-US"));
     }},
    {"StringToDouble",
     [] {
       double value = 0;
       bool ok = StringToDouble(L"1234.5", &value, nullptr);
       return Outcome(ok, value == 1234.5);
     }},
    {"DoubleToString",
     [] {
       wchar_t text[64];
       wchar_t* out = DoubleToString(1234.5, text, 64, false, 2, PRINTF_F, 0);
       return Outcome(out != nullptr, out && Is(text, L"1234.50"));
     }},
    {"DoubleToString (a form longer than the stack buffer)",
     [] {
       static wchar_t text[1024];
       wchar_t* out = DoubleToString(-1e308, text, 1024, false, 300, PRINTF_F, 0);
       // Text that cannot be made comes out empty.
       return Outcome(out && text[0], std::wcslen(text) == 611 && text[1] == L'1');
     },
     true}, // a failure straight into the buffer is retried in the working buffer
    {"StringToDouble (long text, a comma as the runtime's point)",
     [] {
       static wchar_t text[700];
       std::wmemset(text, L'0', 650);
       std::wcscpy(text + 650, L"1.5");
       double value = 0;
       qx::platform::SetThreadNumericLocaleOverride("de_DE.UTF-8", L',');
       bool ok = StringToDouble(text, &value, nullptr);
       qx::platform::SetThreadNumericLocaleOverride(nullptr, 0);
       return Outcome(ok, value == 1.5);
     }},
    {"qxSQLDoubleToString",
     [] {
       wchar_t text[64];
       bool ok = qxSQLDoubleToString(-1234.567, L"9.99E", text, 64);
       return Outcome(ok, Is(text, L"-1.23E+03"));
     }},
    {"qxSQLStringToDouble",
     [] {
       double value = 0;
       bool ok = qxSQLStringToDouble(L"$1,234.50", L"$9,999.99", &value);
       return Outcome(ok, value == 1234.5);
     }},
    {"qxSQLStringToDate",
     [] {
       qxDATE d{};
       bool ok = qxSQLStringToDate(L"'on' 5 March 2024", L"'on' d mmmm yyyy", &d);
       return Outcome(ok, d.year == 2024 && d.month == 3 && d.day == 5);
     }},
    {"qxSQLDateToString",
     [] {
       wchar_t text[64];
       bool ok = qxSQLDateToString(qxDATE{2024, 3, 5}, L"dddd, d mmm yyyy 'x'", text, 64);
       return Outcome(ok, Is(text, L"Tuesday, 5 Mar 2024 x"));
     }},
    {"FormatDateString",
     [] {
       wchar_t text[64];
       wchar_t picture[] = L"dddd, MMMM d, yyyy";
       bool ok = FormatDateString(text, 64, qxDATE{2024, 3, 5}, picture);
       return Outcome(ok, Is(text, L"Tuesday, March 5, 2024"));
     }},
    {"MakeDateStringEx",
     [] {
       wchar_t text[64];
       qxDATE d{2024, 3, 5};
       bool ok = MakeDateStringEx(text, 64, &d, 2, L" - ", L"/");
       return Outcome(ok, Is(text, L"2024 - 03/05"));
     }},
    {"Str2Date",
     [] {
       qxDATE d{};
       bool ok = Str2Date(L"  3/5/2024 ", &d) != nullptr;
       return Outcome(ok, d.year == 2024 && d.month == 3 && d.day == 5);
     }},
    {"ParseTimeString",
     [] {
       int h = 0, m = 0;
       double s = 0;
       bool ok = ParseTimeString(L" PM 10:30:15.5", &h, &m, &s);
       return Outcome(ok, h == 22 && m == 30 && s == 15.5);
     }},
    {"CreateDateTimeFromString, Format",
     [] {
       Owned<qxDateTime> dt{CreateDateTimeFromString(L"3/5/2024 10:30 PM")};
       wchar_t text[64] = {};
       bool ok = dt.p && dt.p->Format(text, 64, 2, L"-", L"-", L"HH:mm", true);
       return Outcome(ok, Is(text, L"2024-03-05 22:30"));
     }},
    {"CreateDateTime, TimeOfDay",
     [] {
       Owned<qxDateTime> dt{CreateDateTime(2024, 3, 5, 10, 30, 0)};
       Owned<qxTimeSpan> span{dt.p ? dt.p->TimeOfDay() : nullptr};
       return Outcome(span.p != nullptr, span.p && span.p->Hours() == 10);
     }},
    {"CreateTimeFromString, Format",
     [] {
       Owned<qxTime> t{CreateTimeFromString(L"22:30:15")};
       wchar_t text[64] = {};
       bool ok = t.p && t.p->Format(text, 64, L"hh:mm:ss tt");
       return Outcome(ok, Is(text, L"10:30:15 PM"));
     }},
    {"CreateTimeSpanFromString, Format",
     [] {
       Owned<qxTimeSpan> span{CreateTimeSpanFromString(L"-1.02:03:04")};
       wchar_t text[64] = {};
       bool ok = span.p && span.p->Format(text, 64, L"hh:mm:ss", true);
       return Outcome(ok, Is(text, L"-1.02:03:04"));
     }},
};

TEST(FaultWalk, EveryExportedCallThatAllocates) {
  long functions = 0, allocating = 0, faults = 0;
  qxtest::RunOnNewThread([&] {
    SetThreadLocale(1033);
    const std::string anchorPath = QXTEST_BESIDE_PATH;
    const std::wstring anchorWide(anchorPath.begin(), anchorPath.end());
    HMODULE anchor = qx::win::LoadLibraryW(anchorWide.c_str());
    ASSERT_NE(anchor, nullptr);
    for (const FaultCase& c : kExportedCalls) {
      qxtest::FaultWalkCount count = qxtest::WalkFaults(c);
      ++functions;
      allocating += count.allocations > 0;
      faults += count.faults;
      std::printf("  %-40s %3ld allocations\n", c.name, count.allocations);
    }
    qx::win::FreeLibrary(anchor);
  });
  std::printf("%ld calls walked, %ld of them allocate, %ld faults injected\n", functions,
              allocating, faults);
}

} // namespace
