// The prepared computer as a real Windows: its registry, its drives, its shell. Since that changes
// the computer, it is done only where scripts/wine-run has made one for the purpose:
// QUAYLINK_TEST_DRIVES then names the folder that holds the folder behind each removable drive
// letter. Device paths are Wine's way to have them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <system_error>
#include <vector>

#include "common/hardware_id.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

namespace fs = std::filesystem;

constexpr char kUsbKey[] = "SYSTEM\\CurrentControlSet\\Enum\\USB";
constexpr char kLocalFolder[] = "C:\\Local";

std::string EnvironmentText(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

// Runs no test on a Windows that is not there to be changed.
class PreparedWindows : public testing::Environment {
 public:
  void SetUp() override {
    if (EnvironmentText("QUAYLINK_TEST_DRIVES").empty()) {
      GTEST_SKIP()
          << "this Windows was not prepared for tests: run them with scripts/check-windows";
    }
  }
};
[[maybe_unused]] const testing::Environment* const kPreparedWindows =
    testing::AddGlobalTestEnvironment(new PreparedWindows);

void DeleteKeyTree(HKEY parent, const char* name) {
  HKEY key = nullptr;
  if (RegOpenKeyExA(parent, name, 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS) return;
  char subkey[256];
  while (RegEnumKeyA(key, 0, subkey, sizeof subkey) == ERROR_SUCCESS) DeleteKeyTree(key, subkey);
  RegCloseKey(key);
  RegDeleteKeyA(parent, name);
}

void SetText(HKEY hive, const std::string& keyPath, const std::string& name,
             const std::string& text) {
  HKEY key = nullptr;
  ASSERT_EQ(
      RegCreateKeyExA(hive, keyPath.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
      ERROR_SUCCESS);
  EXPECT_EQ(
      RegSetValueExA(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                     static_cast<DWORD>(text.size() + 1)),
      ERROR_SUCCESS);
  RegCloseKey(key);
}

// X: is the root of the computer that runs Wine, and Wine opens the device path \\?\NAME where a
// file of that name in lower case lies in this folder.
fs::path DeviceFolder() {
  return "X:" + EnvironmentText("WINEPREFIX") + "/dosdevices";
}

fs::path DriveFolder(char letter) {
  const char name[] = {static_cast<char>(std::tolower(static_cast<unsigned char>(letter))), '\0'};
  return fs::path(EnvironmentText("QUAYLINK_TEST_DRIVES")) / name;
}

bool IsThere(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Removes a file or a folder. A library that stays loaded on purpose would keep its file.
void RemoveWithLoadedLibraries(const fs::path& path) {
  if (fs::is_directory(path)) {
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
      while (const HMODULE module = GetModuleHandleW(entry.path().c_str())) FreeLibrary(module);
    }
  }
  std::error_code failed;
  fs::remove_all(path, failed);
  EXPECT_FALSE(failed) << "cannot remove " << path << ": " << failed.message();
}

std::set<fs::path> NamesOnC() {
  std::set<fs::path> names;
  for (const auto& entry : fs::directory_iterator("C:\\")) names.insert(entry.path());
  return names;
}

}  // namespace

// What the test has made and nobody else removes: the outermost ones of each. What it let the
// library make on C: shows by not having been there before.
struct TestMachine::State {
  std::set<fs::path> wasOnC = NamesOnC();
  std::vector<std::string> filesAndFolders;
  std::vector<std::string> registryKeys;
};

TestMachine::TestMachine() : state_(std::make_unique<State>()) {
  AddRegistryKey(kUsbKey);
  DetachDevices();
  AddFolder(kLocalFolder);
  SetSpecialFolder(CSIDL_PERSONAL, "C:\\Users\\owner\\Documents");
  SetSpecialFolder(CSIDL_APPDATA, "C:\\Users\\owner\\AppData\\Roaming");
  SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMON, "C:\\Program Files\\Common Files");
  SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMONX86, "C:\\Program Files (x86)\\Common Files");
}

TestMachine::~TestMachine() {
  DetachDevices();
  for (const auto& drive : fs::directory_iterator(EnvironmentText("QUAYLINK_TEST_DRIVES"))) {
    fs::remove_all(drive);
  }
  for (const std::string& made : state_->filesAndFolders) RemoveWithLoadedLibraries(made);
  for (const fs::path& path : NamesOnC()) {
    if (!state_->wasOnC.contains(path)) RemoveWithLoadedLibraries(path);
  }
  for (const std::string& key : state_->registryKeys)
    DeleteKeyTree(HKEY_LOCAL_MACHINE, key.c_str());
}

void TestMachine::AttachDevice(unsigned productId, std::string_view serial) {
  const std::string product = AppleHardwareId(productId);
  const std::string instance(serial);
  const std::string name =
      std::string("USB#") + product + "#" + instance + "#{a5dcbf10-6530-11d2-901f-00c04fb951ed}";
  SetRegistryText(std::string(kUsbKey) + "\\" + product + "\\" + instance + "\\Device Parameters",
                  "SymbolicName", "\\??\\" + name);
  AddDevicePath("\\\\?\\" + name);
}

