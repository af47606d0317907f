#include "platform/portable/machine.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "common/ascii.h"
#include "common/hardware_id.h"

namespace quaylink::portable {
namespace {

constexpr std::string_view kUsbTree = "SYSTEM\\CurrentControlSet\\Enum\\USB";
constexpr std::string_view kUsbDeviceInterface = "{a5dcbf10-6530-11d2-901f-00c04fb951ed}";

Machine InitialMachine() {
  const char* folder = secure_getenv("QUAYLINK_MACHINE");
  const bool isNamed = folder != nullptr && *folder != '\0';
  Machine machine =
      isNamed ? ReadMachineFolder(folder) : ReadComputer("/sys", "/proc/self/mountinfo");
#if defined(QUAYLINK_ABORT_ON_BAD_HANDLE)
  machine.abortOnBadHandle = true;
#endif
  return machine;
}

}  // namespace

RegistryKey* RegistryKey::Find(std::string_view subkeyName) {
  const auto found = std::ranges::find_if(subkeys, [subkeyName](const RegistryKey& subkey) {
    return EqualsIgnoringCase(subkey.name, subkeyName);
  });
  return found != subkeys.end() ? &*found : nullptr;
}

RegistryKey& RegistryKey::Subkey(std::string_view subkeyName) {
  if (RegistryKey* found = Find(subkeyName)) return *found;
  subkeys.emplace_back().name = subkeyName;
  return subkeys.back();
}

RegistryKey& RegistryKey::At(std::string_view path) {
  RegistryKey* key = this;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('\\'), path.size());
    key = &key->Subkey(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return *key;
}

void Machine::AttachUsbDevice(std::string_view hardwareId, std::string_view serial) {
  std::string name = "USB#";
  name.append(hardwareId).append("#").append(serial).append("#").append(kUsbDeviceInterface);

  RegistryKey& usb = localMachine.At(kUsbTree);
  RegistryKey& parameters = usb.Subkey(hardwareId).Subkey(serial).Subkey("Device Parameters");
  std::string symbolicName = "\\??\\" + name;
  symbolicName.push_back('\0');
  parameters.values = {{"SymbolicName", std::move(symbolicName)}};
  devicePaths.push_back("\\\\?\\" + name);
}

void Machine::AttachUsbDevice(unsigned productId, std::string_view serial) {
  AttachUsbDevice(AppleHardwareId(productId), serial);
}

void Machine::DetachUsbDevices() {
  localMachine.At(kUsbTree).subkeys.clear();
  devicePaths.clear();
}

Machine& CurrentMachine() {
  static Machine machine = InitialMachine();
  return machine;
}

void SetCurrentMachine(Machine machine) {
  CurrentMachine() = std::move(machine);
}

Machine& UpToDateMachine() {
  Machine& machine = CurrentMachine();
  if (machine.update) machine.update(machine);
  return machine;
}

}  // namespace quaylink::portable
