// The phone's files: listing and copying through an open connection.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "common/local_file.h"
#include "mobile/mobile_device_bridge.h"

namespace quaylink {
namespace {

constexpr std::size_t kLongestPath = 255;  // bytes, a folder's trailing "/" included
constexpr std::uint32_t kBlockSize = 24576;

bool Equals(const char* string, const char* literal) {
  return string && std::strcmp(string, literal) == 0;
}

bool CanReadInformation(const EntryPoints& e) {
  return e.afcFileInfoOpen && e.afcKeyValueRead && e.afcKeyValueClose;
}

bool CanList(const MobileDeviceBridge& bridge) {
  const EntryPoints& e = bridge.libraries.entryPoints;
  return bridge.LibrariesLoaded() && bridge.afcConnection != 0 && e.afcDirectoryOpen &&
         e.afcDirectoryClose && e.afcDirectoryRead && CanReadInformation(e);
}

bool CanCopy(const MobileDeviceBridge& bridge) {
  const EntryPoints& e = bridge.libraries.entryPoints;
  return bridge.LibrariesLoaded() && bridge.afcConnection != 0 && e.afcFileRefOpen &&
         e.afcFileRefRead && e.afcFileRefClose && CanReadInformation(e);
}

// An open folder of the phone.
class Directory {
 public:
  Directory(const MobileDeviceBridge& bridge, const char* path)
      : entryPoints_(bridge.libraries.entryPoints),
        open_(entryPoints_.afcDirectoryOpen(bridge.afcConnection, path, &handle_) == 0) {}
  ~Directory() {
    if (open_) entryPoints_.afcDirectoryClose(nullptr, handle_);
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  bool IsOpen() const { return open_; }

  // The next entry's name, valid until the next call; null at the end or when the phone fails.
  const char* ReadName() {
    const char* name = nullptr;
    return entryPoints_.afcDirectoryRead(nullptr, handle_, &name) == 0 ? name : nullptr;
  }

 private:
  const EntryPoints& entryPoints_;
  AfcDirectory* handle_ = nullptr;
  bool open_;
};

// The key/value pairs that the phone gives about one of its entries.
class Information {
 public:
  Information(const MobileDeviceBridge& bridge, const char* path)
      : entryPoints_(bridge.libraries.entryPoints) {
    if (entryPoints_.afcFileInfoOpen(bridge.afcConnection, path, &handle_) != 0) handle_ = nullptr;
  }
  ~Information() {
    if (handle_) entryPoints_.afcKeyValueClose(handle_);
  }
  Information(const Information&) = delete;
  Information& operator=(const Information&) = delete;

  bool IsOpen() const { return handle_ != nullptr; }

  // Moves on to the next pair; false after the last one or when the phone fails.
  bool ReadPair() {
    key_ = nullptr;
    value_ = nullptr;
    return entryPoints_.afcKeyValueRead(handle_, &key_, &value_) == 0 && key_;
  }
  const char* Key() const { return key_; }
  const char* Value() const { return value_; }  // null when the phone gave none

 private:
  const EntryPoints& entryPoints_;
  AfcInformation* handle_ = nullptr;
  const char* key_ = nullptr;
  const char* value_ = nullptr;
};

// A file of the phone, open for reading.
class DeviceFile {
 public:
  DeviceFile(const MobileDeviceBridge& bridge, const char* path) : bridge_(bridge) {
    // A library that fills only the lower half of the reference finds the upper one zero.
    const Status status = bridge.libraries.entryPoints.afcFileRefOpen(bridge.afcConnection, path,
                                                                      kOpenForReading, &reference_);
    if (status != 0) reference_ = 0;
  }
  ~DeviceFile() {
    if (IsOpen()) bridge_.libraries.entryPoints.afcFileRefClose(bridge_.afcConnection, reference_);
  }
  DeviceFile(const DeviceFile&) = delete;
  DeviceFile& operator=(const DeviceFile&) = delete;

  bool IsOpen() const { return reference_ != 0; }

  // The number of bytes delivered, 1 to `wanted`; 0 when the phone fails or delivers what cannot
  // be.
  std::uint32_t Read(void* buffer, std::uint32_t wanted) {
    std::uint32_t length = wanted;
    const Status status = bridge_.libraries.entryPoints.afcFileRefRead(bridge_.afcConnection,
                                                                       reference_, buffer, &length);
    return status == 0 && length <= wanted ? length : 0;
  }

