#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "cli/file_names.h"

namespace quaylink::test {
namespace {

using namespace cli;

Track MakeTrack(std::uint32_t index, const char* artist, const char* album, const char* title,
                const char* location = "/Music/F00/ABCD.mp3") {
  Track track;
  track.index = index;
  track.artist = artist;
  track.album = album;
  track.title = title;
  track.location = location;
  return track;
}

TEST(FileNames, SafeNameGivesWhatWindowsAndLinuxBothTake) {
  const std::string kRepeated(300, 'x');
  const struct {
    std::string string, name;
  } kCases[] = {
      {"Plain Title", "Plain Title"},
      {"AC/DC: \"Live\" <1> | a\\b * why?", "AC_DC_ _Live_ _1_ _ a_b _ why_"},
      {std::string("a\0b\n\x7F", 5), "a_b__"},
      {"dots and spaces. . ", "dots and spaces"},
      {"  led by spaces", "led by spaces"},
      {"", "_"},
      {".", "_"},
      {"..", "_"},
      {" . ", "_"},
      {".hidden", "_hidden"},
      {"con", "_con"},
      {"Aux.tar.gz", "_Aux.tar.gz"},
      {"nul .txt", "_nul .txt"},
      {"COM7", "_COM7"},
      {"lpt\xC2\xB2", "_lpt\xC2\xB2"},
      {"COM10", "COM10"},
      {"Concert", "Concert"},
      {"bad \xFF byte", "bad _ byte"},
      {"岬の灯へ", "岬の灯へ"},
      {kRepeated, std::string(69, 'x')},
      // A character outside the basic plane counts as two units and is not cut apart.
      {std::string(68, 'x') + "\xF0\x9F\x8E\xB5", std::string(68, 'x')},
      {std::string(67, 'x') + " .y", std::string(67, 'x')},
      {"Song.Quaylink-Part", "Song_Quaylink-Part"},
  };
  for (const auto& testCase : kCases) {
    EXPECT_EQ(SafeName(testCase.string), testCase.name) << testCase.string;
  }
  EXPECT_EQ(SafeFileName(kRepeated + ".html"), std::string(69, 'x') + ".html");
  EXPECT_EQ(SafeFileName("a. " + kRepeated), "a. " + std::string(66, 'x'));
}

TEST(FileNames, PatternNamesTracksByTheirProperties) {
  const Track full =
      MakeTrack(7, "Björk", "Post", "Hyper/ballad", "F:\\iPod_Control\\Music\\F05\\ABCD.m4a");
  const Track bare = MakeTrack(8, "", " ", "", "/iPod_Control/Music/F05/WXYZ.mp3");
  const Track nothing = MakeTrack(9, "", "", "", "");
  const struct {
    const char* pattern;
    const Track& track;
    const char* path;
  } kCases[] = {
      {"{artist}/{album}/{title}", full, "Björk/Post/Hyper_ballad.m4a"},
      {"{artist}/{album}/{title}", bare, "Unknown Artist/Unknown Album/WXYZ.mp3"},
      {"{artist}/{album}/{title}", nothing, "Unknown Artist/Unknown Album/Untitled"},
      {"{index} - {title} ({file})", full, "7 - Hyper_ballad (ABCD).m4a"},
      {"Music\\{artist}\\{title}", full, "Music/Björk/Hyper_ballad.m4a"},
      {"../{title}", full, "_/Hyper_ballad.m4a"},
      {"}{title}", full, "}Hyper_ballad.m4a"},
  };
  for (const auto& testCase : kCases) {
    EXPECT_EQ(PathsFor({testCase.track}, NamePattern(testCase.pattern)).front(), testCase.path)
        << testCase.pattern;
  }
  for (const char* pattern :
       {"", "/{title}", "{artist}//{title}", "{artist}/", "{titel}", "{title", "{}"}) {
    EXPECT_THROW(NamePattern{pattern}, std::invalid_argument) << pattern;
  }
}

TEST(FileNames, SharedPathsAreNumberedInTrackOrder) {
  const std::vector<Track> tracks = {
      MakeTrack(0, "A", "B", "Song"),   MakeTrack(1, "A", "B", "Song"),
      MakeTrack(2, "a", "b", "SONG"),   MakeTrack(3, "A", "B", "Song (3)"),
      MakeTrack(4, "A", "B", "Song"),   MakeTrack(5, "A", "B", "Song", "/Music/F00/X.m4a"),
      MakeTrack(6, "A", "B", "Éclair"), MakeTrack(7, "A", "B", "éclair"),
  };
  const std::vector<std::string> paths = {
      "A/B/Song.mp3",     "A/B/Song (2).mp3", "a/b/SONG (3).mp3", "A/B/Song (3) (2).mp3",
      "A/B/Song (4).mp3", "A/B/Song.m4a",     "A/B/Éclair.mp3",   "A/B/éclair (2).mp3"};
  EXPECT_EQ(PathsFor(tracks, NamePattern(NamePattern::kDefault)), paths);
  // Tracks added to the player later do not change the names of those before them.
  const std::vector<Track> earlier(tracks.begin(), tracks.begin() + 5);
  EXPECT_EQ(PathsFor(earlier, NamePattern(NamePattern::kDefault)),
            std::vector<std::string>(paths.begin(), paths.begin() + 5));
}

TEST(FileNames, LongPathsFitBothSystems) {
  std::string wide;
  for (int i = 0; i < 200; ++i) wide += "語";
  const std::vector<Track> tracks(
      3, MakeTrack(0, wide.c_str(), wide.c_str(), wide.c_str(), "/Music/F00/A.averylongextension"));
  const std::vector<std::string> paths = PathsFor(tracks, NamePattern(NamePattern::kDefault));
  EXPECT_NE(paths[0], paths[1]);
  EXPECT_NE(paths[1], paths[2]);
  for (const std::string& path : paths) {
    std::size_t characters = 0;
    std::size_t component = 0;
    for (const char byte : path) {
      if ((static_cast<unsigned char>(byte) & 0xC0u) != 0x80) ++characters;
      component = byte == '/' ? 0 : component + 1;
      EXPECT_LE(component, 241u) << path;
    }
    EXPECT_LE(characters, 180u) << path;
  }
}

}  // namespace
}  // namespace quaylink::test
