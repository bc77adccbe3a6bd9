// Out-of-memory paths (common/fault_walk.h): building a thread's set, and
// every exported call that allocates; each failure gives the documented
// result, never an exception, a crash, a leak or a half-installed service.
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

#include <cstring>
#include <cwchar>
#include <memory>
#include <string>

using qx::platform::AllocationCalls;
using qx::platform::FailAllocations;
using qxtest::FaultCase;
using qxtest::Outcome;

namespace {

bool Is(const wchar_t* got, const wchar_t* want) { return std::wcscmp(got, want) == 0; }

const wchar_t kLostMessage[] = L" Too many errors.  Error information has been lost.";

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
          EXPECT_TRUE(cErrorSystem::Instance() && cLocaleInfo::Instance() &&
                      cCharsetInfo::Instance() && cCharsetConverter::Instance() &&
                      cCheckEsc::Instance());
        }
        if (!data) // the InstanceData itself could not be made
          return;
        // Services after the failing one are absent; those present work.
        if (!cErrorSystem::Instance()) {
          EXPECT_EQ(cCheckEsc::Instance(), nullptr) << "n = " << n;
        }
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

// What the cases write into, reset by the call that hands it out, and the
// outcome read from it afterwards.
wchar_t gText[1024];
double gValue;
qxDATE gDate;
void* gBlock;

wchar_t* Out() { return &(gText[0] = 0); }
double* Value() { return &(gValue = 0); }
qxDATE* Day() { return &(gDate = qxDATE{}); }
void** Block() { return &(gBlock = nullptr); }
FaultCase::Outcome Wrote(bool ok, const wchar_t* want) { return Outcome(ok, Is(gText, want)); }
FaultCase::Outcome Read(bool ok, double want) { return Outcome(ok, gValue == want); }
FaultCase::Outcome ReadDay(bool ok, long want) {
  return Outcome(ok, DateToLiteral(&gDate) == want);
}
FaultCase::Outcome Freed(bool ok) {
  ffree(&gBlock);
  return Outcome(ok, true);
}
template <class T> using Owned = std::unique_ptr<T>;
// Quiet - a host's callbacks that report nowhere and add no context.
struct Quiet : cErrorFuncs {
  void Report(const wchar_t*) override {}
  bool IsSuppressed() override { return false; }
  bool KeepDuplicates() override { return false; }
  const wchar_t* GetContext(int) override { return nullptr; }
};

// NewText - a text the call allocated (null: failed), freed here: complete
// when it is `want`.
FaultCase::Outcome NewText(wchar_t* got, const wchar_t* want) {
  bool right = got && Is(got, want);
  ffree(reinterpret_cast<void**>(&got));
  return Outcome(right || got, right);
}

const wchar_t kFullMessage[] = L"cannot read a.dat: disk\n";
qxDATE gMarch5{2024, 3, 5};
wchar_t gPicture[] = L"dddd, MMMM d, yyyy";

