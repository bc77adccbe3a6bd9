// String resources: the ring of buffers and its place in the service set, the
// fallback texts, caller tables, and the module made from resource_strings.rc.
#include "common/fault_walk.h"
#include "common/recording_services.h"
#include "platform/heap.h"
#include "platform/modules.h"
#include "platform/string_module.h"
#include "text/text_support.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <set>
#include <string>

namespace {

using qx::platform::AllocationCalls;
using qx::platform::FailAllocations;
using qxtest::Repeat;

const std::string kModulePath = QXTEST_STRINGS_PATH;
const std::wstring kModule(kModulePath.begin(), kModulePath.end());
const std::wstring kAlphabet = L"abcdefghijklmnopqrstuvwxyz";

std::wstring Missing(int id) {
  return L"The string resource (" + std::to_wstring(id) + L") could not be accessed.";
}

// ExpectTexts - what `strings` gives for each identifier.
void ExpectTexts(const cStringResource& strings,
                 std::initializer_list<std::pair<int, std::wstring>> cases) {
  for (const auto& [id, text] : cases)
    EXPECT_EQ(std::wstring(strings[id]), text) << id;
}

bool ModuleLoaded() { return qx::win::GetModuleHandleW(kModule.c_str()) != nullptr; }

TEST(StringResource, TheRingHandsOutTenBuffersStartingWithBufferOne) {
  cStringResourceBuffers* ring = cStringResourceBuffers::Create();
  ASSERT_NE(ring, nullptr);
  wchar_t* buffers[11];
  for (wchar_t*& buffer : buffers)
    buffer = ring->GetNextBuffer();
  delete ring;
  EXPECT_EQ(std::set<wchar_t*>(buffers, buffers + 10).size(), 10u);
  EXPECT_EQ(buffers[9] + 256, buffers[0]) << "buffer 1 first, buffer 0 tenth";
  EXPECT_EQ(buffers[10], buffers[0]);
}

TEST(StringTable, FindsTheFirstEntryBeforeTheEndElseTheFixedTexts) {
  const std::wstring longText = Repeat(kAlphabet, 12);
  sStringTable table[] = {
      {5, L"five"}, {5, L"shadowed"}, {9, longText.c_str()}, {0, nullptr}, {7, L"after the end"}};
  cStringTable strings(table);
  ExpectTexts(
      strings,
      {
          {5, L"five"},
          {9, longText.substr(0, 254)},
          {58, L"Internal Error: %u"},
          {59, L"System Error"},
          {60, L"Program cannot run because required resource was not found.  Executable file may "
               L"be damaged."},
          {7, Missing(7)},
          {-12, Missing(-12)},
      });

  sStringTable endFirst[] = {{0, nullptr}, {3, L"three"}};
  EXPECT_EQ(std::wstring(cStringTable(endFirst)[3]), Missing(3));
  cStringTable none, copy(strings);
  EXPECT_EQ(std::wstring(none[3]), Missing(3));
  EXPECT_EQ(static_cast<const sStringTable*>(none), nullptr);
  none = copy;
  EXPECT_EQ(static_cast<const sStringTable*>(none), table);
}

TEST(ResourceDll, ReadsTheStringsOfAModuleMadeFromAResourceScript) {
  ExpectTexts(cResourceDLL(kModule.c_str()),
              {
                  {1, L"Roads"},
                  {1001, L"Cannot open ^0."},                   // a #define'd expression
                  {2000, Repeat(kAlphabet, 12).substr(0, 254)}, // cut to the buffer
                  {65535, L"last"},                             // the highest identifier
                  {59, L"The system failed"},                   // the module's text wins
                  {2, Missing(2)},                              // inside #if 0
              });
}

// The module is loaded at the first lookup; each object, copies included,
// holds a load of its own and releases it.
TEST(ResourceDll, EachObjectHoldsAndReleasesItsOwnLoad) {
  ASSERT_FALSE(ModuleLoaded());
  {
    cResourceDLL* original = new cResourceDLL(kModule.c_str());
    cResourceDLL notLoaded(*original); // before the first lookup: no name, no module
    EXPECT_FALSE(ModuleLoaded());
    EXPECT_EQ(std::wstring((*original)[1]), L"Roads");
    original->SetResource(L"/nonexistent/strings.so"); // the loaded module stays in use
    original->SetResource(nullptr);
    cResourceDLL copy(*original);
    cResourceDLL assigned(L"/nonexistent/strings.so");
    assigned = copy;
    cResourceDLL& same = assigned;
    assigned = same;
    delete original;
    EXPECT_EQ(std::wstring(copy[1]), L"Roads");
    EXPECT_EQ(std::wstring(assigned[1001]), L"Cannot open ^0.");
    EXPECT_EQ(std::wstring(notLoaded[1]), Missing(1));
    HINSTANCE module = qx::win::LoadLibraryW(kModule.c_str());
    cResourceDLL owner(module); // owns that load from now on
    EXPECT_EQ(std::wstring(owner[1]), L"Roads");
  }
  EXPECT_FALSE(ModuleLoaded());

  // Without a module every lookup falls back, and the next one tries again.
  cResourceDLL noName(static_cast<const wchar_t*>(nullptr));
  HINSTANCE none = nullptr;
  cResourceDLL noHandle(none);
  cResourceDLL noFile(L"/nonexistent/strings.so");
  for (cResourceDLL* strings : {&noName, &noHandle, &noFile})
    EXPECT_EQ(std::wstring((*strings)[1]), Missing(1));
  noFile.SetResource(kModule.c_str());
  EXPECT_EQ(std::wstring(noFile[1]), L"Roads");
}

TEST(LoadStringW, CopiesCutsAndFailsAsWindowsDoes) {
  HINSTANCE module = qx::win::LoadLibraryW(kModule.c_str());
  ASSERT_NE(module, nullptr);
  const std::wstring longText = Repeat(kAlphabet, 12);
  const struct {
    UINT id;
    int bufferMax;
    std::wstring text; // what the buffer holds
    int result;
    DWORD error; // the last error when the result is 0
  } kCases[] = {
      {1, 6, L"Roads", 5, 0},    {1, 5, L"Road", 4, 0},
      {1, 1, L"", 0, 0},         {0x10001, 16, L"Roads", 5, 0},
      {65535, 5, L"last", 4, 0}, {0, 16, L"", 0, ERROR_RESOURCE_NAME_NOT_FOUND},
  };
  for (const auto& c : kCases) {
    qxtest::Guarded<wchar_t> buffer(static_cast<size_t>(c.bufferMax), L'\x5A5A');
    SetLastError(0);
    EXPECT_EQ(qx::win::LoadStringW(module, c.id, buffer.data(), c.bufferMax), c.result) << c.id;
    EXPECT_EQ(std::wstring(buffer.data()), c.text) << c.id;
    EXPECT_TRUE(buffer.UntouchedFrom(static_cast<size_t>(c.bufferMax))) << c.id;
    if (c.result == 0 && c.error) {
      EXPECT_EQ(GetLastError(), c.error) << c.id;
    }
  }

  // Size 0: a pointer to the text itself, not terminated, and its full length.
  const wchar_t* text = nullptr;
  EXPECT_EQ(qx::win::LoadStringW(module, 2000, reinterpret_cast<LPWSTR>(&text), 0), 312);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(std::wstring(text, 312), longText);

  wchar_t untouched[4] = {L'x', L'x', L'x', 0};
  EXPECT_EQ(qx::win::LoadStringW(module, 1, nullptr, 16), 0);
  EXPECT_EQ(qx::win::LoadStringW(module, 1, untouched, -1), 0);
  EXPECT_EQ(std::wstring(untouched), L"xxx");
  EXPECT_EQ(qx::win::LoadStringW(nullptr, 1, untouched, 4), 0); // the program has no table
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_RESOURCE_TYPE_NOT_FOUND));
  qx::win::FreeLibrary(module);
}

