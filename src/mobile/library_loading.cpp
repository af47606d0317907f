// The bridge's beginning and end: which phone libraries it uses, and what it leaves behind.
#include <utility>

#include "mobile/device_notification.h"
#include "mobile/mobile_device_bridge.h"
#include "mobile/special_folders.h"
#include "mobile/work_folder.h"

namespace quaylink {
namespace {

constexpr char kDeviceSupport[] = "\\Apple\\Mobile Device Support\\";

bool MobileDeviceSupportPresent() {
  const std::string library = GetCommonFilesFolder() + kDeviceSupport + "iTunesMobileDevice.dll";
  return GetFileAttributesA(library.c_str()) != INVALID_FILE_ATTRIBUTES;
}

PhoneLibraries FindPhoneLibraries() {
  PhoneLibraries libraries = LoadPhoneLibraries(GetSpecialFolderPath(CSIDL_PROGRAM_FILES_COMMON) +
                                                kDeviceSupport + "bin\\");
  if (libraries.areLoaded || !MobileDeviceSupportPresent()) return libraries;
  libraries = {};  // or those of the work folder would be bound to the one that has been loaded
  return PrepareWorkFolder();
}

}  // namespace

MobileDeviceBridge::MobileDeviceBridge() : MobileDeviceBridge(FindPhoneLibraries()) {}

MobileDeviceBridge::MobileDeviceBridge(PhoneLibraries given) : libraries(std::move(given)) {
  ClearDeviceRecord();
  SetUnsubscribeEntry(libraries.entryPoints.amDeviceNotificationUnsubscribe);
}

MobileDeviceBridge::~MobileDeviceBridge() {
  if (!pairingRecordPath.empty()) RemoveLocalFile(pairingRecordPath.c_str());
  SetUnsubscribeEntry(nullptr);
}

bool MobileDeviceBridge::LibrariesLoaded() const {
  return libraries.areLoaded;
}

}  // namespace quaylink
