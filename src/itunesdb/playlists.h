// mhlp, mhyp and mhip: the playlist list, its playlists and their items. Nothing interprets the
// items; they are read so that they can be written.
#pragma once

#include "itunesdb/data_object.h"

namespace quaylink {

// A new identifier for a playlist, from a new GUID and the C runtime's random numbers.
std::uint64_t NewPersistentId();

struct PlaylistItemHeader {
  std::uint32_t dataObjectCount = 0;  // as read; the number held is what is written
  std::uint16_t field0x10 = 0;
  std::uint8_t field0x12 = 0;
  std::uint8_t field0x13 = 0;
  std::uint32_t field0x14 = 0;
  std::uint32_t field0x18 = 0;
  std::uint32_t field0x1C = 0;
  std::uint32_t field0x20 = 0;

  static constexpr std::uint32_t kKnownLength = 0x24;
  template <class V>
  static void Visit(V& v) {
    using H = PlaylistItemHeader;
    v.Fields(&H::dataObjectCount, &H::field0x10, &H::field0x12, &H::field0x13, &H::field0x14,
             &H::field0x18, &H::field0x1C, &H::field0x20);
  }
};

class PlaylistItemChunk final : public Chunk, public PlaylistItemHeader {
 public:
  explicit PlaylistItemChunk(Arena& arena) : Chunk(arena) {}

  ChunkList<DataObjectChunk> dataObjects;

  // Returns the header length and the results of all data objects read.
  std::int32_t Read(Stream& stream) override;
  std::int32_t Write(Stream& stream) override;
};

struct PlaylistHeader {
  std::uint32_t dataObjectCount = 0;
  std::uint32_t itemCount = 0;
  std::uint8_t masterFlag = 0;
  std::uint8_t field0x15 = 0;
  std::uint8_t field0x16 = 0;
  std::uint8_t field0x17 = 0;
  std::uint32_t field0x18 = 0;
  std::uint64_t playlistId = 0;
  std::uint32_t field0x24 = 0;
  std::uint16_t field0x28 = 0;
  std::uint16_t field0x2A = 0;
  std::uint32_t field0x2C = 0;
  std::uint32_t field0x50 = 0;

  static constexpr std::uint32_t kKnownLength = 0x54;
  template <class V>
  static void Visit(V& v) {
    using H = PlaylistHeader;
    v.Fields(&H::dataObjectCount, &H::itemCount, &H::masterFlag, &H::field0x15, &H::field0x16,
             &H::field0x17, &H::field0x18, &H::playlistId, &H::field0x24, &H::field0x28,
             &H::field0x2A, &H::field0x2C);
    v.Skip(32);
    v.Fields(&H::field0x50);
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
  std::int32_t Read(Stream& stream) override;
  // Brings the held counts up to date, and the entry count of every data object.
  std::int32_t Write(Stream& stream) override;

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
  std::int32_t Read(Stream& stream) override;
  std::int32_t Write(Stream& stream) override;

  // The first playlist; on an empty list the default one, made now.
  PlaylistChunk& EnsureMasterPlaylist();
  // Appends a new playlist.
  PlaylistChunk& AddPlaylist();
  void ClearPlaylists();
};

}  // namespace quaylink
