// Paths, searches and files of the portable layer, held to what Windows documents for them, and to
// what a drive may hold elsewhere: links, pipes, devices.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/portable/machine.h"
#include "platform/portable/places.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

namespace fs = std::filesystem;
using portable::CurrentMachine;
using namespace std::string_literals;

using Names = std::vector<std::string>;

fs::path PathOf(std::string_view path) {
  return portable::FindPlace(path).path;
}

Names Find(const std::string& pattern) {
  WIN32_FIND_DATAA entry;
  HANDLE search = FindFirstFileA(pattern.c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return {"nothing"};
  Names names;
  do {
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    names.push_back(entry.cFileName + (isFolder ? "\\"s : ""s));
  } while (FindNextFileA(search, &entry) != 0);
  EXPECT_TRUE(FindClose(search));
  return names;
}

void MarkReadOnly(const fs::path& file) {
  fs::permissions(file, fs::perms::owner_read);
}

TEST(PortablePaths, FollowNamesWithoutRegardToCase) {
  TestMachine machine;
  machine.AddDrive('F');
  machine.WriteFile("F:\\iPod_Control\\iTunes\\iTunesDB", "db");
  machine.WriteFile("C:\\here", "c");
  const fs::path root = CurrentMachine().drives.at('F').root;
  const fs::path database = root / "iPod_Control/iTunes/iTunesDB";
  const std::string longest = "F:\\" + std::string(256, 'x');
  const struct {
    std::string path;
    fs::path place;
  } cases[] = {
      {"f:\\IPOD_CONTROL\\itunes\\ITUNESDB", database},
      {"F:/iPod_Control\\.\\Music\\..\\\\iTunes/iTunesDB", database},
      {"F:\\..\\..\\ipod_control\\New\\Name", root / "iPod_Control/New/Name"},
      {"F:\\", root},
      {"\\HERE", CurrentMachine().drives.at('C').root / "here"},
      {"F:\\a?b", {}},
      {"G:\\iPod_Control", {}},
      {"\\\\server\\share\\file", {}},
      {longest, root / longest.substr(3)},
      {longest + "x", {}},
      {"/usr/share", "/usr/share"},
      {"relative/F:", "relative/F:"},
  };
  for (const auto& [path, place] : cases) EXPECT_EQ(PathOf(path), place) << path;

  // Of two names that differ in case only, the one spelled exactly is meant.
  std::ofstream(root / "NAME").put('1');
  std::ofstream(root / "name").put('2');
  EXPECT_EQ(PathOf("F:\\name"), root / "name");
  EXPECT_EQ(PathOf("F:\\NAME"), root / "NAME");
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
            (Names{".\\", "..\\", "a.TXT", "B", "b.txt", "noext", "sub\\", "_c"}));
  EXPECT_EQ(Find("C:\\none\\*.*"), Names{"nothing"});
  EXPECT_EQ(Find("C:\\dir\\_c\\*.*"), Names{"nothing"});

  WIN32_FIND_DATAA entry;
  HANDLE search = FindFirstFileA("C:\\dir\\sub\\..\\*.*", &entry);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(RemoveLocalFile("C:\\dir\\a.TXT"));
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(FindNextFileA(search, &entry));
  EXPECT_STREQ(entry.cFileName, "B");
  EXPECT_TRUE(FindClose(search));
}

