// Paths, drives, searches and files of the portable layer, held to what Windows documents for them.
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/portable/machine.h"
#include "support/test_machine.h"

namespace quaylink {
namespace {

namespace fs = std::filesystem;
using portable::CurrentMachine;
using portable::HostPath;
using std::string_literals::operator""s;

LONG LastError() {
  return static_cast<LONG>(GetLastError());
}

std::vector<std::string> Find(const std::string& pattern) {
  std::vector<std::string> names;
  WIN32_FIND_DATAA entry;
  HANDLE search = FindFirstFileA(pattern.c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return {"error " + std::to_string(GetLastError())};
  do {
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    names.push_back(entry.cFileName + (isFolder ? "\\"s : ""s));
  } while (FindNextFileA(search, &entry) != 0);
  EXPECT_EQ(LastError(), ERROR_NO_MORE_FILES);
  EXPECT_TRUE(FindClose(search));
  return names;
}

TEST(PortablePaths, FollowNamesWithoutRegardToCase) {
  TestMachine machine;
  machine.AddDrive('F');
  machine.WriteFile("F:\\iPod_Control\\iTunes\\iTunesDB", "db");
  machine.WriteFile("C:\\here", "c");
  const fs::path root = CurrentMachine().drives.at('F').root;
  const fs::path database = root / "iPod_Control/iTunes/iTunesDB";
  const struct {
    const char* path;
    fs::path host;
  } cases[] = {
      {"f:\\IPOD_CONTROL\\itunes\\ITUNESDB", database},
      {"F:/iPod_Control\\.\\Music\\..\\\\iTunes/iTunesDB", database},
      {"F:\\..\\..\\ipod_control\\New\\Name", root / "iPod_Control/New/Name"},
      {"F:\\", root},
      {"\\HERE", CurrentMachine().drives.at('C').root / "here"},
      {"F:\\a?b", {}},
      {"G:\\iPod_Control", {}},
      {"\\\\server\\share\\file", {}},
      {"/usr/share", "/usr/share"},
      {"relative/F:", "relative/F:"},
  };
  for (const auto& [path, host] : cases) EXPECT_EQ(HostPath(path), host) << path;

  // Of two names that differ in case only, the one spelled exactly is meant.
  std::ofstream(root / "NAME").put('1');
  std::ofstream(root / "name").put('2');
  EXPECT_EQ(HostPath("F:\\name"), root / "name");
  EXPECT_EQ(HostPath("F:\\NAME"), root / "NAME");
}

TEST(PortablePaths, TakeNamesInTheAnsiCodePage) {
  TestMachine machine;
  std::ofstream(CurrentMachine().drives.at('C').root / "caf\xC3\xA9 \xE2\x82\xAC").put('1');
  CurrentMachine().ansiCodePage = 1252;
  EXPECT_EQ(GetFileAttributesA("C:\\CAF\xE9 \x80"), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(Find("C:\\*"), std::vector{"caf\xE9 \x80"s});
}

TEST(PortableDrives, HaveTheirKindWhileTheyAreThere) {
  TestMachine machine;
  machine.AddDrive('F');
  CurrentMachine().drives['R'] = {DRIVE_CDROM, {}};
  const struct {
    const char* root;
    UINT kind;
  } cases[] = {{"F:\\", 2}, {"f:", 2},    {"C:\\", 3}, {"R:\\", 5},
               {"G:\\", 1}, {"F:\\x", 1}, {"", 1}};
  for (const auto& [root, kind] : cases) EXPECT_EQ(GetDriveTypeA(root), kind) << root;
  EXPECT_EQ(GetDriveTypeA(nullptr), DRIVE_FIXED);
  machine.TakeDriveAway('F');
  EXPECT_EQ(GetDriveTypeA("F:\\"), DRIVE_NO_ROOT_DIR);
}

TEST(PortableSearch, DeliversMatchesInOrderWithTheFoldersOwnEntriesFirst) {
  TestMachine machine;
  for (const char* name : {"b.txt", "B", "a.TXT", "_c", "noext"}) {
    machine.WriteFile("C:\\dir\\"s + name, "x");
  }
  machine.AddFolder("C:\\dir\\sub");
  using Names = std::vector<std::string>;
  EXPECT_EQ(Find("C:\\DIR\\*.*"),
            (Names{".\\", "..\\", "_c", "a.TXT", "B", "b.txt", "noext", "sub\\"}));
  EXPECT_EQ(Find("C:\\dir\\*"), Find("C:\\dir\\*.*"));
  EXPECT_EQ(Find("C:\\dir\\*.txt"), (Names{"a.TXT", "b.txt"}));
  EXPECT_EQ(Find("C:\\dir\\?.t*"), (Names{"a.TXT", "b.txt"}));
  EXPECT_EQ(Find("C:\\dir\\SUB"), Names{"sub\\"});
  EXPECT_EQ(Find("C:\\dir\\sub\\*.*"), (Names{".\\", "..\\"}));
  EXPECT_EQ(Find("C:\\*.*"), Names{"dir\\"});
  EXPECT_EQ(Find("C:\\dir\\none"), Names{"error 2"});
  EXPECT_EQ(Find("C:\\none\\*.*"), Names{"error 3"});
  EXPECT_EQ(Find("G:\\*.*"), Names{"error 3"});
  EXPECT_EQ(Find(fs::path(HostPath("C:\\dir")).string() + "/_*"), Names{"_c"});
}

TEST(PortableSearch, GivesSizesAndPassesOverWhatHasVanished) {
  TestMachine machine;
  machine.WriteFile("C:\\1", "12345");
  machine.WriteFile("C:\\2", "");
  WIN32_FIND_DATAA entry;
  HANDLE search = FindFirstFileA("C:\\*", &entry);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  EXPECT_EQ(entry.nFileSizeLow, 5U);
  EXPECT_EQ(_unlink("C:\\2"), 0);
  EXPECT_FALSE(FindNextFileA(search, &entry));
  EXPECT_TRUE(FindClose(search));
}

TEST(PortableFiles, CopyReplacesTheDestinationAndKeepsTheTime) {
  TestMachine machine;
  const std::string contents(700'001, '\x01');
  machine.WriteFile("C:\\source", contents);
  machine.WriteFile("C:\\copy", std::string(800'000, 'o'));
  fs::last_write_time(HostPath("C:\\source"),
                      fs::file_time_type::clock::now() - std::chrono::hours(5));
  EXPECT_TRUE(CopyFileA("C:\\SOURCE", "C:\\copy", 0));
  EXPECT_EQ(machine.ReadFile("C:\\copy"), contents);
  EXPECT_EQ(fs::last_write_time(HostPath("C:\\copy")), fs::last_write_time(HostPath("C:\\source")));
}

TEST(PortableFiles, CopyFailsWithTheReason) {
  TestMachine machine;
  machine.AddDrive('F');
  machine.WriteFile("F:\\source", "new");
  machine.WriteFile("C:\\old", "old");
  machine.AddFolder("C:\\folder");
  const struct {
    const char* source;
    const char* destination;
    BOOL failIfExists;
    LONG error;
  } cases[] = {
      {"F:\\none", "C:\\x", 0, 2},         {"F:\\none\\none", "C:\\x", 0, 3},
      {"F:\\source", "C:\\none\\x", 0, 3}, {"F:\\source", "C:\\folder", 0, 5},
      {"C:\\folder", "C:\\x", 0, 5},       {"F:\\source", "C:\\old", 1, 80},
      {"F:\\source", "F:\\Source", 0, 32}, {"F:\\source", "/dev/full", 0, 112},
      {"F:\\source", "C:\\old\\x", 0, 3},  {"F:\\source", "Q:\\x", 0, 3},
      {"F:\\source", "C:\\a\"b", 0, 3},
  };
  for (const auto& [source, destination, failIfExists, error] : cases) {
    EXPECT_FALSE(CopyFileA(source, destination, failIfExists)) << source << " to " << destination;
    EXPECT_EQ(LastError(), error) << source << " to " << destination;
  }
  EXPECT_FALSE(machine.Exists("C:\\x"));
  EXPECT_EQ(machine.ReadFile("C:\\old"), "old");
  EXPECT_EQ(machine.ReadFile("F:\\source"), "new");
  machine.TakeDriveAway('F');
  EXPECT_FALSE(CopyFileA("F:\\source", "C:\\old", 0));
  EXPECT_EQ(machine.ReadFile("C:\\old"), "old");
}

TEST(PortableFiles, FoldersAreNeitherMadeTwiceNorOpenedAsFiles) {
  TestMachine machine;
  EXPECT_TRUE(CreateDirectoryA("C:\\Folder", nullptr));
  EXPECT_FALSE(CreateDirectoryA("C:\\FOLDER", nullptr));
  EXPECT_EQ(LastError(), ERROR_ALREADY_EXISTS);
  EXPECT_FALSE(CreateDirectoryA("C:\\none\\x", nullptr));
  EXPECT_EQ(LastError(), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(GetFileAttributesA("C:\\folder"), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributesA("C:\\none"), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(LastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(fopen("C:\\folder", "rb"), nullptr);
  EXPECT_EQ(errno, EACCES);
  EXPECT_EQ(fopen("Z:\\file", "wb"), nullptr);
  std::FILE* file = fopen("C:\\folder\\file", "wb");
  ASSERT_NE(file, nullptr);
  std::fclose(file);
  EXPECT_EQ(_unlink("C:\\FOLDER\\FILE"), 0);
  EXPECT_FALSE(machine.Exists("C:\\folder\\file"));
}

}  // namespace
}  // namespace quaylink
