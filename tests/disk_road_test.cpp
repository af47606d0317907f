// Detection, and files off a player that is a drive, through the device manager.

#include <gtest/gtest.h>

#include "interface/device_manager.h"
#include "support/database_bytes.h"
#include "support/test_machine.h"
#include "usb/apple_products.h"
#include "usb/usb_device_list.h"

namespace quaylink::test {
namespace {

constexpr unsigned kPlayer = 0x1261;
const std::string kDatabasePath = "\\iPod_Control\\iTunes\\iTunesDB";

class DiskRoad : public testing::Test {
 protected:
  void AddPlayerDrive(char letter, UINT kind = DRIVE_REMOVABLE) {
    machine.AddDrive(letter, kind);
    machine.AddFolder(std::string(1, letter) + ":\\iPod_Control\\Music");
  }

  TestMachine machine;
  DeviceManager manager;
};

TEST_F(DiskRoad, TheFirstRemovableDriveWithMusicIsThePlayer) {
  machine.AttachDevice(kPlayer);
  EXPECT_FALSE(manager.Detect()) << "no drive yet";
  AddPlayerDrive('A');
  AddPlayerDrive('D', DRIVE_FIXED);
  machine.AddDrive('E');
  machine.AddFolder("E:\\Music");
  EXPECT_FALSE(manager.Detect());
  EXPECT_EQ(manager.driveLetter, 0);
  AddPlayerDrive('Z');
  EXPECT_TRUE(manager.Detect());
  EXPECT_EQ(manager.driveLetter, 'Z');
  AddPlayerDrive('G');
  EXPECT_TRUE(manager.Detect());
  EXPECT_EQ(manager.driveLetter, 'G');
  AddPlayerDrive('B');
  EXPECT_TRUE(manager.Detect());
  EXPECT_EQ(manager.driveLetter, 'B');
  EXPECT_EQ(manager.bridge, nullptr);
}

TEST_F(DiskRoad, WithoutADeviceNothingChangesAndWithoutItsDriveTheLetterGoes) {
  machine.AttachDevice(kPlayer);
  AddPlayerDrive('F');
  ASSERT_TRUE(manager.Detect());
  machine.DetachDevices();
  EXPECT_FALSE(manager.Detect());
  EXPECT_EQ(manager.driveLetter, 'F');
  machine.AttachDevice(kPlayer);
  machine.TakeDriveAway('F');
  EXPECT_FALSE(manager.Detect());
  EXPECT_EQ(manager.driveLetter, 0);
}

TEST_F(DiskRoad, NoSessionIsNeeded) {
  EXPECT_TRUE(manager.OpenSession());
  EXPECT_FALSE(manager.sessionOpen);
  EXPECT_TRUE(manager.CloseSession());
}

TEST_F(DiskRoad, TheDatabaseAndTheFilesOfItsTracksAreCopied) {
  machine.AttachDevice(kPlayer);
  AddPlayerDrive('F');
  const std::string database =
      TrackDatabase(2, Track(1, 1, TextObject(2, u":iPod_Control:Music:F00:A.mp3")) +
                           Track(2, 1, TextObject(2, u":iPod_Control:Music:F00:GONE.mp3")));
  machine.WriteFile("F:" + kDatabasePath, database);
  machine.WriteFile("F:\\iPod_Control\\Music\\F00\\A.mp3", "the sound of A");
  machine.WriteFile("C:\\db", "an older and longer copy of some database, longer than the new one");
  ASSERT_TRUE(manager.Detect());
  ASSERT_TRUE(manager.CopyDatabase("C:\\db"));
  EXPECT_EQ(machine.ReadFile("C:\\db"), database);
  ASSERT_TRUE(manager.Parse("C:\\db"));

  EXPECT_TRUE(manager.CopyTrackFile(0, "C:\\a.mp3"));
  EXPECT_EQ(machine.ReadFile("C:\\a.mp3"), "the sound of A");
  EXPECT_FALSE(manager.CopyTrackFile(1, "C:\\gone.mp3"));
  EXPECT_EQ(machine.ReadFile("C:\\gone.mp3"), "") << "created, and left behind empty";
  EXPECT_FALSE(manager.CopyTrackFile(2, "C:\\never.mp3"));
  EXPECT_FALSE(machine.Exists("C:\\never.mp3"));
  EXPECT_TRUE(manager.CopyGenericFile(false, "F:\\iPod_Control\\Music\\F00\\A.mp3", "C:\\b.mp3"));
  EXPECT_EQ(machine.ReadFile("C:\\b.mp3"), "the sound of A");

  machine.TakeDriveAway('F');
  EXPECT_FALSE(manager.CopyTrackFile(0, "C:\\a.mp3"));
  EXPECT_FALSE(manager.CopyDatabase("C:\\db"));
  EXPECT_EQ(machine.ReadFile("C:\\db"), "");
}

TEST_F(DiskRoad, ADestinationThatCannotBeCreatedFailsTheCopy) {
  machine.AttachDevice(kPlayer);
  AddPlayerDrive('F');
  machine.WriteFile("F:" + kDatabasePath,
                    TrackDatabase(1, Track(1, 1, TextObject(2, u":iPod_Control:A.mp3"))));
  machine.WriteFile("F:\\iPod_Control\\A.mp3", "sound");
  ASSERT_TRUE(manager.Detect());
  ASSERT_TRUE(manager.Parse(("F:" + kDatabasePath).c_str()));
  EXPECT_FALSE(manager.CopyDatabase("C:\\no such folder\\db"));
  EXPECT_FALSE(manager.CopyTrackFile(0, "C:\\no such folder\\a.mp3"));
  EXPECT_FALSE(
      manager.CopyGenericFile(true, "F:\\iPod_Control\\A.mp3", "C:\\no such folder\\a.mp3"));
  EXPECT_FALSE(manager.CopyGenericFile(true, "F:\\missing", "C:\\never"));
  EXPECT_FALSE(machine.Exists("C:\\never")) << "a file of any kind is not created first";
}

TEST_F(DiskRoad, TheFirstDeviceListedDecidesTheRoad) {
  machine.AttachDevice(0x1290);
  machine.AttachDevice(0x1300);
  AddPlayerDrive('F');
  EXPECT_TRUE(manager.Detect());
  EXPECT_NE(manager.bridge, nullptr);
  EXPECT_EQ(manager.driveLetter, 0);

  // The bridge stays, and with it the road of every file operation, when a player follows.
  machine.DetachDevices();
  machine.AttachDevice(kPlayer);
  EXPECT_TRUE(manager.Detect());
  EXPECT_NE(manager.bridge, nullptr);
  EXPECT_EQ(manager.driveLetter, 'F');
  EXPECT_FALSE(manager.OpenSession()) << "there are no libraries to reach a phone with";
  EXPECT_FALSE(manager.CopyGenericFile(true, "F:\\iPod_Control", "C:\\never"));
  EXPECT_FALSE(manager.CopyDatabase("C:\\db"));
  EXPECT_EQ(machine.ReadFile("C:\\db"), "");
  std::vector<std::string> files = {"left over"};
  EXPECT_FALSE(manager.EnumerateFiles(true, files));
  EXPECT_TRUE(files.empty());
}

TEST_F(DiskRoad, PhonesAndNoOtherProductsLeadToTheMobileRoad) {
  // Each product's type code is its place here. A new product needs its row.
  const struct {
    unsigned productId;
    bool isPhone;
  } products[] = {{0x1201, false}, {0x1203, false}, {0x1204, false}, {0x1205, false},
                  {0x1209, false}, {0x120A, false}, {0x1260, false}, {0x1261, false},
                  {0x1262, false}, {0x1290, true},  {0x1291, true},  {0x1292, true},
                  {0x1300, false}, {0x1301, false}, {0x1263, false}, {0x1293, true},
                  {0x1294, true},  {0x129A, true}};
  ASSERT_EQ(std::size(products), std::size(AppleProductIdTable));
  AddPlayerDrive('F');
  int typeCode = 0;
  for (const auto& [productId, isPhone] : products) {
    SCOPED_TRACE(productId);
    machine.DetachDevices();
    machine.AttachDevice(productId);
    UsbDeviceList list;
    ASSERT_EQ(list.Enumerate(), 1);
    EXPECT_EQ(list.TypeAt(0), typeCode++);
    DeviceManager fresh;
    EXPECT_TRUE(fresh.Detect());
    EXPECT_EQ(fresh.bridge != nullptr, isPhone);
    EXPECT_EQ(fresh.driveLetter, isPhone ? 0 : 'F');
  }
}

}  // namespace
}  // namespace quaylink::test
