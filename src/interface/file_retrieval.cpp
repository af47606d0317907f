// Files off the device: plain copies from a player's drive, or through the bridge from a phone.

#include <array>
#include <string_view>

#include "common/ascii.h"
#include "common/local_file.h"
#include "interface/device_manager.h"
#include "platform/windows_api.h"

namespace quaylink {

namespace {

// Where a phone may keep its database. The first file listed that is one of them is taken.
constexpr std::array<std::string_view, 2> kDatabaseDevicePaths = {
    "/iTunes_Control/iTunes/iTunesDB",
    "/iPod_Control/iTunes/iTunesDB",
};

// The path as spelled above that some listed file equals without regard to case; empty when none
// does.
std::string_view FindDatabase(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    for (const std::string_view path : kDatabaseDevicePaths) {
      if (EqualsIgnoringCase(file, path)) return path;
    }
  }
  return {};
}

// Creates the file, or empties it where it exists.
bool CreateEmptyFile(const char* path) {
  return static_cast<bool>(OpenLocalFile(path, "wb"));
}

bool CopyLocalFile(const char* source, const char* destination) {
  return CopyFileA(source, destination, /*failIfExists=*/0) != 0;
}

// Closes the manager's session on every way out.
class SessionCloser {
 public:
  SessionCloser(DeviceManager& manager, bool closes) : manager_(closes ? &manager : nullptr) {}
  SessionCloser(const SessionCloser&) = delete;
  SessionCloser& operator=(const SessionCloser&) = delete;
  ~SessionCloser() {
    if (manager_) manager_->CloseSession();
  }

 private:
  DeviceManager* manager_;
};

}  // namespace

bool DeviceManager::ListDevice(std::vector<std::string>& files) {
  std::vector<std::string> folders;
  return bridge->ListFolders("/", folders) != 0 && bridge->ListFiles(folders, files) != 0;
}

bool DeviceManager::CopyDatabase(const char* destinationPath) {
  if (!CreateEmptyFile(destinationPath)) return false;
  if (!bridge) {
    const std::string source = std::string(1, driveLetter) + ":\\iPod_Control\\iTunes\\iTunesDB";
    return CopyLocalFile(source.c_str(), destinationPath);
  }
  if (!OpenSession()) return false;
  const SessionCloser closer(*this, true);
  std::vector<std::string> files;
  if (!ListDevice(files)) return false;
  const std::string_view source = FindDatabase(files);
  return !source.empty() && bridge->CopyDeviceFile(destinationPath, std::string(source)) != 0;
}

bool DeviceManager::CopyTrackFile(std::uint32_t recordIndex, const char* destinationPath) {
  if (recordIndex >= trackRecords.size()) return false;
  const char* location = trackRecords[recordIndex].location;
  if (!CreateEmptyFile(destinationPath)) return false;
  if (!bridge) return CopyLocalFile(location, destinationPath);
  if (!OpenSession()) return false;
  const SessionCloser closer(*this, true);
  return bridge->CopyDeviceFile(destinationPath, location) != 0;
}

bool DeviceManager::EnumerateFiles(bool autoConnect, std::vector<std::string>& list) {
  list.clear();
  if (!bridge) return true;
  if (autoConnect && !OpenSession()) return false;
  const SessionCloser closer(*this, autoConnect);
  return ListDevice(list);
}

bool DeviceManager::CopyGenericFile(bool autoConnect, const char* devicePath,
                                    const char* destinationPath) {
  if (!bridge) return CopyLocalFile(devicePath, destinationPath);
  if (autoConnect && !OpenSession()) return false;
  const SessionCloser closer(*this, autoConnect);
  return bridge->CopyDeviceFile(destinationPath, devicePath) != 0;
}

}  // namespace quaylink
