// Paths, searches and files of the portable layer, held to what Windows documents for them.
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
using namespace std::string_literals;

LONG LastError() {
  return static_cast<LONG>(GetLastError());
}

using Names = std::vector<std::string>;

Names Find(const std::string& pattern) {
  Names names;
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
  EXPECT_EQ(Find("C:\\*.*").back(), "caf\xE9 \x80");
}

TEST(PortableSearch, DeliversTheFoldersEntriesInOrderButWhatHasVanished) {
  TestMachine machine;
  for (const char* name : {"b.txt", "B", "a.TXT", "_c", "noext"}) {
    machine.WriteFile("C:\\dir\\"s + name, "x");
  }
  machine.AddFolder("C:\\dir\\sub");
  EXPECT_EQ(Find("C:\\DIR\\*.*"),
            (Names{".\\", "..\\", "_c", "a.TXT", "B", "b.txt", "noext", "sub\\"}));
  EXPECT_EQ(Find("C:\\none\\*.*"), Names{"error 3"});

  WIN32_FIND_DATAA entry;
  HANDLE search = FindFirstFileA("C:\\dir\\sub\\..\\*.*", &entry);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  EXPECT_EQ(_unlink("C:\\dir\\_c"), 0);
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(FindNextFileA(search, &entry));
  EXPECT_STREQ(entry.cFileName, "a.TXT");
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
    LONG error;
  } cases[] = {
      {"F:\\none", "C:\\x", 2},         {"F:\\none\\none", "C:\\x", 3},
      {"F:\\source", "C:\\none\\x", 3}, {"F:\\source", "C:\\folder", 5},
      {"C:\\folder", "C:\\x", 5},       {"F:\\source", "F:\\Source", 32},
      {"F:\\source", "/dev/full", 112}, {"F:\\source", "C:\\old\\x", 3},
      {"F:\\source", "Q:\\x", 3},       {"F:\\source", "C:\\a\"b", 3},
  };
  for (const auto& [source, destination, error] : cases) {
    EXPECT_FALSE(CopyFileA(source, destination, 0)) << source << " to " << destination;
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
