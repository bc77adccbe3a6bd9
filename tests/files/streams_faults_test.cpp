// Every allocation of a stream scenario and of a search fails in turn: the
// calls end in their failure results, never in an exception or a partial
// answer.
#include "common/fault_walk.h"
#include "common/stream_file.h"
#include "common/temp_dir.h"
#include "qxutil/files.h"

#include <cwchar>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

// OpenJapanese - the scenario's file in stream form, tagged 932; no heap
// of the test's own.
FILE* OpenJapanese(const wchar_t* path, eOpenMode mode) {
  FILE* f = fregister_nonunique_file(path, FILETYPE_ANY);
  if (f && !ffileopen(f, mode, nullptr)) {
    funregister_file(f);
    return nullptr;
  }
  file_put_charset(f, QXCHARSET_WINDOWS_JAPANESE);
  return f;
}

qxtest::FaultCase::Outcome StreamScenario() {
  static qxtest::TempDir* dir = new qxtest::TempDir; // made outside the walk
  static std::wstring path = dir->Wide("s.txt");
  FILE* f = OpenJapanese(path.c_str(), OPEN_CREATE);
  if (!f)
    return qxtest::FaultCase::kFailed;
  bool ok = fputs2(L"a\u3042\nb", f) == 0 && fprintf2(f, L"%s\n", L"c") == 2 &&
            fputc2(L'\u3044', f) == 0x3044;
  qxtest::CloseStream(f);
  f = ok ? OpenJapanese(path.c_str(), OPEN_READ) : nullptr;
  if (!f)
    return qxtest::FaultCase::kFailed;
  wchar_t one[8] = {}, two[8] = {}, three[8] = {};
  ok = fgets2(one, 8, f) && fgets2(two, 8, f) && fgets2(three, 8, f) && !fgets2(three, 8, f);
  qxtest::CloseStream(f);
  return qxtest::Outcome(ok, !std::wcscmp(one, L"a\u3042\n") && !std::wcscmp(two, L"bc\n") &&
                                 !std::wcscmp(three, L"\u3044"));
}

// The search directories: two trees, the name in both.
const std::wstring& SearchList() {
  static qxtest::TempDir* dir = [] {
    auto* d = new qxtest::TempDir;
    std::filesystem::create_directories(d->Path("a/b"));
    std::filesystem::create_directories(d->Path("c"));
    d->Write("a/b/x.dat", "x");
    d->Write("c/x.dat", "x");
    return d;
  }();
  static std::wstring list = dir->Wide("a") + L";" + dir->Wide("c");
  return list;
}

qxtest::FaultCase::Outcome SearchScenario() {
  static std::wstring expected = SearchList().substr(0, SearchList().find(L';')) + L"\\b\\x.dat";
  FindFileInfo* finder = FindFileInfo::Create(SearchList().c_str(), true);
  if (!finder)
    return qxtest::FaultCase::kFailed;
  wchar_t out[261];
  bool ok = finder->Find(L"x.dat", out, 261);
  delete finder;
  return qxtest::Outcome(ok, expected == out);
}

// A search that runs out of memory fails, even where the lookup that failed
// was for a name that is not there: a case variant of it might have been.
TEST(StreamFaults, EveryAllocation) {
  EXPECT_GT(qxtest::WalkFaults({"stream write and read back", StreamScenario}).allocations, 0);
  EXPECT_GT(qxtest::WalkFaults({"search two trees", SearchScenario}).allocations, 0);
}

} // namespace
