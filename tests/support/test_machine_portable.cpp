// The prepared computer as a Machine of the portable layer.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/hardware_id.h"
#include "platform/portable/machine.h"
#include "platform/portable/places.h"
#include "support/test_machine.h"

namespace quaylink::test {

namespace fs = std::filesystem;
using portable::CurrentMachine;

static fs::path ComputerPath(const std::string& path) {
  return portable::FindPlace(path).path;
}

static std::ptrdiff_t CountDescriptors() {
  return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

struct TestMachine::State {
  fs::path folder;  // holds a folder for each drive, and local/
  std::size_t handlesAtStart = portable::CountOpenHandles();
  std::ptrdiff_t descriptorsAtStart = CountDescriptors();
};

TestMachine::TestMachine() : state_(std::make_unique<State>()) {
  std::string pattern = (fs::temp_directory_path() / "quaylink-test-XXXXXX").string();
  state_->folder = ::mkdtemp(pattern.data());
  fs::create_directory(state_->folder / "local");
  // An empty machine folder gives a computer without drives and devices, but with special folders.
  portable::Machine machine = portable::ReadMachineFolder(state_->folder);
  machine.readDevices = nullptr;
  machine.readDrives = nullptr;
  machine.abortOnBadHandle = true;
  portable::SetCurrentMachine(std::move(machine));
  AddDrive('C', DRIVE_FIXED);
}

TestMachine::~TestMachine() {
  EXPECT_EQ(portable::CountOpenHandles(), state_->handlesAtStart) << "a handle is still open";
  EXPECT_EQ(CountDescriptors(), state_->descriptorsAtStart) << "a file is still open";
  portable::SetCurrentMachine({});
  fs::remove_all(state_->folder);
}

void TestMachine::AttachDevice(unsigned productId, std::string_view serial) {
  CurrentMachine().AttachUsbDevice(AppleHardwareId(productId), serial);
}

void TestMachine::DetachDevices() {
  CurrentMachine().DetachUsbDevices();
}

void TestMachine::AddRegistryKey(std::string_view keyPath) {
  CurrentMachine().KeyAt(keyPath);
}

void TestMachine::SetRegistryText(std::string_view keyPath, std::string_view valueName,
                                  std::string_view text) {
  std::string data(text);
  data.push_back('\0');
  CurrentMachine().KeyAt(keyPath).values[std::string(valueName)] = data;
}

bool TestMachine::AddDevicePath(std::string_view devicePath) {
  CurrentMachine().devicePaths.emplace(devicePath);
  return true;
}

void TestMachine::AddDrive(char letter, UINT kind) {
  const fs::path root = state_->folder / std::string(1, letter);
  fs::create_directory(root);
  CurrentMachine().drives[letter] = {kind, root};
}

void TestMachine::TakeDriveAway(char letter) {
  fs::remove_all(CurrentMachine().drives.at(letter).root);
}

void TestMachine::AddFolder(const std::string& path) {
  fs::create_directories(ComputerPath(path));
}

void TestMachine::WriteFile(const std::string& path, std::string_view contents) {
  const fs::path computerPath = ComputerPath(path);
  fs::create_directories(computerPath.parent_path());
  std::ofstream file(computerPath, std::ios::binary);
  file << contents;
  ASSERT_TRUE(file.flush()) << "cannot write " << path;
}

bool TestMachine::Exists(const std::string& path) const {
  return fs::exists(ComputerPath(path));
}

std::string TestMachine::ReadFile(const std::string& path) const {
  std::ifstream file(ComputerPath(path), std::ios::binary);
  EXPECT_TRUE(file) << "cannot read " << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

bool TestMachine::UseCodePage(UINT codePage) {
  CurrentMachine().ansiCodePage = codePage;
  return true;
}

void TestMachine::SetSpecialFolder(int folderId, const std::string& path) {
  if (path.empty()) {
    CurrentMachine().specialFolders.erase(folderId);
  } else {
    CurrentMachine().specialFolders[folderId] = {path};
  }
}

std::string TestMachine::LocalPath(std::string_view name) const {
  return (state_->folder / "local" / name).string();
}

}  // namespace quaylink::test
