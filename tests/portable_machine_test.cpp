// Where a machine comes from: a folder, or the computer itself. And the walk of the USB tree on
// machines that a real Windows cannot be made into.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/portable/machine.h"
#include "quaylink/quaylink.h"
#include "support/test_machine.h"
#include "usb/registry.h"
#include "usb/usb_device_list.h"

namespace quaylink::test {
namespace {

namespace fs = std::filesystem;
using portable::CurrentMachine;

TEST(Exports, ShowNoBoxWhileTheyRunAndKeepTheHostsErrorMode) {
  TestMachine machine;
  UINT during = 0;
  CurrentMachine().readDevices = [&during](portable::Machine&) {
    during = SetErrorMode(0);
    SetErrorMode(during);
  };
  const UINT mode = SetErrorMode(SEM_NOOPENFILEERRORBOX);
  InitializeIPod();
  EXPECT_EQ(IsIPodConnected(), 0);
  TerminateIPod();
  EXPECT_EQ(during, SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  EXPECT_EQ(SetErrorMode(mode), SEM_NOOPENFILEERRORBOX);
}

TEST(MachineFolder, IsReadAnewSoThatComingAndGoingIsSeen) {
  TestMachine machine;
  const fs::path folder = machine.LocalPath("machine");
  fs::create_directories(folder / "drives/C");
  fs::create_directories(folder / "drives/f");
  fs::create_directories(folder / "usb/VID_05AC&PID_1261/SERIAL");
  portable::SetCurrentMachine(portable::ReadMachineFolder(folder));
  EXPECT_EQ(UsbDeviceList().Enumerate(), 1);
  EXPECT_EQ(GetDriveTypeA("C:\\"), DRIVE_FIXED);
  EXPECT_EQ(GetDriveTypeA("f:\\"), DRIVE_REMOVABLE);
  EXPECT_EQ(GetDriveTypeA("G:\\"), DRIVE_NO_ROOT_DIR);
  fs::rename(folder / "drives/f", folder / "drives/g");
  fs::remove_all(folder / "usb/VID_05AC&PID_1261");
  EXPECT_EQ(GetFileAttributesA("F:\\"), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetFileAttributesA("G:\\"), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetDriveTypeA("F:\\"), DRIVE_NO_ROOT_DIR);
  EXPECT_EQ(UsbDeviceList().Enumerate(), 0);
}

TEST(UsbDeviceListOnAMachine, FailsOnTheVersionsOfWindowsThatItDoesNotKnow) {
  const struct {
    DWORD platformId;
    DWORD majorVersion;
    int result;
  } cases[] = {{2, 4, 1}, {2, 5, 1}, {2, 6, 1}, {2, 3, -1}, {2, 10, -1}, {1, 4, -1}};
  for (const auto& [platformId, majorVersion, result] : cases) {
    TestMachine machine;
    machine.AttachDevice(0x1261, "1");
    CurrentMachine().platformId = platformId;
    CurrentMachine().majorVersion = majorVersion;
    EXPECT_EQ(UsbDeviceList().Enumerate(), result) << platformId << " " << majorVersion;
    std::string text;
    const std::string parameters =
        "SYSTEM\\CurrentControlSet\\Enum\\USB\\VID_05AC&PID_1261\\1\\Device Parameters\\";
    EXPECT_EQ(ReadStringValue(parameters + "SymbolicName", text), result == 1);
  }
}

TEST(UsbDeviceListOnAMachine, KeepsTheEntriesFoundBeforeAListingFailed) {
  const std::string usb(portable::kUsbTree);
  const std::string product = usb + "\\VID_05AC&PID_1294";
  const std::string tooLong(256, 'x');
  const struct {
    const char* what;
    std::string key;
    bool isRefused;
    int result;
    std::size_t held;
  } cases[] = {
      {"USB tree refused", usb, true, -1, 0},
      {"parent refused", "SYSTEM", true, -1, 0},
      {"product refused", product, true, -1, 1},
      {"product name too long", usb + "\\" + tooLong, false, -1, 0},
      {"longest product name", usb + "\\" + tooLong.substr(1), false, 2, 2},
      {"instance name too long", product + "\\" + tooLong, false, -1, 1},
      {"parameters refused", product + "\\B\\Device Parameters", true, 1, 1},
  };
  for (const auto& [what, key, isRefused, result, held] : cases) {
    TestMachine machine;
    machine.AttachDevice(0x1261, "A");
    machine.AttachDevice(0x1294, "B");
    CurrentMachine().KeyAt(key).refusesToOpen = isRefused;
    UsbDeviceList list;
    EXPECT_EQ(list.Enumerate(), result) << what;
    if (held > 0) {
      EXPECT_EQ(list.TypeAt(0), 7) << what;
    }
    EXPECT_THROW(list.TypeAt(held), std::out_of_range) << what;
  }
}

// A sysfs and a mount table as a kernel would show them, for a player with two partitions on the
// disk sdb.
class Computer : public testing::Test {
 protected:
  Computer() {
    Write("sys/bus/usb/devices/usb1/idVendor", "1d6b\n");
    Write("sys/bus/usb/devices/1-1:1.0/bInterfaceClass", "08\n");
    Plug("1-1", "05ac", "120a", "000A27");
    Disk("sda", "8:0", "0");
    Disk("sdb", "8:16", "1");
    Partition("sda", "sda1", "8:1");
    Partition("sdb", "sdb2", "8:18");
    Disk("sdc", "8:32", "1");
  }

  void Write(const fs::path& path, const std::string& text) {
    fs::create_directories((folder / path).parent_path());
    std::ofstream(folder / path) << text;
  }
  void Plug(const std::string& port, const std::string& vendor, const std::string& product,
            const std::string& serial) {
    const fs::path device = "sys/bus/usb/devices/" + port;
    Write(device / "idVendor", vendor + "\n");
    Write(device / "idProduct", product + "\n");
    if (!serial.empty()) Write(device / "serial", serial + "\n");
  }
  void Disk(const std::string& name, const std::string& number, const std::string& removable) {
    Write("sys/devices/block/" + name + "/removable", removable + "\n");
    Link("sys/devices/block/" + name, number);
  }
  void Partition(const std::string& disk, const std::string& name, const std::string& number) {
    Write("sys/devices/block/" + disk + "/" + name + "/partition", "1\n");
    Link("sys/devices/block/" + disk + "/" + name, number);
  }
  void Link(const std::string& device, const std::string& number) {
    fs::create_directories(folder / "sys/dev/block");
    fs::create_directory_symlink(folder / device, folder / "sys/dev/block" / number);
  }
  // Mounts each volume (device number, root in it) at a folder of that name.
  void Mount(const std::vector<std::array<std::string, 3>>& volumes) {
    std::string table = "21 1 0:20 / /proc rw shared:1 - proc proc rw\n";
    for (const auto& [number, root, name] : volumes) {
      fs::create_directories(folder / "mnt" / name);
      std::string mounted = (folder / "mnt" / name).string();
      if (const auto blank = mounted.find(' '); blank != mounted.npos)
        mounted.replace(blank, 1, "\\040");
      table += "22 21 " + number + " " + root + " " + mounted + " rw - vfat /dev/x rw\n";
    }
    Write("mountinfo", table);
  }
  void Start() {
    portable::SetCurrentMachine(portable::ReadComputer(folder / "sys", folder / "mountinfo"));
  }
  std::string DriveName(char letter) {
    CurrentMachine().readDrives(CurrentMachine());
    const auto found = CurrentMachine().drives.find(letter);
    return found == CurrentMachine().drives.end() ? "" : found->second.root.filename().string();
  }

  TestMachine machine;
  fs::path folder = machine.LocalPath("computer");
};

// By name, as Windows does: whatever the ports, a player comes before a phone.
TEST_F(Computer, ListsApplesDevicesAndNoOthers) {
  Plug("1-0", "05ac", "1290", "a phone");
  Plug("1-2", "1234", "1261", "x");
  Plug("2-1", "05ac", "1261", "");
  Start();
  UsbDeviceList list;
  EXPECT_EQ(list.Enumerate(), 3);
  EXPECT_EQ(list.TypeAt(0), 5);
  EXPECT_EQ(list.TypeAt(1), 7);
  EXPECT_EQ(list.TypeAt(2), 9);
  for (const char* port : {"1-0", "1-1", "2-1"}) {
    fs::remove_all(folder / "sys/bus/usb/devices" / port);
  }
  EXPECT_EQ(UsbDeviceList().Enumerate(), 0);
}

TEST_F(Computer, GivesRemovableVolumesLettersThatTheyKeepWhileMounted) {
  Mount({{"8:1", "/", "system"},
         {"8:32", "/", "card"},
         {"8:18", "/sub", "bind"},
         {"8:18", "/", "THE PLAYER"},
         {"8:18", "/", "again"}});
  Start();
  EXPECT_EQ(DriveName('C'), "");
  EXPECT_EQ(DriveName('D'), "card");
  EXPECT_EQ(DriveName('E'), "THE PLAYER");
  EXPECT_EQ(DriveName('F'), "again");
  EXPECT_EQ(DriveName('G'), "");
  EXPECT_EQ(GetDriveTypeA("E:\\"), DRIVE_REMOVABLE);

  Mount({{"8:18", "/", "THE PLAYER"}});
  EXPECT_EQ(GetDriveTypeA("D:\\"), DRIVE_NO_ROOT_DIR);
  EXPECT_EQ(DriveName('E'), "THE PLAYER");
  Mount({{"8:18", "/", "THE PLAYER"}, {"8:32", "/", "other"}});
  EXPECT_EQ(DriveName('D'), "other");
  // Unplugged without being unmounted.
  fs::remove(folder / "sys/dev/block/8:18");
  EXPECT_EQ(DriveName('E'), "");
}

TEST_F(Computer, IsReadOnceForADetection) {
  Mount({{"8:18", "/", "shadowed"}, {"8:18", "/", "THE PLAYER"}});
  Start();
  int devicesRead = 0;
  int drivesRead = 0;
  const auto count = [](int& number, auto& read) {
    read = [&number, wrapped = read](portable::Machine& updated) {
      ++number;
      wrapped(updated);
    };
  };
  count(devicesRead, CurrentMachine().readDevices);
  count(drivesRead, CurrentMachine().readDrives);
  InitializeIPod();
  EXPECT_EQ(IsIPodConnected(), 0) << "no mount shows the player";
  EXPECT_EQ(devicesRead, 1);
  EXPECT_EQ(drivesRead, 1);
  fs::create_directories(folder / "mnt/THE PLAYER/iPod_Control/Music");
  for (int i = 2; i < 4; ++i) {
    EXPECT_EQ(IsIPodConnected(), 1) << "one mount does";
    EXPECT_EQ(devicesRead, i);
    EXPECT_EQ(drivesRead, i);
  }
  TerminateIPod();
}

}  // namespace
}  // namespace quaylink::test
