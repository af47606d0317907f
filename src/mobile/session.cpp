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
constexpr std::size_t kIdentifierText = 24;
constexpr std::size_t kWorkFolderReadiness = 28;  // the same, with the libraries of the work folder

constexpr int kWaitTests = 20;
constexpr DWORD kWaitMilliseconds = 100;

// Disconnects at its end, unless told that all went well.
class Undo {
 public:
  explicit Undo(MobileDeviceBridge& bridge) : bridge_(&bridge) {}
  ~Undo() {
    if (bridge_ != nullptr) bridge_->Disconnect();
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

  NotificationHandle subscription = 0;
  if (entryPoints.amDeviceNotificationSubscribe(OnDeviceNotification, 0, 0, 0, &subscription) !=
      0) {
    return 0;
  }
  StoreSubscription(subscription);
  const bool deviceKnown = WaitForDevice();
  // The callback has cancelled it as a rule. It has not when no device came, when the device was
  // known from an earlier attempt, or when it ran before the handle was stored.
  CancelSubscription();
  if (!deviceKnown) return 0;

  void* const device = DeviceArgument();
  if (entryPoints.amDeviceConnect(device) != 0) return 0;
  deviceConnected = 1;
  Undo undo(*this);

  // A pairing that fails does not end the attempt: the session's start decides.
  if (pairIfNeeded) EnsurePairing();
  if (entryPoints.amDeviceStartSession(device) != 0) return 0;
  sessionStarted = 1;

  const StringEncoding encoding = entryPoints.cfStringGetSystemEncoding();
  Allocator* const allocator = entryPoints.cfAllocatorGetDefault();
  ServiceName* const name =
      entryPoints.cfStringCreateWithCString(allocator, "com.apple.afc", encoding);
  ServiceHandle service = 0;
  std::uint32_t unusedWord = 0;
  if (entryPoints.amDeviceStartService(device, name, &service, &unusedWord) != 0) return 0;
  if (entryPoints.afcConnectionOpen(service, 0, &afcConnection) != 0) return 0;
  undo.Dismiss();
  return 1;
}

std::int32_t MobileDeviceBridge::Disconnect() {
  if (afcConnection != 0) {
    if (entryPoints.afcConnectionClose != nullptr) entryPoints.afcConnectionClose(afcConnection);
    afcConnection = 0;
  }
  if (sessionStarted != 0) {
    if (entryPoints.amDeviceStopSession != nullptr) {
      entryPoints.amDeviceStopSession(DeviceArgument());
    }
    sessionStarted = 0;
  }
  if (deviceConnected != 0) {
    if (entryPoints.amDeviceDisconnect != nullptr) entryPoints.amDeviceDisconnect(DeviceArgument());
    deviceConnected = 0;
  }
  ClearDeviceRecord();
  return 1;
}

bool MobileDeviceBridge::CanConnect(bool pairIfNeeded) const {
  const EntryPoints& e = entryPoints;
  const bool canPair = e.amDeviceIsPaired != nullptr && e.amDeviceValidatePairing != nullptr &&
                       e.amDevicePair != nullptr;
  return e.cfStringCreateWithCString != nullptr && e.cfAllocatorGetDefault != nullptr &&
         e.cfStringGetSystemEncoding != nullptr && e.amDeviceNotificationSubscribe != nullptr &&
         e.amDeviceConnect != nullptr && e.amDeviceStartSession != nullptr &&
         e.amDeviceStartService != nullptr && e.afcConnectionOpen != nullptr &&
         (canPair || !pairIfNeeded);
}

bool MobileDeviceBridge::WaitForDevice() const {
  const std::size_t readinessWord = loadedFromWorkFolder != 0 ? kWorkFolderReadiness : kReadiness;
  for (int test = 0; test < kWaitTests; ++test) {
    if (DeviceRecordWord(readinessWord) != 0) return true;
    Sleep(kWaitMilliseconds);
  }
  return false;
}

std::int32_t MobileDeviceBridge::EnsurePairing() {
  void* const device = DeviceArgument();
  if (entryPoints.amDeviceIsPaired(device) != 0) {
    return entryPoints.amDeviceValidatePairing(device) == 0 ? 1 : 0;
  }
  MakeLockdownFolder();
  if (entryPoints.amDevicePair(device) != 0) return 0;
  // The record holds the text's address as a 32-bit word on every build.
  const auto address = static_cast<std::uintptr_t>(DeviceRecordWord(kIdentifierText));
  SetPairingRecordPath(
      reinterpret_cast<const char*>(address));  // NOLINT(performance-no-int-to-ptr)
  return 1;
}

void MobileDeviceBridge::SetPairingRecordPath(const char* identifierText) {
  // The file at this path is deleted at the end: it must be one of the pairing folder.
  const std::string_view identifier = identifierText != nullptr ? identifierText : "";
  if (identifier.empty() || identifier.find_first_of("\\/:") != std::string_view::npos) return;
  std::string path = GetSpecialFolderPath(CSIDL_APPDATA) + "\\Apple Computer\\Lockdown\\";
  path.append(identifier).append(".plist");
  pairingRecordPath = std::move(path);
}

}  // namespace quaylink
