// Databases of older players, whose headers are shorter.

#include <gtest/gtest.h>

#include "interface/device_manager.h"
#include "itunesdb/database.h"
#include "support/database_bytes.h"
#include "support/same_tree.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

// Headers as they grew over the years: of the database, its tracks and its playlists.
TEST(OlderPlayers, DatabasesKeepTheirTracksAndStringsThroughReadingAndWriting) {
  const struct {
    std::uint32_t database;
    std::uint32_t track;
    std::uint32_t playlist;
  } players[] = {
      {104, 156, 108}, {104, 160, 108}, {104, 244, 112}, {188, 328, 108}, {188, 388, 112}};
  const std::string path = "C:\\iTunesDB";
  TestMachine machine;
  for (const auto& player : players) {
    SCOPED_TRACE(player.track);
    std::string tracks;
    for (const std::uint32_t id : {3u, 1u, 2u}) {
      const std::u16string mark(id, u'A');
      const std::string strings = TextObject(1, u"Title " + mark) +
                                  TextObject(2, u":Music:F00:" + mark) + TextObject(4, u"Artist");
      tracks += Track(id, 3, strings, player.track);
    }
    const std::string item = ChunkBytes("mhip", 76, U32(0), "");
    const std::string playlist =
        ChunkBytes("mhyp", player.playlist, U32(1) + U32(2) + U32(1) + U32(9) + U64(0x1234),
                   TextObject(1, u"My music") + item + item);
    const std::string bytes = Database(
        2, DataSet(1, ListBytes("mhlt", 3, tracks)) + DataSet(2, ListBytes("mhlp", 1, playlist)),
        player.database);
    machine.WriteFile(path, bytes);

    DeviceManager manager;
    ASSERT_TRUE(manager.Parse(path.c_str()));
    ASSERT_EQ(manager.trackRecords.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
      const TrackRecord& record = manager.trackRecords[i];
      EXPECT_EQ(record.title, "Title " + std::string(i + 1, 'A'));
      EXPECT_EQ(record.location, "/Music/F00/" + std::string(i + 1, 'A'));
      EXPECT_STREQ(record.artist, "Artist");
    }
    DatabaseChunk database;
    ReadBytes(database, bytes);
    const std::string written = WrittenBytes(database);
    const PlaylistChunk& held = *database.dataSets[1]->playlistList.playlists[0];
    EXPECT_EQ(held.playlistId, 0x1234u);
    EXPECT_EQ(held.items.size(), 2u);
    DatabaseChunk again;
    EXPECT_EQ(ReadBytes(again, written).result, static_cast<std::int32_t>(written.size()));
    EXPECT_TRUE(SameTree(database, again));
  }
}

}  // namespace
}  // namespace quaylink::test