TEST(PortableFiles, CopyReplacesTheDestinationAndKeepsTimeAndReadOnlyMark) {
  TestMachine machine;
  const std::string contents(700'001, '\x01');
  machine.WriteFile("C:\\source", contents);
  machine.WriteFile("C:\\copy", std::string(800'000, 'o'));
  fs::last_write_time(PathOf("C:\\source"),
                      fs::file_time_type::clock::now() - std::chrono::hours(5));
  EXPECT_TRUE(CopyFileA("C:\\SOURCE", "C:\\copy", 0));
  EXPECT_EQ(machine.ReadFile("C:\\copy"), contents);
  EXPECT_EQ(fs::last_write_time(PathOf("C:\\copy")), fs::last_write_time(PathOf("C:\\source")));

  MarkReadOnly(PathOf("C:\\source"));
  EXPECT_TRUE(CopyFileA("C:\\source", "C:\\copy", 0));
  EXPECT_EQ(GetFileAttributesA("C:\\copy"), FILE_ATTRIBUTE_READONLY);
  EXPECT_FALSE(CopyFileA("C:\\source", "C:\\copy", 0));
  EXPECT_FALSE(OpenLocalFile("C:\\copy", "wb"));
  EXPECT_FALSE(RemoveLocalFile("C:\\copy"));
  EXPECT_EQ(machine.ReadFile("C:\\copy"), contents);
}

TEST(PortableFiles, CopyIsRefusedWhereWindowsRefusesIt) {
  TestMachine machine;
  machine.AddDrive('F');
  machine.WriteFile("F:\\source", "new");
  machine.WriteFile("C:\\old", "old");
  machine.AddFolder("C:\\folder");
  const std::string pipe = machine.LocalPath("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0666), 0);
  ASSERT_EQ(::mkfifo(PathOf("F:\\pipe").c_str(), 0666), 0);
  const struct {
    std::string source;
    std::string destination;
  } cases[] = {
      {"F:\\none", "C:\\x"},      {"F:\\none\\none", "C:\\x"},    {"F:\\source", "C:\\none\\x"},
      {"C:\\folder", "C:\\x"},    {"F:\\source", "C:\\folder"},   {"F:\\source", "F:\\Source"},
      {"F:\\source", "Q:\\x"},    {"F:\\source", "C:\\a\"b"},     {"F:\\source", "C:\\old\\x"},
      {"F:\\pipe", "C:\\x"},      {"F:\\source", "F:\\pipe"},     {pipe, "C:\\x"},
      {"/dev/zero", "C:\\x"},     {"F:\\source", pipe},           {"F:\\source", "/dev/full"},
      {"F:\\source\\", "F:\\\\"}, {"F:\\source\\..\\n", "C:\\x"},
  };
  for (const auto& [source, destination] : cases) {
    EXPECT_FALSE(CopyFileA(source.c_str(), destination.c_str(), 0)) << source << " " << destination;
  }
  EXPECT_FALSE(machine.Exists("C:\\x"));
  EXPECT_EQ(machine.ReadFile("C:\\old"), "old");
  EXPECT_EQ(machine.ReadFile("F:\\source"), "new");
  EXPECT_FALSE(OpenLocalFile("F:\\pipe", "rb"));
  EXPECT_FALSE(OpenLocalFile(pipe.c_str(), "rb"));
  EXPECT_EQ(LoadLibraryExA("F:\\pipe", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH), nullptr);
  machine.TakeDriveAway('F');
  EXPECT_FALSE(CopyFileA("F:\\source", "C:\\old", 0));
  EXPECT_EQ(machine.ReadFile("C:\\old"), "old");
}

TEST(PortableFiles, LinksLeadNowhereButToTheirOwnDrive) {
  TestMachine machine;
  machine.AddDrive('F');
  machine.WriteFile("F:\\folder\\song", "of the drive");
  machine.WriteFile("C:\\secret\\file", "of the computer");
  const fs::path root = PathOf("F:\\");
  const fs::path secret = PathOf("C:\\secret");
  const struct {
    fs::path target;
    std::string path;  // of a file by way of F:\link
    bool stays;
  } cases[] = {
      {"folder/song", "F:\\LINK", true},
      {"folder", "F:\\link\\SONG", true},
      {"./folder/../folder//song", "F:\\link", true},
      {root / "folder", "F:\\link\\song", true},
      {secret / "file", "F:\\link", false},
      {secret, "F:\\link\\file", false},
      {"../C/secret/file", "F:\\link", false},
      {"folder/../../C/secret", "F:\\link\\file", false},
      {"../F/folder/song", "F:\\link", false},
      {root / "../C/secret/file", "F:\\link", false},
      {root.string() + "folder/song", "F:\\link", false},
      {"../folder/song", "F:\\link", false},
      {"/proc/self/cwd", "F:\\link\\file", false},
      {"link", "F:\\link", false},
  };
  for (const auto& [target, path, stays] : cases) {
    SCOPED_TRACE(target);
    fs::remove(root / "link");
    fs::create_symlink(target, root / "link");
    EXPECT_EQ(CopyFileA(path.c_str(), "C:\\copy", 0) != 0, stays);
    EXPECT_EQ(OpenLocalFile(path.c_str(), "rb") != nullptr, stays);
    EXPECT_EQ(GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES, stays);
    EXPECT_EQ(CopyFileA("C:\\secret\\file", path.c_str(), 0) != 0, stays);
    EXPECT_EQ(machine.ReadFile("C:\\secret\\file"), "of the computer");
    machine.WriteFile("F:\\folder\\song", "of the drive");
    const bool isFolder = stays && !path.ends_with("k") && !path.ends_with("K");
    EXPECT_EQ(Find("F:\\*.*"), (Names{".\\", "..\\", "folder\\", isFolder ? "link\\" : "link"}));
    EXPECT_EQ(Find("F:\\link\\*.*") != Names{"nothing"}, isFolder);
    EXPECT_EQ(RemoveLocalFile(path.c_str()), stays);
    machine.WriteFile("F:\\folder\\song", "of the drive");
  }
  // Nothing is made where a link would lead, either.
  fs::remove(root / "link");
  fs::create_symlink(secret / "new", root / "link");
  EXPECT_FALSE(CopyFileA("F:\\folder\\song", "F:\\link", 0));
  EXPECT_FALSE(CreateDirectoryA("F:\\link", nullptr));
  EXPECT_FALSE(OpenLocalFile("F:\\link", "wb+"));
  EXPECT_EQ(Find("C:\\secret\\*.*"), (Names{".\\", "..\\", "file"}));
}

TEST(PortableFiles, FoldersAreNeitherMadeTwiceNorOpenedAsFiles) {
  TestMachine machine;
  EXPECT_TRUE(CreateDirectoryA("C:\\Folder", nullptr));
  EXPECT_FALSE(CreateDirectoryA("C:\\FOLDER", nullptr));
  EXPECT_FALSE(CreateDirectoryA("C:\\none\\x", nullptr));
  EXPECT_FALSE(CreateDirectoryA(("C:\\" + std::string(245, 'x')).c_str(), nullptr));
  EXPECT_TRUE(CreateDirectoryA(("C:\\" + std::string(244, 'x')).c_str(), nullptr));
  EXPECT_EQ(GetFileAttributesA("C:\\folder"), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributesA("C:\\none"), INVALID_FILE_ATTRIBUTES);
  EXPECT_FALSE(OpenLocalFile("C:\\folder", "rb"));
  EXPECT_FALSE(OpenLocalFile(machine.LocalPath("").c_str(), "rb"));
  EXPECT_FALSE(OpenLocalFile("Z:\\file", "wb"));
  EXPECT_FALSE(RemoveLocalFile("C:\\folder"));
  EXPECT_TRUE(OpenLocalFile("C:\\folder\\file", "wb"));
  EXPECT_TRUE(RemoveLocalFile("C:\\FOLDER\\FILE"));
  EXPECT_FALSE(machine.Exists("C:\\folder\\file"));
}

}  // namespace
}  // namespace quaylink::test