 private:
  const MobileDeviceBridge& bridge_;
  FileReference reference_ = 0;
};

enum class Wanted { kFolders, kFiles };

// Whether the phone's information on the entry at `path` shows it as what is wanted. An entry
// without a format, or without information, is neither a folder nor a file.
bool IsWanted(const MobileDeviceBridge& bridge, const std::string& path, Wanted wanted) {
  Information information(bridge, path.c_str());
  if (!information.IsOpen()) return false;
  bool found = false;
  while (information.ReadPair()) {
    if (!Equals(information.Key(), "st_ifmt")) continue;
    const bool isFolder = Equals(information.Value(), "S_IFDIR");
    if (isFolder == (wanted == Wanted::kFolders)) found = true;
  }
  return found;
}

// Appends the paths of a folder's entries of the wanted kind. False when the folder cannot be
// opened.
bool AppendEntries(const MobileDeviceBridge& bridge, const std::string& folder, Wanted wanted,
                   std::vector<std::string>& paths) {
  if (folder.size() > kLongestPath) return false;
  Directory directory(bridge, folder.c_str());
  if (!directory.IsOpen()) return false;
  std::string path;
  while (const char* name = directory.ReadName()) {
    if (wanted == Wanted::kFolders && (Equals(name, ".") || Equals(name, ".."))) continue;
    path.assign(folder).append(name);
    if (path.size() > kLongestPath || !IsWanted(bridge, path, wanted)) continue;
    if (wanted == Wanted::kFolders) path.push_back('/');
    if (path.size() <= kLongestPath) paths.push_back(path);
  }
  return true;
}

// The size that the phone states for a file: 0 when it states none or a string without digits.
// Nothing when it has no information on the file.
std::optional<long long> StatedSize(const MobileDeviceBridge& bridge, const char* path) {
  Information information(bridge, path);
  if (!information.IsOpen()) return std::nullopt;
  long long size = 0;
  while (information.ReadPair()) {
    if (!Equals(information.Key(), "st_size")) continue;
    size = information.Value() ? std::strtoll(information.Value(), nullptr, 10) : 0;
  }
  return size;
}

}  // namespace

std::int32_t MobileDeviceBridge::ListFolders(const std::string& startPath,
                                             std::vector<std::string>& folders) {
  folders.clear();
  if (!CanList(*this)) return 0;
  folders.push_back(startPath);
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const std::string folder = folders[i];  // the list grows while this folder is read
    if (!AppendEntries(*this, folder, Wanted::kFolders, folders)) return 0;
  }
  return 1;
}

// A copy of the list, so that `files` may be the caller's same list.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::int32_t MobileDeviceBridge::ListFiles(std::vector<std::string> folders,
                                           std::vector<std::string>& files) {
  files.clear();
  if (!CanList(*this)) return 0;
  for (const std::string& folder : folders) {
    if (!AppendEntries(*this, folder, Wanted::kFiles, files)) return 0;
  }
  return 1;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::int32_t MobileDeviceBridge::CopyDeviceFile(std::string localPath, std::string devicePath) {
  if (!CanCopy(*this)) return 0;
  const LocalFile localFile = OpenLocalFile(localPath.c_str(), "wb+");
  if (!localFile) return 0;
  const std::optional<long long> size = StatedSize(*this, devicePath.c_str());
  if (!size || *size <= 0) return 0;
  DeviceFile deviceFile(*this, devicePath.c_str());
  if (!deviceFile.IsOpen()) return 0;

  std::array<char, kBlockSize> block;
  for (auto remaining = static_cast<std::uint64_t>(*size); remaining != 0;) {
    const auto wanted = static_cast<std::uint32_t>(std::min<std::uint64_t>(kBlockSize, remaining));
    const std::uint32_t delivered = deviceFile.Read(block.data(), wanted);
    if (delivered == 0) return 0;
    static_cast<void>(std::fwrite(block.data(), 1, delivered, localFile.get()));
    remaining -= delivered;
  }
  return 1;
}

}  // namespace quaylink
