// The walk of the registry's USB tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/ascii.h"
#include "support/test_machine.h"
#include "usb/registry.h"
#include "usb/usb_device_list.h"

namespace quaylink::test {
namespace {

using Names = std::vector<std::string>;

const std::string kUsb = "SYSTEM\\CurrentControlSet\\Enum\\USB\\";

std::vector<int> TypeCodes() {
  UsbDeviceList list;
  const std::int32_t count = list.Enumerate();
  std::vector<int> codes;
  for (std::int32_t i = 0; i < count; ++i)
    codes.push_back(list.TypeAt(static_cast<std::size_t>(i)));
  return codes;
}

// An instance of a product with that symbolic name. Its device path, if given, can be opened.
void AddInstance(TestMachine& machine, const std::string& productKey, const std::string& serial,
                 const std::string& symbolicName, const std::string& devicePath) {
  machine.SetRegistryText(kUsb + productKey + "\\" + serial + "\\Device Parameters", "SymbolicName",
                          symbolicName);
  if (!devicePath.empty()) machine.AddDevicePath(devicePath);
}

TEST(Registry, PathsAreSplitAtEveryBackslash) {
  const struct {
    const char* path;
    Names components;
    const char* remainder;
  } cases[] = {{"", {}, ""},
               {"Name", {}, "Name"},
               {"A\\B\\", {"A", "B"}, ""},
               {"A\\B\\C", {"A", "B"}, "C"},
               {"\\A\\\\", {"", "A", ""}, ""}};
  for (const auto& [path, components, remainder] : cases) {
    Names split = {"kept"};
    std::string rest = "replaced";
    SplitRegistryPath(path, split, rest);
    EXPECT_EQ(Names(split.begin() + 1, split.end()), components) << path;
    EXPECT_EQ(rest, remainder) << path;
  }
}

TEST(Registry, SubkeysAreAppendedUpToTheEndOrTheFirstError) {
  TestMachine machine;
  machine.AddRegistryKey("SYSTEM\\QuaylinkTest\\A\\Deep");
  machine.AddRegistryKey("SYSTEM\\QuaylinkTest\\B");
  Names names = {"kept"};
  EXPECT_TRUE(EnumerateSubkeys("SYSTEM\\QuaylinkTest\\", names));
  EXPECT_EQ(names, (Names{"kept", "A", "B"}));
  EXPECT_FALSE(EnumerateSubkeys("SYSTEM\\QuaylinkTest", names)) << "no trailing backslash";
  EXPECT_FALSE(EnumerateSubkeys("SYSTEM\\QuaylinkTest\\None\\", names));
  EXPECT_EQ(names.size(), 3u);
  for (const char* localMachine : {"", "\\"}) {
    names.clear();
    EXPECT_TRUE(EnumerateSubkeys(localMachine, names));
    EXPECT_EQ(std::ranges::count_if(
                  names, [](const auto& name) { return EqualsIgnoringCase(name, "SYSTEM"); }),
              1);
  }
}

TEST(Registry, ValuesAreReadAsStringsOfUpTo254Characters) {
  TestMachine machine;
  const std::string key = "SYSTEM\\QuaylinkTest";
  const std::string longest(254, 'x');
  machine.SetRegistryText(key, "Longest", longest);
  machine.SetRegistryText(key, "TooLong", longest + "x");
  machine.SetRegistryText(key, "", "default");
  const struct {
    const char* name;
    bool result;
    std::string value;
  } cases[] = {{"\\Longest", true, longest},
               {"\\TooLong", false, "unchanged"},
               {"\\", true, "default"},
               {"\\None", false, "unchanged"},
               {"\\None\\Longest", false, "unchanged"}};
  for (const auto& [name, result, value] : cases) {
    std::string read = "unchanged";
    EXPECT_EQ(ReadStringValue(key + name, read), result) << name;
    EXPECT_EQ(read, value) << name;
  }
}

TEST(UsbDeviceList, OnlyApplesKnownProductsThatArePresentAreListed) {
  const std::string name = "USB#VID_05AC&PID_1261#1#{x}";
  const std::string kernelName = "\\??\\" + name;
  const std::string path = "\\\\?\\" + name;
  const struct {
    const char* productKey;
    std::string symbolicName;
    std::string devicePath;
    std::vector<int> typeCodes;
  } cases[] = {
      {"VID_05AC&PID_1261", kernelName, path, {7}},
      {"vid_05ac&pid_1291", kernelName, path, {10}},
      {"VID_05AC&PID_1291&MI_00", kernelName, path, {}},
      {"VID_05AC&PID_1299", kernelName, path, {}},
      {"VID_05AD&PID_1261", kernelName, path, {}},
      {"VID_05AC&PID_1261", kernelName, "", {}},
      {"VID_05AC&PID_1261", "", path, {}},
      {"VID_05AC&PID_1261", path, path, {7}},
      {"VID_05AC&PID_1261", kernelName + std::string(250, 'x'), path, {}},
  };
  for (const auto& [productKey, symbolicName, devicePath, typeCodes] : cases) {
    TestMachine machine;
    AddInstance(machine, productKey, "1", symbolicName, devicePath);
    EXPECT_EQ(TypeCodes(), typeCodes) << productKey << " " << symbolicName;
  }
}

TEST(UsbDeviceList, EveryKernelPrefixInASymbolicNameIsReplaced) {
  TestMachine machine;
  if (!machine.AddDevicePath("x\\\\?\\USB#\\\\?\\USB#y")) {
    GTEST_SKIP() << "no device of this computer can have a path that holds the prefix twice";
  }
  AddInstance(machine, "VID_05AC&PID_1261", "1", "x\\??\\USB#\\??\\USB#y", "");
  EXPECT_EQ(TypeCodes(), std::vector{7});
}

// Windows lists keys by name. By that order 1263 comes before 1300, by the table's after it.
TEST(UsbDeviceList, EntriesFollowTheRegistrysOrderAndAreAppended) {
  TestMachine machine;
  machine.AddRegistryKey(kUsb + "ROOT_HUB20\\4");
  machine.AttachDevice(0x1263, "A");
  machine.AttachDevice(0x1300, "B");
  machine.AttachDevice(0x1300, "C");
  machine.AddRegistryKey(kUsb + "VID_05AC&PID_1300\\once");
  EXPECT_EQ(TypeCodes(), (std::vector{14, 12, 12}));

  UsbDeviceList list;
  EXPECT_EQ(list.Enumerate(), 3);
  machine.DetachDevices();
  EXPECT_EQ(list.Enumerate(), 3);
  machine.AttachDevice(0x1203);
  EXPECT_EQ(list.Enumerate(), 4);
  EXPECT_EQ(list.TypeAt(3), 1);
}

TEST(UsbDeviceList, WithoutDevicesIsEmptyAndHasNoTypes) {
  TestMachine machine;
  UsbDeviceList list;
  EXPECT_EQ(list.Enumerate(), 0);
  try {
    list.TypeAt(0);
    FAIL() << "an entry of an empty list";
  } catch (const std::out_of_range& exception) {
    EXPECT_STREQ(exception.what(), "invalid vector<T> subscript");
  }
}

}  // namespace
}  // namespace quaylink::test
