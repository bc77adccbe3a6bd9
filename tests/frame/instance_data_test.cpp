// Instance data: per-thread sets, thread exit, auto-destroy, host keys and
// host storage.
#include "common/recording_services.h"
#include "common/thread_runner.h"
#include "qxutil/frame.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>

using qxtest::RunOnNewThread;

namespace {

// DestroySet - destroys `set` explicitly, as a host would, and makes `then`
// the thread's set again.
void DestroySet(InstanceData* set, InstanceData* then) {
  SetInstanceData(set);
  InstanceData::Destroy(false, false);
  SetInstanceData(then);
}

TEST(InstanceData, FirstServiceCallBuildsTheThreadsOwnSetOnce) {
  InstanceData* mine = GetInstanceData();
  cErrorSystem* myErrors = cErrorSystem::Instance();
  RunOnNewThread([&] {
    cErrorSystem* es = cErrorSystem::Instance();
    ASSERT_NE(es, nullptr);
    InstanceData* data = GetInstanceData();
    EXPECT_EQ(cErrorSystem::Instance(), es);
    EXPECT_EQ(GetInstanceData(), data);
    EXPECT_NE(data, mine);
    EXPECT_NE(es, myErrors);
    SetError(eErrorLevelError, L"only here", GUID{}, 5, nullptr, nullptr);
  });
  EXPECT_FALSE(ThisErrorOccurred(5));
}

TEST(InstanceData, ThreadExitDestroysTheSetInOrderUnlessAutoDestroyIsCleared) {
  qxtest::DestructionLog log;
  std::vector<std::string> expected;
  RunOnNewThread([&] { expected = qxtest::ReplaceWithRecorders(&log); });
  EXPECT_EQ(log, expected);
  EXPECT_EQ(expected.size(), 6u);

  qxtest::DestructionLog keptLog;
  InstanceData* kept = nullptr;
  RunOnNewThread([&] {
    qxtest::ReplaceWithRecorders(&keptLog);
    kept = GetInstanceData();
    kept->ClearAutoDestroy();
  });
  EXPECT_TRUE(keptLog.empty());
  DestroySet(kept, GetInstanceData());
  EXPECT_EQ(keptLog, expected);
}

TEST(InstanceData, CreateAndSetInstallSetsWithoutDeletingThePreviousOne) {
  RunOnNewThread([] {
    InstanceData::Destroy(true, true);   // thread slot empty: nothing happens
    InstanceData::Destroy(false, false); // a set made and destroyed at once
    InstanceData* first = GetInstanceData();
    cErrorSystem* firstErrors = cErrorSystem::Instance();
    ASSERT_NE(firstErrors, nullptr);
    InstanceData* second = InstanceData::Create();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(GetInstanceData(), second);
    EXPECT_EQ(cErrorSystem::Instance(), nullptr); // an empty set
    // Exported functions stay safe without their service.
    SetError(eErrorLevelError, L"dropped", GUID{}, 1, nullptr, nullptr);
    EXPECT_FALSE(HaveErrors());
    wchar_t buf[8] = L"xxxxxxx";
    EXPECT_FALSE(GetNextError(true, buf, 8));
    EXPECT_STREQ(buf, L"");
    ASSERT_TRUE(SetInstanceData(first));
    EXPECT_EQ(cErrorSystem::Instance(), firstErrors);
    DestroySet(second, first);
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

// A host storage keyed by thread (a host may key it by document).
std::mutex gHostLock;
std::map<std::thread::id, InstanceData*> gHostSets;
int gSecondGetterCalls = 0;

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
InstanceData* NoneHeld() { return nullptr; }
bool RefuseToHold(InstanceData*) { return false; }

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
    DestroySet(early, fresh);
    HostSet(nullptr);
  });
}

TEST(ExternalStorage, InstallationsNestAndTheFirstPairWins) {
  RunOnNewThread([] {
    gSecondGetterCalls = 0;
    SetExternalDataStorage(HostGet, HostSet);
    SetExternalDataStorage(OtherGet, RefuseToHold);
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
    DestroySet(hosted, fresh);
    HostSet(nullptr);
  });
}

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
    InstanceData* own = GetInstanceData();
    DestroySet(first, own);
    DestroySet(second, own);
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
    DestroySet(hostSet, mine);
    EXPECT_EQ(cErrorSystem::Instance(), myErrors);
    HostSet(nullptr);
  });
}

} // namespace
