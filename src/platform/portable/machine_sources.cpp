// The computer that the program runs on, as a machine: what is plugged in and mounted here.
#include <algorithm>
#include <charconv>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>

#include "common/ascii.h"
#include "platform/portable/folder_listing.h"
#include "platform/portable/machine.h"

namespace quaylink::portable {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kAppleVendorId = "05ac";
constexpr char kFirstLetter = 'D';
constexpr char kLastLetter = 'Z';

std::string FirstLine(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

void ReadDevices(const fs::path& sysfs, Machine& machine) {
  machine.DetachUsbDevices();
  const fs::path devices = sysfs / "bus/usb/devices";
  for (const std::string& name : SortedNames(devices)) {
    if (FirstLine(devices / name / "idVendor") != kAppleVendorId) continue;
    std::string hardwareId = "VID_05AC&PID_" + FirstLine(devices / name / "idProduct");
    std::ranges::transform(hardwareId, hardwareId.begin(), AsciiUpper);
    // As on Windows, a device without a serial number goes by the port that it is plugged into.
    std::string serial = FirstLine(devices / name / "serial");
    std::ranges::replace(serial, '\\', '_');
    machine.AttachUsbDevice(hardwareId, serial.empty() ? name : serial);
  }
}

// Mount tables write blanks, line ends and backslashes as a backslash and three octal digits.
std::string Unescape(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    int code = 0;
    const bool escaped =
        text.size() >= 4 && text[0] == '\\' &&
        std::from_chars(text.data() + 1, text.data() + 4, code, 8).ec == std::errc();
    plain.push_back(escaped ? static_cast<char>(code) : text[0]);
    text.remove_prefix(escaped ? 4 : 1);
  }
  return plain;
}

// Whether the block device of that number ("8:17") is
// a disk whose medium is removable, or a part of one.
bool IsRemovable(const fs::path& sysfs, const std::string& number) {
  std::error_code failed;
  const fs::path device = fs::canonical(sysfs / "dev/block" / number, failed);
  if (failed) return false;
  const bool isPartition = fs::exists(device / "partition", failed);
  return FirstLine((isPartition ? device.parent_path() : device) / "removable") == "1";
}

// The folders at which removable volumes are mounted, in mount order.
std::vector<fs::path> RemovableVolumes(const fs::path& sysfs, const fs::path& mountTable) {
  std::vector<fs::path> folders;
  std::set<std::string> seen;
  std::ifstream table(mountTable);
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    std::string mountId, parentId, device, rootInVolume, folder;
    fields >> mountId >> parentId >> device >> rootInVolume >> folder;
    if (!fields || rootInVolume != "/" || !IsRemovable(sysfs, device)) continue;
    if (seen.insert(device).second) folders.emplace_back(Unescape(folder));
  }
  return folders;
}

// A volume keeps its letter for as long as it is mounted, whatever comes and goes beside it.
void ReadDrives(const std::vector<fs::path>& volumes, Machine& machine) {
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

}  // namespace

Machine ReadComputer(const fs::path& sysfs, const fs::path& mountTable) {
  Machine machine;
  machine.update = [sysfs, mountTable](Machine& updated) {
    ReadDevices(sysfs, updated);
    ReadDrives(RemovableVolumes(sysfs, mountTable), updated);
  };
  machine.update(machine);
  return machine;
}

}  // namespace quaylink::portable
