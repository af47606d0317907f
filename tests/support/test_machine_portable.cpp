// The prepared computer as a Machine of the portable layer.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/portable/machine.h"
#include "support/test_machine.h"

namespace quaylink {

namespace fs = std::filesystem;
using portable::CurrentMachine;
using portable::HostPath;

static std::ptrdiff_t CountDescriptors() {
  return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

struct TestMachine::State {
  fs::path folder;  // holds a folder for each drive, and local/
  portable::OpenHandles handlesAtStart = portable::CountOpenHandles();
  std::ptrdiff_t descriptorsAtStart = CountDescriptors();
};

TestMachine::TestMachine() : state_(std::make_unique<State>()) {
  std::string pattern = (fs::temp_directory_path() / "quaylink-test-XXXXXX").string();
  state_->folder = ::mkdtemp(pattern.data());
  fs::create_directory(state_->folder / "local");
  // An empty machine folder gives a computer without drives and devices, but with special folders.
  portable::Machine machine = portable::ReadMachineFolder(state_->folder);
  machine.update = nullptr;
  machine.abortOnBadHandle = true;
  portable::SetCurrentMachine(std::move(machine));
  AddDrive('C', DRIVE_FIXED);
}

TestMachine::~TestMachine() {
  EXPECT_TRUE(portable::CountOpenHandles() == state_->handlesAtStart) << "a handle is still open";
  EXPECT_EQ(CountDescriptors(), state_->descriptorsAtStart) << "a file is still open";
  portable::SetCurrentMachine({});
  fs::remove_all(state_->folder);
}

void TestMachine::AttachDevice(unsigned productId, std::string_view serial) {
  CurrentMachine().AttachUsbDevice(productId, serial);
}

void TestMachine::DetachDevices() {
  CurrentMachine().DetachUsbDevices();
}

void TestMachine::AddRegistryKey(std::string_view keyPath) {
  CurrentMachine().localMachine.At(keyPath);
}

void TestMachine::SetRegistryText(std::string_view keyPath, std::string_view valueName,
                                  std::string_view text) {
  std::string data(text);
  data.push_back('\0');
  CurrentMachine().localMachine.At(keyPath).values.push_back({std::string(valueName), data});
}

bool TestMachine::AddDevicePath(std::string_view devicePath) {
  CurrentMachine().devicePaths.emplace_back(devicePath);
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
  fs::create_directories(HostPath(path));
}

void TestMachine::WriteFile(const std::string& path, std::string_view contents) {
  const fs::path hostPath = HostPath(path);
  fs::create_directories(hostPath.parent_path());
  std::ofstream file(hostPath, std::ios::binary);
  file << contents;
  ASSERT_TRUE(file.flush()) << "cannot write " << path;
}

bool TestMachine::Exists(const std::string& path) const {
  return fs::exists(HostPath(path));
}

std::string TestMachine::ReadFile(const std::string& path) const {
  std::ifstream file(HostPath(path), std::ios::binary);
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

}  // namespace quaylink
