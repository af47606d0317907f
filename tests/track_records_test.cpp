// From database files to track records.

#include <gtest/gtest.h>

#include "interface/device_manager.h"
#include "support/database_bytes.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

class TrackRecords : public testing::Test {
 protected:
  bool Parse(const std::string& bytes) {
    machine.WriteFile("C:\\iTunesDB", bytes);
    return manager.Parse("C:\\iTunesDB");
  }

  // The record of a database with one track.
  TrackRecord RecordOf(std::uint32_t objectCount, const std::string& objects) {
    EXPECT_TRUE(Parse(TrackDatabase(1, Track(1, objectCount, objects))));
    EXPECT_EQ(manager.trackRecords.size(), 1u);
    return manager.trackRecords.empty() ? TrackRecord{} : manager.trackRecords[0];
  }

  std::vector<std::string> Titles() const {
    std::vector<std::string> titles;
    for (const TrackRecord& record : manager.trackRecords) titles.emplace_back(record.title);
    return titles;
  }

  TestMachine machine;
  DeviceManager manager;
};

TEST_F(TrackRecords, FourTextsAreTakenAndAllOthersPassedOver) {
  const TrackRecord record =
      RecordOf(8, TextObject(5, u"genre") + TextObject(1, u"Title") + TextObject(4, u"Artist") +
                      TextObject(3, u"Album") + TextObject(2, u":iPod_Control:Music:F05:ABCD.mp3") +
                      RawObject(15, "bytes") + RawObject(100, "body") + TextObject(200, u"other"));
  EXPECT_STREQ(record.location, "/iPod_Control/Music/F05/ABCD.mp3");
  EXPECT_STREQ(record.artist, "Artist");
  EXPECT_STREQ(record.title, "Title");
  EXPECT_STREQ(record.album, "Album");
}

TEST_F(TrackRecords, TheLocationFollowsTheDriveLetter) {
  const struct {
    char driveLetter;
    std::u16string stored;
    std::string location;
  } cases[] = {
      {'F', u":iPod_Control:Music:F05:ABCD.mp3", "F:\\iPod_Control\\Music\\F05\\ABCD.mp3"},
      {'F', u"plain", "F:plain"},
      {'E', u"", "E:"},
      {0, u"", ""},
      {'E', std::u16string(253, u'x'), "E:" + std::string(253, 'x')},
      {'E', std::u16string(254, u'x'), ""},
      {0, std::u16string(255, u'x'), std::string(255, 'x')},
      {0, std::u16string(256, u'x'), ""},
      {0, std::u16string(5000, u'x'), ""},
  };
  for (const auto& c : cases) {
    manager.driveLetter = c.driveLetter;
    const TrackRecord record = RecordOf(2, TextObject(2, u":earlier") + TextObject(2, c.stored));
    EXPECT_EQ(record.location, c.location) << c.driveLetter << c.stored.size();
  }
}

TEST_F(TrackRecords, StringsThatDoNotFitAreCutAfterTheLastWholeCharacter) {
  if (!machine.UseCodePage(CP_UTF8)) GTEST_SKIP() << "the ANSI code page cannot be changed here";
  const std::u16string x254(254, u'x');
  const std::string x254Bytes(254, 'x');
  const struct {
    std::u16string string;
    std::string title;
  } cases[] = {
      {x254 + u"yz", x254Bytes + "y"},
      {x254 + u"é", x254Bytes},
      {std::u16string(253, u'x') + u"éé", std::string(253, 'x') + "é"},
      {std::u16string(252, u'x') + u"\U0001F3B5!", std::string(252, 'x')},
      {std::u16string(251, u'x') + u"\U0001F3B5!", std::string(251, 'x') + "\U0001F3B5"},
      {x254 + u"\xD800y", x254Bytes},
      {u"海の知らない物語", "海の知らない物語"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(RecordOf(1, TextObject(1, c.string)).title, c.title) << c.title;
  }
}

TEST_F(TrackRecords, StringsAreInTheAnsiCodePage) {
  if (!machine.UseCodePage(1252)) GTEST_SKIP() << "the ANSI code page cannot be changed here";
  const struct {
    std::u16string string;
    std::string title;
  } cases[] = {
      {u"Caf\u00E9 \u20AC", "Caf\xE9 \x80"},
      {u"for 終わり", "for ???"},
      {std::u16string(300, u'\u00E9'), std::string(255, '\xE9')},
  };
  for (const auto& c : cases) EXPECT_EQ(RecordOf(1, TextObject(1, c.string)).title, c.title);
}

TEST_F(TrackRecords, StringsEndAtTheirFirstNulAndLaterOnesOverwriteEarlierOnes) {
  const TrackRecord record =
      RecordOf(4, TextObject(1, u"First title") + TextObject(1, std::u16string(u"ab\0cd", 5)) +
                      TextObject(3, u"Album") + TextObject(3, u""));
  EXPECT_STREQ(record.title, "ab");
  EXPECT_STREQ(record.album, "");

  std::string titles;
  for (const char16_t letter : std::u16string_view(u"a track of many titles")) {
    titles += TextObject(1, std::u16string(1, letter)) + TextObject(9, u"no title");
  }
  EXPECT_STREQ(RecordOf(44, titles).title, "s");
}

TEST_F(TrackRecords, ATrackWithoutTextsIsARecordOfZeros) {
  for (const char driveLetter : {'\0', 'E'}) {
    manager.driveLetter = driveLetter;
    const TrackRecord record = RecordOf(0, "");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&record), sizeof(record)), Zeros(1024));
  }
}

TEST_F(TrackRecords, AParseReplacesTheRecordsOnlyWhenItSucceeds) {
  std::string twelve;
  std::string seven;
  for (std::uint32_t id = 0; id < 12; ++id) twelve += Track(id, 0, "");
  for (std::uint32_t id = 0; id < 7; ++id) seven += Track(id, 1, TextObject(1, u"of seven"));
  ASSERT_TRUE(Parse(TrackDatabase(12, twelve)));
  ASSERT_TRUE(Parse(TrackDatabase(7, seven)));
  ASSERT_EQ(manager.trackRecords.size(), 7u);

  const std::string sound = TrackDatabase(12, twelve);
  EXPECT_FALSE(Parse("not a database"));
  EXPECT_FALSE(Parse(""));
  EXPECT_FALSE(Parse(Database(2, DataSet(1, ListBytes("mhlt", 12, twelve)))));
  EXPECT_FALSE(manager.Parse(machine.LocalPath("missing").c_str()));
  EXPECT_FALSE(manager.Parse(machine.LocalPath("").c_str())) << "a folder";
  EXPECT_EQ(Titles(), std::vector<std::string>(7, "of seven"));

  EXPECT_TRUE(Parse(Database(0, ""))) << "a database without tracks";
  EXPECT_TRUE(manager.trackRecords.empty());
}

TEST_F(TrackRecords, AFileCutInItsLastListGivesTheTracksBeforeTheCut) {
  const std::string bytes = TrackDatabase(
      2, Track(1, 1, TextObject(1, u"whole")) + Track(2, 1, TextObject(1, u"cut off here")));
  ASSERT_TRUE(Parse(bytes.substr(0, bytes.size() - 15)));
  EXPECT_EQ(Titles(), (std::vector<std::string>{"whole", "cut "}));
}

}  // namespace
}  // namespace quaylink::test