TEST(StringResourceBuffers, IsCreatedFirstInEveryServiceSet) {
  bool reachedTheEnd = false, ringAlone = false;
  for (long n = 1; !reachedTheEnd && n < 1000; ++n) {
    qxtest::RunOnNewThread([&] {
      FailAllocations(n, true);
      InstanceData* data = GetInstanceData();
      reachedTheEnd = AllocationCalls() < n;
      FailAllocations(0, false);
      if (!data)
        return;
      bool ring = cStringResourceBuffers::Instance() != nullptr;
      bool errors = cErrorSystem::Instance() != nullptr;
      EXPECT_TRUE(ring || !errors) << "n = " << n;
      ringAlone = ringAlone || (ring && !errors);
    });
  }
  EXPECT_TRUE(reachedTheEnd);
  EXPECT_TRUE(ringAlone) << "no set was cut right after the ring";
}

class RecordingRing final : public cStringResourceBuffers {
public:
  explicit RecordingRing(qxtest::DestructionLog* log) : log_(log) {}
  ~RecordingRing() override { log_->push_back("cStringResourceBuffers"); }
  wchar_t* GetNextBuffer() override { return buffer_; }

private:
  qxtest::DestructionLog* log_;
  wchar_t buffer_[256] = {};
};

TEST(StringResourceBuffers, IsDestroyedFirstWhenTheThreadEnds) {
  qxtest::DestructionLog log;
  std::vector<std::string> expected{"cStringResourceBuffers"};
  qxtest::RunOnNewThread([&] {
    cStringResourceBuffers* original = cStringResourceBuffers::Instance();
    ASSERT_NE(original, nullptr);
    ASSERT_TRUE(cStringResourceBuffers::Instance(new RecordingRing(&log)));
    delete original;
    std::vector<std::string> others = qxtest::ReplaceWithRecorders(&log);
    expected.insert(expected.end(), others.begin(), others.end());
    // A ring installed by the host replaces the whole service.
    sStringTable table[] = {{0, nullptr}};
    EXPECT_EQ(cStringTable(table)[4], cStringTable(table)[5]);
  });
  EXPECT_EQ(log, expected);
}

TEST(StringResourceBuffers, WithoutARingTextsAreNull) {
  qxtest::RunOnNewThread([] {
    cStringResourceBuffers* ring = cStringResourceBuffers::Instance();
    ASSERT_TRUE(cStringResourceBuffers::Instance(nullptr));
    sStringTable table[] = {{1, L"one"}, {0, nullptr}};
    EXPECT_EQ(cStringTable(table)[1], nullptr);
    cStringResourceBuffers::Instance(ring);
  });
}

using qxtest::FaultCase;
using qxtest::Outcome;

const FaultCase kResourceCalls[] = {
    {"cStringResourceBuffers::Create",
     [] {
       cStringResourceBuffers* ring = cStringResourceBuffers::Create();
       bool ok = ring && ring->GetNextBuffer();
       delete ring;
       return Outcome(ring != nullptr, ok);
     }},
    {"cResourceDLL::operator[] (first lookup loads)",
     [] {
       cResourceDLL strings(kModule.c_str());
       const wchar_t* text = strings[1001]; // compared without the C++ heap
       return Outcome(std::wcscmp(text, L"The string resource (1001) could not be accessed.") != 0,
                      std::wcscmp(text, L"Cannot open ^0.") == 0);
     }},
};

TEST(FaultWalk, StringResources) {
  qxtest::RunOnNewThread([] {
    for (const FaultCase& c : kResourceCalls)
      qxtest::WalkFaults(c);
  });
}

} // namespace
