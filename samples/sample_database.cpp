#include "samples/sample_database.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

namespace quaylink::samples {

namespace {

// Header lengths and object types that real players write.
constexpr std::uint32_t kTrackHeaderLength = 584;
constexpr std::uint32_t kAlbumTitleObject = 200;
constexpr std::uint32_t kAlbumArtistObject = 201;
constexpr std::uint32_t kPositionBodyLength = 20;

void AddText(ChunkList<DataObjectChunk>& objects, Arena& arena, std::uint32_t type,
             const std::u16string& text) {
  DataObjectChunk& object = objects.Append(arena, MakeOwned<DataObjectChunk>(arena, arena));
  object.objectType = type;
  if (BodyKindOf(type) != BodyKind::kByteText) {
    object.SetText(text.c_str());
    return;
  }
  const std::string narrow(text.begin(), text.end());  // an address, which is ASCII
  object.byteText = ArenaArray<char>::CopyOf(arena, narrow);
  object.bodyLength = object.byteText.size();
}

TrackMap::Entry MakeTrack(const Track& track, Arena& arena) {
  Owned<TrackItemChunk> item = MakeOwned<TrackItemChunk>(arena, arena);
  static_cast<TrackItemHeader&>(*item) = track.properties;
  item->trackId = track.id;
  item->headerLength = kTrackHeaderLength;
  for (const StringObject& object : track.strings) {
    AddText(item->dataObjects, arena, object.objectType, object.string);
  }
  return {track.id, std::move(item)};
}

void AddAlbum(const Album& album, Arena& arena, AlbumListChunk& list) {
  AlbumItemChunk& item = list.albumItems.Append(arena, MakeOwned<AlbumItemChunk>(arena, arena));
  item.field0x10 = list.albumItems.size();
  AddText(item.dataObjects, arena, kAlbumTitleObject, album.title);
  AddText(item.dataObjects, arena, kAlbumArtistObject, album.artist);
}

void AddPlaylist(const Playlist& playlist, Arena& arena, PlaylistListChunk& list) {
  PlaylistChunk& chunk = list.AddPlaylist();
  chunk.masterFlag = playlist.isMaster ? 1 : 0;
  chunk.podcastFlag = playlist.isPodcasts ? 1 : 0;
  chunk.GetOrAddDataObject(kTitleObject).SetText(playlist.name.c_str());
  if (playlist.isSmart) chunk.GetOrAddDataObject(kSmartRulesObject);
  std::uint32_t position = 0;
  for (const std::uint32_t trackId : playlist.trackIds) {
    PlaylistItemChunk& item = chunk.items.Append(arena, MakeOwned<PlaylistItemChunk>(arena, arena));
    item.trackId = trackId;
    DataObjectChunk& object =
        item.dataObjects.Append(arena, MakeOwned<DataObjectChunk>(arena, arena));
    object.objectType = kPositionObject;
    std::array<std::uint8_t, kPositionBodyLength> body{};
    StoreLittleEndian(body.data(), ++position);
    object.rawBody = ArenaArray<std::uint8_t>::CopyOf(arena, body);
    object.bodyLength = kPositionBodyLength;
  }
}

std::vector<std::uint8_t> BytesOf(DatabaseChunk& database) {
  Writer writer;
  database.Write(writer);
  const auto bytes = writer.Written();
  return {bytes.begin(), bytes.end()};
}

std::u16string Numbered(std::u16string_view string, std::uint32_t number) {
  std::u16string result(string);
  for (const char digit : std::to_string(number)) result += static_cast<char16_t>(digit);
  return result;
}

}  // namespace

void BuildDatabase(const Library& library, DatabaseChunk& database) {
  Arena& arena = database.TreeMemory();
  AlbumListChunk& albums = database.AddDataSet(4).albumList;
  for (const Album& album : library.albums) AddAlbum(album, arena, albums);
  TrackListChunk& tracks = database.AddDataSet(1).trackList;
  std::vector<TrackMap::Entry> items;
  for (const Track& track : library.tracks) items.push_back(MakeTrack(track, arena));
  tracks.tracks.Add(std::move(items));
  for (const std::uint32_t type : {3u, 2u}) {
    PlaylistListChunk& list = database.AddDataSet(type).playlistList;
    list.ClearPlaylists();
    for (const Playlist& playlist : library.playlists) AddPlaylist(playlist, arena, list);
  }
  database.AddDataSet(5).playlistList.ClearPlaylists();
}

std::vector<std::uint8_t> WriteDatabase(const Library& library) {
  DatabaseChunk database;
  BuildDatabase(library, database);
  return BytesOf(database);
}

std::vector<std::uint8_t> WritePlayCounts(const std::vector<PlayCount>& counts,
                                          std::uint32_t entryLength) {
  constexpr std::uint32_t kHeaderLength = 96;
  Writer writer;
  const auto write = [&writer](std::initializer_list<std::uint32_t> words, std::size_t length) {
    std::size_t written = 0;
    for (const std::uint32_t word : words) {
      if (written == length) return;
      StoreLittleEndian(writer.Append(4), word);
      written += 4;
    }
    writer.AppendZeros(length - written);
  };
  writer.Append("mhdp", kTagLength);
  write({kHeaderLength, entryLength, static_cast<std::uint32_t>(counts.size())},
        kHeaderLength - kTagLength);
  for (const PlayCount& count : counts) {
    write({count.plays, count.lastPlayed, count.bookmarkMs, count.rating, 0, count.skips,
           count.lastSkipped},
          entryLength);
  }
  const auto bytes = writer.Written();
  return {bytes.begin(), bytes.end()};
}

std::vector<std::uint8_t> Compress(std::span<const std::uint8_t> database) {
  constexpr std::size_t kFlagOffset = 0xA8;
  const auto headerLength = LoadLittleEndian<std::uint32_t>(database.data() + 4);
  const auto body = database.subspan(headerLength);
  uLongf length = compressBound(static_cast<uLong>(body.size()));
  std::vector<std::uint8_t> bytes(headerLength + length);
  std::ranges::copy(database.first(headerLength), bytes.begin());
  compress(bytes.data() + headerLength, &length, body.data(), static_cast<uLong>(body.size()));
  bytes.resize(headerLength + length);
  bytes[kFlagOffset] = 1;
  StoreLittleEndian(bytes.data() + 8, static_cast<std::uint32_t>(bytes.size()));
  return bytes;
}

std::vector<std::uint8_t> WriteDatabaseOfEveryKind() {
  Library library;
  library.tracks.push_back({7, {{kTitleObject, u"Title"}, {kLocationObject, u":Music:7.mp3"}}});
  library.albums.push_back({u"Album", u"Artist"});
  library.playlists.push_back({u"Playlist", false, {7}});
  DatabaseChunk database;
  BuildDatabase(library, database);
  TrackItemChunk& track = *database.TrackDataSet()->trackList.tracks.begin()->item;
  constexpr std::array<std::uint8_t, 5> kBody = {1, 2, 3, 4, 5};
  Arena& arena = database.TreeMemory();
  for (const std::uint32_t type : {15u, kIndexListObject, kJumpTableObject, 100u}) {
    DataObjectChunk& object =
        track.dataObjects.Append(arena, MakeOwned<DataObjectChunk>(arena, arena));
    object.objectType = type;
    object.bodyLength = kBody.size();
    object.byteText = ArenaArray<char>::CopyOf(arena, {"five!", kBody.size()});
    object.rawBody = ArenaArray<std::uint8_t>::CopyOf(arena, kBody);
    object.entryCount = 2;
  }
  return BytesOf(database);
}

Library MakeLargeLibrary(std::uint32_t trackCount) {
  constexpr std::uint32_t kTracksPerAlbum = 10;
  Library library;
  Playlist all{u"All music", true, {}};
  for (std::uint32_t i = 0; i < trackCount; ++i) {
    const std::uint32_t id = 1000 + i;
    const std::uint32_t album = i / kTracksPerAlbum;
    if (i % kTracksPerAlbum == 0) {
      library.albums.push_back({Numbered(u"The collected recordings, volume ", album),
                                Numbered(u"Artist of volume ", album)});
    }
    Track track{id, {}};
    track.strings = {{kTitleObject, Numbered(u"A song with an ordinary title, number ", i)},
                     {kLocationObject, Numbered(u":iPod_Control:Music:F07:TRACK", i) + u".m4a"},
                     {kAlbumObject, Numbered(u"The collected recordings, volume ", album)},
                     {kArtistObject, Numbered(u"Artist of volume ", album)},
                     {5, u"Singer/songwriter"},
                     {6, u"AAC audio file"},
                     {12, Numbered(u"Composer of volume ", album)},
                     {22, Numbered(u"Artist of volume ", album)}};
    library.tracks.push_back(std::move(track));
    all.trackIds.push_back(id);
  }
  library.playlists.push_back(std::move(all));
  return library;
}

}  // namespace quaylink::samples
