#include "usb/usb_device_list.h"

#include <iterator>
#include <string>

#include "common/ascii.h"
#include "common/checked_at.h"
#include "common/hardware_id.h"
#include "platform/windows_api.h"
#include "usb/apple_products.h"
#include "usb/registry.h"

namespace quaylink {
namespace {

constexpr std::string_view kUsbTree = "SYSTEM\\CurrentControlSet\\Enum\\USB\\";

// Turns the kernel's symbolic name of a device into the path by which a program opens it.
std::string DevicePath(std::string symbolicName) {
  constexpr std::string_view kKernelPrefix = "\\??\\USB#";
  constexpr std::string_view kProgramPrefix = "\\\\?\\USB#";
  for (std::size_t at = symbolicName.find(kKernelPrefix); at != std::string::npos;
       at = symbolicName.find(kKernelPrefix, at + kProgramPrefix.size())) {
    symbolicName.replace(at, kKernelPrefix.size(), kProgramPrefix);
  }
  return symbolicName;
}

// The registry also lists devices that were attached once; only those attached now can be opened.
bool IsPresent(const std::string& devicePath) {
  HANDLE device = CreateFileA(devicePath.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                              OPEN_EXISTING, 0, nullptr);
  if (device == INVALID_HANDLE_VALUE) return false;
  CloseHandle(device);
  return true;
}

}  // namespace

std::int32_t UsbDeviceList::Enumerate() {
  std::vector<std::string> names;
  if (!EnumerateSubkeys(kUsbTree, names)) return -1;
  for (const std::string& name : names) {
    for (std::size_t typeCode = 0; typeCode < std::size(AppleProductIdTable); ++typeCode) {
      const std::string hardwareId = AppleHardwareId(AppleProductIdTable[typeCode].id);
      if (!EqualsIgnoringCase(hardwareId, name)) continue;
      if (!AppendInstances(hardwareId, static_cast<std::int32_t>(typeCode))) return -1;
      break;
    }
  }
  return static_cast<std::int32_t>(entries_.size());
}

std::int32_t UsbDeviceList::TypeAt(std::size_t index) const {
  return CheckedAt(entries_, index).typeCode;
}

bool UsbDeviceList::AppendInstances(std::string_view hardwareId, std::int32_t typeCode) {
  const std::string productKey = std::string(kUsbTree).append(hardwareId).append("\\");
  std::vector<std::string> instances;
  if (!EnumerateSubkeys(productKey, instances)) return false;
  for (const std::string& instance : instances) {
    // An instance without a readable name is left out as one with an empty name is.
    std::string symbolicName;
    ReadStringValue(productKey + instance + "\\Device Parameters\\SymbolicName", symbolicName);
    if (!symbolicName.empty() && IsPresent(DevicePath(symbolicName))) {
      entries_.push_back({typeCode});
    }
  }
  return true;
}

}  // namespace quaylink
