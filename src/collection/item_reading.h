// Reading the items of lists one at a time, and telling whether each is whole: it lies in the file
// with everything that belongs to it, and each of its data objects takes as many bytes as it says.
#pragma once

#include <cstdint>
#include <optional>

#include "collection/playlist_table.h"
#include "collection/string_pool.h"
#include "itunesdb/albums.h"
#include "itunesdb/arena.h"
#include "itunesdb/playlists.h"
#include "itunesdb/reader.h"
#include "itunesdb/tracks.h"

namespace quaylink {

// A kind of list, and how to speak of its items.
struct ListKind {
  const Tag& listTag;
  const Tag& itemTag;
  const char* list;
  const char* item;
};

inline constexpr ListKind kTracks = {kTrackListTag, kTrackItemTag, "the list of tracks", "a track"};
inline constexpr ListKind kAlbums = {kAlbumListTag, kAlbumItemTag, "the list of albums",
                                     "an album"};
inline constexpr ListKind kPlaylists = {kPlaylistListTag, kPlaylistTag, "the list of playlists",
                                        "a playlist"};

// The list that a data set of that type holds, or null for an unknown type.
const ListKind* ListOf(std::uint32_t dataSetType);

struct ItemResult {
  bool whole = false;
  std::uint32_t statedLength = 0;
};

// Each kind reads the bytes that DatabaseChunk would read at that place, and keeps the last item
// read. Memory is that of one item at a time. All throw std::bad_alloc.
class TrackReader {
 public:
  ItemResult Read(Reader& reader);
  const TrackItemChunk& Item() const { return *item_; }

 private:
  Arena memory_;
  std::optional<TrackItemChunk> item_;
};

class AlbumReader {
 public:
  ItemResult Read(Reader& reader);

 private:
  Arena memory_;
};

class PlaylistReader {
 public:
  // Without a table nothing but the result is wanted.
  PlaylistReader(PlaylistTable* table, StringPool& names) : table_(table), names_(names) {}

  ItemResult Read(Reader& reader);
  // Puts the last playlist read into the table.
  void Keep();

 private:
  bool ReadItem(Reader& reader);
  template <class Take>
  bool ReadObjects(Reader& reader, std::uint32_t count, Take take);

  PlaylistTable* table_;
  StringPool& names_;
  QuaylinkPlaylist playlist_{};
  Arena memory_;  // of one data object
};

}  // namespace quaylink
