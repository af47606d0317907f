// A machine described by a folder, for trying the library without a player and without Windows.
#include <system_error>

#include "common/ascii.h"
#include "platform/portable/folder_listing.h"
#include "platform/portable/machine.h"

namespace quaylink::portable {
namespace {

namespace fs = std::filesystem;

bool IsFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

void ReadDrives(const fs::path& folder, Machine& machine) {
  machine.drives.clear();
  for (const std::string& name : SortedNames(folder)) {
    const char letter = name.size() == 1 ? AsciiUpper(name[0]) : '\0';
    if (letter < 'A' || letter > 'Z' || !IsFolder(folder / name)) continue;
    machine.drives[letter] = {letter == 'C' ? DRIVE_FIXED : DRIVE_REMOVABLE, folder / name};
  }
}

void ReadDevices(const fs::path& folder, Machine& machine) {
  machine.DetachUsbDevices();
  for (const std::string& hardwareId : SortedNames(folder)) {
    for (const std::string& serial : SortedNames(folder / hardwareId)) {
      machine.AttachUsbDevice(hardwareId, serial);
    }
  }
}

}  // namespace

Machine ReadMachineFolder(const fs::path& folder) {
  Machine machine;
  machine.specialFolders = {
      {CSIDL_PERSONAL, {"C:\\Users\\owner\\Documents"}},
      {CSIDL_APPDATA, {"C:\\Users\\owner\\AppData\\Roaming"}},
      {CSIDL_PROGRAM_FILES_COMMON, {"C:\\Program Files\\Common Files"}},
      {CSIDL_PROGRAM_FILES_COMMONX86, {"C:\\Program Files (x86)\\Common Files"}},
  };
  // A relative folder must stay the same one when the host changes its working folder.
  std::error_code failed;
  const fs::path absolute = fs::absolute(folder, failed);
  machine.update = [root = failed ? folder : absolute](Machine& updated) {
    ReadDrives(root / "drives", updated);
    ReadDevices(root / "usb", updated);
  };
  machine.update(machine);
  return machine;
}

}  // namespace quaylink::portable
