// The library, started for as long as this object lives, and what the commands do with it.
#pragma once

#include <string>
#include <vector>

#include "cli/base/program.h"
#include "cli/collection/track.h"
#include "cli/source/file_copy.h"

namespace quaylink::cli {

enum class DeviceKind { kNone, kDisk, kPhone };

// Advice for a user whose phone does not answer, or who has no device.
std::string AdviceFor(DeviceKind kind);

class Library {
 public:
  explicit Library(const Program& program);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // Looks for an attached device.
  DeviceKind FindDevice();
  // Of the device that was found last.
  DeviceKind Kind() const { return kind_; }
  // Looks for a device, and opens the connection that a phone needs, which stays open for the calls
  // that follow. False when there is no device, or when it does not answer.
  bool Connect() const;
  // Both of these, failing with advice. Comes before everything below that works on a device.
  DeviceKind RequireDevice();

  CopyJob DatabaseJob() const;
  // Copies any file of the device: on a phone a path as ListFiles gives it, else a path on the
  // player's drive.
  CopyJob FileJob(const std::string& devicePath) const;
  CopyJob TrackJob(const Track& track) const;
  // The same for a file that may well be missing.
  CopyJob OptionalFileJob(const std::string& devicePath) const;
  // Every file of a phone, byte for byte as the phone spells it; nothing for a player in disk mode.
  std::vector<std::string> ListFiles() const;

 private:
  CopyJob Job() const;
  bool CopyFile(const std::string& devicePath, const char* localPath) const;
  // True when a person watches a phone being slow.
  bool ShowsSpinner() const;

  const Program& program_;
  DeviceKind kind_ = DeviceKind::kNone;
};

}  // namespace quaylink::cli
