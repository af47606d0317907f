#include "stand_in_phone/entry_points.h"

#include "stand_in_phone/phone_script.h"

using namespace quaylink;

namespace {

// The phone, for one call: those who set the phone up may be told when it begins and ends.
class PhoneCall {
 public:
  PhoneCall() : phone_(stand_in::CurrentPhone()) { Tell(true); }
  ~PhoneCall() { Tell(false); }
  PhoneCall(const PhoneCall&) = delete;
  PhoneCall& operator=(const PhoneCall&) = delete;

  stand_in::StandInPhone* operator->() const { return &phone_; }

 private:
  void Tell(bool begins) const {
    if (phone_.setUp.aroundCalls != nullptr) phone_.setUp.aroundCalls(begins);
  }

  stand_in::StandInPhone& phone_;
};

}  // namespace

extern "C" {

Allocator* QUAYLINK_CALL CFAllocatorGetDefault() {
  return PhoneCall()->GetDefaultAllocator();
}

StringEncoding QUAYLINK_CALL CFStringGetSystemEncoding() {
  return PhoneCall()->GetSystemEncoding();
}

ServiceName* QUAYLINK_CALL CFStringCreateWithCString(Allocator* allocator, const char* text,
                                                     StringEncoding encoding) {
  return PhoneCall()->CreateString(allocator, text, encoding);
}

Status QUAYLINK_CALL AMDeviceNotificationSubscribe(NotificationCallback callback,
                                                   std::uint32_t zero1, std::uint32_t zero2,
                                                   std::uint32_t zero3,
                                                   NotificationHandle* subscription) {
  return PhoneCall()->Subscribe(callback, {zero1, zero2, zero3}, subscription);
}

Status QUAYLINK_CALL AMDeviceNotificationUnsubscribe(NotificationHandle subscription) {
  return PhoneCall()->Unsubscribe(subscription);
}

Status QUAYLINK_CALL AMDeviceConnect(void* device) {
  return PhoneCall()->Connect(device);
}

Status QUAYLINK_CALL AMDeviceDisconnect(void* device) {
  return PhoneCall()->Disconnect(device);
}

Status QUAYLINK_CALL AMDeviceStartSession(void* device) {
  return PhoneCall()->StartSession(device);
}

Status QUAYLINK_CALL AMDeviceStopSession(void* device) {
  return PhoneCall()->StopSession(device);
}

Status QUAYLINK_CALL AMDeviceStartService(void* device, ServiceName* name, ServiceHandle* service,
                                          std::uint32_t* word) {
  return PhoneCall()->StartService(device, name, service, word);
}

Status QUAYLINK_CALL AMDeviceIsPaired(void* device) {
  return PhoneCall()->IsPaired(device);
}

Status QUAYLINK_CALL AMDeviceValidatePairing(void* device) {
  return PhoneCall()->ValidatePairing(device);
}

Status QUAYLINK_CALL AMDevicePair(void* device) {
  return PhoneCall()->Pair(device);
}

Status QUAYLINK_CALL AFCConnectionOpen(ServiceHandle service, std::uint32_t zero,
                                       AfcConnection* connection) {
  return PhoneCall()->OpenConnection(service, zero, connection);
}

Status QUAYLINK_CALL AFCConnectionClose(AfcConnection connection) {
  return PhoneCall()->CloseConnection(connection);
}

Status QUAYLINK_CALL AFCDirectoryOpen(AfcConnection connection, const char* path,
                                      AfcDirectory** directory) {
  return PhoneCall()->OpenDirectory(connection, path, directory);
}

Status QUAYLINK_CALL AFCDirectoryClose(void* null, AfcDirectory* directory) {
  return PhoneCall()->CloseDirectory(null, directory);
}

Status QUAYLINK_CALL AFCDirectoryRead(void* null, AfcDirectory* directory, const char** name) {
  return PhoneCall()->ReadDirectory(null, directory, name);
}

Status QUAYLINK_CALL AFCFileRefOpen(AfcConnection connection, const char* path, std::uint64_t mode,
                                    FileReference* reference) {
  return PhoneCall()->OpenFile(connection, path, mode, reference);
}

Status QUAYLINK_CALL AFCFileRefRead(AfcConnection connection, FileReference reference, void* buffer,
                                    std::uint32_t* length) {
  return PhoneCall()->ReadFile(connection, reference, buffer, length);
}

Status QUAYLINK_CALL AFCFileRefClose(AfcConnection connection, FileReference reference) {
  return PhoneCall()->CloseFile(connection, reference);
}

Status QUAYLINK_CALL AFCFileInfoOpen(AfcConnection connection, const char* path,
                                     AfcInformation** information) {
  return PhoneCall()->OpenInformation(connection, path, information);
}

Status QUAYLINK_CALL AFCKeyValueRead(AfcInformation* information, const char** key,
                                     const char** value) {
  return PhoneCall()->ReadKeyValue(information, key, value);
}

Status QUAYLINK_CALL AFCKeyValueClose(AfcInformation* information) {
  return PhoneCall()->CloseInformation(information);
}

}  // extern "C"

namespace quaylink::stand_in {
namespace {

StandInPhone* givenPhone = nullptr;

}  // namespace

StandInPhone& CurrentPhone() {
  if (givenPhone != nullptr) return *givenPhone;
  static StandInPhone phone(SetUpFromEnvironment());
  return phone;
}

void SetCurrentPhone(StandInPhone* phone) {
  givenPhone = phone;
}

EntryPoints AllEntryPoints() {
  EntryPoints e;
  e.cfStringCreateWithCString = CFStringCreateWithCString;
  e.cfAllocatorGetDefault = CFAllocatorGetDefault;
  e.cfStringGetSystemEncoding = CFStringGetSystemEncoding;
  e.amDeviceNotificationSubscribe = AMDeviceNotificationSubscribe;
  e.amDeviceConnect = AMDeviceConnect;
  e.amDeviceDisconnect = AMDeviceDisconnect;
  e.amDeviceStartSession = AMDeviceStartSession;
  e.amDeviceStopSession = AMDeviceStopSession;
  e.amDeviceStartService = AMDeviceStartService;
  e.amDeviceIsPaired = AMDeviceIsPaired;
  e.amDeviceValidatePairing = AMDeviceValidatePairing;
  e.amDevicePair = AMDevicePair;
  e.afcConnectionOpen = AFCConnectionOpen;
  e.afcConnectionClose = AFCConnectionClose;
  e.afcDirectoryOpen = AFCDirectoryOpen;
  e.afcDirectoryClose = AFCDirectoryClose;
  e.afcDirectoryRead = AFCDirectoryRead;
  e.afcFileRefOpen = AFCFileRefOpen;
  e.afcFileRefRead = AFCFileRefRead;
  e.afcFileRefClose = AFCFileRefClose;
  e.afcFileInfoOpen = AFCFileInfoOpen;
  e.afcKeyValueRead = AFCKeyValueRead;
  e.afcKeyValueClose = AFCKeyValueClose;
  return e;
}

Status QUAYLINK_CALL UnsubscribeFromCurrentPhone(NotificationHandle subscription) {
  return AMDeviceNotificationUnsubscribe(subscription);
}

}  // namespace quaylink::stand_in
