#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "cli/output/track_list.h"
#include "cli/text/display_width.h"
#include "cli/text/folding.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::test {
namespace {

using namespace cli;

TEST(Strings, WhatIsNotUtf8IsReplacedByteForByte) {
  const struct {
    const char *string, *valid;
  } kCases[] = {
      {"plain", "plain"},
      {"\xC3\xA9\xE8\xAA\x9E\xF0\x9F\x8E\xB5", "é語🎵"},
      {"a\xFFz", "a\uFFFDz"},
      {"cut \xE8\xAA", "cut \uFFFD\uFFFD"},
      {"over-long \xC0\xAF", "over-long \uFFFD\uFFFD"},
      {"surrogate \xED\xA0\x80", "surrogate \uFFFD\uFFFD\uFFFD"},
      {"beyond \xF4\x90\x80\x80", "beyond \uFFFD\uFFFD\uFFFD\uFFFD"},
  };
  for (const auto& testCase : kCases) EXPECT_EQ(MakeValid(testCase.string), testCase.valid);
}

TEST(Strings, PlayersCannotSteerTheTerminal) {
  EXPECT_EQ(MakePrintable("\x1B[31mred\r\n\t\xC2\x9B\u202Eend"),
            "\uFFFD[31mred\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"
            "end");
}

TEST(Strings, LowerCaseKeepsAccents) {
  EXPECT_EQ(LowerCase("BJÖRK ŽIŽEK Ÿ ΣΊΣΥΦΟΣ ЁЖИК Ẁ ȘȚ Ə ǦǨ ǅ ẞ ӁӐӀ"),
            "björk žižek ÿ σίσυφοσ ёжик ẁ șț ə ǧǩ ǆ ß ӂӑӏ");
  EXPECT_EQ(LowerCase("× ÷ 語 abcß"), "× ÷ 語 abcß");
}

TEST(Strings, SearchesSeeNoCaseAccentsOrComposition) {
  const struct {
    const char *string, *searched;
  } kCases[] = {
      {"Élodie", "elodie"},
      {"E\u0301lodie", "elodie"},
      {"BJÖRK Ångström", "bjork angstrom"},
      {"Mø Łódź Đorđe", "mo lodz dorde"},
      {"Straße STRASSE", "strasse strasse"},
      {"Æon œuvre İı", "aeon oeuvre ii"},
      {"Ελευθερία ΣΊΣΥΦΟΣ", "ελευθερια σισυφοσ"},
      {"Ёжик", "ежик"},
      {"Việt Nam", "viet nam"},
      {"שָׁלוֹם", "שלום"},
      // Not accents: without the marks these are other words.
      {"ガ", "\u30AB\u3099"},
      {"कि", "कि"},
      {"각", "\u1100\u1161\u11A8"},
      {"가", "\u1100\u1161"},
      {"힣", "\u1112\u1175\u11C2"},
  };
  for (const auto& testCase : kCases) {
    EXPECT_EQ(SearchForm(testCase.string), testCase.searched) << testCase.string;
  }
}

TEST(Strings, NumbersAreWrittenForPeopleAndPrograms) {
  EXPECT_EQ(TimeString(0), "");
  EXPECT_EQ(TimeString(1), "1904-01-01T00:00:01");
  EXPECT_EQ(TimeString(3429434363), "2012-09-02T12:39:23");
  EXPECT_EQ(TimeString(UINT32_MAX), "2040-02-06T06:28:15");
  EXPECT_EQ(LengthString(999), "0:00");
  EXPECT_EQ(LengthString(239'000), "3:59");
  EXPECT_EQ(LengthString(3'723'000), "1:02:03");
  EXPECT_EQ(PersistentIdString(0xA5A), "0000000000000A5A");
}

TEST(Strings, WidthCountsColumnsNotBytes) {
  const struct {
    const char* string;
    std::size_t width;
  } kCases[] = {{"", 0},     {"abc", 3},  {"é", 1}, {"e\u0301", 1}, {"終わり", 6},
                {"한글", 4}, {"ﾊﾝｶｸ", 4}, {"🎵", 2}, {"à la", 4},    {"a\u200Bb", 2}};
  for (const auto& testCase : kCases) {
    EXPECT_EQ(DisplayWidth(testCase.string), testCase.width) << testCase.string;
  }
  EXPECT_EQ(Fit("ab", 4), "ab  ");
  EXPECT_EQ(Fit("岬の灯へ", 6), "岬の… ");
  EXPECT_EQ(Fit("岬の灯へ", 5), "岬の…");
  EXPECT_EQ(Fit("abc", 0), "");
}

Track ListedTrack(std::uint32_t index, const char* artist, const char* album, const char* title) {
  Track track;
  track.index = index;
  track.artist = artist;
  track.album = album;
  track.title = title;
  track.location = "/iPod_Control/Music/F00/ABCD.mp3";
  track.year = 1990 + index;
  track.lengthMs = 61'000 * index;
  return track;
}

std::vector<Track> SomeTracks() {
  return {ListedTrack(0, "shiosai", "The Day Of The Big Tide", "岬の灯へ向かう小さな舟歌"),
          ListedTrack(1, "Björk", "Post, \"live\"", "Army\nof Me"),
          ListedTrack(2, "abba", "Gold", "Waterloo"), ListedTrack(3, "ABBA", "Arrival", "Tiger"),
          ListedTrack(4, "", "", "A title that is much longer than the others of this list")};
}

TEST(TrackList, TableFitsEveryWidthWithItsColumnsAligned) {
  for (const std::size_t width :
       {std::size_t{40}, std::size_t{61}, std::size_t{80}, std::size_t{0}}) {
    std::istringstream lines(TrackTable(SomeTracks(), {FindProperty("year")}, width));
    std::string header;
    ASSERT_TRUE(std::getline(lines, header));
    const std::size_t titleColumn = header.find("Title");
    int rows = 0;
    for (std::string line; std::getline(lines, line); ++rows) {
      EXPECT_TRUE(width == 0 || DisplayWidth(line) <= width) << line;
      // Every row's title begins where the header says, behind an empty gap.
      std::u32string columns;
      for (const char32_t character : Decode(line)) {
        columns.append(DisplayWidth(Encode({&character, 1})), character);
      }
      EXPECT_EQ(columns.substr(titleColumn - 2, 2), U"  ") << line;
      EXPECT_NE(columns[titleColumn], U' ') << line;
    }
    EXPECT_EQ(rows, 5);
  }
}

TEST(TrackList, CsvQuotesWhatNeedsIt) {
  const std::string csv = TrackCsv({SomeTracks()[1]});
  EXPECT_TRUE(csv.starts_with("index,id,persistentId,location,title,")) << csv;
  EXPECT_NE(csv.find("\n1,0,0000000000000000,/iPod_Control/Music/F00/ABCD.mp3,\"Army\nof Me\","
                     "Björk,\"Post, \"\"live\"\"\",,"),
            std::string::npos)
      << csv;
}

}  // namespace
}  // namespace quaylink::test
