// mhlp, mhyp and mhip: the playlist list, its playlists and their items. Nothing interprets the
// items; they are read so that they can be written.
#pragma once

#include <array>

#include "itunesdb/data_object.h"

namespace quaylink {

// A new identifier for a playlist, from a new GUID and the C runtime's random numbers.
std::uint64_t NewPersistentId();

// Headers that are shorter cannot be read.
inline constexpr std::uint32_t kShortestPlaylistHeader = 20;      // up to the item count
inline constexpr std::uint32_t kShortestPlaylistItemHeader = 16;  // up to the data-object count

struct PlaylistItemHeader {
  Field32 dataObjectCount;  // as read; the number held is what is written
  Field16 groupFlag;        // not 0: a group of tracks with its title, not a track
  Field8 field0x12;
  Field8 field0x13;
  Field32 field0x14;
  Field32 trackId;
  Field32 field0x1C;
  Field32 field0x20;

  static constexpr auto Fields() {
    using H = PlaylistItemHeader;
    return std::tuple(&H::dataObjectCount, &H::groupFlag, &H::field0x12, &H::field0x13,
                      &H::field0x14, &H::trackId, &H::field0x1C, &H::field0x20);
  }
};

class PlaylistItemChunk final : public Chunk, public PlaylistItemHeader {
 public:
  explicit PlaylistItemChunk(Arena& arena) : Chunk(arena) {}

  ChunkList<DataObjectChunk> dataObjects;

  // Returns the header length and the results of all data objects read.
  std::int32_t Read(Reader& reader) override;
  std::int32_t Write(Writer& writer) override;
};

struct PlaylistHeader {
  Field32 dataObjectCount;
  Field32 itemCount;
  Field8 masterFlag;
  Field8 field0x15;
  Field8 field0x16;
  Field8 field0x17;
  Field32 field0x18;
  Field64 playlistId;
  Field32 field0x24;
  Field16 field0x28;
  Field16 podcastFlag;  // 1: the list of podcasts
  Field32 field0x2C;
  std::array<Field8, 32> field0x30{};  // not kept by reading
  Field32 field0x50;

  static constexpr auto Fields() {
    using H = PlaylistHeader;
    return std::tuple(&H::dataObjectCount, &H::itemCount, &H::masterFlag, &H::field0x15,
                      &H::field0x16, &H::field0x17, &H::field0x18, &H::playlistId, &H::field0x24,
                      &H::field0x28, &H::podcastFlag, &H::field0x2C, &H::field0x30, &H::field0x50);
  }
};

// Every playlist has a persistent identifier from its construction on. Index lists and jump tables
// among its data objects are kept but never written, as they would have to agree with the tracks.
class PlaylistChunk final : public Chunk, public PlaylistHeader {
 public:
  explicit PlaylistChunk(Arena& arena);

  ChunkList<DataObjectChunk> dataObjects;
  ChunkList<PlaylistItemChunk> items;

  // Appends the children read. Returns the header length and the results of all children.
  std::int32_t Read(Reader& reader) override;
  // Brings the held counts up to date, and the entry count of every data object.
  std::int32_t Write(Writer& writer) override;

  // The first data object of that type, or null.
  DataObjectChunk* FindDataObject(std::uint32_t type) const;
  // The same, or else a new data object of that type, appended; always a new one for type 0.
  DataObjectChunk& GetOrAddDataObject(std::uint32_t type);
};

// A new list holds one playlist, the default one: the master playlist titled "IPOD".
class PlaylistListChunk final : public Chunk {
 public:
  explicit PlaylistListChunk(Arena& arena);

  ChunkList<PlaylistChunk> playlists;

  // Replaces the playlists. Returns the header length and the results of all playlists read.
  std::int32_t Read(Reader& reader) override;
  std::int32_t Write(Writer& writer) override;

  // The first playlist; on an empty list the default one, made now.
  PlaylistChunk& EnsureMasterPlaylist();
  // Appends a new playlist.
  PlaylistChunk& AddPlaylist();
  void ClearPlaylists();
};

}  // namespace quaylink