void TestMachine::DetachDevices() {
  DeleteKeyTree(HKEY_LOCAL_MACHINE, kUsbKey);
  AddRegistryKey(kUsbKey);
  std::vector<fs::path> devices;
  for (const auto& entry : fs::directory_iterator(DeviceFolder())) {
    if (entry.path().filename().native().starts_with(L"usb#")) devices.push_back(entry.path());
  }
  for (const fs::path& device : devices) fs::remove(device);
}

void TestMachine::AddRegistryKey(std::string_view keyPath) {
  bool isOutermost = true;
  std::size_t end = 0;
  while (end != keyPath.size()) {
    end = std::min(keyPath.find('\\', end + 1), keyPath.size());
    const std::string path(keyPath.substr(0, end));
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &key, &disposition),
              ERROR_SUCCESS);
    RegCloseKey(key);
    if (disposition != REG_CREATED_NEW_KEY) continue;
    if (isOutermost) state_->registryKeys.push_back(path);
    isOutermost = false;
  }
}

void TestMachine::SetRegistryText(std::string_view keyPath, std::string_view valueName,
                                  std::string_view text) {
  AddRegistryKey(keyPath);
  SetText(HKEY_LOCAL_MACHINE, std::string(keyPath), std::string(valueName), std::string(text));
}

bool TestMachine::AddDevicePath(std::string_view devicePath) {
  constexpr std::string_view kPrefix = "\\\\?\\";
  if (!devicePath.starts_with(kPrefix)) return false;
  std::string name(devicePath.substr(kPrefix.size()));
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  std::FILE* file = std::fopen((DeviceFolder() / name).string().c_str(), "wb");
  EXPECT_NE(file, nullptr) << devicePath;
  return file && std::fclose(file) == 0;
}

void TestMachine::AddDrive(char letter, UINT kind) {
  const char root[] = {letter, ':', '\\', '\0'};
  if (letter != 'C') fs::create_directory(DriveFolder(letter));
  ASSERT_EQ(GetDriveTypeA(root), kind) << "drive " << letter << " was prepared as another kind";
}

void TestMachine::TakeDriveAway(char letter) {
  fs::remove_all(DriveFolder(letter));
}

void TestMachine::AddFolder(const std::string& path) {
  bool isOutermost = true;
  for (std::size_t end = path.find_first_of("\\/", 3); !IsThere(path);
       end = path.find_first_of("\\/", end + 1)) {
    const std::string folder = path.substr(0, end);
    if (IsThere(folder)) continue;
    ASSERT_TRUE(CreateDirectoryA(folder.c_str(), nullptr)) << folder;
    if (isOutermost) state_->filesAndFolders.push_back(folder);
    isOutermost = false;
  }
}

void TestMachine::WriteFile(const std::string& path, std::string_view contents) {
  AddFolder(path.substr(0, path.find_last_of("\\/")));
  if (!IsThere(path)) state_->filesAndFolders.push_back(path);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  ASSERT_NE(file, nullptr) << "cannot write " << path;
  EXPECT_EQ(std::fwrite(contents.data(), 1, contents.size(), file), contents.size());
  EXPECT_EQ(std::fclose(file), 0);
}

bool TestMachine::Exists(const std::string& path) const {
  return IsThere(path);
}

std::string TestMachine::ReadFile(const std::string& path) const {
  std::string contents;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  EXPECT_NE(file, nullptr) << "cannot read " << path;
  if (!file) return contents;
  char block[4096];
  while (const std::size_t length = std::fread(block, 1, sizeof block, file)) {
    contents.append(block, length);
  }
  std::fclose(file);
  return contents;
}

void TestMachine::SetSpecialFolder(int folderId, const std::string& path) {
  const char kCurrentVersion[] = "Software\\Microsoft\\Windows\\CurrentVersion";
  const std::string userFolders = std::string(kCurrentVersion) + "\\Explorer\\User Shell Folders";
  // The shell looks a folder up only when it is there.
  if (!path.empty()) AddFolder(path);
  const std::string text = path.empty() ? "C:\\NoSuchFolder" : path;
  switch (folderId) {
    case CSIDL_PERSONAL:
      return SetText(HKEY_CURRENT_USER, userFolders, "Personal", text);
    case CSIDL_APPDATA:
      return SetText(HKEY_CURRENT_USER, userFolders, "AppData", text);
    case CSIDL_PROGRAM_FILES_COMMON:
      return SetText(HKEY_LOCAL_MACHINE, kCurrentVersion, "CommonFilesDir", text);
    case CSIDL_PROGRAM_FILES_COMMONX86:
      return SetText(HKEY_LOCAL_MACHINE, kCurrentVersion, "CommonFilesDir (x86)", text);
    default:
      FAIL() << "no special folder " << folderId;
  }
}

bool TestMachine::UseCodePage(UINT codePage) {
  return GetACP() == codePage;
}

std::string TestMachine::LocalPath(std::string_view name) const {
  return std::string(kLocalFolder) + "\\" + std::string(name);
}

}  // namespace quaylink::test
