// Playlists, and albums, which are read and written in the same manner.

#include "itunesdb/playlists.h"

#include <gtest/gtest.h>

#include <set>

#include "itunesdb/albums.h"
#include "support/database_bytes.h"

namespace quaylink::test {
namespace {

std::string Item(std::string_view objects, std::uint32_t objectCount,
                 std::uint32_t headerLength = 76) {
  return ChunkBytes("mhip", headerLength,
                    U32(objectCount) + U16(0x8001) + U8(2) + U8(3) + Pattern(16), objects);
}

std::string Playlist(std::uint32_t objectCount, std::uint32_t itemCount, std::uint64_t id,
                     std::string_view children, std::uint32_t headerLength = 108) {
  const std::string fields = U32(objectCount) + U32(itemCount) + U8(1) + U8(2) + U8(3) + U8(4) +
                             U32(5) + U64(id) + U32(6) + U16(0x8007) + U16(2) + U32(8) + Zeros(32) +
                             U32(9);
  return ChunkBytes("mhyp", headerLength, fields, children);
}

TEST(AlbumList, AlbumsComeBackWithTheirFieldsAndUsualHeaders) {
  const std::string objects = TextObject(200, u"Album") + TextObject(201, u"Artist");
  const std::string fields = U32(2) + U32(0x11223344) + U64(0x8877665544332211) + U32(7);
  Arena arena;
  AlbumListChunk list(arena);
  const std::string item = ChunkBytes("MHIA", 100, fields + Pattern(68), objects);
  const Reading reading = ReadBytes(list, ListBytes("mhla", 1, item, 100));
  EXPECT_EQ(reading.result, static_cast<std::int32_t>(100 + item.size()));
  EXPECT_EQ(reading.consumed, 100 + item.size());
  EXPECT_EQ(WrittenBytes(list), ListBytes("mhla", 1, ChunkBytes("mhia", 88, fields, objects)));
}

TEST(AlbumList, FailedItemsAreKeptAndFailedObjectsDoNotTouchTheItemsResult) {
  Arena arena;
  AlbumListChunk list(arena);
  const std::string item = ChunkBytes("mhia", 88, U32(2), TextObject(200, u"A") + "junk");
  EXPECT_EQ(ReadBytes(list, ListBytes("mhla", 2, "junk" + item)).result,
            static_cast<std::int32_t>(92 - 1 + item.size()));
  ASSERT_EQ(list.albumItems.size(), 2u);
  EXPECT_EQ(list.albumItems[0]->field0x1C, 2u);
  EXPECT_EQ(list.albumItems[1]->dataObjects.size(), 2u);
}

TEST(PlaylistList, ANewListHoldsTheDefaultPlaylist) {
  Arena arena;
  PlaylistListChunk list(arena);
  ASSERT_EQ(list.playlists.size(), 1u);
  const std::string id = U64(list.playlists[0]->playlistId);
  const std::string playlist =
      ChunkBytes("mhyp", 108, U32(1) + U32(0) + U8(1) + Zeros(7) + id, TextObject(1, u"IPOD"));
  std::string expected = ListBytes("mhlp", 1, playlist);
  EXPECT_EQ(WrittenBytes(list), expected);
  EXPECT_EQ(&list.EnsureMasterPlaylist(), list.playlists[0].get());
  list.ClearPlaylists();
  EXPECT_EQ(list.EnsureMasterPlaylist().masterFlag, 1);
}

TEST(PlaylistList, ReadingReplacesThePlaylistsOnlyWhenTheListIsThere) {
  Arena arena;
  PlaylistListChunk list(arena);
  EXPECT_EQ(ReadBytes(list, "mhlt" + Zeros(88)).result, -1);
  EXPECT_EQ(list.playlists.size(), 1u);
  EXPECT_EQ(ReadBytes(list, ListBytes("mhlp", 0, "", 100)).result, 100);
  EXPECT_EQ(list.playlists.size(), 0u);
}

TEST(Playlist, EverythingComesBackButIndexListsAndJumpTables) {
  const std::string kept1 = TextObject(1, u"Party");
  const std::string kept100 = RawObject(100, Pattern(30));
  const std::string index = RawObject(52, U32(0) + U32(1) + Zeros(40) + U32(0));
  const std::string jumps = RawObject(53, U32(0) + U32(1) + Zeros(8) + Zeros(12));
  const std::string items = Item(kept100, 1) + Item("", 0);
  for (const std::uint32_t headerLength : {84u, 108u, 184u}) {
    Arena arena;
    PlaylistChunk playlist(arena);
    const std::string bytes =
        Playlist(4, 2, 77, kept1 + index + jumps + kept100 + items, headerLength);
    const Reading reading = ReadBytes(playlist, bytes);
    EXPECT_EQ(reading.result, static_cast<std::int32_t>(bytes.size()));
    EXPECT_EQ(reading.consumed, bytes.size());
    EXPECT_EQ(WrittenBytes(playlist), Playlist(2, 2, 77, kept1 + kept100 + items));
    EXPECT_EQ(playlist.dataObjectCount, 4u);
    for (const auto& object : playlist.dataObjects) EXPECT_EQ(object->entryCount, 2u);
  }
}

TEST(Playlist, ItemsAreWrittenWithTheirUsualHeader) {
  Arena arena;
  PlaylistItemChunk item(arena);
  const std::string objects = TextObject(1, u"x");
  const std::string bytes = Item(objects, 1, 90);
  EXPECT_EQ(ReadBytes(item, bytes).result, static_cast<std::int32_t>(bytes.size()));
  EXPECT_EQ(WrittenBytes(item), Item(objects, 1));
}

TEST(Playlist, ShortHeadersTakeTheRestFromANewPlaylist) {
  Arena arena;
  PlaylistChunk playlist(arena);
  ReadBytes(playlist, Playlist(0, 0, 77, "", 108));
  ReadBytes(playlist, ChunkBytes("mhyp", 32, U32(0) + U32(0) + U8(1) + Zeros(7) + Pattern(8), ""));
  EXPECT_EQ(playlist.masterFlag, 1);
  EXPECT_NE(playlist.playlistId, 77u);
  EXPECT_NE(playlist.playlistId, 0u);
  EXPECT_EQ(playlist.field0x28, 0u);
}

TEST(Playlist, ResultsOfChildrenThatFailEnterTheSum) {
  Arena arena;
  PlaylistChunk playlist(arena);
  const std::string item = Item("", 0);
  const Reading reading = ReadBytes(playlist, Playlist(1, 3, 77, "junk" + item));
  EXPECT_EQ(reading.result, static_cast<std::int32_t>(108 - 1 + item.size() - 2));
  EXPECT_EQ(playlist.dataObjects.size(), 1u);
  EXPECT_EQ(playlist.items.size(), 1u);
}

TEST(Playlist, DataObjectsAreFoundByTypeOrAdded) {
  Arena arena;
  PlaylistChunk playlist(arena);
  EXPECT_EQ(playlist.FindDataObject(1), nullptr);
  DataObjectChunk& title = playlist.GetOrAddDataObject(1);
  EXPECT_EQ(title.objectType, 1u);
  EXPECT_EQ(&playlist.GetOrAddDataObject(1), &title);
  EXPECT_EQ(playlist.FindDataObject(1), &title);
  EXPECT_NE(&playlist.GetOrAddDataObject(0), &playlist.GetOrAddDataObject(0));
  EXPECT_EQ(playlist.dataObjects.size(), 3u);
}

TEST(Playlist, EveryPlaylistDrawsAnIdentifierOfItsOwn) {
  std::set<std::uint64_t> ids;
  Arena arena;
  for (int i = 0; i < 100; ++i) ids.insert(PlaylistChunk(arena).playlistId);
  EXPECT_EQ(ids.size(), 100u);
  PlaylistChunk playlist(arena);
  const std::uint64_t drawn = playlist.playlistId;
  ReadBytes(playlist, Playlist(0, 0, 0, ""));
  EXPECT_NE(playlist.playlistId, 0u);
  EXPECT_NE(playlist.playlistId, drawn);
}

}  // namespace
}  // namespace quaylink::test
