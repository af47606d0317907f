// The phone libraries' coming and going.
#include <cstdint>

#include "mobile/device_notification.h"
#include "mobile/mobile_device_bridge.h"
#include "mobile/special_folders.h"
#include "mobile/work_folder.h"

namespace quaylink {
namespace {

bool IsLoaded(HMODULE module) {
  return module != nullptr && reinterpret_cast<std::uintptr_t>(module) != UINTPTR_MAX;
}

template <class Entry>
void LookUp(HMODULE library, const char* name, Entry& slot) {
  // By way of the one function type from which every other may be cast to without a warning.
  using AnyFunction = void (*)();
  slot = reinterpret_cast<Entry>(reinterpret_cast<AnyFunction>(GetProcAddress(library, name)));
}

}  // namespace

MobileDeviceBridge::MobileDeviceBridge(WithoutLibraries /*tag*/) {
  ClearDeviceRecord();
}

// By way of another constructor, so that the destructor
// unloads what is loaded when memory runs out in here.
MobileDeviceBridge::MobileDeviceBridge() : MobileDeviceBridge(WithoutLibraries::kTag) {
  const auto keep = [this](PhoneLibraries libraries) {
    coreFoundationModule = libraries.coreFoundation;
    mobileDeviceModule = libraries.mobileDevice;
  };
  keep(LoadPhoneLibraries(GetSpecialFolderPath(CSIDL_PROGRAM_FILES_COMMON) +
                          "\\Apple\\Mobile Device Support\\bin\\"));
  if (!LibrariesLoaded() && MobileDeviceSupportPresent()) {
    loadedFromWorkFolder = 1;
    keep(PrepareWorkFolder());
  }
  if (LibrariesLoaded()) LookUpEntryPoints();
}

MobileDeviceBridge::~MobileDeviceBridge() {
  if (!pairingRecordPath.empty()) RemoveLocalFile(pairingRecordPath.c_str());
  SetUnsubscribeEntry(nullptr);
  if (coreFoundationModule != nullptr && loadedFromWorkFolder == 0) {
    FreeLibrary(coreFoundationModule);
  }
  if (mobileDeviceModule != nullptr) FreeLibrary(mobileDeviceModule);
}

bool MobileDeviceBridge::LibrariesLoaded() const {
  return IsLoaded(coreFoundationModule) && IsLoaded(mobileDeviceModule);
}

bool MobileDeviceBridge::MobileDeviceSupportPresent() {
  const std::string library =
      GetCommonFilesFolder() + "\\Apple\\Mobile Device Support\\iTunesMobileDevice.dll";
  return GetFileAttributesA(library.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MobileDeviceBridge::LookUpEntryPoints() {
  EntryPoints& e = entryPoints;
  LookUp(coreFoundationModule, "CFStringCreateWithCString", e.cfStringCreateWithCString);
  LookUp(coreFoundationModule, "CFAllocatorGetDefault", e.cfAllocatorGetDefault);
  LookUp(coreFoundationModule, "CFStringGetSystemEncoding", e.cfStringGetSystemEncoding);
  LookUp(mobileDeviceModule, "AMDeviceNotificationSubscribe", e.amDeviceNotificationSubscribe);
  LookUp(mobileDeviceModule, "AMDeviceConnect", e.amDeviceConnect);
  LookUp(mobileDeviceModule, "AMDeviceDisconnect", e.amDeviceDisconnect);
  LookUp(mobileDeviceModule, "AMDeviceStartSession", e.amDeviceStartSession);
  LookUp(mobileDeviceModule, "AMDeviceStopSession", e.amDeviceStopSession);
  LookUp(mobileDeviceModule, "AMDeviceStartService", e.amDeviceStartService);
  LookUp(mobileDeviceModule, "AMDeviceIsPaired", e.amDeviceIsPaired);
  LookUp(mobileDeviceModule, "AMDeviceValidatePairing", e.amDeviceValidatePairing);
  LookUp(mobileDeviceModule, "AMDevicePair", e.amDevicePair);
  LookUp(mobileDeviceModule, "AFCConnectionOpen", e.afcConnectionOpen);
  LookUp(mobileDeviceModule, "AFCConnectionClose", e.afcConnectionClose);
  LookUp(mobileDeviceModule, "AFCDirectoryOpen", e.afcDirectoryOpen);
  LookUp(mobileDeviceModule, "AFCDirectoryClose", e.afcDirectoryClose);
  LookUp(mobileDeviceModule, "AFCDirectoryRead", e.afcDirectoryRead);
  LookUp(mobileDeviceModule, "AFCFileRefOpen", e.afcFileRefOpen);
  LookUp(mobileDeviceModule, "AFCFileRefRead", e.afcFileRefRead);
  LookUp(mobileDeviceModule, "AFCFileRefClose", e.afcFileRefClose);
  LookUp(mobileDeviceModule, "AFCFileInfoOpen", e.afcFileInfoOpen);
  LookUp(mobileDeviceModule, "AFCKeyValueRead", e.afcKeyValueRead);
  LookUp(mobileDeviceModule, "AFCKeyValueClose", e.afcKeyValueClose);

  UnsubscribeEntry unsubscribe = nullptr;
  LookUp(mobileDeviceModule, "AMDeviceNotificationUnsubscribe", unsubscribe);
  SetUnsubscribeEntry(unsubscribe);
}

}  // namespace quaylink
