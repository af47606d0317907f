// The session with an announced phone: what is called, in which order, and what is undone.
#include <gmock/gmock.h>

#include "interface/device_manager.h"
#include "mobile/device_notification.h"
#include "stand_in_phone/in_process.h"
#include "support/attached_phone.h"

namespace quaylink::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::size_t kReadiness = 16;

const std::vector<std::string> kWholeConnect = {"AMDeviceNotificationSubscribe",
                                                "AMDeviceNotificationUnsubscribe",
                                                "AMDeviceConnect",
                                                "AMDeviceIsPaired",
                                                "AMDeviceValidatePairing",
                                                "AMDeviceStartSession",
                                                "CFStringGetSystemEncoding",
                                                "CFAllocatorGetDefault",
                                                "CFStringCreateWithCString",
                                                "AMDeviceStartService",
                                                "AFCConnectionOpen"};

// The calls up to and with `last`, followed by those that undo.
std::vector<std::string> ConnectUpTo(const std::string& last,
                                     const std::vector<std::string>& undo) {
  std::vector<std::string> calls;
  for (const std::string& call : kWholeConnect) {
    calls.push_back(call);
    if (call == last) break;
  }
  calls.insert(calls.end(), undo.begin(), undo.end());
  return calls;
}

void ExpectIdle(const MobileDeviceBridge& bridge) {
  EXPECT_EQ(bridge.afcConnection, 0u);
  EXPECT_EQ(bridge.sessionStarted, 0u);
  EXPECT_EQ(bridge.deviceConnected, 0u);
}

TEST(Session, ConnectOpensTheFileConnectionAndDisconnectClosesAll) {
  AttachedPhone attached;
  EXPECT_EQ(attached.bridge->Connect(true), 1);
  EXPECT_THAT(attached.phone.CalledNames(), ElementsAreArray(kWholeConnect));
  EXPECT_THAT(attached.phone.Log("AMDeviceStartService"),
              ElementsAre("AMDeviceStartService(device, \"com.apple.afc\")"));
  EXPECT_NE(attached.bridge->afcConnection, 0u);
  EXPECT_EQ(attached.bridge->deviceConnected, 1u);
  EXPECT_EQ(attached.bridge->sessionStarted, 1u);
  EXPECT_TRUE(attached.bridge->pairingRecordPath.empty());

  attached.phone.ForgetLog();
  EXPECT_EQ(attached.bridge->Disconnect(), 1);
  EXPECT_EQ(attached.bridge->Disconnect(), 1);
  EXPECT_THAT(attached.phone.CalledNames(),
              ElementsAre("AFCConnectionClose", "AMDeviceStopSession", "AMDeviceDisconnect"));
  ExpectIdle(*attached.bridge);
  for (std::size_t offset = 0; offset < 64; offset += 4) EXPECT_EQ(DeviceRecordWord(offset), 0u);
}

TEST(Session, AFailingCallUndoesWhatWasDoneBefore) {
  struct Case {
    const char* failing;
    std::vector<std::string> undo;
    bool keepsRecord;
  };
  const std::vector<std::string> fromSession = {"AMDeviceStopSession", "AMDeviceDisconnect"};
  const Case cases[] = {
      {"AMDeviceNotificationSubscribe", {}, false},
      {"AMDeviceConnect", {}, true},
      {"AMDeviceStartSession", {"AMDeviceDisconnect"}, false},
      {"AMDeviceStartService", fromSession, false},
      {"AFCConnectionOpen", fromSession, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.failing);
    AttachedPhone attached({.garbage = true});
    attached.phone.setUp.failures[c.failing] = {};
    EXPECT_EQ(attached.bridge->Connect(true), 0);
    EXPECT_THAT(attached.phone.CalledNames(), ElementsAreArray(ConnectUpTo(c.failing, c.undo)));
    EXPECT_FALSE(attached.phone.IsSessionOpen());
    ExpectIdle(*attached.bridge);
    EXPECT_EQ(DeviceRecordWord(kReadiness) != 0, c.keepsRecord);

    // Nothing stands in the way of another attempt.
    EXPECT_EQ(attached.bridge->Connect(true), 1);
    attached.bridge->Disconnect();
  }
}

TEST(Session, AServiceNameThatCannotBeMadeIsForTheServiceToRefuse) {
  AttachedPhone attached;
  attached.phone.setUp.failures["CFStringCreateWithCString"] = {};
  EXPECT_EQ(attached.bridge->Connect(true), 0);
  EXPECT_THAT(attached.phone.Log("AMDeviceStartService"),
              ElementsAre("AMDeviceStartService(device, null)"));
  EXPECT_FALSE(attached.phone.IsSessionOpen());
  ExpectIdle(*attached.bridge);
}

