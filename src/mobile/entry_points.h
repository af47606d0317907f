// The functions of the vendor's two phone libraries, as far as the bridge calls them: 24 entry
// points that are looked up by name at run time. Argument widths are those of the 32-bit libraries;
// what is a pointer or an opaque object there stays a pointer.
#pragma once

#include <quaylink/quaylink.h>

#include <cstdint>

namespace quaylink {

using NotificationHandle = std::uint32_t;
using ServiceHandle = std::uint32_t;
using AfcConnection = std::uint32_t;
using FileReference = std::uint64_t;
using StringEncoding = std::uint32_t;

// Objects of the phone libraries, never looked into.
struct Allocator;
struct ServiceName;
struct AfcDirectory;
struct AfcInformation;

// What a notification callback receives. Only its first word is known: the address of a device
// record of 64 bytes or more, or null.
struct NotificationRecord {
  const void* deviceRecord;
};
using NotificationCallback = void(QUAYLINK_CALL*)(const NotificationRecord* record);

// A status of 0 is success. A device argument is the address of a device record; a path is
// zero-terminated and "/"-separated.
using Status = std::int32_t;

using DeviceEntry = Status(QUAYLINK_CALL*)(void* device);
using UnsubscribeEntry = Status(QUAYLINK_CALL*)(NotificationHandle subscription);

inline constexpr std::uint64_t kOpenForReading = 2;

enum class PhoneLibrary { kCoreFoundation, kMobileDevice };

// One slot for each entry point, named like it. A name that its library does not have leaves the
// slot null.
struct EntryPoints {
  ServiceName*(QUAYLINK_CALL* cfStringCreateWithCString)(Allocator* allocator, const char* string,
                                                         StringEncoding encoding) = nullptr;
  Allocator*(QUAYLINK_CALL* cfAllocatorGetDefault)() = nullptr;
  StringEncoding(QUAYLINK_CALL* cfStringGetSystemEncoding)() = nullptr;

  Status(QUAYLINK_CALL* amDeviceNotificationSubscribe)(NotificationCallback callback,
                                                       std::uint32_t zero1, std::uint32_t zero2,
                                                       std::uint32_t zero3,
                                                       NotificationHandle* subscription) = nullptr;
  DeviceEntry amDeviceConnect = nullptr;
  DeviceEntry amDeviceDisconnect = nullptr;
  DeviceEntry amDeviceStartSession = nullptr;
  DeviceEntry amDeviceStopSession = nullptr;
  Status(QUAYLINK_CALL* amDeviceStartService)(void* device, ServiceName* name,
                                              ServiceHandle* service,
                                              std::uint32_t* word) = nullptr;
  DeviceEntry amDeviceIsPaired = nullptr;  // not a status: non-zero when paired
  DeviceEntry amDeviceValidatePairing = nullptr;
  DeviceEntry amDevicePair = nullptr;

  Status(QUAYLINK_CALL* afcConnectionOpen)(ServiceHandle service, std::uint32_t zero,
                                           AfcConnection* connection) = nullptr;
  Status(QUAYLINK_CALL* afcConnectionClose)(AfcConnection connection) = nullptr;
  Status(QUAYLINK_CALL* afcDirectoryOpen)(AfcConnection connection, const char* path,
                                          AfcDirectory** directory) = nullptr;
  Status(QUAYLINK_CALL* afcDirectoryClose)(void* null, AfcDirectory* directory) = nullptr;
  Status(QUAYLINK_CALL* afcDirectoryRead)(void* null, AfcDirectory* directory,
                                          const char** name) = nullptr;
  Status(QUAYLINK_CALL* afcFileRefOpen)(AfcConnection connection, const char* path,
                                        std::uint64_t mode, FileReference* reference) = nullptr;
  Status(QUAYLINK_CALL* afcFileRefRead)(AfcConnection connection, FileReference reference,
                                        void* buffer, std::uint32_t* length) = nullptr;
  Status(QUAYLINK_CALL* afcFileRefClose)(AfcConnection connection,
                                         FileReference reference) = nullptr;
  Status(QUAYLINK_CALL* afcFileInfoOpen)(AfcConnection connection, const char* path,
                                         AfcInformation** information) = nullptr;
  Status(QUAYLINK_CALL* afcKeyValueRead)(AfcInformation* information, const char** key,
                                         const char** value) = nullptr;
  Status(QUAYLINK_CALL* afcKeyValueClose)(AfcInformation* information) = nullptr;

  UnsubscribeEntry amDeviceNotificationUnsubscribe = nullptr;

  // Calls `visit` with the library, the name and the slot of each entry point.
  template <class Visit>
  void ForEach(Visit visit) {
    constexpr PhoneLibrary kCore = PhoneLibrary::kCoreFoundation;
    visit(kCore, "CFStringCreateWithCString", cfStringCreateWithCString);
    visit(kCore, "CFAllocatorGetDefault", cfAllocatorGetDefault);
    visit(kCore, "CFStringGetSystemEncoding", cfStringGetSystemEncoding);

    constexpr PhoneLibrary kMobile = PhoneLibrary::kMobileDevice;
    visit(kMobile, "AMDeviceNotificationSubscribe", amDeviceNotificationSubscribe);
    visit(kMobile, "AMDeviceConnect", amDeviceConnect);
    visit(kMobile, "AMDeviceDisconnect", amDeviceDisconnect);
    visit(kMobile, "AMDeviceStartSession", amDeviceStartSession);
    visit(kMobile, "AMDeviceStopSession", amDeviceStopSession);
    visit(kMobile, "AMDeviceStartService", amDeviceStartService);
    visit(kMobile, "AMDeviceIsPaired", amDeviceIsPaired);
    visit(kMobile, "AMDeviceValidatePairing", amDeviceValidatePairing);
    visit(kMobile, "AMDevicePair", amDevicePair);
    visit(kMobile, "AFCConnectionOpen", afcConnectionOpen);
    visit(kMobile, "AFCConnectionClose", afcConnectionClose);
    visit(kMobile, "AFCDirectoryOpen", afcDirectoryOpen);
    visit(kMobile, "AFCDirectoryClose", afcDirectoryClose);
    visit(kMobile, "AFCDirectoryRead", afcDirectoryRead);
    visit(kMobile, "AFCFileRefOpen", afcFileRefOpen);
    visit(kMobile, "AFCFileRefRead", afcFileRefRead);
    visit(kMobile, "AFCFileRefClose", afcFileRefClose);
    visit(kMobile, "AFCFileInfoOpen", afcFileInfoOpen);
    visit(kMobile, "AFCKeyValueRead", afcKeyValueRead);
    visit(kMobile, "AFCKeyValueClose", afcKeyValueClose);
    visit(kMobile, "AMDeviceNotificationUnsubscribe", amDeviceNotificationUnsubscribe);
  }
};

}  // namespace quaylink
