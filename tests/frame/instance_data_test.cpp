// Instance data: per-thread sets, thread exit, auto-destroy, host storage.
#include "common/recording_services.h"
#include "common/thread_runner.h"
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <thread>

using qxtest::RunOnNewThread;

namespace {

TEST(InstanceData, FirstServiceCallBuildsTheWholeSetOnce) {
  RunOnNewThread([] {
    cErrorSystem* es = cErrorSystem::Instance();
    ASSERT_NE(es, nullptr);
    InstanceData* data = GetInstanceData();
    EXPECT_EQ(cErrorSystem::Instance(), es);
    EXPECT_EQ(GetInstanceData(), data);
    EXPECT_NE(cCheckEsc::Instance(), nullptr);
    EXPECT_TRUE(data->IsAutoDestroy());
  });
}

TEST(InstanceData, ThreadsGetTheirOwnSets) {
  InstanceData* mine = GetInstanceData();
  cErrorSystem* myErrors = cErrorSystem::Instance();
  InstanceData* theirs = nullptr;
  cErrorSystem* theirErrors = nullptr;
  RunOnNewThread([&] {
    theirs = GetInstanceData();
    theirErrors = cErrorSystem::Instance();
    SetError(eErrorLevelError, L"only here", GUID{}, 5, nullptr, nullptr);
  });
  EXPECT_NE(mine, theirs);
  EXPECT_NE(myErrors, theirErrors);
  EXPECT_FALSE(ThisErrorOccurred(5));
}

TEST(InstanceData, ThreadExitDestroysTheSetInOrder) {
  qxtest::DestructionLog log;
  std::vector<std::string> expected;
  RunOnNewThread([&] { expected = qxtest::ReplaceWithRecorders(&log); });
  EXPECT_EQ(log.Names(), expected);
  EXPECT_EQ(expected.size(), 6u);
}

TEST(InstanceData, ClearAutoDestroyKeepsTheSetAliveAfterThreadExit) {
  qxtest::DestructionLog log;
  InstanceData* kept = nullptr;
  RunOnNewThread([&] {
    qxtest::ReplaceWithRecorders(&log);
    kept = GetInstanceData();
    kept->ClearAutoDestroy();
  });
  EXPECT_TRUE(log.Names().empty());
  // Adopt it here and destroy it explicitly, as a host would.
  InstanceData* own = GetInstanceData();
  ASSERT_TRUE(SetInstanceData(kept));
  InstanceData::Destroy(false, false);
  EXPECT_EQ(log.Names().size(), 6u);
  SetInstanceData(own);
}

TEST(InstanceData, DestroyWithoutASetCreatesOneFirst) {
  RunOnNewThread([] {
    InstanceData::Destroy(true, true); // thread slot empty: nothing happens
    InstanceData::Destroy(false, false);
    // The set just made and destroyed is gone; the next call builds anew.
    EXPECT_NE(cErrorSystem::Instance(), nullptr);
  });
}

TEST(InstanceData, CreateInstallsAnEmptySet) {
  RunOnNewThread([] {
    InstanceData* data = InstanceData::Create();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(GetInstanceData(), data);
    EXPECT_EQ(cErrorSystem::Instance(), nullptr);
    // Exported functions stay safe without their service.
    SetError(eErrorLevelError, L"dropped", GUID{}, 1, nullptr, nullptr);
    EXPECT_FALSE(HaveErrors());
    wchar_t buf[8] = L"xxxxxxx";
    EXPECT_FALSE(GetNextError(true, buf, 8));
    EXPECT_STREQ(buf, L"");
  });
}

TEST(InstanceData, SetInstanceDataDoesNotDeleteThePreviousSet) {
  RunOnNewThread([] {
    InstanceData* first = GetInstanceData();
    cErrorSystem* firstErrors = cErrorSystem::Instance();
    InstanceData* second = InstanceData::Create();
    EXPECT_EQ(GetInstanceData(), second);
    ASSERT_TRUE(SetInstanceData(first));
    EXPECT_EQ(cErrorSystem::Instance(), firstErrors);
    ASSERT_TRUE(SetInstanceData(second));
    InstanceData::Destroy(false, false);
    ASSERT_TRUE(SetInstanceData(first));
  });
}

TEST(InstanceData, HostKeysAreKeptAndNeverDeleted) {
  RunOnNewThread([] {
    InstanceData* data = GetInstanceData();
    int hostObject = 0;
    for (unsigned int key : {6u, 100u, 0xFFFFFFFFu})
      EXPECT_TRUE(data->SetSlot(key, &hostObject));
    EXPECT_EQ(data->GetSlot(100), &hostObject);
    EXPECT_EQ(data->GetSlot(0xFFFFFFFFu), &hostObject);
    EXPECT_EQ(data->GetSlot(101), nullptr);
    // Thread exit destroys the set; a stack object under a host key would
    // crash the test if the library tried to delete it.
  });
}

// ---- Host storage ----------------------------------------------------------

// A host storage keyed by thread, like a host that keeps one set per
// document would key it by document.
std::mutex gHostLock;
std::map<std::thread::id, InstanceData*> gHostSets;
std::atomic<int> gSecondGetterCalls{0};

InstanceData* HostGet() {
  std::lock_guard<std::mutex> hold(gHostLock);
  auto it = gHostSets.find(std::this_thread::get_id());
  return it == gHostSets.end() ? nullptr : it->second;
}
bool HostSet(InstanceData* p) {
  std::lock_guard<std::mutex> hold(gHostLock);
  gHostSets[std::this_thread::get_id()] = p;
  return true;
}
InstanceData* OtherGet() {
  ++gSecondGetterCalls;
  return nullptr;
}
bool OtherSet(InstanceData*) { return false; }

TEST(ExternalStorage, SetMadeBeforeInstallationIsHandedToTheHost) {
  RunOnNewThread([] {
    InstanceData* early = GetInstanceData();
    SetExternalDataStorage(HostGet, HostSet);
    EXPECT_EQ(GetInstanceData(), early);
    EXPECT_EQ(HostGet(), early);
    ClearExternalDataStorage();
    // Callbacks removed: the host's set is no longer reachable from the
    // library and the thread's slot was emptied by the hand-over.
    InstanceData* fresh = GetInstanceData();
    EXPECT_NE(fresh, early);
    SetInstanceData(early);
    InstanceData::Destroy(false, false);
    SetInstanceData(fresh);
    HostSet(nullptr);
  });
}

TEST(ExternalStorage, InstallationsNestAndTheFirstPairWins) {
  RunOnNewThread([] {
    gSecondGetterCalls = 0;
    SetExternalDataStorage(HostGet, HostSet);
    SetExternalDataStorage(OtherGet, OtherSet);
    InstanceData* hosted = GetInstanceData();
    EXPECT_EQ(HostGet(), hosted);
    EXPECT_EQ(gSecondGetterCalls, 0);

    ClearExternalDataStorage(); // count 1: still installed
    // The thread slot was empty, so the host's set came back to it ...
    EXPECT_EQ(HostGet(), nullptr);
    // ... and the next call hands it to the host again.
    EXPECT_EQ(GetInstanceData(), hosted);
    EXPECT_EQ(HostGet(), hosted);

    ClearExternalDataStorage(); // count 0: per-thread storage again
    InstanceData* fresh = GetInstanceData();
    EXPECT_NE(fresh, hosted);
    SetInstanceData(hosted);
    InstanceData::Destroy(false, false);
    SetInstanceData(fresh);
    HostSet(nullptr);
  });
}

InstanceData* NoneHeld() { return nullptr; }
bool RefuseToHold(InstanceData*) { return false; }

TEST(ExternalStorage, AStorageThatKeepsNothingGetsAFreshSetEachCall) {
  RunOnNewThread([] {
    SetExternalDataStorage(NoneHeld, RefuseToHold);
    // Services that ask for other services while the set is being built
    // (the system character set asks for the locale) find the set under
    // construction instead of building another one.
    InstanceData* first = GetInstanceData();
    InstanceData* second = GetInstanceData();
    ClearExternalDataStorage();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_NE(first->GetSlot(cErrorSystem::kSlotKey), nullptr);
    EXPECT_NE(first->GetSlot(cCheckEsc::kSlotKey), nullptr);
    // Nobody keeps them: destroy both here.
    InstanceData* own = GetInstanceData();
    for (InstanceData* set : {first, second}) {
      SetInstanceData(set);
      InstanceData::Destroy(false, false);
    }
    SetInstanceData(own);
  });
}

TEST(ExternalStorage, ServicesComeFromTheHostsSetWhileInstalled) {
  RunOnNewThread([] {
    InstanceData* mine = GetInstanceData();
    cErrorSystem* myErrors = cErrorSystem::Instance();
    InstanceData* hostSet = nullptr;
    RunOnNewThread([&] {
      hostSet = GetInstanceData();
      hostSet->ClearAutoDestroy();
    });
    HostSet(hostSet);
    SetExternalDataStorage(HostGet, HostSet);
    EXPECT_EQ(cErrorSystem::Instance(), hostSet->GetSlot(cErrorSystem::kSlotKey));
    ClearExternalDataStorage();
    EXPECT_EQ(cErrorSystem::Instance(), myErrors);
    SetInstanceData(hostSet);
    InstanceData::Destroy(false, false);
    SetInstanceData(mine);
    EXPECT_EQ(cErrorSystem::Instance(), myErrors);
    HostSet(nullptr);
  });
}

} // namespace
