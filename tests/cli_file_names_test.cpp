#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/naming/safe_names.h"
#include "cli/naming/taken_names.h"
#include "cli/naming/track_namer.h"
#include "cli/text/utf8.h"

namespace quaylink::test {
namespace {

using namespace cli;

constexpr NameLimits kLinux = {NameLimits::Measure::kBytes, 255, 4000};
// Below a folder such as C:\Users\Somebody\Music.
constexpr NameLimits kWindows = {NameLimits::Measure::kUnits, 255, 230};

Track MakeTrack(const char* artist, const char* album, const char* title,
                const char* location = "/Music/F00/ABCD.mp3") {
  Track track;
  track.artist = artist;
  track.album = album;
  track.title = title;
  track.location = location;
  return track;
}

std::string NameOf(const Track& track, std::string_view pattern = NamePattern::kDefault,
                   const NameLimits& limits = kLinux) {
  return TrackNamer(NamePattern(pattern), {track}, limits).WantedPath(track);
}

std::string Repeated(std::string_view string, int times) {
  std::string whole;
  for (int i = 0; i < times; ++i) whole += string;
  return whole;
}

std::size_t UnitsOf(std::string_view string) {
  std::size_t units = 0;
  for (const char32_t character : Decode(string)) units += character > 0xFFFF ? 2 : 1;
  return units;
}

TEST(FileNames, SafeNameGivesWhatWindowsAndLinuxBothTake) {
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
      {".quaylink-export", "_quaylink-export"},
      {"con", "_con"},
      {"Aux.tar.gz", "_Aux.tar.gz"},
      {"nul .txt", "_nul .txt"},
      {"COM7", "_COM7"},
      {"lpt\xC2\xB2", "_lpt\xC2\xB2"},
      {"conOUT$", "_conOUT$"},
      {"COM10", "COM10"},
      {"Concert", "Concert"},
      {"bad \xFF byte", "bad _ byte"},
      {"岬の灯へ", "岬の灯へ"},
      {"Song.Quaylink-Part", "Song_Quaylink-Part"},
      {"Panel.{21EC2020-3AEA-1069-A2DD-08002B30309D}",
       "Panel_{21EC2020-3AEA-1069-A2DD-08002B30309D}"},
      {"Panel.{21EC2020}", "Panel.{21EC2020}"},
  };
  for (const auto& testCase : kCases) {
    EXPECT_EQ(SafeName(testCase.string, kLinux), testCase.name) << testCase.string;
  }
}

TEST(FileNames, LongNamesKeepTheirBeginningAndEnd) {
  constexpr NameLimits kBytes = {NameLimits::Measure::kBytes, 20, 4000};
  constexpr NameLimits kUnits = {NameLimits::Measure::kUnits, 20, 4000};
  const struct {
    const char* string;
    const char* inBytes;
    const char* inUnits;
  } kCases[] = {
      {"exactly 20 with end!", "exactly 20 with end!", "exactly 20 with end!"},
      {"one more than twenty!", "one more…n twenty!", "one more…an twenty!"},
      {"Sonata No. 1: I. Allegro", "Sonata N…. Allegro", "Sonata No…I. Allegro"},
      {"岬の灯へ向かう小さな舟歌、そして海の歌", "岬の…海の歌",
       "岬の灯へ向かう小さな舟歌、そして海の歌"},
      // Characters outside the basic plane are not cut apart, nor marks from what they are on.
      {"🎵🎵🎵🎵🎵🎵🎵🎵🎵🎵🎵", "🎵🎵…🎵🎵", "🎵🎵🎵🎵…🎵🎵🎵🎵🎵"},
      {"1234567e\u0301 and 12345678e\u0301", "1234567…2345678e\u0301",
       "1234567e\u0301…12345678e\u0301"},
      {"12345678e\u0301 and e\u030112345678", "12345678…12345678", "12345678…e\u030112345678"},
  };
  for (const auto& testCase : kCases) {
    EXPECT_EQ(SafeName(testCase.string, kBytes), testCase.inBytes);
    EXPECT_EQ(SafeName(testCase.string, kUnits), testCase.inUnits);
  }
}

TEST(FileNames, KindsOfFilesThatASystemActsOnAreTamed) {
  const struct {
    const char* name;
    const char* asMedia;
    const char* asAny;
  } kCases[] = {
      {"song.MP3", "song.MP3", "song.MP3"},
      {"list.m3u8", "list.m3u8", "list.m3u8"},
      {"song", "song", "song"},
      {"Mr. Brown", "Mr. Brown", "Mr. Brown"},
      {"photo.jpg", "photo.jpg_", "photo.jpg"},
      {"Photos.scf", "Photos.scf_", "Photos.scf_"},
      {"desktop.INI", "desktop.INI_", "desktop.INI_"},
      {"song.exe. ", "song.exe_", "song.exe_"},
      {"song.mp3.lnk", "song.mp3.lnk_", "song.mp3.lnk_"},
      {"x.settingcontent-ms", "x.settingcontent-ms_", "x.settingcontent-ms_"},
      {".ini", "_ini", "_ini"},
  };
  for (const auto& testCase : kCases) {
    EXPECT_EQ(SafeFileName(testCase.name, FileKinds::kMedia, kLinux), testCase.asMedia);
    EXPECT_EQ(SafeFileName(testCase.name, FileKinds::kAllButHarmful, kLinux), testCase.asAny);
  }
}

TEST(FileNames, PatternNamesTracksByTheirProperties) {
  Track full = MakeTrack("Björk", "Post", "Hyper/ballad", "F:\\iPod_Control\\Music\\F05\\ABCD.m4a");
  full.index = 7;
  full.genre = "Electronic";
  full.year = 1995;
  full.trackNumber = 2;
  full.trackCount = 113;
  full.discNumber = 1;
  full.lengthMs = 321000;
  full.released = 3400000000u;
  full.episodeNumber = 3;
  full.compilation = 1;
  full.persistentId = 0xAB;
  const Track bare = MakeTrack("", " ", "", "/iPod_Control/Music/F05/WXYZ.mp3");
  const Track nothing = MakeTrack("", "", "", "");
  const Track dots = MakeTrack("A", "B", "The End. . ");
  const Track program = MakeTrack("A", "B", "song.exe", "/Music/ABCD");
  const Track hidden = MakeTrack("A", "B", "", "/Music.d/.mp3");
  const struct {
    const char* pattern;
    const Track& track;
    const char* path;
  } kCases[] = {
      {"{artist}/{album}/{title}", full, "Björk/Post/Hyper_ballad.m4a"},
      {"{artist}/{album}/{title}", bare, "Unknown Artist/Unknown Album/WXYZ.mp3"},
      {"{artist}/{album}/{title}", nothing, "Unknown Artist/Unknown Album/Untitled"},
      {"{index} - {title} ({file})", full, "7 - Hyper_ballad (ABCD).m4a"},
      {"{genre}/{year}/{trackNumber}", full, "Electronic/1995/002.m4a"},
      {"{genre}/{year} {title}", bare, "Unknown/WXYZ.mp3"},
      {"{lengthMs} {released} {episodeNumber} {compilation} {persistentId}", full,
       "321000 2011-09-27 03 true 00000000000000AB.m4a"},
      {"[{year} - ]{title}[ {[}{discNumber}, {bpm}{]}]", full, "1995 - Hyper_ballad.m4a"},
      {"[{year} - ]{title}[ {[}{discNumber}{]}]{{}", full, "1995 - Hyper_ballad [1]{.m4a"},
      {"[{title} by ][{artist}]{file}", bare, "WXYZ.mp3"},
      {"Music\\{artist}\\{title}", full, "Music/Björk/Hyper_ballad.m4a"},
      {"../{title}", full, "_/Hyper_ballad.m4a"},
      {"}{title}", full, "}Hyper_ballad.m4a"},
      {"{title}", dots, "The End.mp3"},
      {"{title}", program, "song.exe_"},
      {"{title}", hidden, "_mp3"},
  };
  for (const auto& testCase : kCases) {
    EXPECT_EQ(NameOf(testCase.track, testCase.pattern), testCase.path) << testCase.pattern;
  }
}

TEST(FileNames, PatternsThatMakeNoSenseAreRefused) {
  const struct {
    const char* pattern;
    const char* words;
  } kCases[] = {
      {"", "without a name"},
      {"/{title}", "without a name"},
      {"{artist}//{title}", "without a name"},
      {"{artist}/", "without a name"},
      {"{titel}", "{titel} is no property of tracks"},
      {"{title", "a \"{\" has no \"}\""},
      {"{}", "{} is no property"},
      {"[{artist}/]{title}", "a \"[\" has no \"]\""},
      {"{title}[{year}", "a \"[\" has no \"]\""},
      {"{title}]", "a \"]\" has no \"[\""},
      {"[{artist} [{album}]]", "stands within brackets"},
      {"{title} [live]", "without a property"},
  };
  for (const auto& testCase : kCases) {
    try {
      const NamePattern pattern(testCase.pattern);
      ADD_FAILURE() << testCase.pattern;
    } catch (const std::invalid_argument& error) {
      EXPECT_NE(std::string(error.what()).find(testCase.words), std::string::npos) << error.what();
    }
  }
}

TEST(FileNames, DefaultNamesFileTracksByAlbumAndNumber) {
  struct Case {
    const char* artist;
    const char* albumArtist;
    bool compilation;
    const char* album;
    std::uint32_t discNumber, discCount, trackNumber, trackCount;
    const char* path;
  };
  const Case kCases[] = {
      {"A", "", false, "One", 0, 0, 3, 0, "A/One/03 T.mp3"},
      {"A", "", false, "One", 0, 0, 0, 0, "A/One/T.mp3"},
      {"A", "", false, "One", 1, 1, 4, 0, "A/One/04 T.mp3"},
      {"A feat. B", "A", false, "One", 1, 1, 5, 0, "A/One/05 T.mp3"},
      {"C", "", true, "Hits", 0, 0, 1, 20, "Various Artists/Hits/01 T.mp3"},
      {"D", "DJ", true, "Mix", 0, 0, 1, 0, "DJ/Mix/01 T.mp3"},
      {"", "", false, "", 0, 0, 0, 0, "Unknown Artist/Unknown Album/T.mp3"},
      // The first disc does not know of the second one, which has more than 99 tracks.
      {"A", "", false, "Two", 1, 0, 7, 0, "A/Two/1-07 T.mp3"},
      {"A", "", false, "Two", 2, 0, 7, 0, "A/Two/2-007 T.mp3"},
      {"A", "", false, "Two", 2, 0, 120, 0, "A/Two/2-120 T.mp3"},
      {"A", "", false, "Two", 0, 0, 7, 0, "A/Two/07 T.mp3"},
      {"A", "", false, "Box", 3, 12, 7, 0, "A/Box/03-07 T.mp3"},
      // Compilations have one album together, other artists one each.
      {"E", "", true, "Hits", 2, 0, 2, 0, "Various Artists/Hits/2-02 T.mp3"},
      {"F", "", false, "Two", 1, 1, 7, 0, "F/Two/07 T.mp3"},
  };
  std::vector<Track> tracks;
  for (const Case& testCase : kCases) {
    Track track = MakeTrack(testCase.artist, testCase.album, "T");
    track.index = static_cast<std::uint32_t>(tracks.size());
    track.albumArtist = testCase.albumArtist;
    track.compilation = testCase.compilation ? 1 : 0;
    track.discNumber = testCase.discNumber;
    track.discCount = testCase.discCount;
    track.trackNumber = testCase.trackNumber;
    track.trackCount = testCase.trackCount;
    tracks.push_back(track);
  }
  const TrackNamer namer(NamePattern(NamePattern::kDefault), tracks, kLinux);
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    EXPECT_EQ(namer.WantedPath(tracks[i]), kCases[i].path);
  }
  EXPECT_EQ(TrackNamer(NamePattern("{index} {discNumber}"), tracks, kLinux).WantedPath(tracks[9]),
            "09 2.mp3");
}

