// The session with an announced phone: what is called, in which order, and what is undone.
#include <gmock/gmock.h>

#include "interface/device_manager.h"
#include "mobile/device_notification.h"
#include "support/attached_phone.h"

namespace quaylink {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

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
  EXPECT_EQ(bridge.afcConnection, 0U);
  EXPECT_EQ(bridge.sessionStarted, 0U);
  EXPECT_EQ(bridge.deviceConnected, 0U);
}

TEST(Session, ConnectOpensTheFileConnectionAndDisconnectClosesAll) {
  AttachedPhone attached;
  EXPECT_EQ(attached.bridge->Connect(true), 1);
  EXPECT_THAT(attached.phone.CalledNames(), ElementsAreArray(kWholeConnect));
  EXPECT_THAT(attached.phone.Log("AMDeviceStartService"),
              ElementsAre("AMDeviceStartService(device, \"com.apple.afc\")"));
  EXPECT_NE(attached.bridge->afcConnection, 0U);
  EXPECT_EQ(attached.bridge->deviceConnected, 1U);
  EXPECT_EQ(attached.bridge->sessionStarted, 1U);
  EXPECT_TRUE(attached.bridge->pairingRecordPath.empty());

  attached.phone.ForgetLog();
  EXPECT_EQ(attached.bridge->Disconnect(), 1);
  EXPECT_EQ(attached.bridge->Disconnect(), 1);
  EXPECT_THAT(attached.phone.CalledNames(),
              ElementsAre("AFCConnectionClose", "AMDeviceStopSession", "AMDeviceDisconnect"));
  ExpectIdle(*attached.bridge);
  for (std::size_t offset = 0; offset < 64; offset += 4) EXPECT_EQ(DeviceRecordWord(offset), 0U);
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
    AttachedPhone attached;
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
              ElementsAre("AMDeviceStartService(device, no string)"));
  EXPECT_FALSE(attached.phone.IsSessionOpen());
  ExpectIdle(*attached.bridge);
}

TEST(Session, PairingIsTriedButDoesNotDecide) {
  struct Case {
    const char* what;
    bool paired;
    const char* failing;
    std::vector<std::string> pairingCalls;
    bool makesRecord;
  };
  const Case cases[] = {
      {"paired", true, "", {"AMDeviceIsPaired", "AMDeviceValidatePairing"}, false},
      {"validation refused",
       true,
       "AMDeviceValidatePairing",
       {"AMDeviceIsPaired", "AMDeviceValidatePairing"},
       false},
      {"not paired", false, "", {"AMDeviceIsPaired", "AMDevicePair"}, true},
      {"pairing refused", false, "AMDevicePair", {"AMDeviceIsPaired", "AMDevicePair"}, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    AttachedPhone attached;
    attached.machine.SetSpecialFolder(CSIDL_APPDATA, "C:\\Data");
    attached.machine.AddFolder("C:\\Data");
    attached.phone.setUp.paired = c.paired;
    attached.phone.setUp.failures[c.failing] = {};
    EXPECT_EQ(attached.bridge->Connect(true), 1);
    std::vector<std::string> calls = attached.phone.CalledNames();
    EXPECT_THAT(std::vector(calls.begin() + 3, calls.begin() + 5),
                ElementsAreArray(c.pairingCalls));
    EXPECT_EQ(attached.machine.Exists("C:\\Data\\Apple Computer\\Lockdown"), !c.paired);
    EXPECT_EQ(attached.bridge->pairingRecordPath,
              c.makesRecord ? "C:\\Data\\Apple Computer\\Lockdown\\" +
                                  *attached.phone.setUp.identifier + ".plist"
                            : "");
    attached.bridge->Disconnect();
  }
}

TEST(Session, NoPairingIsLookedAtWhenNoneIsWanted) {
  AttachedPhone attached({.paired = false});
  EXPECT_EQ(attached.bridge->Connect(false), 1);
  EXPECT_THAT(attached.phone.CalledNames(),
              Not(testing::Contains(
                  testing::AnyOf("AMDeviceIsPaired", "AMDevicePair", "AMDeviceValidatePairing"))));
  attached.bridge->Disconnect();
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
    attached.DestroyBridge();
    EXPECT_EQ(attached.machine.Exists(c.file), c.staysThere);
  }
}

TEST(Session, ConnectCallsNothingWhenAnEntryPointThatItNeedsIsMissing) {
  for (const int slot : {1, 2, 3, 4, 5, 7, 9, 10, 11, 12, 13}) {
    SCOPED_TRACE(slot);
    const bool isForPairing = slot >= 10 && slot <= 12;
    AttachedPhone attached;
    attached.ClearSlot(slot);
    EXPECT_EQ(attached.bridge->Connect(true), 0);
    EXPECT_EQ(attached.bridge->Connect(false), isForPairing ? 1 : 0);
    if (!isForPairing) {
      EXPECT_THAT(attached.phone.Log(), IsEmpty());
    }
    attached.bridge->Disconnect();
  }
}

TEST(Session, DisconnectSkipsAMissingEntryPoint) {
  const std::vector<std::string> calls = {"AFCConnectionClose", "AMDeviceStopSession",
                                          "AMDeviceDisconnect"};
  const int slots[] = {14, 8, 6};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE(calls[i]);
    stand_in::StandInPhone carelessPhone;  // complains about what is left open
    AttachedPhone attached;
    stand_in::SetCurrentPhone(&carelessPhone);
    EXPECT_EQ(attached.bridge->Connect(true), 1);
    carelessPhone.ForgetLog();
    attached.ClearSlot(slots[i]);
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
    manager.bridge->coreFoundationModule = nullptr;
    manager.bridge->mobileDeviceModule = nullptr;
  }
  EXPECT_THAT(carelessPhone.Log(), IsEmpty());
}

TEST(Session, WithoutTheCancellingEntryPointASubscriptionIsLeft) {
  AttachedPhone attached;
  SetUnsubscribeEntry(nullptr);
  EXPECT_EQ(attached.bridge->Connect(true), 1);
  EXPECT_THAT(attached.phone.Log("AMDeviceNotificationUnsubscribe"), IsEmpty());
  attached.bridge->Disconnect();
  attached.phone.Unsubscribe(1);
}

TEST(Session, ANotificationWithoutARecordIsPassedOver) {
  AttachedPhone attached;
  OnDeviceNotification(nullptr);
  const NotificationRecord withoutDevice{nullptr};
  OnDeviceNotification(&withoutDevice);
  EXPECT_EQ(DeviceRecordWord(kReadiness), 0U);
}

}  // namespace
}  // namespace quaylink
