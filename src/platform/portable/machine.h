// The computer that the portable Windows functions see. A test fills one in a few lines and makes
// it current; otherwise it is read from the folder that QUAYLINK_MACHINE names, and without that it
// is the computer itself. Windows paths and registry strings are in the machine's ANSI code page,
// the computer's own paths in UTF-8.
#pragma once

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "common/ascii.h"
#include "platform/portable/windows_functions.h"

namespace quaylink::portable {

// The order in which Windows lists names, and in which case makes no difference.
struct NameOrder {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const {
    const auto upper = [](char c) { return static_cast<unsigned char>(AsciiUpper(c)); };
    return std::ranges::lexicographical_compare(a, b, {}, upper, upper);
  }
};

struct RegistryKey {
  // The stored bytes by the value's name, a string's terminating NUL included where it has one.
  std::map<std::string, std::string, NameOrder> values;
  bool refusesToOpen = false;
};

struct Drive {
  UINT kind;
  std::filesystem::path root;  // the folder that holds the drive's contents
};

// In which form the shell hands a folder's name out (0 to 2 are its own numbers for them), or none
// for a folder that it only locates.
enum class ShellName : UINT { kWide, kOffset, kInline, kUnknownKind, kNone };

struct SpecialFolder {
  std::string path;  // a Windows path, without a trailing backslash
  ShellName name = ShellName::kWide;
};

struct Machine {
  DWORD platformId = VER_PLATFORM_WIN32_NT;
  DWORD majorVersion = 6;
  DWORD minorVersion = 1;
  // By the path below local machine. Every key has those above it.
  std::map<std::string, RegistryKey, NameOrder> registry;
  std::set<std::string, NameOrder> devicePaths;  // those that CreateFileA can open
  std::map<char, Drive> drives;                  // by upper-case letter
  std::map<int, SpecialFolder> specialFolders;   // by folder number
  bool shellHasDesktop = true;
  bool shellHasAllocator = true;
  UINT ansiCodePage = CP_UTF8;  // or 1252; 932 too, but nothing is converted to that
  std::string hostProgramPath = "C:\\Program Files\\Host\\host.exe";
  // When a closed or foreign handle is used; else the call just fails.
  bool abortOnBadHandle = false;
  std::function<void(DWORD)> sleep;          // in place of waiting, when set
  std::function<HRESULT(GUID*)> createGuid;  // in place of the system's random source, when set
  // These read anew what comes and goes, when set: the devices when a listing of the registry's USB
  // tree begins, the drives when a look at their letters begins or one is missing.
  std::function<void(Machine&)> readDevices;
  std::function<void(Machine&)> readDrives;
  char lastLetterAskedFor = '\0';  // by GetDriveTypeA: a look at the letters is in their order

  // The key at a path, added where missing.
  RegistryKey& KeyAt(std::string_view path);

  // Adds the registry keys and the device path of an attached USB device, as Windows would. A
  // hardware id is of the form VID_05AC&PID_1261.
  void AttachUsbDevice(std::string_view hardwareId, std::string_view serial);
  // Leaves no attached device, and an empty USB tree in the registry.
  void DetachUsbDevices();
};

// Where the registry lists USB devices, below local machine.
inline constexpr std::string_view kUsbTree = "SYSTEM\\CurrentControlSet\\Enum\\USB";

// The machine described by a folder: drives/<letter>/… (C is fixed, the others removable) and
// usb/<VID_xxxx&PID_xxxx>/<serial> for each attached device.
Machine ReadMachineFolder(const std::filesystem::path& folder);

// The computer that the program runs on: Apple's USB devices in sysfs, and as drives from D on the
// folders at which removable volumes are mounted, in the order of the mount table (of the form of
// /proc/self/mountinfo). It has no special folders.
Machine ReadComputer(const std::filesystem::path& sysfs, const std::filesystem::path& mountTable);

// The machine that all functions of this layer work on, until it is replaced.
Machine& CurrentMachine();
void SetCurrentMachine(Machine machine);

// A string of the current machine's ANSI code page in UTF-16 and in UTF-8, and back ("?" for what
// the code page lacks).
std::u16string WideStringOf(std::string_view ansi);
std::string Utf8StringOf(std::string_view ansi);
std::string AnsiStringOf(std::string_view utf8);

// How many registry keys, devices, searches and objects of the shell (identifier lists, names,
// desktop folders, allocators) are open or handed out: what a test compares with later.
std::size_t CountOpenHandles();

}  // namespace quaylink::portable
