// The library, started for as long as this object lives, and what the commands do with it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "cli/file_copy.h"
#include "cli/program.h"
#include "cli/track.h"

namespace quaylink::cli {

enum class DeviceKind { kNone, kDisk, kPhone };

// Advice for a user whose phone does not answer, or who has no device.
std::string AdviceFor(DeviceKind kind);

struct Database {
  std::vector<Track> tracks;
  // What is wrong with the database although it gave these tracks: a message, empty when it seems
  // whole.
  std::string problem;
};

class Library {
 public:
  explicit Library(const Program& program);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // Looks for an attached device.
  DeviceKind FindDevice();
  // Looks for a device, and opens the connection that a phone needs, which stays open for the calls
  // that follow. False when there is no device, or when it does not answer.
  bool Connect() const;
  // Both of these, failing with advice. Comes before everything below that works on a device.
  DeviceKind RequireDevice();

  CopyJob DatabaseJob() const;
  // The track must be of the last database read.
  CopyJob TrackJob(const Track& track) const;
  // Copies any file of the device: on a phone a path as ListFiles gives it, else a path on the
  // player's drive.
  CopyJob FileJob(const std::string& devicePath) const;

  // Reads a local database; fails, when it gives no tracks and is not whole, with a message that
  // calls it by the name given.
  Database ReadDatabase(const std::filesystem::path& file, const std::string& name) const;
  // Reads the device's database by way of a temporary copy.
  Database ReadDeviceDatabase() const;
  // Every file of a phone, byte for byte as the phone spells it; nothing for a player in disk mode.
  std::vector<std::string> ListFiles() const;

 private:
  CopyJob Job() const;
  bool CopyFromPhone(const std::string& devicePath, const char* localPath) const;
  // True when a person watches a phone being slow.
  bool ShowsSpinner() const;

  const Program& program_;
  DeviceKind kind_ = DeviceKind::kNone;
};

}  // namespace quaylink::cli
