// Handles, loaded libraries and strings of the portable layer, held to what Windows documents for
// them, and what is made of its identifiers.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "itunesdb/playlists.h"
#include "platform/portable/machine.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

using portable::CurrentMachine;

HANDLE OpenDevice(const char* path) {
  return CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

TEST(PortableHandles, AbortWhenUsedAfterTheirClose) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  TestMachine machine;
  machine.AddRegistryKey("K");
  machine.AddDevicePath("\\\\?\\device");
  HKEY key = nullptr;
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "K", 0, KEY_READ, &key), ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_DEATH(RegCloseKey(key), "RegCloseKey: the handle is not open");
  EXPECT_DEATH(RegCloseKey(HKEY_LOCAL_MACHINE), "RegCloseKey");
  EXPECT_DEATH(FindClose(INVALID_HANDLE_VALUE), "FindClose");
  EXPECT_DEATH(FreeLibrary(nullptr), "FreeLibrary");
  HANDLE device = OpenDevice("\\\\?\\DEVICE");
  ASSERT_NE(device, INVALID_HANDLE_VALUE);
  EXPECT_EQ(OpenDevice("\\\\?\\device"), INVALID_HANDLE_VALUE) << "open for one at a time";
  EXPECT_DEATH(FindClose(device), "FindClose");
  EXPECT_TRUE(CloseHandle(device));

  // Elsewhere the call fails as documented.
  CurrentMachine().abortOnBadHandle = false;
  EXPECT_FALSE(CloseHandle(device));
  EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
}

TEST(PortableModules, StayUntilTheirLastReferenceIsGivenBack) {
  TestMachine machine;
  // A library that every host has: the C++ runtime's.
  const auto load = [] {
    return LoadLibraryExA("libstdc++.so.6", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  };
  HMODULE module = load();
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(load(), module);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_NE(GetProcAddress(module, "__cxa_throw"), nullptr);
  EXPECT_TRUE(FreeLibrary(module));
  CurrentMachine().abortOnBadHandle = false;
  EXPECT_FALSE(FreeLibrary(module));
}

TEST(PortableStrings, AreConvertedToTheCodePage) {
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
    for (const auto& [codePage, expected] : {std::pair(CP_UTF8, utf8), std::pair(1252u, western)}) {
      CurrentMachine().ansiCodePage = codePage;
      std::string bytes(expected.size(), '\0');
      const auto convert = [&, &from = wide](std::size_t room) {
        return WideCharToMultiByte(CP_ACP, 0, from.data(), static_cast<int>(from.size()),
                                   bytes.data(), static_cast<int>(room), nullptr, nullptr);
      };
      EXPECT_EQ(convert(expected.size() - 1), 0) << "whole or not at all";
      EXPECT_EQ(convert(expected.size()), static_cast<int>(expected.size()));
      EXPECT_EQ(bytes, expected);
    }
  }
}

TEST(NewPersistentId, CombinesThreePartsOfTheGuidWithFifteenRandomBits) {
  TestMachine machine;
  std::uint64_t seen = 0;
  CurrentMachine().createGuid = [](GUID* guid) {
    *guid = {0x12345678, 0x9ABC, 0x8004, {1, 2, 3, 4, 5, 6, 7, 8}};
    return S_OK;
  };
  for (int i = 0; i < 200; ++i) {
    const std::uint64_t id = NewPersistentId();
    EXPECT_EQ(id >> 16, 0x12345678'9ABCu) << "nothing is carried into the upper parts";
    EXPECT_EQ(id & 0x8004, 0x8004u);
    seen |= id;
  }
  EXPECT_EQ(seen & 0xFFFF, 0xFFFFu);
}

TEST(NewPersistentId, DrawsFromTheSystemWhenThereIsNoGuid) {
  TestMachine machine;
  CurrentMachine().createGuid = [](GUID* guid) {
    *guid = {};
    return E_FAIL;
  };
  std::set<std::uint64_t> ids;
  for (int i = 0; i < 100; ++i) ids.insert(NewPersistentId() >> 16);
  EXPECT_EQ(ids.size(), 100u);
}

}  // namespace
}  // namespace quaylink::test
