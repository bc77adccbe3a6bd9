// Compound files: the samples read as olefile reads them, the name order, argument
// checks, failed reads, and the registry's stream_fileopen family. Damaged files, a
// gsf-made file with a DIFAT, names in any case: fuzz/cfb_fuzz.cpp against its model.
#include "common/cfb_files.h"
#include "common/fault_walk.h"
#include "common/files_scope.h"
#include "common/temp_dir.h"
#include "platform/compound_file.h"
#include "platform/file_seam.h"
#include "platform/storage.h"
#include "qxutil/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace qx::win;
using qxtest::CfbSampleDir;
using qxtest::ReadBytes;
using qxtest::ShellQuote;
using qxtest::TempDir;
using qxtest::Widen;

constexpr DWORD kStreamMode = STGM_READ | STGM_SHARE_EXCLUSIVE;

std::string Sample(const std::string& name) { return CfbSampleDir() + "/" + name + ".cfb"; }

HRESULT OpenRoot(const std::string& path, IStorage** root) {
  return StgOpenStorage(Widen(path).c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0,
                        root);
}

// The system's Python, where Debian's python3-olefile is installed.
constexpr const char* kPython = "/usr/bin/python3";

constexpr const char* kOlefileLister = R"(
import sys, olefile
ole = olefile.OleFileIO(sys.argv[1])
def fnv(data):
    h = 1469598103934665603
    for c in data:
        h = ((h ^ c) * 1099511628211) & 0xFFFFFFFFFFFFFFFF
    return h
for path in ole.listdir(streams=True, storages=True):
    name = "/".join(path)
    if ole.get_type(path) == olefile.STGTY_STORAGE:
        print(name + "/ storage")
    else:
        data = ole.openstream(path).read()
        print("%s %d %016x" % (name, len(data), fnv(data)))
)";

// ListFile - the sorted listing of the whole file (qxtest::ListStorage), or
// {"error"}.
std::vector<std::string> ListFile(const std::string& path) {
  IStorage* root = nullptr;
  if (OpenRoot(path, &root) != S_OK)
    return {"error"};
  std::vector<std::string> lines;
  qxtest::ListStorage(root, "", &lines);
  root->Release();
  std::sort(lines.begin(), lines.end());
  return lines;
}

// ListWithOlefile - the same listing made by olefile (the independent
// reader); empty when Python or olefile is missing.
std::vector<std::string> ListWithOlefile(const std::string& path) {
  if (std::system((std::string(kPython) + " -c 'import olefile' 2>/dev/null").c_str()) != 0)
    return {};
  TempDir tmp;
  tmp.Write("lister.py", kOlefileLister);
  std::string command = std::string(kPython) + " " + ShellQuote(tmp.Path("lister.py")) + " " +
                        ShellQuote(path) + " > " + ShellQuote(tmp.Path("out.txt"));
  if (std::system(command.c_str()) != 0)
    return {"olefile failed"};
  std::vector<std::string> lines;
  std::string all = tmp.Read("out.txt");
  for (size_t at = 0, end; (end = all.find('\n', at)) != std::string::npos; at = end + 1)
    lines.push_back(all.substr(at, end - at));
  std::sort(lines.begin(), lines.end());
  return lines;
}

TEST(Storage, SamplesReadAsOlefileReadsThem) {
  for (const char* name : {"mini", "large", "nested", "workbook", "v4"}) {
    SCOPED_TRACE(name);
    std::vector<std::string> ours = ListFile(Sample(name));
    ASSERT_FALSE(ours.empty());
    EXPECT_NE(ours[0].rfind("error", 0), 0u) << ours[0];
    std::vector<std::string> theirs = ListWithOlefile(Sample(name));
    if (theirs.empty())
      GTEST_SKIP() << "python3-olefile is not installed";
    EXPECT_EQ(ours, theirs);
  }
}

TEST(Storage, NamesOrderByLengthThenUpperCase) {
  struct Case {
    const wchar_t* a;
    const wchar_t* b;
    int order;
  } cases[] = {
      {L"Z", L"aa", -1},   {L"abc", L"ABC", 0},
      {L"abd", L"ABC", 1}, {L"\u00e9t\u00e9", L"\u00c9T\u00c9", 0},
      {L"_", L"a", 1},     {L"", L"", 0}}; // 'a' is compared as 'A' (0x41), below '_' (0x5F)
  for (const Case& c : cases)
    EXPECT_EQ(qx::platform::CompareNames(c.a, std::wcslen(c.a), c.b, std::wcslen(c.b)), c.order)
        << Widen("") << c.a;
}

