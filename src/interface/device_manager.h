// The one object behind the exported functions: which device there is, how it is reached, and the
// tracks that were last parsed.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "itunesdb/tracks.h"
#include "mobile/mobile_device_bridge.h"
#include "quaylink/quaylink.h"

namespace quaylink {

// Every operation answers true for success, and fails without a report otherwise; the public header
// tells what a failure leaves behind. Paths are NUL-terminated and not null. std::bad_alloc passes
// through, and leaves the manager usable.
class DeviceManager {
 public:
  // 'B' to 'Z' of the player that the last detection on the disk road found, or 0.
  char driveLetter = 0;
  std::vector<TrackRecord> trackRecords;  // of the last successful parse, by track id
  // There from the first detection of a phone on. With it the file operations take the mobile road.
  std::unique_ptr<MobileDeviceBridge> bridge;
  bool sessionOpen = false;

  DeviceManager() = default;
  DeviceManager(const DeviceManager&) = delete;
  DeviceManager& operator=(const DeviceManager&) = delete;
  // Empties the database, then lets the bridge go. Does not close an open session.
  ~DeviceManager();

  // Finds out whether a device is attached and which road leads to it.
  bool Detect();
  // Opens the phone's session where there is a bridge and none is open.
  bool OpenSession();
  bool CloseSession();

  // Reads the database file and makes the track records anew. A failure leaves the records as they
  // were.
  bool Parse(const char* databasePath);

  bool CopyDatabase(const char* destinationPath);
  bool CopyTrackFile(std::uint32_t recordIndex, const char* destinationPath);
  // Empties the list, then fills it with the path of every file of a phone.
  bool EnumerateFiles(bool autoConnect, std::vector<std::string>& list);
  bool CopyGenericFile(bool autoConnect, const char* devicePath, const char* destinationPath);

 private:
  bool FindDriveLetter(char& letter) const;
  bool ListDevice(std::vector<std::string>& files);
  void BuildTrackRecords(const TrackListChunk& trackList);
};

}  // namespace quaylink
