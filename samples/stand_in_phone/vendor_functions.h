// The functions of the vendor's two libraries as their callers know them. Nothing here comes from
// the library's own header of entry points, so that a wrong signature or width in there shows.
#pragma once

#include <cstdint>

namespace quaylink {
struct Allocator;
struct ServiceName;
struct AfcDirectory;
struct AfcInformation;
struct NotificationRecord;
}  // namespace quaylink

extern "C" {

// CoreFoundation.dll
quaylink::Allocator* CFAllocatorGetDefault();
std::uint32_t CFStringGetSystemEncoding();
quaylink::ServiceName* CFStringCreateWithCString(quaylink::Allocator* allocator, const char* string,
                                                 std::uint32_t encoding);
// For the other library only: the characters of a string object, null for anything else.
const char* CFStringGetCStringPtr(const quaylink::ServiceName* string, std::uint32_t encoding);

// iTunesMobileDevice.dll
std::int32_t AMDeviceNotificationSubscribe(
    void (*callback)(const quaylink::NotificationRecord* record), std::uint32_t zero1,
    std::uint32_t zero2, std::uint32_t zero3, std::uint32_t* subscription);
std::int32_t AMDeviceNotificationUnsubscribe(std::uint32_t subscription);
std::int32_t AMDeviceConnect(void* device);
std::int32_t AMDeviceDisconnect(void* device);
std::int32_t AMDeviceStartSession(void* device);
std::int32_t AMDeviceStopSession(void* device);
std::int32_t AMDeviceStartService(void* device, quaylink::ServiceName* name, std::uint32_t* service,
                                  std::uint32_t* word);
std::int32_t AMDeviceIsPaired(void* device);
std::int32_t AMDeviceValidatePairing(void* device);
std::int32_t AMDevicePair(void* device);

std::int32_t AFCConnectionOpen(std::uint32_t service, std::uint32_t zero,
                               std::uint32_t* connection);
std::int32_t AFCConnectionClose(std::uint32_t connection);
std::int32_t AFCDirectoryOpen(std::uint32_t connection, const char* path,
                              quaylink::AfcDirectory** directory);
std::int32_t AFCDirectoryClose(void* null, quaylink::AfcDirectory* directory);
std::int32_t AFCDirectoryRead(void* null, quaylink::AfcDirectory* directory, const char** name);
std::int32_t AFCFileRefOpen(std::uint32_t connection, const char* path, std::uint64_t mode,
                            std::uint64_t* reference);
std::int32_t AFCFileRefRead(std::uint32_t connection, std::uint64_t reference, void* buffer,
                            std::uint32_t* length);
std::int32_t AFCFileRefClose(std::uint32_t connection, std::uint64_t reference);
std::int32_t AFCFileInfoOpen(std::uint32_t connection, const char* path,
                             quaylink::AfcInformation** information);
std::int32_t AFCKeyValueRead(quaylink::AfcInformation* information, const char** key,
                             const char** value);
std::int32_t AFCKeyValueClose(quaylink::AfcInformation* information);

}  // extern "C"