TEST(Storage, StreamsReadAndRefuseWhatIsNotThere) {
  IStorage* root = nullptr;
  ASSERT_EQ(OpenRoot(Sample("nested"), &root), S_OK);
  IStream* stream = nullptr;
  // A storage opened as a stream, names looked up in the wrong storage: fuzz/cfb_fuzz.cpp.
  EXPECT_EQ(
      root->OpenStream(L"root stream", nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, 0, &stream),
      STG_E_INVALIDFLAG);
  EXPECT_EQ(
      root->OpenStream(L"root stream", nullptr, STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, &stream),
      STG_E_ACCESSDENIED);
  EXPECT_EQ(root->OpenStream(std::wstring(32, L'x').c_str(), nullptr, kStreamMode, 0, &stream),
            STG_E_INVALIDNAME);
  EXPECT_EQ(stream, nullptr);

  IStorage* top = nullptr;
  IStorage* middle = nullptr;
  ASSERT_EQ(root->OpenStorage(L"top", nullptr, kStreamMode, nullptr, 0, &top), S_OK);
  ASSERT_EQ(top->OpenStorage(L"Middle", nullptr, kStreamMode, nullptr, 0, &middle), S_OK);
  ASSERT_EQ(middle->OpenStream(L"BIG", nullptr, kStreamMode, 0, &stream), S_OK);
  // The storages may go before the stream.
  middle->Release();
  top->Release();
  root->Release();

  std::string whole(9000, '\0');
  ULONG got = 0;
  ASSERT_EQ(stream->Read(whole.data(), 10000, &got), S_OK);
  EXPECT_EQ(got, 9000u); // seeks and reads anywhere: fuzz/cfb_fuzz.cpp
  EXPECT_EQ(stream->Write("x", 1, &got), STG_E_ACCESSDENIED);
  EXPECT_EQ(stream->Release(), 0u);
}

TEST(Storage, OpeningChecksItsArguments) {
  std::wstring path = Widen(Sample("mini"));
  IStorage* root = reinterpret_cast<IStorage*>(1);
  struct Case {
    const wchar_t* path;
    DWORD mode;
    HRESULT result;
  } cases[] = {
      {path.c_str(), STGM_READWRITE | STGM_SHARE_EXCLUSIVE, STG_E_INVALIDFLAG},
      {path.c_str(), STGM_READ | STGM_CREATE, STG_E_INVALIDFLAG},
      {L"/no/such/dir/file.cfb", STGM_READ | STGM_SHARE_DENY_WRITE, STG_E_FILENOTFOUND},
      {nullptr, STGM_READ, STG_E_INVALIDNAME},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(StgOpenStorage(c.path, nullptr, c.mode, nullptr, 0, &root), c.result);
    EXPECT_EQ(root, nullptr);
  }
  EXPECT_EQ(StgIsStorageFile(path.c_str()), S_OK);
  EXPECT_EQ(StgIsStorageFile(Widen(CfbSampleDir() + "/make_samples.py").c_str()), S_FALSE);
  EXPECT_EQ(StgIsStorageFile(L"/no/such/file"), STG_E_FILENOTFOUND);
}

TEST(Storage, FailedReadsAndAllocationsFailCleanly) {
  std::wstring path = Widen(Sample("nested"));
  // Every system call of an open and a read failing in turn.
  for (long n = 1;; ++n) {
    qx::platform::FailFileCalls(n, EIO, false);
    IStorage* root = nullptr;
    HRESULT result =
        StgOpenStorage(path.c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &root);
    bool reached = qx::platform::FileCallCount() >= n;
    qx::platform::FailFileCalls(0, 0, false);
    if (result == S_OK)
      root->Release();
    else
      EXPECT_TRUE(result == STG_E_READFAULT || result == STG_E_FILENOTFOUND ||
                  result == STG_E_SHAREVIOLATION)
          << std::hex << result;
    if (!reached)
      break;
  }
  static std::wstring walked;
  walked = path;
  qxtest::WalkFaults({"StgOpenStorage+OpenStream+Read", [] {
                        IStorage* root = nullptr;
                        IStream* s = nullptr;
                        HRESULT r =
                            StgOpenStorage(walked.c_str(), nullptr, STGM_READ, nullptr, 0, &root);
                        if (r == S_OK) {
                          r = root->OpenStream(L"root stream", nullptr, kStreamMode, 0, &s);
                          root->Release();
                        }
                        if (r != S_OK)
                          return r == STG_E_INSUFFICIENTMEMORY ? qxtest::FaultCase::kFailed
                                                               : qxtest::FaultCase::kWrong;
                        char b[8];
                        ULONG got = 0;
                        r = s->Read(b, sizeof b, &got);
                        s->Release();
                        return qxtest::Outcome(r == S_OK, got == 5);
                      }});
}

