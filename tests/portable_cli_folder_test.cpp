// What somebody may have put into a folder to lead the program astray. On Windows this takes an
// administrator.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <system_error>

#include "cli/source/folder_source.h"
#include "cli/source/mounted_volumes.h"
#include "cli/system/folder.h"
#include "support/scratch_folder.h"

namespace quaylink::test {
namespace {

using namespace cli;

namespace fs = std::filesystem;

class PlantedEntries : public ScratchFolder {
 protected:
  void SetUp() override {
    ScratchFolder::SetUp();
    fs::create_directory(folder_ / "own");
    WriteFile(outside_ / "secret", "secret");
    opened_ = Folder::Open(folder_ / "own", error_);
    fs::create_symlink(outside_ / "secret", folder_ / "own" / "link");
    fs::create_symlink(outside_ / "missing", folder_ / "own" / "dangling");
    fs::create_directory_symlink(outside_, folder_ / "own" / "folder");
    ASSERT_EQ(mkfifo((folder_ / "own" / "pipe").c_str(), 0666), 0);
  }

  const fs::path outside_ = folder_ / "outside";
  std::error_code error_;
  Folder opened_;
};

TEST_F(PlantedEntries, AreNeitherFilesNorFolders) {
  for (const char* name : {"link", "dangling", "folder", "pipe"}) {
    EXPECT_EQ(opened_.Look(name).kind, EntryKind::kOther) << name;
    EXPECT_FALSE(opened_.OpenFile(name, error_).IsOpen()) << name;
    EXPECT_FALSE(opened_.OpenFolder(name, error_).IsOpen()) << name;
    EXPECT_FALSE(opened_.MakeFile(name, error_).IsOpen()) << name;
    EXPECT_FALSE(opened_.MakePrivateFolder(name, error_).IsOpen()) << name;
  }
  EXPECT_FALSE(fs::exists(outside_ / "missing"));
}

TEST_F(PlantedEntries, AreMovedOverAndRemovedThemselves) {
  const auto secretTime = fs::last_write_time(outside_ / "secret");
  EXPECT_FALSE(opened_.SetTime("link", 1'000'000'000));
  EXPECT_EQ(fs::last_write_time(outside_ / "secret"), secretTime);
  WriteFile(folder_ / "own" / "song.mp3", "song");
  EXPECT_EQ(opened_.Move("song.mp3", opened_, "link", false), std::errc::file_exists);
  EXPECT_FALSE(opened_.Move("song.mp3", opened_, "link", true));
  EXPECT_EQ(ReadFile(folder_ / "own" / "link"), "song");
  for (const char* name : {"link", "dangling", "folder", "pipe"}) {
    EXPECT_FALSE(opened_.Remove(name)) << name;
  }
  EXPECT_EQ(ReadFile(outside_ / "secret"), "secret");
}

TEST_F(PlantedEntries, TimesOfOtherCenturiesAreBounded) {
  WriteFile(folder_ / "own" / "song.mp3", "song");
  const timespec times[] = {{0, UTIME_OMIT}, {std::int64_t{1} << 36, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, (folder_ / "own" / "song.mp3").c_str(), times, 0), 0);
  EXPECT_GT(opened_.Look("song.mp3").facts.time, std::int64_t{1} << 62);
}

TEST_F(PlantedEntries, FolderStaysTheSameWhenItsNameLeadsElsewhere) {
  fs::rename(folder_ / "own", folder_ / "moved");
  fs::create_directory_symlink(outside_, folder_ / "own");
  EXPECT_TRUE(opened_.MakeFile("song.mp3", error_).IsOpen());
  const auto path = opened_.PathForLibrary("other.mp3");
  ASSERT_TRUE(path);
  WriteFile(*path, "x");
  EXPECT_TRUE(fs::exists(folder_ / "moved" / "song.mp3"));
  EXPECT_TRUE(fs::exists(folder_ / "moved" / "other.mp3"));
  EXPECT_EQ(std::distance(fs::directory_iterator(outside_), {}), 1);
}

TEST_F(PlantedEntries, PrivateFolderLetsNobodyElseIn) {
  EXPECT_TRUE(opened_.MakePrivateFolder("private", error_).IsOpen());
  EXPECT_EQ(fs::status(folder_ / "own" / "private").permissions(), fs::perms::owner_all);
}

TEST_F(PlantedEntries, SourceFollowsNoLinkAndWaitsForNoPipe) {
  const fs::path music = folder_ / "player" / "iPod_Control" / "Music";
  WriteFile(music / "F00" / "AAAA.mp3", "first");
  WriteFile(outside_ / "secret.mp3", "secret");
  fs::create_directory_symlink(outside_, music / "F01");
  fs::create_symlink(outside_ / "secret.mp3", music / "F00" / "link.mp3");
  ASSERT_EQ(mkfifo((music / "F00" / "pipe.mp3").c_str(), 0666), 0);
  FolderSource source(folder_ / "player");
  for (const char* name : {"F01/secret.mp3", "F00/link.mp3", "F00/pipe.mp3", "f01/SECRET.mp3"}) {
    const std::string location = std::string("/iPod_Control/Music/") + name;
    const FetchResult result = source.Fetch(location, opened_, "copy", nullptr);
    EXPECT_EQ(result.kind, FetchResult::Kind::kMissing) << name;
    EXPECT_EQ(result.problem, location + ": is no ordinary file, and links are not followed");
    Track track;
    track.location = location.c_str();
    EXPECT_FALSE(source.Look(track)) << name;
  }
  EXPECT_EQ(source.MusicFiles().size(), 1u);
}

TEST_F(PlantedEntries, NamesThatAreNoTextAreKeptApart) {
  const fs::path music = folder_ / "player" / "iPod_Control" / "Music";
  WriteFile(music / "F00" / "\xFF.mp3", "first");
  WriteFile(music / "F00" / "\xFE.mp3", "second");
  FolderSource source(folder_ / "player");
  const auto fetched = [&](const std::string& name) {
    opened_.Remove("copy");
    return source.Fetch("/iPod_Control/Music/F00/" + name, opened_, "copy", nullptr).Good()
               ? ReadFile(folder_ / "own" / "copy")
               : "";
  };
  EXPECT_EQ(fetched("\xFF.mp3"), "first");
  EXPECT_EQ(fetched("\xFE.mp3"), "second");
  EXPECT_EQ(fetched("\xFD.mp3"), "");
  EXPECT_EQ(source.MusicFiles().size(), 2u);
}

TEST_F(PlantedEntries, DisksOfAMountTableAreTold) {
  WriteFile(folder_ / "mounts",
            "proc /proc proc rw 0 0\n"
            "/dev/sda1 / ext4 rw 0 0\n"
            "/dev/sdb1 /media/my\\040ipod vfat rw 0 0\n"
            "server:/music /mnt/music nfs rw 0 0\n");
  EXPECT_THAT(MountedVolumes(folder_ / "mounts"), testing::ElementsAre("/", "/media/my ipod"));
  EXPECT_TRUE(MountedVolumes(folder_ / "missing").empty());
}

}  // namespace
}  // namespace quaylink::test
