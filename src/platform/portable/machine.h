// The computer that the portable Windows functions see. A test fills one in a few lines and makes
// it current; otherwise it is read from the folder that QUAYLINK_MACHINE names, and without that it
// is the computer itself. Windows paths and registry texts are in the machine's ANSI code page,
// host paths in UTF-8.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/portable/windows_functions.h"

namespace quaylink::portable {

struct RegistryValue {
  std::string name;
  std::string data;  // the stored bytes, a text's terminating NUL included where it has one
};

struct RegistryKey {
  std::string name;
  std::vector<RegistryKey> subkeys;  // in the order in which they are enumerated
  std::vector<RegistryValue> values;
  bool refusesToOpen = false;

  // The subkey of that name (without regard to case), or null.
  RegistryKey* Find(std::string_view subkeyName);
  // The same, added at the end when missing.
  RegistryKey& Subkey(std::string_view subkeyName);
  // The key at a path of names separated by backslashes, added where missing.
  RegistryKey& At(std::string_view path);
};

struct Drive {
  UINT kind;
  std::filesystem::path root;  // the folder that holds the drive's contents
};

// In which form the shell hands a folder's name out, or at which step its look-up fails.
enum class ShellName { kWide, kOffset, kInline, kUnknownKind, kNoLocation, kNoDisplayName };

struct SpecialFolder {
  std::string path;  // a Windows path, without a trailing backslash
  ShellName name = ShellName::kWide;
};

struct Machine {
  DWORD platformId = VER_PLATFORM_WIN32_NT;
  DWORD majorVersion = 6;
  DWORD minorVersion = 1;
  RegistryKey localMachine;
  std::vector<std::string> devicePaths;  // those that CreateFileA can open, without regard to case
  std::map<char, Drive> drives;          // by upper-case letter
  std::map<int, SpecialFolder> specialFolders;  // by folder number
  bool shellHasDesktop = true;
  bool shellHasAllocator = true;
  UINT ansiCodePage = CP_UTF8;  // or 1252; 932 too, but nothing is converted to that
  std::string hostProgramPath = "C:\\Program Files\\Host\\host.exe";
  // When a closed or foreign handle is used; else the call just fails.
  bool abortOnBadHandle = false;
  std::function<void(DWORD)> sleep;          // in place of waiting, when set
  std::function<HRESULT(GUID*)> createGuid;  // in place of the system's random source, when set
  // Reads devices and drives anew from where they come from, when set.
  std::function<void(Machine&)> update;

  // Adds the registry entries and the device path of an attached USB device, as Windows would. A
  // hardware id is of the form VID_05AC&PID_1261; a product id alone means one of Apple's.
  void AttachUsbDevice(std::string_view hardwareId, std::string_view serial);
  void AttachUsbDevice(unsigned productId, std::string_view serial);
  // Leaves no attached device, and an empty USB tree in the registry.
  void DetachUsbDevices();
};

// The machine described by a folder: drives/<letter>/… (C is fixed, the others removable) and
// usb/<VID_xxxx&PID_xxxx>/<serial> for each attached device.
Machine ReadMachineFolder(const std::filesystem::path& folder);

// The computer that the program runs on: Apple's USB devices in sysfs, and removable volumes as
// drives from D on, in the order of the mount table (of the form of /proc/self/mountinfo). It has
// no special folders.
Machine ReadComputer(const std::filesystem::path& sysfs, const std::filesystem::path& mountTable);

// The machine that all functions of this layer work on, until it is replaced.
Machine& CurrentMachine();
void SetCurrentMachine(Machine machine);

// The current machine with its devices and drives read anew.
Machine& UpToDateMachine();

// The host's own path of a local path (see windows_functions.h). Empty for a path that cannot be on
// this machine: a drive that it does not have, a network or device path, a name with a character
// that Windows refuses. Components that do not exist keep their spelling.
std::filesystem::path HostPath(std::string_view localPath);

// Handles that are open now: what a test compares before and after an operation.
struct OpenHandles {
  int registryKeys = 0;
  int devices = 0;
  int searches = 0;
  int shellObjects = 0;  // identifier lists, names, desktop folders and allocators handed out
  bool operator==(const OpenHandles&) const = default;
};
OpenHandles CountOpenHandles();

}  // namespace quaylink::portable
