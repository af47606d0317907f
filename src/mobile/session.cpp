// The session with a phone: announcement, connection, pairing, file service.
#include <string_view>
#include <utility>

#include "mobile/device_notification.h"
#include "mobile/mobile_device_bridge.h"
#include "mobile/special_folders.h"

namespace quaylink {
namespace {

// Words of the device record, by byte offset.
constexpr std::size_t kReadiness = 16;  // non-zero once the device is known
constexpr std::size_t kIdentifier = 24;
constexpr std::size_t kWorkFolderReadiness = 28;  // the same, with the libraries of the work folder

constexpr int kWaitTests = 20;
constexpr DWORD kWaitMilliseconds = 100;

// Disconnects at its end, unless told that all went well.
class Undo {
 public:
  explicit Undo(MobileDeviceBridge& bridge) : bridge_(&bridge) {}
  ~Undo() {
    if (bridge_) bridge_->Disconnect();
  }
  Undo(const Undo&) = delete;
  Undo& operator=(const Undo&) = delete;

  void Dismiss() { bridge_ = nullptr; }

 private:
  MobileDeviceBridge* bridge_;
};

void MakeLockdownFolder() {
  std::string path = GetSpecialFolderPath(CSIDL_APPDATA) + "\\Apple Computer";
  CreateDirectoryA(path.c_str(), nullptr);
  path += "\\Lockdown";
  CreateDirectoryA(path.c_str(), nullptr);
}

}  // namespace

std::int32_t MobileDeviceBridge::Connect(bool pairIfNeeded) {
  if (!LibrariesLoaded() || !CanConnect(pairIfNeeded)) return 0;

  const EntryPoints& e = libraries.entryPoints;
  NotificationHandle subscription = 0;
  if (e.amDeviceNotificationSubscribe(OnDeviceNotification, 0, 0, 0, &subscription) != 0) return 0;
  StoreSubscription(subscription);
  const bool deviceKnown = WaitForDevice();
  // The callback has cancelled it as a rule. It has not when no device came, when the device was
  // known from an earlier attempt, or when it ran before the handle was stored.
  CancelSubscription();
  if (!deviceKnown) return 0;

  void* const device = DeviceArgument();
  if (e.amDeviceConnect(device) != 0) return 0;
  deviceConnected = 1;
  Undo undo(*this);

  // A pairing that fails does not end the attempt: the session's start decides.
  if (pairIfNeeded) EnsurePairing();
  if (e.amDeviceStartSession(device) != 0) return 0;
  sessionStarted = 1;

  const StringEncoding encoding = e.cfStringGetSystemEncoding();
  Allocator* const allocator = e.cfAllocatorGetDefault();
  ServiceName* const name = e.cfStringCreateWithCString(allocator, "com.apple.afc", encoding);
  ServiceHandle service = 0;
  std::uint32_t unusedWord = 0;
  if (e.amDeviceStartService(device, name, &service, &unusedWord) != 0) return 0;
  AfcConnection connection = 0;  // of no meaning when the call fails
  if (e.afcConnectionOpen(service, 0, &connection) != 0) return 0;
  afcConnection = connection;
  undo.Dismiss();
  return 1;
}

std::int32_t MobileDeviceBridge::Disconnect() {
  const EntryPoints& e = libraries.entryPoints;
  if (afcConnection != 0) {
    if (e.afcConnectionClose) e.afcConnectionClose(afcConnection);
    afcConnection = 0;
  }
  if (sessionStarted != 0) {
    if (e.amDeviceStopSession) e.amDeviceStopSession(DeviceArgument());
    sessionStarted = 0;
  }
  if (deviceConnected != 0) {
    if (e.amDeviceDisconnect) e.amDeviceDisconnect(DeviceArgument());
    deviceConnected = 0;
  }
  ClearDeviceRecord();
  return 1;
}

bool MobileDeviceBridge::CanConnect(bool pairIfNeeded) const {
  const EntryPoints& e = libraries.entryPoints;
  const bool canPair = e.amDeviceIsPaired && e.amDeviceValidatePairing && e.amDevicePair;
  return e.cfStringCreateWithCString && e.cfAllocatorGetDefault && e.cfStringGetSystemEncoding &&
         e.amDeviceNotificationSubscribe && e.amDeviceConnect && e.amDeviceStartSession &&
         e.amDeviceStartService && e.afcConnectionOpen && (canPair || !pairIfNeeded);
}

bool MobileDeviceBridge::WaitForDevice() const {
  const std::size_t readinessWord =
      libraries.loadedFromWorkFolder ? kWorkFolderReadiness : kReadiness;
  for (int test = 0; test < kWaitTests; ++test) {
    if (DeviceRecordWord(readinessWord) != 0) return true;
    Sleep(kWaitMilliseconds);
  }
  return false;
}

std::int32_t MobileDeviceBridge::EnsurePairing() {
  const EntryPoints& e = libraries.entryPoints;
  void* const device = DeviceArgument();
  if (e.amDeviceIsPaired(device) != 0) {
    return e.amDeviceValidatePairing(device) == 0 ? 1 : 0;
  }
  MakeLockdownFolder();
  if (e.amDevicePair(device) != 0) return 0;
  // The record holds the string's address as a 32-bit word on every build.
  const auto address = static_cast<std::uintptr_t>(DeviceRecordWord(kIdentifier));
  SetPairingRecordPath(
      reinterpret_cast<const char*>(address));  // NOLINT(performance-no-int-to-ptr)
  return 1;
}

void MobileDeviceBridge::SetPairingRecordPath(const char* identifier) {
  // The file at this path is deleted at the end: it must be one of the pairing folder.
  const std::string_view name = identifier ? identifier : "";
  if (name.empty() || name.find_first_of("\\/:") != std::string_view::npos) return;
  std::string path = GetSpecialFolderPath(CSIDL_APPDATA) + "\\Apple Computer\\Lockdown\\";
  path.append(name).append(".plist");
  pairingRecordPath = std::move(path);
}

}  // namespace quaylink
