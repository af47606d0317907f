#include "stand_in_phone/entry_points.h"

#include "stand_in_phone/phone_script.h"

using namespace quaylink;
using quaylink::stand_in::CurrentPhone;

extern "C" {

Allocator* QUAYLINK_CALL CFAllocatorGetDefault() {
  return CurrentPhone().GetDefaultAllocator();
}

StringEncoding QUAYLINK_CALL CFStringGetSystemEncoding() {
  return CurrentPhone().GetSystemEncoding();
}

ServiceName* QUAYLINK_CALL CFStringCreateWithCString(Allocator* allocator, const char* text,
                                                     StringEncoding encoding) {
  return CurrentPhone().CreateString(allocator, text, encoding);
}

Status QUAYLINK_CALL AMDeviceNotificationSubscribe(NotificationCallback callback,
                                                   std::uint32_t zero1, std::uint32_t zero2,
                                                   std::uint32_t zero3,
                                                   NotificationHandle* subscription) {
  return CurrentPhone().Subscribe(callback, {zero1, zero2, zero3}, subscription);
}

Status QUAYLINK_CALL AMDeviceNotificationUnsubscribe(NotificationHandle subscription) {
  return CurrentPhone().Unsubscribe(subscription);
}

Status QUAYLINK_CALL AMDeviceConnect(void* device) {
  return CurrentPhone().Connect(device);
}

Status QUAYLINK_CALL AMDeviceDisconnect(void* device) {
  return CurrentPhone().Disconnect(device);
}

Status QUAYLINK_CALL AMDeviceStartSession(void* device) {
  return CurrentPhone().StartSession(device);
}

Status QUAYLINK_CALL AMDeviceStopSession(void* device) {
  return CurrentPhone().StopSession(device);
}

Status QUAYLINK_CALL AMDeviceStartService(void* device, ServiceName* name, ServiceHandle* service,
                                          std::uint32_t* word) {
  return CurrentPhone().StartService(device, name, service, word);
}

Status QUAYLINK_CALL AMDeviceIsPaired(void* device) {
  return CurrentPhone().IsPaired(device);
}

Status QUAYLINK_CALL AMDeviceValidatePairing(void* device) {
  return CurrentPhone().ValidatePairing(device);
}

Status QUAYLINK_CALL AMDevicePair(void* device) {
  return CurrentPhone().Pair(device);
}

Status QUAYLINK_CALL AFCConnectionOpen(ServiceHandle service, std::uint32_t zero,
                                       AfcConnection* connection) {
  return CurrentPhone().OpenConnection(service, zero, connection);
}

Status QUAYLINK_CALL AFCConnectionClose(AfcConnection connection) {
  return CurrentPhone().CloseConnection(connection);
}

Status QUAYLINK_CALL AFCDirectoryOpen(AfcConnection connection, const char* path,
                                      AfcDirectory** directory) {
  return CurrentPhone().OpenDirectory(connection, path, directory);
}

Status QUAYLINK_CALL AFCDirectoryClose(void* null, AfcDirectory* directory) {
  return CurrentPhone().CloseDirectory(null, directory);
}

Status QUAYLINK_CALL AFCDirectoryRead(void* null, AfcDirectory* directory, const char** name) {
  return CurrentPhone().ReadDirectory(null, directory, name);
}

Status QUAYLINK_CALL AFCFileRefOpen(AfcConnection connection, const char* path, std::uint64_t mode,
                                    FileReference* reference) {
  return CurrentPhone().OpenFile(connection, path, mode, reference);
}

Status QUAYLINK_CALL AFCFileRefRead(AfcConnection connection, FileReference reference, void* buffer,
                                    std::uint32_t* length) {
  return CurrentPhone().ReadFile(connection, reference, buffer, length);
}

Status QUAYLINK_CALL AFCFileRefClose(AfcConnection connection, FileReference reference) {
  return CurrentPhone().CloseFile(connection, reference);
}

Status QUAYLINK_CALL AFCFileInfoOpen(AfcConnection connection, const char* path,
                                     AfcInformation** information) {
  return CurrentPhone().OpenInformation(connection, path, information);
}

Status QUAYLINK_CALL AFCKeyValueRead(AfcInformation* information, const char** key,
                                     const char** value) {
  return CurrentPhone().ReadKeyValue(information, key, value);
}

Status QUAYLINK_CALL AFCKeyValueClose(AfcInformation* information) {
  return CurrentPhone().CloseInformation(information);
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
