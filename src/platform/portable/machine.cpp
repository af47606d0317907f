#include "platform/portable/machine.h"

#include <cstdlib>
#include <utility>

namespace quaylink::portable {
namespace {

constexpr std::string_view kUsbDeviceInterface = "{a5dcbf10-6530-11d2-901f-00c04fb951ed}";

Machine InitialMachine() {
  const char* folder = secure_getenv("QUAYLINK_MACHINE");
  const bool isNamed = folder && *folder != '\0';
  Machine machine =
      isNamed ? ReadMachineFolder(folder) : ReadComputer("/sys", "/proc/self/mountinfo");
#if defined(QUAYLINK_ABORT_ON_BAD_HANDLE)
  machine.abortOnBadHandle = true;
#endif
  return machine;
}

}  // namespace

RegistryKey& Machine::KeyAt(std::string_view path) {
  const std::size_t end = path.rfind('\\');
  if (end != path.npos) KeyAt(path.substr(0, end));
  return registry[std::string(path)];
}

void Machine::AttachUsbDevice(std::string_view hardwareId, std::string_view serial) {
  std::string name = "USB#";
  name.append(hardwareId).append("#").append(serial).append("#").append(kUsbDeviceInterface);
  std::string key(kUsbTree);
  key.append("\\").append(hardwareId).append("\\").append(serial).append("\\Device Parameters");
  KeyAt(key).values["SymbolicName"] = "\\??\\" + name + '\0';
  devicePaths.insert("\\\\?\\" + name);
}

void Machine::DetachUsbDevices() {
  const std::string tree(kUsbTree);
  registry.erase(registry.lower_bound(tree + '\\'), registry.lower_bound(tree + char{'\\' + 1}));
  KeyAt(tree);
  devicePaths.clear();
}

Machine& CurrentMachine() {
  static Machine machine = InitialMachine();
  return machine;
}

void SetCurrentMachine(Machine machine) {
  CurrentMachine() = std::move(machine);
}

}  // namespace quaylink::portable