TEST(Session, PairingIsTriedAndTheStartOfTheSessionDecides) {
  struct Case {
    const char* what;
    bool paired;
    const char* failing;
    bool pairIfNeeded;
    std::vector<std::string> pairingCalls;
    bool connects;
    bool makesRecord;
  };
  const std::vector<std::string> validation = {"AMDeviceIsPaired", "AMDeviceValidatePairing"};
  const std::vector<std::string> pairing = {"AMDeviceIsPaired", "AMDevicePair"};
  const Case cases[] = {
      {"paired", true, "", true, validation, true, false},
      {"validation refused", true, "AMDeviceValidatePairing", true, validation, true, false},
      {"not paired", false, "", true, pairing, true, true},
      {"pairing refused", false, "AMDevicePair", true, pairing, false, false},
      {"paired, not looked at", true, "", false, {}, true, false},
      {"not paired, not looked at", false, "", false, {}, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    AttachedPhone attached({.paired = c.paired});
    attached.machine.SetSpecialFolder(CSIDL_APPDATA, "C:\\Data");
    attached.machine.AddFolder("C:\\Data");
    attached.phone.setUp.failures[c.failing] = {};
    EXPECT_EQ(attached.bridge->Connect(c.pairIfNeeded), c.connects ? 1 : 0);
    const std::vector<std::string> calls = attached.phone.CalledNames();
    const auto session = std::ranges::find(calls, "AMDeviceStartSession");
    EXPECT_THAT(std::vector(calls.begin() + 3, session), ElementsAreArray(c.pairingCalls));
    EXPECT_EQ(attached.machine.Exists("C:\\Data\\Apple Computer\\Lockdown"),
              !c.paired && c.pairIfNeeded);
    EXPECT_EQ(attached.bridge->pairingRecordPath,
              c.makesRecord ? "C:\\Data\\Apple Computer\\Lockdown\\" +
                                  *attached.phone.setUp.identifier + ".plist"
                            : "");
    attached.bridge->Disconnect();
  }
}

TEST(Session, TeardownDeletesOnlyThePairingRecordThatTheBridgeMade) {
  struct Case {
    std::optional<std::string> identifier;
    bool paired;
    const char* file;  // what a careless path would name
    bool staysThere;
  };
  const Case cases[] = {
      {"id", false, "C:\\Data\\Apple Computer\\Lockdown\\id.plist", false},
      {"id", true, "C:\\Data\\Apple Computer\\Lockdown\\id.plist", true},
      {"..\\other", false, "C:\\Data\\Apple Computer\\other.plist", true},
      {"../other", false, "C:\\Data\\Apple Computer\\other.plist", true},
      {"c:other", false, "C:\\Data\\Apple Computer\\Lockdown\\other.plist", true},
      {"", false, "C:\\Data\\Apple Computer\\Lockdown\\.plist", true},
      {std::nullopt, false, "C:\\Data\\Apple Computer\\Lockdown\\.plist", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.identifier.value_or("no identifier"));
    AttachedPhone attached({.identifier = c.identifier, .paired = c.paired});
    attached.machine.SetSpecialFolder(CSIDL_APPDATA, "C:\\Data");
    attached.machine.WriteFile(c.file, "a record");
    EXPECT_EQ(attached.bridge->Connect(true), 1);
    attached.bridge->Disconnect();
    attached.bridge.reset();
    EXPECT_EQ(attached.machine.Exists(c.file), c.staysThere);
  }
}

TEST(Session, ConnectCallsNothingWhenAnEntryPointThatItNeedsIsMissing) {
  const struct {
    const char* missing;
    bool isForPairing;
  } cases[] = {
      {"CFStringCreateWithCString", false},
      {"CFAllocatorGetDefault", false},
      {"CFStringGetSystemEncoding", false},
      {"AMDeviceNotificationSubscribe", false},
      {"AMDeviceConnect", false},
      {"AMDeviceStartSession", false},
      {"AMDeviceStartService", false},
      {"AFCConnectionOpen", false},
      {"AMDeviceIsPaired", true},
      {"AMDeviceValidatePairing", true},
      {"AMDevicePair", true},
  };
  for (const auto& [missing, isForPairing] : cases) {
    SCOPED_TRACE(missing);
    AttachedPhone attached({}, missing);
    EXPECT_EQ(attached.bridge->Connect(true), 0);
    EXPECT_THAT(attached.phone.Log(), IsEmpty());
    EXPECT_EQ(attached.bridge->Connect(false), isForPairing ? 1 : 0);
    attached.bridge->Disconnect();
  }
}

TEST(Session, DisconnectSkipsAMissingEntryPoint) {
  const std::vector<std::string> calls = {"AFCConnectionClose", "AMDeviceStopSession",
                                          "AMDeviceDisconnect"};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE(calls[i]);
    stand_in::StandInPhone carelessPhone;  // complains about what is left open
    AttachedPhone attached({}, calls[i]);
    stand_in::SetCurrentPhone(&carelessPhone);
    EXPECT_EQ(attached.bridge->Connect(true), 1);
    carelessPhone.ForgetLog();
    EXPECT_EQ(attached.bridge->Disconnect(), 1);
    std::vector<std::string> others = calls;
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_THAT(carelessPhone.CalledNames(), ElementsAreArray(others));
    ExpectIdle(*attached.bridge);
  }
}