TEST(FileNames, LongPathsFitBothSystemsAndKeepAlbumsTogether) {
  const std::string movements = Repeated("Concerto for 語 and Orchestra, ", 20);
  for (const NameLimits& limits :
       {kLinux, kWindows, NameLimits{NameLimits::Measure::kUnits, 255, 130}}) {
    std::set<std::string> folders;
    std::set<std::string> paths;
    for (const char* end : {"I. Allegro", "II. Adagio", "III. Allegro"}) {
      for (const std::string& title : {movements + end, std::string(end)}) {
        const Track track = MakeTrack(movements.c_str(), movements.c_str(), title.c_str());
        const std::string path = NameOf(track, NamePattern::kDefault, limits);
        EXPECT_LE(limits.measure == NameLimits::Measure::kBytes ? path.size() : UnitsOf(path),
                  limits.path - std::string(" (1234).quaylink-part").size());
        std::size_t begin = 0;
        for (std::size_t slash; (slash = path.find('/', begin)) != std::string::npos;) {
          EXPECT_LE(slash - begin, 255u);
          begin = slash + 1;
        }
        EXPECT_LE(path.size() - begin, 241u);
        EXPECT_TRUE(path.ends_with("Allegro.mp3") || path.ends_with("Adagio.mp3")) << path;
        folders.insert(path.substr(0, begin));
        paths.insert(path);
      }
    }
    EXPECT_EQ(folders.size(), 1u);
    EXPECT_EQ(paths.size(), 6u);
  }
  // Where there is no room at all, names are as short as they may be.
  const Track track = MakeTrack("Some Artist's Name", "Some Album's Name", "Some Title's Name");
  EXPECT_EQ(NameOf(track, NamePattern::kDefault, {NameLimits::Measure::kUnits, 255, 0}),
            "Some…s Name/Some…s Name/Som…Name.mp3");
}

