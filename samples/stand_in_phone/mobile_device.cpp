// The part of iTunesMobileDevice.dll that announces a phone and opens sessions with it.
#include <fstream>

#include "stand_in_phone/call.h"

using namespace quaylink::stand_in;
using namespace std::literals;

namespace {

constexpr std::string_view kDevice = "device";

void AnnounceLater(StandInPhone& phone, std::uint32_t subscription) {
  phone.announcer = std::thread([&phone, subscription, delay = phone.setUp.announcementDelay] {
    std::unique_lock waiting(phone.mutex);
    phone.subscriptionsChanged.wait_for(
        waiting, delay, [&] { return !phone.subscriptions.contains(subscription); });
    waiting.unlock();
    phone.AnnounceTo(subscription);
  });
}

}  // namespace

std::int32_t AMDeviceNotificationSubscribe(
    void (*callback)(const quaylink::NotificationRecord* record), std::uint32_t zero1,
    std::uint32_t zero2, std::uint32_t zero3, std::uint32_t* subscription) {
  const PhoneCode phoneCode;
  StandInPhone& phone = CurrentPhone();
  phone.JoinAnnouncer();
  std::uint32_t handle = 0;
  {
    if (!phone.pluggedIn && phone.setUp.comesBack) {
      phone.pluggedIn = true;
      phone.opaqueWord += 0x100;
    }
    const Call call("AMDeviceNotificationSubscribe", "callback"sv, zero1, zero2, zero3);
    // Whether a phone is there makes no difference.
    if (call.Fails() && phone.pluggedIn) return call.Refuse(subscription);
    call.Expect(callback && (zero1 | zero2 | zero3) == 0, "wrong arguments");
    handle = ++phone.lastHandle;
    phone.subscriptions[handle] = callback;
  }
  if (phone.setUp.announcement == Announcement::kBeforeSubscribeReturns) phone.AnnounceTo(handle);
  if (phone.setUp.announcement == Announcement::kFromAnotherThread) AnnounceLater(phone, handle);
  *subscription = handle;
  return kSuccess;
}

std::int32_t AMDeviceNotificationUnsubscribe(std::uint32_t subscription) {
  std::int32_t result = kFailure;
  {
    const Call call("AMDeviceNotificationUnsubscribe", subscription);
    call.Expect(call->subscriptions.erase(subscription) == 1, "the subscription is not open");
    result = call.Result();
  }
  CurrentPhone().subscriptionsChanged.notify_all();
  CurrentPhone().JoinAnnouncer();
  return result;
}

std::int32_t AMDeviceConnect(void* device) {
  const Call call("AMDeviceConnect", kDevice);
  if (!call.IsPhone(device) || call.Fails()) return call.Refuse();
  call.Expect(!call->connected, "connected already");
  call->connected = true;
  return kSuccess;
}

std::int32_t AMDeviceDisconnect(void* device) {
  CurrentPhone().JoinAnnouncer();
  const Call call("AMDeviceDisconnect", kDevice);
  if (!call.IsPhone(device)) return call.Refuse();
  call.Expect(call->connected, "not connected");
  call.Expect(!call->sessionOpen, "the session is open");
  call->connected = false;
  return call.Result();
}

std::int32_t AMDeviceStartSession(void* device) {
  const Call call("AMDeviceStartSession", kDevice);
  if (!call.IsPhone(device) || call.Fails() || !call.Expect(call->connected, "not connected") ||
      !call->setUp.paired) {
    return call.Refuse();
  }
  call.Expect(!call->sessionOpen, "a session is open already");
  call->sessionOpen = true;
  return kSuccess;
}

std::int32_t AMDeviceStopSession(void* device) {
  const Call call("AMDeviceStopSession", kDevice);
  if (!call.IsPhone(device)) return call.Refuse();
  call.Expect(call->sessionOpen, "no session");
  call.Expect(call->connections.empty(), "a file connection is open");
  call->sessionOpen = false;
  call->services.clear();
  return call.Result();
}

std::int32_t AMDeviceStartService(void* device, quaylink::ServiceName* name, std::uint32_t* service,
                                  std::uint32_t* word) {
  const char* const string = CFStringGetCStringPtr(name, 0);
  const Call call("AMDeviceStartService", kDevice, string);
  if (!call.IsPhone(device) || call.Fails() || !call.Expect(call->sessionOpen, "no session") ||
      !string || string != "com.apple.afc"sv) {
    return call.Refuse(service, word);
  }
  *service = ++call->lastHandle;
  *word = 0xC0FFEE;
  call->services.insert(*service);
  return kSuccess;
}

std::int32_t AMDeviceIsPaired(void* device) {
  const Call call("AMDeviceIsPaired", kDevice);
  if (!call.IsPhone(device) || call.Fails()) return 0;
  call.Expect(call->connected, "not connected");
  return call->setUp.paired ? 1 : 0;
}

std::int32_t AMDeviceValidatePairing(void* device) {
  const Call call("AMDeviceValidatePairing", kDevice);
  if (!call.IsPhone(device) || call.Fails()) return call.Refuse();
  call.Expect(call->connected && call->setUp.paired, "not paired");
  return kSuccess;
}

std::int32_t AMDevicePair(void* device) {
  const Call call("AMDevicePair", kDevice);
  if (!call.IsPhone(device) || call.Fails()) return call.Refuse();
  call.Expect(call->connected && !call->setUp.paired, "paired already");
  PhoneSetUp& setUp = call->setUp;
  setUp.paired = true;
  if (!setUp.pairingRecords.empty()) {
    std::ofstream(setUp.pairingRecords / (setUp.identifier.value_or("") + ".plist")) << "paired\n";
  }
  return kSuccess;
}
