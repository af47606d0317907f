// A computer prepared for one test: attached devices, drives with their files, special folders. It
// starts as a Windows 6.1 with an empty fixed drive C and no device, and is gone when the
// TestMachine is. Over the portable layer it checks at its end that no registry key, device,
// search, object of the shell or local file opened during the test is still open.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/windows_api.h"

namespace quaylink::test {

class TestMachine {
 public:
  TestMachine();
  ~TestMachine();
  TestMachine(const TestMachine&) = delete;
  TestMachine& operator=(const TestMachine&) = delete;

  // Attaches one of Apple's devices, as Windows records it in the registry.
  void AttachDevice(unsigned productId, std::string_view serial = "000A270010203040");
  void DetachDevices();

  // The parts of an attached device, for a test that wants them incomplete. Key paths are below
  // local machine.
  void AddRegistryKey(std::string_view keyPath);
  void SetRegistryText(std::string_view keyPath, std::string_view valueName, std::string_view text);
  // False where no device can have such a path.
  bool AddDevicePath(std::string_view devicePath);

  // Adds an empty drive, DRIVE_REMOVABLE or of another kind.
  void AddDrive(char letter, UINT kind = DRIVE_REMOVABLE);
  void TakeDriveAway(char letter);

  // Files and folders by their Windows path. Folders on the way are made where missing.
  void AddFolder(const std::string& path);
  void WriteFile(const std::string& path, std::string_view contents);
  bool Exists(const std::string& path) const;
  std::string ReadFile(const std::string& path) const;  // a file that is not there fails the test

  // Makes the shell name that folder, or none when the path is empty.
  void SetSpecialFolder(int folderId, const std::string& path);

  // Makes that code page the ANSI code page. False where it is another one and cannot be changed.
  bool UseCodePage(UINT codePage);

  // The path of a file of that name in a folder of the test's own, outside all drives.
  std::string LocalPath(std::string_view name) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace quaylink::test
