// Where a machine comes from: the computer that the program runs on, with what is plugged in and
// mounted here, or a folder, for trying the library without a player and without Windows.
#include <algorithm>
#include <charconv>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

#include "common/hardware_id.h"
#include "platform/portable/machine.h"
#include "platform/portable/places.h"

namespace quaylink::portable {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kAppleVendorId = "05ac";
constexpr char kFirstLetter = 'D';
constexpr char kLastLetter = 'Z';

std::string FirstLine(const fs::path& file) {
  std::string line;
  std::ifstream stream(file);
  std::getline(stream, line);
  return line;
}

unsigned NumberIn(std::string_view string, int base) {
  unsigned number = 0;
  std::from_chars(string.data(), string.data() + string.size(), number, base);
  return number;
}

void ReadUsbDevices(const fs::path& sysfs, Machine& machine) {
  machine.DetachUsbDevices();
  const fs::path devices = sysfs / "bus/usb/devices";
  for (const std::string& name : SortedNames(devices)) {
    const bool isInterface = name.find(':') != name.npos;
    if (isInterface || FirstLine(devices / name / "idVendor") != kAppleVendorId) continue;
    const unsigned productId = NumberIn(FirstLine(devices / name / "idProduct"), 16);
    // As on Windows, a device without a serial number goes by the port that it is plugged into.
    std::string serial = FirstLine(devices / name / "serial");
    std::ranges::replace(serial, '\\', '_');
    machine.AttachUsbDevice(AppleHardwareId(productId), serial.empty() ? name : serial);
  }
}

// Mount tables write blanks, line ends and backslashes as a backslash and three octal digits.
std::string Unescape(std::string_view escaped) {
  std::string plain;
  while (!escaped.empty()) {
    const bool isEscape = escaped[0] == '\\' && escaped.size() >= 4;
    plain.push_back(isEscape ? static_cast<char>(NumberIn(escaped.substr(1, 3), 8)) : escaped[0]);
    escaped.remove_prefix(isEscape ? 4 : 1);
  }
  return plain;
}

// Whether that block device ("8:17") is a disk whose medium is removable, or a part of one.
bool IsRemovable(const fs::path& sysfs, const std::string& number) {
  const fs::path device = sysfs / "dev/block" / number;
  std::string removable = FirstLine(device / "removable");
  // What is a link there leads to a folder in that of its disk.
  if (removable.empty()) removable = FirstLine(device / "../removable");
  return removable == "1";
}

// The folders at which removable volumes are mounted, in mount order. One volume may be mounted at
// several, not all of which need to show what is on it.
std::vector<fs::path> RemovableVolumes(const fs::path& sysfs, const fs::path& mountTable) {
  std::vector<fs::path> folders;
  std::map<std::string, bool> removable;  // by device number
  std::ifstream table(mountTable);
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    std::string mountId, parentId, device, rootInVolume, folder;
    fields >> mountId >> parentId >> device >> rootInVolume >> folder;
    // Number 0 is no block device's.
    if (!fields || rootInVolume != "/" || device.starts_with("0:")) continue;
    const auto [known, isNew] = removable.try_emplace(device);
    if (isNew) known->second = IsRemovable(sysfs, device);
    if (known->second) folders.emplace_back(Unescape(folder));
  }
  return folders;
}

// A folder keeps its letter while a volume is mounted there, whatever comes and goes beside it.
void ReadVolumes(const std::vector<fs::path>& volumes, Machine& machine) {
  std::erase_if(machine.drives, [&volumes](const auto& drive) {
    return std::ranges::find(volumes, drive.second.root) == volumes.end();
  });
  for (const fs::path& volume : volumes) {
    const auto isVolume = [&volume](const auto& drive) { return drive.second.root == volume; };
    if (std::ranges::any_of(machine.drives, isVolume)) continue;
    char letter = kFirstLetter;
    while (machine.drives.contains(letter)) ++letter;
    if (letter > kLastLetter) return;
    machine.drives[letter] = {DRIVE_REMOVABLE, volume};
  }
}

void ReadDriveFolders(const fs::path& folder, Machine& machine) {
  machine.drives.clear();
  for (const std::string& name : SortedNames(folder)) {
    const char letter = name.size() == 1 ? AsciiUpper(name[0]) : '\0';
    std::error_code ignored;
    if (letter < 'A' || letter > 'Z' || !fs::is_directory(folder / name, ignored)) continue;
    machine.drives[letter] = {letter == 'C' ? DRIVE_FIXED : DRIVE_REMOVABLE, folder / name};
  }
}

void ReadDeviceFolders(const fs::path& folder, Machine& machine) {
  machine.DetachUsbDevices();
  for (const std::string& id : SortedNames(folder)) {
    for (const std::string& serial : SortedNames(folder / id)) machine.AttachUsbDevice(id, serial);
  }
}

}  // namespace

Machine ReadComputer(const fs::path& sysfs, const fs::path& mountTable) {
  Machine machine;
  machine.KeyAt(kUsbTree);
  machine.readDevices = [sysfs](Machine& updated) { ReadUsbDevices(sysfs, updated); };
  machine.readDrives = [sysfs, mountTable](Machine& updated) {
    ReadVolumes(RemovableVolumes(sysfs, mountTable), updated);
  };
  return machine;
}

Machine ReadMachineFolder(const fs::path& folder) {
  Machine machine;
  machine.specialFolders = {
      {CSIDL_PERSONAL, {"C:\\Users\\owner\\Documents"}},
      {CSIDL_APPDATA, {"C:\\Users\\owner\\AppData\\Roaming"}},
      {CSIDL_PROGRAM_FILES_COMMON, {"C:\\Program Files\\Common Files"}},
      {CSIDL_PROGRAM_FILES_COMMONX86, {"C:\\Program Files (x86)\\Common Files"}},
  };
  machine.KeyAt(kUsbTree);
  // A relative folder must stay the same one when the host changes its working folder.
  std::error_code failed;
  const fs::path absolute = fs::absolute(folder, failed);
  const fs::path root = failed ? folder : absolute;
  machine.readDrives = [root](Machine& updated) { ReadDriveFolders(root / "drives", updated); };
  machine.readDevices = [root](Machine& updated) { ReadDeviceFolders(root / "usb", updated); };
  return machine;
}

}  // namespace quaylink::portable
