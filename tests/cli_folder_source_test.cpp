#include <gmock/gmock.h>

#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "cli/base/program.h"
#include "cli/source/folder_source.h"
#include "support/scratch_folder.h"

namespace quaylink::test {
namespace {

using namespace cli;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

using Kind = FetchResult::Kind;

class FolderWithMusic : public ScratchFolder {
 protected:
  void SetUp() override {
    ScratchFolder::SetUp();
    WriteFile(Music("F00/AAAA.mp3"), "first");
    WriteFile(Music("F01/BBBB.m4a"), "second");
    fs::create_directory(folder_ / "copies");
    copies_ = Folder::Open(folder_ / "copies", error_);
  }
  void TearDown() override {
    copies_ = Folder();
    ScratchFolder::TearDown();
  }

  fs::path Music(const std::string& name) const {
    return folder_ / "player" / "iPod_Control" / "Music" / name;
  }
  FolderSource Player() const { return FolderSource(folder_ / "player"); }
  FetchResult Fetch(FolderSource& source, const std::string& location,
                    const std::string& name = "copy") const {
    return source.Fetch(location, copies_, name, nullptr);
  }
  std::string Copy(const std::string& name = "copy") const {
    return ReadFile(folder_ / "copies" / name);
  }
  static Track TrackAt(const char* location) {
    Track track;
    track.location = location;
    track.fileSize = 77;
    return track;
  }

  std::error_code error_;
  Folder copies_;
};

TEST_F(FolderWithMusic, FilesAreFetchedWithTheirTimesInAnyLetterCase) {
  FolderSource source = Player();
  const char* const locations[] = {
      "/iPod_Control/Music/F00/AAAA.mp3", "/IPOD_CONTROL/music/f00/aaaa.MP3",
      "F:\\iPod_Control\\Music\\F00\\AAAA.mp3", "iPod_Control//Music/F00/AAAA.mp3"};
  for (const char* location : locations) {
    const std::string path = DevicePathOf(location);
    EXPECT_EQ(Fetch(source, path).problem, "") << location;
    EXPECT_EQ(Copy(), "first") << location;
    const std::optional<FileFacts> facts = source.Look(TrackAt(location));
    ASSERT_TRUE(facts) << location;
    EXPECT_EQ(*facts, copies_.Look("copy").facts) << location;
    EXPECT_FALSE(copies_.Remove("copy"));
  }
}

TEST_F(FolderWithMusic, LongFilesAreToldAsTheyCome) {
  const std::string contents(9'000'000, 'x');
  WriteFile(Music("F00/long.mp3"), contents);
  FolderSource source = Player();
  std::vector<std::uint64_t> told;
  EXPECT_TRUE(source
                  .Fetch("/iPod_Control/Music/F00/long.mp3", copies_, "copy",
                         [&told](std::uint64_t count) { told.push_back(count); })
                  .Good());
  EXPECT_GT(told.size(), 1u);
  EXPECT_EQ(std::accumulate(told.begin(), told.end(), std::uint64_t{0}), contents.size());
  EXPECT_EQ(Copy(), contents);
}

TEST_F(FolderWithMusic, NothingElseIsFetched) {
  WriteFile(folder_ / "secret.mp3", "secret");
  WriteFile(folder_ / "player" / "secret.mp3", "secret");
  FolderSource source = Player();
  const char* const locations[] = {"/iPod_Control/Music/F00/missing.mp3",
                                   "/iPod_Control/Music/F77/AAAA.mp3",
                                   "/../secret.mp3",
                                   "/iPod_Control/../secret.mp3",
                                   "/iPod_Control/Music/../../../secret.mp3",
                                   "/iPod_Control/Music/F00/.",
                                   "/iPod_Control/Music/F00/",
                                   "/iPod_Control/Music/F00/AAAA.mp3/x",
                                   "/iPod_Control/Music/F00",
                                   "/",
                                   ""};
  for (const char* location : locations) {
    EXPECT_EQ(Fetch(source, location).kind, Kind::kMissing) << location;
    EXPECT_FALSE(source.Look(TrackAt(location))) << location;
  }
  EXPECT_THAT(copies_.Names(error_), IsEmpty());
  EXPECT_EQ(Fetch(source, locations[0]).problem,
            "/iPod_Control/Music/F00/missing.mp3: there is no such file");
}

TEST_F(FolderWithMusic, CopyTakesNobodysPlace) {
  FolderSource source = Player();
  WriteFile(folder_ / "copies" / "copy", "somebody's");
  const FetchResult result = Fetch(source, "/iPod_Control/Music/F00/AAAA.mp3");
  EXPECT_EQ(result.kind, Kind::kRefused);
  EXPECT_THAT(result.problem, HasSubstr("cannot be written: "));
  EXPECT_EQ(Copy(), "somebody's");
}

TEST_F(FolderWithMusic, MusicFilesAreListedInOrderAndOthersLeftOut) {
  for (const char* name : {"F00/._AAAA.mp3", "F00/cover.jpg", "F00/mp3", "F01/deep/er/CCCC.WAV",
                           "F00/list.m3u", ".hidden.flac"}) {
    WriteFile(Music(name), "x");
  }
  WriteFile(folder_ / "player" / "Notes" / "note.mp3", "x");
  WriteFile(folder_ / "player" / "iTunes_Control" / "Music" / "DDDD.aif", "12345");
  FolderSource source = Player();
  std::vector<std::string> locations;
  for (const Source::MusicFile& file : source.MusicFiles()) {
    locations.push_back(file.location);
    ASSERT_TRUE(file.facts) << file.location;
    EXPECT_EQ(Fetch(source, file.location).problem, "");
    EXPECT_EQ(copies_.Look("copy").facts, *file.facts);
    EXPECT_FALSE(copies_.Remove("copy"));
  }
  EXPECT_THAT(
      locations,
      ElementsAre("/iPod_Control/Music/.hidden.flac", "/iPod_Control/Music/F00/AAAA.mp3",
                  "/iPod_Control/Music/F01/BBBB.m4a", "/iPod_Control/Music/F01/deep/er/CCCC.WAV",
                  "/iTunes_Control/Music/DDDD.aif"));
}

TEST_F(FolderWithMusic, MoreFoldersThanStayOpenAreReached) {
  for (int i = 0; i < 300; ++i) WriteFile(Music("folder" + std::to_string(i) + "/x.mp3"), "x");
  FolderSource source = Player();
  const std::vector<Source::MusicFile> files = source.MusicFiles();
  EXPECT_EQ(files.size(), 302u);
  for (std::size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(Fetch(source, files[i].location, "copy" + std::to_string(i)).problem, "");
  }
}

TEST_F(FolderWithMusic, WithoutItsFolderItDoesNotAnswerAndNoTrackIsGivenUp) {
  {
    FolderSource source = Player();
    fs::remove(Music("F01/BBBB.m4a"));
    EXPECT_EQ(Fetch(source, "/iPod_Control/Music/F01/BBBB.m4a").kind, Kind::kMissing);
    EXPECT_TRUE(source.Answers());
  }
  FolderSource source = Player();
  fs::remove_all(folder_ / "player" / "iPod_Control");
  EXPECT_FALSE(source.Answers());
  EXPECT_EQ(Fetch(source, "/iPod_Control/Music/F00/AAAA.mp3").kind, Kind::kUnreadable);
  EXPECT_THROW(Player(), Failure);
}

}  // namespace
}  // namespace quaylink::test
