// The Windows functions of the portable layer, held to what Windows documents for them.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "platform/portable/machine.h"
#include "support/test_machine.h"

namespace quaylink {
namespace {

using portable::CurrentMachine;

LONG LastError() {
  return static_cast<LONG>(GetLastError());
}

HKEY OpenKey(const char* path) {
  HKEY key = nullptr;
  EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key), ERROR_SUCCESS) << path;
  return key;
}

std::string Narrow(UINT codePage, const std::u16string& wide) {
  char bytes[64];
  const int size = WideCharToMultiByte(codePage, 0, wide.data(), static_cast<int>(wide.size()),
                                       bytes, sizeof bytes, nullptr, nullptr);
  return std::string(bytes, static_cast<std::size_t>(size));
}

TEST(PortableRegistry, EnumeratesNamesUntilItsEndAndRefusesThoseThatDoNotFit) {
  TestMachine machine;
  machine.AddRegistryKey("SOFTWARE\\One\\Deep");
  machine.AddRegistryKey("SOFTWARE\\" + std::string(255, 'x'));
  machine.AddRegistryKey("SOFTWARE\\" + std::string(256, 'y'));
  HKEY key = OpenKey("software\\");

  char name[256];
  const auto enumerate = [&](DWORD index) {
    DWORD length = sizeof name;
    const LONG result =
        RegEnumKeyExA(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (result == ERROR_SUCCESS) {
      EXPECT_EQ(length, std::strlen(name));
    }
    return result;
  };
  EXPECT_EQ(enumerate(0), ERROR_SUCCESS);
  EXPECT_STREQ(name, "One");
  EXPECT_EQ(enumerate(1), ERROR_SUCCESS);
  EXPECT_EQ(std::strlen(name), 255U);
  EXPECT_EQ(enumerate(2), ERROR_MORE_DATA);
  EXPECT_EQ(enumerate(3), ERROR_NO_MORE_ITEMS);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

TEST(PortableRegistry, TellsMissingKeysFromRefusedOnesAndOpensBelowAnOpenKey) {
  TestMachine machine;
  machine.AddRegistryKey("A\\B");
  CurrentMachine().localMachine.At("A\\Locked").refusesToOpen = true;
  HKEY parent = OpenKey("A");
  const struct {
    const char* subkey;
    LONG result;
  } cases[] = {{"b", 0}, {"", 0}, {"None", 2}, {"B\\None", 2}, {"Locked", 5}};
  for (const auto& [subkey, result] : cases) {
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExA(parent, subkey, 0, KEY_READ, &key), result) << subkey;
    EXPECT_EQ(portable::CountOpenHandles().registryKeys, result == 0 ? 2 : 1) << subkey;
    if (key != nullptr) RegCloseKey(key);
  }
  RegCloseKey(parent);
}

TEST(PortableRegistry, ReportsTheSizeOfAValueThatDoesNotFit) {
  TestMachine machine;
  machine.SetRegistryText("K", "Name", "1234567");
  HKEY key = OpenKey("K");
  BYTE data[8];
  DWORD type = 0;
  DWORD length = 7;
  EXPECT_EQ(RegQueryValueExA(key, "name", nullptr, &type, data, &length), ERROR_MORE_DATA);
  EXPECT_EQ(length, 8U);
  EXPECT_EQ(type, 1U);
  EXPECT_EQ(RegQueryValueExA(key, "Name", nullptr, nullptr, data, &length), ERROR_SUCCESS);
  EXPECT_EQ(std::memcmp(data, "1234567", 8), 0);
  length = 0;
  EXPECT_EQ(RegQueryValueExA(key, "Name", nullptr, nullptr, nullptr, &length), ERROR_SUCCESS);
  EXPECT_EQ(length, 8U);
  EXPECT_EQ(RegQueryValueExA(key, "", nullptr, nullptr, nullptr, &length), ERROR_FILE_NOT_FOUND);
  RegCloseKey(key);
}

TEST(PortableHandles, AbortWhenUsedAfterTheirClose) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  TestMachine machine;
  machine.AddRegistryKey("K");
  machine.AddDevicePath("\\\\?\\device");
  HKEY key = OpenKey("K");
  RegCloseKey(key);
  EXPECT_DEATH(RegCloseKey(key), "RegCloseKey: the handle is not open");
  EXPECT_DEATH(RegCloseKey(HKEY_LOCAL_MACHINE), "RegCloseKey");
  EXPECT_DEATH(FindClose(INVALID_HANDLE_VALUE), "FindClose");
  EXPECT_DEATH(FreeLibrary(nullptr), "FreeLibrary");
  HANDLE device = CreateFileA("\\\\?\\DEVICE", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(device, INVALID_HANDLE_VALUE);
  EXPECT_DEATH(FindClose(device), "FindClose");
  EXPECT_TRUE(CloseHandle(device));

  // Elsewhere the call fails as documented.
  CurrentMachine().abortOnBadHandle = false;
  EXPECT_FALSE(CloseHandle(device));
  EXPECT_EQ(LastError(), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
}

TEST(PortableDevices, OpenOnlyWhereAttachedAndForOneAtATime) {
  TestMachine machine;
  machine.AttachDevice(0x1261, "42");
  const char* path = "\\\\?\\usb#vid_05ac&pid_1261#42#{A5DCBF10-6530-11D2-901F-00C04FB951ED}";
  const auto open = [](const char* devicePath) {
    return CreateFileA(devicePath, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                       nullptr);
  };
  HANDLE device = open(path);
  ASSERT_NE(device, INVALID_HANDLE_VALUE);
  EXPECT_EQ(open(path), INVALID_HANDLE_VALUE);
  EXPECT_TRUE(CloseHandle(device));
  machine.DetachDevices();
  EXPECT_EQ(open(path), INVALID_HANDLE_VALUE);
  EXPECT_EQ(LastError(), ERROR_FILE_NOT_FOUND);
}

TEST(PortableModules, CountReferencesAndNameThemselves) {
  TestMachine machine;
  EXPECT_EQ(LoadLibraryExA("C:\\none.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH), nullptr);
  EXPECT_EQ(LastError(), ERROR_MOD_NOT_FOUND);
  machine.WriteFile("C:\\text.dll", "no library");
  EXPECT_EQ(LoadLibraryExA("C:\\TEXT.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH), nullptr);
  EXPECT_EQ(LastError(), 193);

  // A library that every host has: the C++ runtime's.
  HMODULE module = LoadLibraryExA("libstdc++.so.6", nullptr, 0);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(LoadLibraryExA("libstdc++.so.6", nullptr, 0), module);
  EXPECT_NE(GetProcAddress(module, "__cxa_throw"), nullptr);
  EXPECT_EQ(GetProcAddress(module, "NoSuchEntryPoint"), nullptr);
  EXPECT_EQ(LastError(), ERROR_PROC_NOT_FOUND);
  EXPECT_TRUE(FreeLibrary(module));
  char path[260];
  EXPECT_EQ(GetModuleFileNameA(module, path, sizeof path), 14U);
  EXPECT_TRUE(FreeLibrary(module));
  CurrentMachine().abortOnBadHandle = false;
  EXPECT_FALSE(FreeLibrary(module));
}

TEST(PortableModules, AHostsPathThatDoesNotFitIsCut) {
  TestMachine machine;
  CurrentMachine().hostProgramPath = "C:\\host.exe";
  char path[32];
  EXPECT_EQ(GetModuleFileNameA(nullptr, path, 12), 11U);
  EXPECT_STREQ(path, "C:\\host.exe");
  EXPECT_EQ(GetModuleFileNameA(nullptr, path, 11), 11U);
  EXPECT_STREQ(path, "C:\\host.ex");
  EXPECT_EQ(LastError(), ERROR_INSUFFICIENT_BUFFER);
}

TEST(PortableTexts, AreConvertedToTheCodePage) {
  TestMachine machine;
  const struct {
    std::u16string wide;
    std::string utf8;
    std::string western;
  } cases[] = {
      {u"plain ASCII, longer than a block", "plain ASCII, longer than a block",
       "plain ASCII, longer than a block"},
      {u"12345678\u00E9bcdefgh\u20AC",
       "12345678\xC3\xA9"
       "bcdefgh\xE2\x82\xAC",
       "12345678\xE9"
       "bcdefgh\x80"},
      {u"\u007F\u0080\u0081\u07FF\u0800", "\x7F\xC2\x80\xC2\x81\xDF\xBF\xE0\xA0\x80",
       "\x7F?\x81??"},
      {u"\U0001F3B5", "\xF0\x9F\x8E\xB5", "??"},
      {u"\xD83Cx\xDFB5\xD83C", "\xEF\xBF\xBDx\xEF\xBF\xBD\xEF\xBF\xBD", "?x??"},
  };
  for (const auto& [wide, utf8, western] : cases) {
    EXPECT_EQ(Narrow(CP_UTF8, wide), utf8);
    EXPECT_EQ(Narrow(CP_ACP, wide), utf8);
    EXPECT_EQ(Narrow(1252, wide), western);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), nullptr,
                                  0, nullptr, nullptr),
              static_cast<int>(utf8.size()));
  }
  CurrentMachine().ansiCodePage = 1252;
  EXPECT_EQ(Narrow(CP_ACP, u"\u20AC"), "\x80");
  BOOL replaced = 0;
  char byte = 0;
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, u"\u4E00", 1, &byte, 1, "_", &replaced), 1);
  EXPECT_EQ(byte, '_');
  EXPECT_TRUE(replaced);
}

TEST(PortableTexts, AreWholeOrNotConverted) {
  TestMachine machine;
  char bytes[16];
  const auto convert = [&bytes](const char16_t* wide, int length, int capacity) {
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, wide, length, bytes, capacity, nullptr, nullptr);
    return size > 0 ? size : -LastError();
  };
  EXPECT_EQ(convert(u"abc", -1, 4), 4);
  EXPECT_STREQ(bytes, "abc");
  EXPECT_EQ(convert(u"abc", -1, 3), -ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(convert(u"abc", 3, 3), 3);
  EXPECT_EQ(convert(u"ab\u20AC", 3, 4), -ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(convert(u"abc", 0, 4), -ERROR_INVALID_PARAMETER);
  EXPECT_EQ(WideCharToMultiByte(437, 0, u"a", 1, bytes, 1, nullptr, nullptr), 0);
  EXPECT_EQ(LastError(), ERROR_INVALID_PARAMETER);
}

TEST(PortableShell, HandsOutAFoldersNameInEachForm) {
  TestMachine machine;
  const std::string path = "C:\\Dokumente\\M\xC3\xBCller";
  using portable::ShellName;
  for (const ShellName form : {ShellName::kWide, ShellName::kOffset, ShellName::kInline}) {
    CurrentMachine().specialFolders[CSIDL_PERSONAL] = {path, form};
    LPITEMIDLIST list = nullptr;
    IShellFolder* desktop = nullptr;
    IMalloc* allocator = nullptr;
    ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_PERSONAL, &list), S_OK);
    ASSERT_EQ(SHGetDesktopFolder(&desktop), S_OK);
    ASSERT_EQ(SHGetMalloc(&allocator), S_OK);
    STRRET name;
    ASSERT_EQ(desktop->GetDisplayNameOf(list, SHGDN_FORPARSING, &name), S_OK);
    if (name.uType == STRRET_WSTR) {
      EXPECT_EQ(Narrow(CP_ACP, name.pOleStr), path);
      allocator->Free(name.pOleStr);
    } else if (name.uType == STRRET_OFFSET) {
      EXPECT_EQ(reinterpret_cast<const char*>(list) + name.uOffset, path);
    } else {
      EXPECT_EQ(name.uType, STRRET_CSTR);
      EXPECT_EQ(name.cStr, path);
    }
    EXPECT_EQ(portable::CountOpenHandles().shellObjects, 3);
    desktop->Release();
    allocator->Free(list);
    allocator->Release();
  }
}

