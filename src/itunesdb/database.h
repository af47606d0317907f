// mhbd and mhsd: the whole database, its data sets,
// and the one database that the library parses into.
#pragma once

#include <array>

#include "itunesdb/albums.h"
#include "itunesdb/playlists.h"
#include "itunesdb/tracks.h"

namespace quaylink {

struct DataSetHeader {
  std::uint32_t dataSetType = 0;

  static constexpr std::uint32_t kKnownLength = 16;
  template <class V>
  static void Visit(V& v) {
    v.Fields(&DataSetHeader::dataSetType);
  }
};

// One list, chosen by the type: tracks (1, 6), playlists (2, 3, 5) or albums (4). The other two
// lists keep what they had at construction.
class DataSetChunk final : public Chunk, public DataSetHeader {
 public:
  explicit DataSetChunk(Arena& arena);

  TrackListChunk trackList;
  PlaylistListChunk playlistList;
  AlbumListChunk albumList;

  // Returns the total length that the data set states,
  // whatever becomes of its list; -1 for an unknown type.
  std::int32_t Read(Stream& stream) override;
  std::int32_t Write(Stream& stream) override;

 private:
  // The list that the type selects, null for an unknown type.
  Chunk* SelectedList();
};

// Fields that are only carried are named by their file offset.
struct DatabaseHeader {
  std::uint32_t field0x0C = 1;
  std::uint32_t field0x10 = 25;
  std::uint32_t dataSetCount = 5;
  std::uint64_t field0x18 = 0;
  std::uint16_t field0x20 = 2;
  std::uint16_t field0x22 = 0x6302;
  std::uint64_t field0x24 = 0;
  std::uint32_t field0x2C = 0;
  std::uint16_t field0x30 = 1;
  std::array<std::uint8_t, 20> field0x32{};
  std::uint16_t field0x46 = 0x656E;
  std::uint64_t field0x48 = 0;
  std::uint32_t field0x50 = 0;
  std::uint32_t field0x54 = 0;
  std::array<std::uint8_t, 20> field0x58{};
  std::uint32_t field0x6C = 0x909DFFFF;

  static constexpr std::uint32_t kKnownLength = 0x70;
  template <class V>
  static void Visit(V& v) {
    using H = DatabaseHeader;
    v.Fields(&H::field0x0C, &H::field0x10, &H::dataSetCount, &H::field0x18, &H::field0x20,
             &H::field0x22, &H::field0x24, &H::field0x2C, &H::field0x30, &H::field0x32,
             &H::field0x46, &H::field0x48, &H::field0x50, &H::field0x54, &H::field0x58,
             &H::field0x6C);
  }
};

// Keeps the memory of its whole tree.
class DatabaseChunk final : private Arena, public Chunk, public DatabaseHeader {
 public:
  DatabaseChunk() : Chunk(static_cast<Arena&>(*this)) {}

  ChunkList<DataSetChunk> dataSets;

  // Appends the data sets of the file. Returns the total length, or -1 when the lengths that the
  // data sets state do not add up to it.
  std::int32_t Read(Stream& stream) override;
  // Writes `dataSetCount` data sets. Throws std::out_of_range when fewer are held.
  std::int32_t Write(Stream& stream) override;

  // Destroys every data set. The header fields keep their
  // values, and the memory stays for the next reading.
  void Clear();
  // Returns the memory that holds nothing to the system.
  void ReleaseUnusedMemory() { Trim(); }

  // Where the tree's chunks are made.
  Arena& TreeMemory() { return *this; }
  // Appends a new data set of that type.
  DataSetChunk& AddDataSet(std::uint32_t type);

  // The first data set of type 1, or null.
  DataSetChunk* TrackDataSet() const;

 private:
  // How far the last reading went into its file: about as much is written.
  std::size_t bytesRead_ = 0;
};

// The database that the exported functions parse into.
extern DatabaseChunk theDatabase;

}  // namespace quaylink
