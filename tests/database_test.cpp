#include "itunesdb/database.h"

#include <gtest/gtest.h>

#include "samples/sample_database.h"
#include "support/database_bytes.h"

namespace quaylink::test {
namespace {

const std::string kTracks = DataSet(1, ListBytes("mhlt", 1, Track(5, 1, TextObject(1, u"Five"))));
const std::string kAlbums = DataSet(4, ListBytes("mhla", 0, ""));
const std::string kPlaylists = DataSet(3, ListBytes("mhlp", 0, ""));

TEST(Database, CarriedFieldsComeBackUnderTheUsualHeaders) {
  const std::string fields = Pattern(8) + U32(2) + Pattern(88);
  const std::string wideDataSet =
      ChunkBytes("MHSD", 120, U32(4) + Pattern(104), ListBytes("mhla", 0, ""));
  for (const std::uint32_t headerLength : {112u, 188u, 244u}) {
    const std::string bytes =
        ChunkBytes("MHBD", headerLength, fields + Pattern(132), kTracks + wideDataSet);
    DatabaseChunk database;
    EXPECT_EQ(ReadBytes(database, bytes).result, static_cast<std::int32_t>(bytes.size()));
    EXPECT_EQ(WrittenBytes(database), ChunkBytes("mhbd", 188, fields, kTracks + kAlbums));
    EXPECT_EQ(database.headerLength, 188u);
  }
}

TEST(Database, ShortHeadersOfOlderPlayersAreRead) {
  const std::string fields = U32(1) + U32(9) + U32(1) + Pattern(80);
  const std::string bytes = ChunkBytes("mhbd", 104, fields, kTracks);
  DatabaseChunk database;
  EXPECT_EQ(ReadBytes(database, bytes).result, static_cast<std::int32_t>(bytes.size()));
  std::string expected = ChunkBytes("mhbd", 188, fields.substr(0, 76), kTracks);
  expected.replace(0x6C, 4, U32(0x909DFFFF));
  EXPECT_EQ(WrittenBytes(database), expected);
}

TEST(Database, TheStatedLengthsDecideWhetherADatabaseIsSound) {
  const std::string unknown = DataSet(7, ListBytes("mhlt", 0, ""));
  const std::string trackless = DataSet(1, "junk" + Zeros(88));
  const struct {
    const char* name;
    std::string bytes;
    bool sound;
    std::uint32_t held;
  } cases[] = {
      {"no data sets", Database(0, ""), true, 0},
      {"no data sets and a wrong length", Database(0, "x"), false, 0},
      {"bytes after the database do not count", Database(1, kTracks) + "junk", true, 1},
      {"one data set too few", Database(2, kTracks), false, 1},
      {"one data set too many", Database(1, kTracks + kAlbums), false, 1},
      {"unknown type in the middle", Database(3, kTracks + unknown + kAlbums), false, 3},
      {"a list that fails inside the last data set", Database(2, kAlbums + trackless), true, 2},
      {"a list that fails before the last", Database(2, trackless + kAlbums), false, 2},
      {"a length with its top bit set",
       "mhbd" + U32(24) + U32(0x80000018) + Zeros(8) + U32(1) + "mhsd" + U32(16) + U32(0x80000000) +
           U32(4) + ListBytes("mhla", 0, ""),
       false, 1},
  };
  for (const auto& c : cases) {
    DatabaseChunk database;
    const Reading reading = ReadBytes(database, c.bytes);
    EXPECT_EQ(reading.result >= 0, c.sound) << c.name << " " << reading.result;
    EXPECT_EQ(database.dataSets.size(), c.held) << c.name;
  }
}

TEST(Database, DataSetsThatTheFileDoesNotHaveAreNotCounted) {
  DatabaseChunk database;
  EXPECT_EQ(ReadBytes(database, Database(0xFFFFFFFF, kTracks)).result, -1);
  EXPECT_EQ(database.dataSetCount, 1u);
  EXPECT_EQ(WrittenBytes(database), Database(1, kTracks).replace(0x0C, 4, U32(1)));
}

TEST(Database, TheFirstDataSetOfTypeOneHoldsTheTracks) {
  const std::string other = DataSet(1, ListBytes("mhlt", 0, ""));
  const std::string sixth = DataSet(6, ListBytes("mhlt", 1, Track(6, 0, "")));
  DatabaseChunk database;
  ReadBytes(database, Database(4, kAlbums + sixth + kTracks + other));
  ASSERT_NE(database.TrackDataSet(), nullptr);
  EXPECT_EQ(database.TrackDataSet()->trackList.tracks.size(), 1u);
  database.Clear();
  database.Clear();
  EXPECT_EQ(database.TrackDataSet(), nullptr);
  ReadBytes(database, Database(1, sixth));
  EXPECT_EQ(database.TrackDataSet(), nullptr);
  EXPECT_EQ(database.dataSets[0]->trackList.tracks.size(), 1u);
}

TEST(Database, ReadingAppendsAndClearingLeavesTheHeaderFields) {
  DatabaseChunk database;
  ReadBytes(database, Database(1, kTracks));
  ReadBytes(database, Database(2, kAlbums + kPlaylists));
  EXPECT_EQ(database.dataSets.size(), 3u);
  database.Clear();
  EXPECT_EQ(database.dataSets.size(), 0u);
  EXPECT_EQ(database.dataSetCount, 2u);
}

TEST(Database, AFailingChildEndsTheWritingAndLeavesTheLengthsZero) {
  DatabaseChunk database;
  ReadBytes(database, Database(2, kTracks + kAlbums));
  database.dataSets[1]->dataSetType = 9;
  Writer writer;
  EXPECT_EQ(database.Write(writer), -1);
  const std::string written = BytesOf(writer);
  EXPECT_EQ(written.substr(8, 4), U32(0));
  EXPECT_EQ(written.size(), 188 + kTracks.size() + 96);
  EXPECT_EQ(written.substr(188 + kTracks.size() + 8, 4), U32(0));
}

TEST(Database, WritingMoreDataSetsThanAreHeldThrows) {
  DatabaseChunk database;
  Writer writer;
  EXPECT_THROW(database.Write(writer), std::out_of_range);
  EXPECT_EQ(writer.Written().size(), 188u);
}

samples::Library SmallLibrary() {
  samples::Library library = samples::MakeLargeLibrary(12);
  library.tracks[3].strings[0].string = u"岬の灯へ向かう小さな舟歌";
  library.tracks[4].strings.clear();
  return library;
}

// However the file is cut, reading takes nothing beyond its end, and what was read can be written.
TEST(Database, TruncatedDatabasesAreReadAsFarAsTheyGo) {
  const auto bytes = samples::WriteDatabase(SmallLibrary());
  for (std::size_t length = 0; length < bytes.size(); length += length < 4096 ? 1 : 97) {
    // A copy of its own, so that a read past the end is seen.
    const std::vector<std::uint8_t> cut(bytes.begin(), bytes.begin() + static_cast<long>(length));
    DatabaseChunk database;
    Reader reader(cut);
    const bool sound = database.Read(reader) >= 0;
    EXPECT_TRUE(!sound || database.dataSets.size() == 5) << length;
    EXPECT_LE(database.dataSetCount, 5u);
    if (!sound) continue;
    Writer again;
    DatabaseChunk second;
    ASSERT_GT(database.Write(again), 0) << length;
    Reader reread(again.Written());
    EXPECT_GT(second.Read(reread), 0) << length;
  }
}

}  // namespace
}  // namespace quaylink::test