const FaultCase kExportedCalls[] = {
    // Frame: the memory manager, the error list, the module loader.
    {"falloc_", [] { return Freed(falloc_(64, Block(), true, true)); }},
    {"frealloc_",
     [] {
       if (!falloc_(16, Block(), true, true))
         return FaultCase::kFailed;
       void* old = gBlock;
       bool ok = frealloc_(4096, &gBlock);
       if (!ok)
         gBlock = old; // a failed resize leaves the old block to its owner
       return Freed(ok);
     }},
    {"SetError, GetNextError",
     [] {
       ClearErrors();
       SetError(eErrorLevelError, L"cannot read ^0: ^1", GUID{}, 3, L"a.dat", L"disk");
       GetNextError(true, Out(), 64);
       ClearErrors();
       return Outcome(!Is(gText, kLostMessage), Is(gText, kFullMessage));
     }},
    {"a new error list: the host's context, arguments past its first block",
     [] {
       // Any failed allocation loses the record: the "lost" text, never a
       // part of the message.
       static struct Context : Quiet {
         const wchar_t* GetContext(int) override { return L"In context, "; }
       } context;
       static const std::wstring arg(150, L'a'), full = L"In context, cannot read " + arg + L"\n";
       Owned<cErrorSystem> es{cErrorSystem::Create()};
       if (!es)
         return FaultCase::kFailed;
       es->SetErrorFunctions(&context);
       es->SetError(eErrorLevelError, L"cannot read ^0", GUID{}, 3, arg.c_str(), nullptr);
       es->GetNextError(true, Out(), 1024);
       return Outcome(!Is(gText, kLostMessage), Is(gText, full.c_str()));
     }},
    {"GetErrorMsg (new template)",
     [] {
       ClearErrors();
       SetError(eErrorLevelError, L"x", GUID{}, 3, L"a.dat", L"disk");
       bool recorded = NumErrors() == 1;
       Out()[0] = L'?';
       if (recorded)
         GetErrorMsg(L"cannot read ^0: ^1", 0, gText, 64);
       ClearErrors();
       return Wrote(recorded && gText[0] != 0, L"cannot read a.dat: disk");
     }},
    {"ReportErrors",
     [] {
       static struct Reporter : Quiet {
         void Report(const wchar_t* t) override { std::wcsncpy(gText, t, 63); }
       } reporter;
       Out();
       ClearErrors();
       SetErrorFunctions(&reporter);
       SetError(eErrorLevelError, L"cannot read ^0: ^1", GUID{}, 3, L"a.dat", L"disk");
       ReportErrors();
       SetErrorFunctions(nullptr);
       return Outcome(!Is(gText, kLostMessage), Is(gText, kFullMessage));
     }},
    {"cErrorSystem::Create",
     [] {
       Owned<cErrorSystem> es{cErrorSystem::Create()};
       return Outcome(es != nullptr, es && !es->HaveErrors());
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
     [] { return NewText(ConvertLFToPlatformCRLF(std::wcscpy(Out(), L"a\nb")), L"a\r\nb"); }},
    {"ConvertPlatformCRLFToLF",
     [] { return NewText(ConvertPlatformCRLFToLF(std::wcscpy(Out(), L"a\r\nb\rc")), L"a\nb\nc"); }},
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
       bool ok = c && c->GetConversionTable(QXCHARSET_WINDOWS_LATIN1, QXCHARSET_CODEPAGE_437,
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
     FaultCase::kCompletes}, // compares without the folded copies it could not make
    // Locale: the locale record, numbers, dates, date-time objects.
    {"cLocaleInfo::Create",
     [] {
       Owned<cLocaleInfo> li{cLocaleInfo::Create()};
       wchar_t decimal = 0;
       if (li)
         li->GetNumberInfo(false, &decimal, nullptr, nullptr);
       return Outcome(li != nullptr, decimal == L'.');
     }},
    {"GetLocaleInt",
     [] {
       unsigned int digits = 0;
       bool ok = GetLocaleInt(LOCALE_IDIGITS, &digits);
       return Outcome(ok, digits == 2);
     }},
    {"GetLocaleString", [] { return Wrote(GetLocaleString(LOCALE_SDECIMAL, Out(), 32), L"."); }},
    {"GetLocaleInfoW",
     [] { return Wrote(GetLocaleInfoW(1033, LOCALE_SMONTHNAME3, Out(), 32) > 0, L"March"); }},
    {"LCIDToLocaleName", [] { return Wrote(LCIDToLocaleName(1033, Out(), 32, 0) > 0, L"en-US"); }},
    {"StringToDouble", [] { return Read(StringToDouble(L"1234.5", Value(), nullptr), 1234.5); }},
    {"DoubleToString",
     [] { return Wrote(DoubleToString(1234.5, Out(), 64, false, 2, PRINTF_F, 0), L"1234.50"); }},
    {"DoubleToString (a form longer than the stack buffer)",
     [] {
       DoubleToString(-1e308, Out(), 1024, false, 300, PRINTF_F, 0);
       // Text that cannot be made comes out empty.
       return Outcome(gText[0] != 0, std::wcslen(gText) == 611 && gText[1] == L'1');
     },
     FaultCase::kRetries}, // a failure straight into the buffer is retried in the working buffer
    {"StringToDouble (long text, a comma as the runtime's point)",
     [] {
       std::wmemset(Out(), L'0', 650);
       std::wcscpy(gText + 650, L"1.5");
       qx::platform::SetThreadNumericLocaleOverride("de_DE.UTF-8", L',');
       bool ok = StringToDouble(gText, Value(), nullptr);
       qx::platform::SetThreadNumericLocaleOverride(nullptr, 0);
       return Read(ok, 1.5);
     }},
    {"qxSQLDoubleToString",
     [] { return Wrote(qxSQLDoubleToString(-1234.567, L"9.99E", Out(), 64), L"-1.23E+03"); }},
    {"qxSQLStringToDouble",
     [] { return Read(qxSQLStringToDouble(L"$1,234.50", L"$9,999.99", Value()), 1234.5); }},
    {"qxSQLStringToDate",
     [] {
       return ReadDay(qxSQLStringToDate(L"'on' 5 March 2024", L"'on' d mmmm yyyy", Day()),
                      20240305);
     }},
    {"qxSQLDateToString",
     [] {
       return Wrote(qxSQLDateToString(gMarch5, L"dddd, d mmm yyyy 'x'", Out(), 64),
                    L"Tuesday, 5 Mar 2024 x");
     }},
    {"FormatDateString",
     [] {
       return Wrote(FormatDateString(Out(), 64, gMarch5, gPicture), L"Tuesday, March 5, 2024");
     }},
    {"MakeDateStringEx",
     [] { return Wrote(MakeDateStringEx(Out(), 64, &gMarch5, 2, L" - ", L"/"), L"2024 - 03/05"); }},
    {"Str2Date", [] { return ReadDay(Str2Date(L"  3/5/2024 ", Day()) != nullptr, 20240305); }},
    {"ParseTimeString",
     [] {
       int h = 0, m = 0;
       bool ok = ParseTimeString(L" PM 10:30:15.5", &h, &m, Value());
       return Outcome(ok, h == 22 && m == 30 && gValue == 15.5);
     }},
    {"CreateDateTimeFromString, Format",
     [] {
       Owned<qxDateTime> dt{CreateDateTimeFromString(L"3/5/2024 10:30 PM")};
       return Wrote(dt && dt->Format(Out(), 64, 2, L"-", L"-", L"HH:mm", true),
                    L"2024-03-05 22:30");
     }},
    {"CreateDateTime, TimeOfDay",
     [] {
       Owned<qxDateTime> dt{CreateDateTime(2024, 3, 5, 10, 30, 0)};
       Owned<qxTimeSpan> span{dt ? dt->TimeOfDay() : nullptr};
       return Outcome(span != nullptr, span && span->Hours() == 10);
     }},
    {"CreateTimeFromString, Format",
     [] {
       Owned<qxTime> t{CreateTimeFromString(L"22:30:15")};
       return Wrote(t && t->Format(Out(), 64, L"hh:mm:ss tt"), L"10:30:15 PM");
     }},
    {"CreateTimeSpanFromString, Format",
     [] {
       Owned<qxTimeSpan> span{CreateTimeSpanFromString(L"-1.02:03:04")};
       return Wrote(span && span->Format(Out(), 64, L"hh:mm:ss", true), L"-1.02:03:04");
     }},
};

TEST(FaultWalk, EveryExportedCallThatAllocates) {
  qxtest::RunOnNewThread([&] {
    SetThreadLocale(1033);
    const std::string anchorPath = QXTEST_BESIDE_PATH;
    const std::wstring anchorWide(anchorPath.begin(), anchorPath.end());
    HMODULE anchor = qx::win::LoadLibraryW(anchorWide.c_str());
    ASSERT_NE(anchor, nullptr);
    for (const FaultCase& c : kExportedCalls)
      qxtest::WalkFaults(c);
    qx::win::FreeLibrary(anchor);
  });
}

} // namespace