TEST(StorageStreams, BookOpensWorkbookAndOpensAreCounted) {
  qxtest::ScopedRegistry registry;
  int h = register_file(Widen(Sample("workbook")).c_str(), FILETYPE_ANY, true);
  ASSERT_NE(h, 0);
  EXPECT_EQ(stream_fileopen(h, OPEN_READ, nullptr, L"Missing"), -1);
  EXPECT_EQ(stream_fileopen(h, OPEN_READ, nullptr, L"book"), -1); // the rule is exact
  ASSERT_EQ(stream_fileopen(h, OPEN_READ, nullptr, L"Book"), h);
  std::string got(6000, '\0');
  EXPECT_EQ(stream_read(h, got.data(), 100), 100);
  EXPECT_EQ(stream_lseek(h, 0, 1), 100);
  // A second open counts and goes back to the start.
  ASSERT_EQ(stream_fileopen(h, OPEN_READ, nullptr, L"Summary"), h);
  EXPECT_EQ(stream_lseek(h, 0, 1), 0);
  EXPECT_EQ(stream_read(h, got.data(), 6000), 5000);
  char line[40]; // as the storage listing gives "Workbook"
  std::snprintf(line, sizeof line, "Workbook 5000 %016llx",
                static_cast<unsigned long long>(qxtest::Fnv(got.data(), 5000)));
  EXPECT_EQ(ListFile(Sample("workbook")).back(), line);
  EXPECT_EQ(stream_lseek(h, -10, 2), 4990);
  EXPECT_EQ(stream_lseek(h, -1, 0), -1);
  EXPECT_EQ(stream_lseek(h, 0, 1), 4990);
  EXPECT_EQ(stream_close(h), 0);
  EXPECT_EQ(stream_read(h, got.data(), 20), 10); // still open once
  EXPECT_EQ(stream_close(h), 0);
  // Closed: the calls go to the plain file, which is not open.
  EXPECT_EQ(stream_close(h), -1);
  // Unregistering releases a stream left open.
  ASSERT_EQ(stream_fileopen(h, OPEN_READ, nullptr, L"Workbook"), h);
  EXPECT_TRUE(unregister_file(h));
  EXPECT_EQ(stream_read(h, got.data(), 1), -1);
  EXPECT_EQ(stream_fileopen(h, OPEN_READ, nullptr, L"Book"), -1);
}

TEST(StorageStreams, FailedAllocationsLeaveNothingOpen) {
  qxtest::ScopedRegistry registry;
  static int handle;
  handle = register_file(Widen(Sample("workbook")).c_str(), FILETYPE_ANY, true);
  qxtest::WalkFaults({"stream_fileopen", [] {
                        if (stream_fileopen(handle, OPEN_READ, nullptr, L"Book") != handle)
                          return qxtest::FaultCase::kFailed;
                        char b[16];
                        int got = stream_read(handle, b, sizeof b);
                        return qxtest::Outcome(stream_close(handle) == 0, got == 16);
                      }});
  // Nothing was left open: the next close goes to the plain file, not open.
  EXPECT_EQ(stream_close(handle), -1);
}

TEST(StorageStreams, PlainAndDamagedFiles) {
  qxtest::ScopedRegistry registry;
  TempDir dir;
  dir.Write("plain.txt", "just text, not a compound file");
  int plain = register_file(dir.Wide("plain.txt").c_str(), FILETYPE_ANY, true);
  ASSERT_EQ(stream_fileopen(plain, OPEN_READ, nullptr, L"Book"), plain);
  char buffer[64] = {};
  EXPECT_EQ(stream_lseek(plain, 5, 0), 5);
  EXPECT_EQ(stream_read(plain, buffer, 4), 4);
  EXPECT_STREQ(buffer, "text");
  EXPECT_EQ(stream_close(plain), 0);
  EXPECT_EQ(stream_close(plain), -1);

  std::string bytes = ReadBytes(Sample("mini"));
  bytes.replace(44, 4, "\xFF\xFF\xFF\x7F", 4); // 2^31 - 1 FAT sectors
  dir.Write("damaged.cfb", bytes);
  int damaged = register_file(dir.Wide("damaged.cfb").c_str(), FILETYPE_ANY, true);
  EXPECT_EQ(stream_fileopen(damaged, OPEN_READ, nullptr, L"small"), -1);
  int missing = register_file(dir.Wide("missing.cfb").c_str(), FILETYPE_ANY, true);
  EXPECT_EQ(stream_fileopen(missing, OPEN_READ, nullptr, L"small"), -1);
  EXPECT_EQ(stream_fileopen(999, OPEN_READ, nullptr, L"small"), -1);
  EXPECT_EQ(stream_read(999, buffer, 1), -1);
  EXPECT_EQ(stream_lseek(999, 0, 0), -1);
  EXPECT_EQ(stream_close(999), -1);
}

} // namespace
