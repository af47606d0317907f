// Which device is attached, which road leads to it, and the session on the mobile road.

#include <algorithm>
#include <array>

#include "interface/device_manager.h"
#include "itunesdb/database.h"
#include "platform/windows_api.h"
#include "usb/usb_device_list.h"

namespace quaylink {

namespace {

// Type codes of the phone-class products; all others are players in disk mode.
constexpr std::array<std::int32_t, 6> kMobileTypeCodes = {9, 10, 11, 15, 16, 17};

constexpr char kFirstDriveLetter = 'B';
constexpr char kLastDriveLetter = 'Z';

bool AnyFileMatches(const std::string& pattern) {
  WIN32_FIND_DATAA entry;
  const HANDLE search = FindFirstFileA(pattern.c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return true;
}

}  // namespace

DeviceManager::~DeviceManager() {
  theDatabase.Clear();
  theDatabase.ReleaseUnusedMemory();
  bridge.reset();
}

bool DeviceManager::Detect() {
  UsbDeviceList devices;
  if (devices.Enumerate() <= 0) return false;
  if (std::ranges::find(kMobileTypeCodes, devices.TypeAt(0)) != kMobileTypeCodes.end()) {
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
    if (!AnyFileMatches(root + "iPod_Control\\Music\\*.*")) continue;
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
