// Which device is attached, which road leads to it, and the session on the mobile road.

#include "interface/device_manager.h"
#include "itunesdb/database.h"
#include "platform/folder_search.h"
#include "platform/windows_api.h"
#include "usb/apple_products.h"
#include "usb/usb_device_list.h"

namespace quaylink {

namespace {

constexpr char kFirstDriveLetter = 'B';
constexpr char kLastDriveLetter = 'Z';

}  // namespace

DeviceManager::~DeviceManager() {
  theDatabase.Clear();
  theDatabase.ReleaseUnusedMemory();
  bridge.reset();
}

bool DeviceManager::Detect() {
  UsbDeviceList devices;
  if (devices.Enumerate() <= 0) return false;
  if (IsPhone(devices.TypeAt(0))) {
    if (!bridge) bridge = std::make_unique<MobileDeviceBridge>();
    driveLetter = 0;
    return true;
  }
  char letter = 0;
  const bool found = FindDriveLetter(letter);
  driveLetter = found ? letter : '\0';
  return found;
}

bool DeviceManager::FindDriveLetter(char& letter) const {
  for (char candidate = kFirstDriveLetter; candidate <= kLastDriveLetter; ++candidate) {
    const std::string root = {candidate, ':', '\\'};
    if (GetDriveTypeA(root.c_str()) != DRIVE_REMOVABLE) continue;
    if (!FolderSearch(root + "iPod_Control\\Music\\*.*").Found()) continue;
    letter = candidate;
    return true;
  }
  return false;
}

bool DeviceManager::OpenSession() {
  if (!bridge || sessionOpen) return true;
  sessionOpen = bridge->Connect(true) != 0;
  return sessionOpen;
}

bool DeviceManager::CloseSession() {
  if (!bridge || !sessionOpen) return true;
  sessionOpen = bridge->Disconnect() == 0;
  return !sessionOpen;
}

}  // namespace quaylink