TEST(FileNames, SharedPathsAreNumbered) {
  TakenNames names;
  EXPECT_TRUE(names.Take("Playlists/Mix.m3u8"));
  EXPECT_FALSE(names.Take("playlists/MIX.m3u8"));
  const struct {
    const char* wanted;
    const char* given;
  } kCases[] = {
      {"A/B/Song.mp3", "A/B/Song.mp3"},         {"A/B/Song.mp3", "A/B/Song (2).mp3"},
      {"a/b/SONG.mp3", "a/b/SONG (3).mp3"},     {"A/B/Song (3).mp3", "A/B/Song (3) (2).mp3"},
      {"A/B/Song (4).mp3", "A/B/Song (4).mp3"}, {"A/B/Song.mp3", "A/B/Song (5).mp3"},
      {"A/B/Song.m4a", "A/B/Song.m4a"},         {"A/B/Éclair.mp3", "A/B/Éclair.mp3"},
      {"A/B/éclair.mp3", "A/B/éclair (2).mp3"}, {"A.x/Mr. Brown", "A.x/Mr. Brown"},
      {"A.x/Mr. Brown", "A.x/Mr. Brown (2)"},   {"Playlists/Mix.m3u8", "Playlists/Mix (2).m3u8"},
  };
  for (const auto& testCase : kCases) EXPECT_EQ(names.TakeFree(testCase.wanted), testCase.given);
}

}  // namespace
}  // namespace quaylink::test
