// Faults: every system call of a scenario fails in turn (EIO, ENOSPC, EINTR, a short
// transfer) and every allocation of smaller ones; the caller sees each failure, retries,
// and the file ends byte for byte as written (a failed write-back keeps its blocks dirty).
#include "common/fault_walk.h"
#include "common/files_scope.h"
#include "common/stream_file.h"
#include "common/temp_dir.h"
#include "platform/file_seam.h"
#include "qxutil/files.h"

#include <cerrno>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

using qx::platform::FailFileCalls;
using qx::platform::FileCallCount;

constexpr unsigned kTotal = 1 << 20;
constexpr unsigned kChunk = 64 * 1024;
constexpr unsigned kAppend = 1000;

std::string Pattern(size_t n, unsigned seed) {
  std::string s(n, '\0');
  for (size_t i = 0; i < n; ++i)
    s[i] = static_cast<char>((i * 131 + seed * 7 + (i >> 9)) & 0xFF);
  return s;
}

struct ScenarioRun {
  bool sawFailure = false; // some call returned its failure result
  bool recovered = true;   // every retry after the fault succeeded
  long calls = 0;          // system calls made (by a run without faults)
  std::string error;       // what went wrong beyond recovery
};

// Retry - makes `call` once, then (the fault being gone) once more; notes
// what happened.
template <class Call> bool Retry(ScenarioRun& run, const char* what, Call call) {
  if (call())
    return true;
  run.sawFailure = true;
  FailFileCalls(0, 0);
  if (call())
    return true;
  run.recovered = false;
  run.error = what;
  return false;
}

// WriteAll - writes `data` at the current position, resuming after a
// partial or failed write.
bool WriteAll(ScenarioRun& run, int h, const char* data, unsigned n) {
  long start = tell2(h);
  unsigned done = 0;
  for (int attempt = 0; done < n && attempt < 2; ++attempt) {
    int r = write2(h, data + done, n - done);
    if (r > 0)
      done += static_cast<unsigned>(r);
    if (done < n) {
      run.sawFailure = true;
      FailFileCalls(0, 0);
      lseek2(h, start + static_cast<long>(done), 0);
    }
  }
  return done == n;
}

ScenarioRun Scenario(const qxtest::TempDir& dir, const std::string& model, long nth, int error) {
  ScenarioRun run;
  std::wstring path = dir.Wide("big.dat");
  int h = register_file(path.c_str(), FILETYPE_ANY, true);
  FailFileCalls(nth, error);
  if (!Retry(run, "create", [&] { return fileopen(h, OPEN_CREATE, nullptr) == h; }))
    return run;
  for (unsigned at = 0; at < kTotal; at += kChunk)
    if (!WriteAll(run, h, model.data() + at, kChunk)) {
      run.error = "write";
      return run;
    }
  if (!Retry(run, "close", [&] { return close2(h) == 0; }))
    return run;
  if (!Retry(run, "reopen", [&] { return fileopen(h, OPEN_READWRITE, nullptr) == h; }))
    return run;
  lseek2(h, 0, 2);
  if (!WriteAll(run, h, model.data() + kTotal, kAppend)) {
    run.error = "append";
    return run;
  }
  if (!Retry(run, "close after append", [&] { return close2(h) == 0; }))
    return run;
  if (!Retry(run, "open to read", [&] { return fileopen(h, OPEN_READ, nullptr) == h; }))
    return run;
  std::string back(model.size(), '\0');
  unsigned got = 0;
  for (int attempt = 0; got < back.size() && attempt < 4; ++attempt) {
    lseek2(h, static_cast<long>(got), 0);
    int r = read2(h, back.data() + got, static_cast<unsigned>(back.size() - got));
    if (r > 0)
      got += static_cast<unsigned>(r);
    if (got < back.size()) {
      run.sawFailure = true;
      FailFileCalls(0, 0);
    }
  }
  if (back != model)
    run.error = "read back";
  Retry(run, "last close", [&] { return close2(h) == 0; });
  run.calls = FileCallCount();
  FailFileCalls(0, 0);
  if (!unregister_file(h))
    run.error = "unregister";
  if (run.error.empty() && dir.Read("big.dat") != model)
    run.error = "the file on disk";
  return run;
}

// The walk is cut into shards that CTest runs side by side; shard s fails
// the calls numbered s + 1, s + 1 + kShards, ...
constexpr int kShards = 8;
class FilesFaultWalk : public ::testing::TestWithParam<int> {};

TEST_P(FilesFaultWalk, EverySystemCallOfTheScenario) {
  qxtest::ScopedRegistry registry;
  qxtest::TempDir dir;
  std::string model = Pattern(kTotal + kAppend, 1);
  FailFileCalls(0, 0);
  ScenarioRun clean = Scenario(dir, model, 0, 0);
  long calls = clean.calls;
  ASSERT_EQ(clean.error, "");
  ASSERT_GT(calls, 2000) << "the scenario reaches the disk block by block";
  ASSERT_FALSE(clean.sawFailure);
  // Every call is failed once; the kind of fault turns with the call's
  // number, so each kind meets every part of the scenario.
  const int kinds[] = {EIO, ENOSPC, EINTR, 0};
  long failuresSeen = 0, faultsMade = 0;
  for (long n = 1 + GetParam(); n <= calls; n += kShards) {
    ClearErrors();
    int kind = kinds[n % 4];
    ScenarioRun run = Scenario(dir, model, n, kind);
    EXPECT_EQ(run.error, "") << "call " << n << " failing with " << kind;
    EXPECT_TRUE(run.recovered) << "call " << n;
    if (kind == EINTR || kind == 0) {
      EXPECT_FALSE(run.sawFailure) << "call " << n << ": interrupted and short calls are resumed";
    }
    failuresSeen += run.sawFailure;
    // A run that saw no failure made run.calls calls in all: the fault was
    // made if it reached call n (the count of calls varies from run to run).
    faultsMade += run.sawFailure || run.calls >= n;
  }
  // Most failures reach the caller; the others are absorbed (a time stamp
  // not taken, a read ahead redone block by block).
  int kind = kinds[(1 + GetParam()) % 4];
  if (kind == EIO || kind == ENOSPC) {
    EXPECT_GT(failuresSeen, faultsMade * 3 / 4) << "the failures reach the caller";
  }
  FailFileCalls(0, 0);
}

