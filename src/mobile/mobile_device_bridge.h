// The bridge to a phone through the vendor's own libraries: it opens and closes the session with
// the phone, and reads the phone's files. The libraries are loaded once, at creation, and never
// again. At most one bridge exists at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mobile/phone_libraries.h"

namespace quaylink {

class MobileDeviceBridge {
 public:
  // Loads the libraries from the vendor's folder or, failing that, from a work folder that is
  // filled for it. Creation succeeds without libraries too: LibrariesLoaded() tells.
  MobileDeviceBridge();
  // Works with the libraries that are handed in.
  explicit MobileDeviceBridge(PhoneLibraries given);
  // Deletes the pairing record that this bridge made, and unloads the libraries. Closes no
  // connection. A CoreFoundation.dll from the work folder stays loaded until the process ends.
  ~MobileDeviceBridge();
  MobileDeviceBridge(const MobileDeviceBridge&) = delete;
  MobileDeviceBridge& operator=(const MobileDeviceBridge&) = delete;

  bool LibrariesLoaded() const;

  // Opens a session and a file connection with the attached phone. Waits up to about two seconds
  // for it to be announced. `pairIfNeeded` pairs a phone that does not know this computer yet.
  // Returns 1 when the connection is open; otherwise 0, with all that it opened closed again.
  std::int32_t Connect(bool pairIfNeeded);

  // Closes whatever Connect has opened. Always returns 1.
  std::int32_t Disconnect();

  // Lists every folder below `startPath`, itself first, breadth first. Paths end with "/". Returns
  // 0 when a folder cannot be opened; `folders` then holds what was found so far. Entries whose
  // path would be longer than 255 bytes are left out.
  std::int32_t ListFolders(const std::string& startPath, std::vector<std::string>& folders);

  // Lists every entry of `folders` that is not a folder, folder by folder. Returns 0 when one
  // cannot be opened; `files` then holds the entries of those before it.
  std::int32_t ListFiles(std::vector<std::string> folders, std::vector<std::string>& files);

  // Copies a file of the phone to a local file, which is created or emptied first. Returns 1 when
  // as many bytes as the phone states were read, else 0; what was read so far stays in the local
  // file. Errors in writing are not noticed. A file that states no bytes cannot be copied.
  std::int32_t CopyDeviceFile(std::string localPath, std::string devicePath);

  AfcConnection afcConnection = 0;    // 0 when none is open
  std::uint32_t deviceConnected = 0;  // 1 after AMDeviceConnect, until Disconnect
  std::uint32_t sessionStarted = 0;   // 1 after AMDeviceStartSession, until Disconnect
  PhoneLibraries libraries;
  // Of a pairing record that this bridge made; empty when there is none.
  std::string pairingRecordPath;

 private:
  bool CanConnect(bool pairIfNeeded) const;
  bool WaitForDevice() const;
  std::int32_t EnsurePairing();
  void SetPairingRecordPath(const char* identifier);
};

}  // namespace quaylink
