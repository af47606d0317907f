// What a collection makes of databases that are cut, broken or wicked.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "itunesdb/database.h"
#include "samples/sample_database.h"
#include "samples/sample_music.h"
#include "support/database_bytes.h"
#include "support/hostile_files.h"
#include "support/opened_collection.h"

namespace quaylink::test {
namespace {

std::string SampleDatabase() {
  auto music = samples::SampleMusic("iPod_Control");
  music.resize(6);
  return BytesOf(samples::WriteDatabase(samples::SampleLibrary(music)));
}

TEST(DamagedCollection, OfACutDatabaseHasTheTracksBeforeTheCut) {
  const std::string database = SampleDatabase();
  const auto whole = OpenedCollection(database).Everything();
  std::size_t before = 0;
  for (std::size_t size = 4; size < database.size(); ++size) {
    const OpenedCollection cut(database.substr(0, size));
    ASSERT_EQ(cut.info.damaged, 1u) << size;
    ASSERT_LE(cut.info.damageOffset, size);
    const auto tracks = cut.Everything();
    ASSERT_TRUE(tracks.size() >= before && tracks.size() <= whole.size()) << size;
    ASSERT_TRUE(std::ranges::equal(tracks, std::span(whole).first(tracks.size()))) << size;
    before = tracks.size();
  }
  EXPECT_EQ(before, whole.size());
}

TEST(DamagedCollection, OfACutCompressedDatabaseHasTheTracksBeforeTheCut) {
  const std::string database = SampleDatabase();
  const auto whole = OpenedCollection(database).Everything();
  const std::string compressed = BytesOf(samples::Compress(AsBytes(database)));
  std::set<std::size_t> counts;
  for (std::size_t size = 188; size < compressed.size(); ++size) {
    const OpenedCollection cut(compressed.substr(0, size));
    const auto tracks = cut.Everything();
    ASSERT_EQ(cut.info.damaged, 1u);
    ASSERT_TRUE(std::ranges::equal(tracks, std::span(whole).first(tracks.size()))) << size;
    ASSERT_TRUE(counts.empty() || tracks.size() >= *counts.rbegin());
    counts.insert(tracks.size());
    ASSERT_EQ(OpenedCollection(compressed.substr(0, size), QUAYLINK_STRICT).result,
              QUAYLINK_DAMAGED);
  }
  EXPECT_GT(counts.size(), 3u);

  std::string broken = compressed;
  broken.back() = static_cast<char>(broken.back() + 1);
  const OpenedCollection opened(broken);
  EXPECT_STREQ(opened.info.damage, "the compressed database is broken");
  EXPECT_EQ(opened.info.trackCount, whole.size());
}

// A database of five tracks and two playlists, with one thing changed.
struct Damage {
  const char* what;
  std::size_t offset;
  std::string bytes;
  std::vector<std::uint32_t> tracks;  // by id, that remain
  std::uint32_t playlists;
};

TEST(DamagedCollection, HasEverythingThatIsWhole) {
  std::string tracks;
  for (std::uint32_t id = 1; id <= 5; ++id) {
    tracks += Track(id, 2, TextObject(1, u"Title") + RawObject(15, "http"), 156);
  }
  const std::string playlist = ChunkBytes(
      "mhyp", 108, U32(1) + U32(1), TextObject(1, u"List") + ChunkBytes("mhip", 76, U32(0), ""));
  const std::string database =
      Database(3, DataSet(1, ListBytes("mhlt", 5, tracks)) +
                      DataSet(3, ListBytes("mhlp", 2, playlist + playlist)) +
                      DataSet(2, ListBytes("mhlp", 2, playlist + playlist)));
  const std::size_t second = database.find("mhit", database.find("mhit") + 1);
  const std::size_t object = database.find("mhod", second);
  const std::size_t address = database.find("mhod", object + 1);
  const std::size_t list = database.find("mhlp");
  const std::size_t playlists = database.find("mhyp");
  const std::string huge = U32(0x7FFFFFFF);
  const std::vector<std::uint32_t> all = {1, 2, 3, 4, 5};
  const std::vector<std::uint32_t> others = {1, 3, 4, 5};
  const Damage damages[] = {
      {"nothing", 0, "mhbd", all, 2},
      {"the database's header length", 4, huge, all, 2},
      {"the database's length", 8, U32(7), all, 2},
      {"too few data sets stated", 20, U32(1), all, 2},
      {"too many data sets stated", 20, huge, all, 2},
      {"the data set's tag", 188, "xxxx", all, 2},
      {"the data set's header", 188, Zeros(96), all, 2},
      {"the data set's header length", 192, huge, all, 2},
      {"the data set's length", 196, U32(9), all, 2},
      {"the data set's length, huge", 196, huge, all, 2},
      {"the data set's type", 200, U32(99), all, 2},
      {"the list's tag", 284, "xxxx", all, 2},
      {"the list's header length", 288, huge, all, 2},
      {"too few tracks stated", 292, U32(2), all, 2},
      {"too many tracks stated", 292, huge, all, 2},
      {"the headers of data set, list and first track", 188, Zeros(250), {2, 3, 4, 5}, 2},
      {"a track's tag", second, "xxxx", others, 2},
      {"a track's header length", second + 4, huge, others, 2},
      {"a track's header length, too short", second + 4, U32(100), others, 2},
      {"a track's length, too short", second + 8, U32(160), all, 2},
      {"a track's length, too long", second + 8, U32(300), all, 2},
      {"a track's length, huge", second + 8, huge, all, 2},
      {"too few objects stated", second + 12, U32(1), others, 2},
      {"too many objects stated", second + 12, huge, others, 2},
      {"a whole track", second, Zeros(300), {1, 4, 5}, 2},
      {"an object's tag", object, "xxxx", others, 2},
      {"an object's length", object + 8, U32(60), others, 2},
      {"a string's length, too short", object + 28, U32(4), others, 2},
      {"a string's length, huge", object + 28, huge, others, 2},
      {"a string's and its track's length", object + 28, huge, others, 2},
      {"an address's length", address + 8, huge, others, 2},
      {"the first list of playlists", list, "xxxx", all, 2},
      {"the first list of playlists and its first", list, Zeros(100), all, 2},
      {"a playlist of the first list", playlists, "xxxx", all, 2},
      {"a playlist's length", playlists + 8, huge, all, 2},
      {"both lists of playlists", list, std::string(database.size() - list, 'x'), all, 0},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.what);
    std::string bytes = database;
    bytes.replace(damage.offset, damage.bytes.size(), damage.bytes);
    const OpenedCollection opened(bytes);
    EXPECT_EQ(opened.info.damaged, bytes == database ? 0u : 1u);
    std::vector<std::uint32_t> ids;
    for (std::uint32_t i = 0; i < opened.info.trackCount; ++i) {
      const QuaylinkTrack track = opened.Track(i);
      ids.push_back(track.id);
      EXPECT_STREQ(track.title, "Title");
      EXPECT_STREQ(track.podcastUrl, "http");
    }
    EXPECT_EQ(ids, damage.tracks);
    EXPECT_EQ(opened.info.playlistCount, damage.playlists);
    for (std::uint32_t i = 0; i < opened.info.playlistCount; ++i) {
      EXPECT_STREQ(opened.Playlist(i).name, "List");
    }
  }
}

TEST(DamagedCollection, FindsTheTracksBehindAlbumsThatAreSaidToBeTracks) {
  const std::string tracks = ListBytes("mhlt", 1, Track(7, 0, ""));
  const OpenedCollection opened(
      Database(2, DataSet(1, ListBytes("mhla", 0, "")) + DataSet(1, tracks)));
  EXPECT_EQ(opened.info.damaged, 1u);
  ASSERT_EQ(opened.info.trackCount, 1u);
  EXPECT_EQ(opened.Track(0).id, 7u);
}

TEST(DamagedCollection, PassesOverDataSetsOfKindsThatItDoesNotKnow) {
  const std::string unknown = DataSet(8, ListBytes("mhli", 1, ChunkBytes("mhii", 80, "", "")));
  const std::string tracks = DataSet(1, ListBytes("mhlt", 1, Track(1, 0, "")));
  const std::string database = Database(3, unknown + tracks + unknown);
  const OpenedCollection opened(database);
  EXPECT_EQ(opened.info.trackCount, 1u);
  EXPECT_STREQ(opened.info.damage, "");
  const OpenedCollection strict(database, QUAYLINK_STRICT);
  EXPECT_EQ(strict.result, QUAYLINK_DAMAGED);
  EXPECT_EQ(strict.error.offset, 188u);
  EXPECT_STREQ(strict.error.message, "a data set is of an unknown kind");
}

TEST(DamagedCollection, KeepsPlayCountsWithTheirTracksWhereOneIsBroken) {
  std::string tracks;
  for (std::uint32_t id = 1; id <= 4; ++id) tracks += Track(id, 1, TextObject(1, u"Title"));
  std::string database = TrackDatabase(4, tracks);
  database[database.find("mhod", database.find("mhod") + 1)] = 'x';
  const OpenedCollection opened(
      database, QUAYLINK_TOLERANT,
      BytesOf(samples::WritePlayCounts({{.plays = 1}, {.plays = 2}, {.plays = 3}, {.plays = 4}})));
  ASSERT_EQ(opened.info.trackCount, 3u);
  for (std::uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(opened.Track(i).playCount, opened.Track(i).id);
  }
}

void ExpectStrictAsTheChunksAre(const std::string& bytes) {
  DatabaseChunk database;
  const bool accepted = ReadBytes(database, bytes).result >= 0;
  const OpenedCollection strict(bytes, QUAYLINK_STRICT);
  EXPECT_EQ(strict.result == QUAYLINK_OK, accepted) << strict.error.message;
  if (!accepted || strict.result != QUAYLINK_OK) return;
  const DataSetChunk* dataSet = database.TrackDataSet();
  ASSERT_EQ(strict.info.trackCount, dataSet ? dataSet->trackList.tracks.size() : 0);
  std::uint32_t index = 0;
  for (std::uint32_t i = 0; i < strict.info.trackCount; ++i) {
    EXPECT_EQ(strict.Track(i).id, (dataSet->trackList.tracks.begin() + index++)->id);
  }
  // What is given tolerantly is among it.
  EXPECT_LE(OpenedCollection(bytes).info.trackCount, strict.info.trackCount);
}

TEST(DamagedCollection, StrictlyReadIsWhatTheChunksMakeOfIt) {
  for (const HostileFile& file : HostileFiles(20 << 10)) {
    SCOPED_TRACE(file.name);
    ExpectStrictAsTheChunksAre(file.bytes);
  }
  const std::string database = SampleDatabase();
  for (std::size_t size = 0; size < database.size(); size += 23) {
    ExpectStrictAsTheChunksAre(database.substr(0, size));
  }
  for (std::size_t i = 0; i < database.size(); i += 7) {
    std::string bytes = database;
    bytes[i] = static_cast<char>(bytes[i] + 1);
    ExpectStrictAsTheChunksAre(bytes);
  }
}

}  // namespace
}  // namespace quaylink::test