INSTANTIATE_TEST_SUITE_P(Shards, FilesFaultWalk, ::testing::Range(0, kShards));

TEST(FilesFaults, AFailedWriteBackKeepsItsBlocks) {
  qxtest::ScopedRegistry registry;
  qxtest::TempDir dir;
  int h = register_file(dir.Wide("f").c_str(), FILETYPE_ANY, true);
  ASSERT_EQ(fileopen(h, OPEN_CREATE, nullptr), h);
  std::string data = Pattern(5000, 2);
  ASSERT_EQ(write2(h, data.data(), 5000), 5000);
  FailFileCalls(1, ENOSPC, true); // the disk is full from now on
  ClearErrors();
  EXPECT_EQ(close2(h), -1);
  EXPECT_FALSE(unregister_file(h)) << "nothing is dropped that was not written";
  CacheBlock* b = nullptr;
  for (long block = 0; block < 10; ++block) {
    ASSERT_TRUE(cFileCache::Instance()->Fetch(h, block, &b, cFileCache::kFetchLookup));
    EXPECT_EQ(b->flags & 1, 1u) << "block " << block << " stays dirty";
  }
  FailFileCalls(0, 0); // room again
  EXPECT_EQ(close2(h), 0);
  EXPECT_EQ(dir.Read("f"), data);
  EXPECT_TRUE(unregister_file(h));
}

TEST(FilesFaults, OpenFailuresAreRecorded) {
  qxtest::ScopedRegistry registry;
  qxtest::TempDir dir;
  dir.Write("f", "x");
  int h = register_file(dir.Wide("f").c_str(), FILETYPE_ANY, true);
  struct Case {
    int kernelErrno, number;
  } cases[] = {{EIO, 13}, {ENOSPC, 5001}, {EMFILE, 14}, {EEXIST, 10}, {ESTALE, 4}};
  for (const Case& c : cases) {
    ClearErrors();
    FailFileCalls(1, c.kernelErrno);
    EXPECT_EQ(fileopen(h, OPEN_READ, nullptr), -1) << c.kernelErrno;
    ASSERT_EQ(NumErrors(), 1) << c.kernelErrno;
    EXPECT_EQ(GetErrorNum(0), c.number) << c.kernelErrno;
    EXPECT_EQ(GetFileFD(h), -1);
  }
  FailFileCalls(0, 0);
  ClearErrors();
}

qxtest::FaultCase::Outcome SmallScenario() {
  static qxtest::TempDir* dir = new qxtest::TempDir; // made outside the walk
  static std::wstring path = dir->Wide("small.dat");
  static char data[3000], back[3000];
  for (int i = 0; i < 3000; ++i)
    data[i] = static_cast<char>(i * 7);
  int h = register_file(path.c_str(), FILETYPE_ANY, true);
  if (!h)
    return qxtest::FaultCase::kFailed;
  bool ok = fileopen(h, OPEN_CREATE, nullptr) == h && write2(h, data, 3000) == 3000 &&
            write_app_string(h, L"label") == 5 && close2(h) == 0 &&
            fileopen(h, OPEN_READ, nullptr) == h && read2(h, back, 3000) == 3000;
  wchar_t label[16] = {};
  ok = ok && read_app_string(h, label, 16);
  if (GetFileFD(h) >= 0)
    close2(h);
  bool same = std::memcmp(data, back, 3000) == 0 && std::wcscmp(label, L"label") == 0;
  if (!unregister_file(h))
    return qxtest::FaultCase::kWrong;
  return qxtest::Outcome(ok, same);
}

qxtest::FaultCase::Outcome StreamScenario() {
  static qxtest::TempDir* dir = new qxtest::TempDir; // made outside the walk
  static std::wstring path = dir->Wide("s.txt");
  FILE* f = qxtest::OpenStream(path.c_str(), OPEN_CREATE, QXCHARSET_WINDOWS_JAPANESE);
  if (!f)
    return qxtest::FaultCase::kFailed;
  bool ok = fputs2(L"a\u3042\nb", f) == 0 && fprintf2(f, L"%s\n", L"c") == 2 &&
            fputc2(L'\u3044', f) == 0x3044;
  qxtest::CloseStream(f);
  f = ok ? qxtest::OpenStream(path.c_str(), OPEN_READ, QXCHARSET_WINDOWS_JAPANESE) : nullptr;
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

// A search that runs out of memory fails, even where the lookup that failed
// was for a name that is not there: a case variant of it might have been.
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

TEST(FilesFaults, EveryAllocation) {
  EXPECT_GT(qxtest::WalkFaults({"register, write, read back", SmallScenario}).allocations, 0);
  EXPECT_GT(qxtest::WalkFaults({"stream write and read back", StreamScenario}).allocations, 0);
  EXPECT_GT(qxtest::WalkFaults({"search two trees", SearchScenario}).allocations, 0);
}

} // namespace