TEST(Session, ThatIsOpenAtTheManagersEndIsLeftAsItIs) {
  stand_in::StandInPhone carelessPhone;  // complains about what is left open
  AttachedPhone attached;
  stand_in::SetCurrentPhone(&carelessPhone);
  {
    DeviceManager manager;
    manager.bridge = std::move(attached.bridge);
    ASSERT_TRUE(manager.OpenSession());
    carelessPhone.ForgetLog();
  }
  EXPECT_THAT(carelessPhone.Log(), IsEmpty());
}

TEST(Session, WithoutTheCancellingEntryPointASubscriptionIsLeft) {
  AttachedPhone attached({}, "AMDeviceNotificationUnsubscribe");
  EXPECT_EQ(attached.bridge->Connect(true), 1);
  EXPECT_THAT(attached.phone.Log("AMDeviceNotificationUnsubscribe"), IsEmpty());
  attached.bridge->Disconnect();
  AMDeviceNotificationUnsubscribe(1);
}

// The record of a phone that could not be connected to is kept, and tried again. When the phone has
// been plugged in again since, only an announcement that comes in time, or another bridge, helps.
TEST(Session, APhoneThatWasPluggedInAgainMayStayUnreachableForThisBridge) {
  AttachedPhone attached;
  DeviceManager manager;
  manager.bridge = std::move(attached.bridge);
  attached.phone.setUp.failures["AMDeviceConnect"] = {};
  EXPECT_FALSE(manager.OpenSession());
  attached.phone.setUp.unplugAfter = 0;
  attached.phone.setUp.comesBack = true;
  attached.phone.setUp.announcement = stand_in::Announcement::kFromAnotherThread;
  attached.phone.setUp.announcementDelay = std::chrono::hours(1);
  for (int attempt = 0; attempt < 3; ++attempt) {
    EXPECT_FALSE(manager.OpenSession());
    EXPECT_TRUE(manager.CloseSession());
    EXPECT_NE(DeviceRecordWord(kReadiness), 0u);
  }
  manager.bridge.reset();
  manager.bridge = std::make_unique<MobileDeviceBridge>(stand_in::InProcessLibraries());
  EXPECT_EQ(DeviceRecordWord(kReadiness), 0u);
  attached.phone.setUp.announcement = stand_in::Announcement::kBeforeSubscribeReturns;
  EXPECT_TRUE(manager.OpenSession());
  EXPECT_TRUE(manager.CloseSession());
}

TEST(Session, ASecondPhoneTakesThePlaceOfTheFirstAtTheEnd) {
  AttachedPhone attached({.secondPhone = true});
  EXPECT_EQ(attached.bridge->Connect(true), 1);
  EXPECT_EQ(attached.bridge->Disconnect(), 1);
  ExpectIdle(*attached.bridge);
  EXPECT_TRUE(attached.phone.IsSessionOpen()) << "the other phone was told that it is over";
}

TEST(Session, NothingIsCancelledOnceTheLibrariesAreGone) {
  AttachedPhone attached;
  attached.bridge.reset();
  StoreSubscription(1);
  CancelSubscription();
  EXPECT_THAT(attached.phone.Log(), IsEmpty());
}

TEST(Session, ANotificationWithoutARecordIsPassedOver) {
  AttachedPhone attached;
  OnDeviceNotification(nullptr);
  const NotificationRecord withoutDevice{nullptr};
  OnDeviceNotification(&withoutDevice);
  EXPECT_EQ(DeviceRecordWord(kReadiness), 0u);
}

}  // namespace
}  // namespace quaylink::test