TEST(PortableSystem, AnswersOnlyForTheVersionStructureItKnows) {
  TestMachine machine;
  OSVERSIONINFOA version = {};
  EXPECT_FALSE(GetVersionExA(&version));
  EXPECT_EQ(LastError(), ERROR_INSUFFICIENT_BUFFER);
  version.dwOSVersionInfoSize = 148;
  EXPECT_TRUE(GetVersionExA(&version));
  EXPECT_EQ(version.dwMajorVersion, 6U);
  EXPECT_EQ(version.dwPlatformId, VER_PLATFORM_WIN32_NT);
}

TEST(PortableSystem, MakesIdentifiersThatDifferAndLetsATestReplaceThem) {
  TestMachine machine;
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    GUID guid;
    ASSERT_EQ(CoCreateGuid(&guid), S_OK);
    EXPECT_EQ(guid.Data3 >> 12, 4);
    seen.emplace(reinterpret_cast<const char*>(&guid), sizeof guid);
  }
  EXPECT_EQ(seen.size(), 1000U);
  CurrentMachine().createGuid = [](GUID*) { return E_FAIL; };
  GUID guid;
  EXPECT_EQ(CoCreateGuid(&guid), E_FAIL);
  DWORD waited = 0;
  CurrentMachine().sleep = [&waited](DWORD milliseconds) { waited += milliseconds; };
  Sleep(60'000);
  EXPECT_EQ(waited, 60'000U);
}

}  // namespace
}  // namespace quaylink
