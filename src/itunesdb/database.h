// mhbd and mhsd: the whole database, its data sets, and the one database that the library parses
// into.
#pragma once

#include <array>

#include "itunesdb/albums.h"
#include "itunesdb/playlists.h"
#include "itunesdb/tracks.h"

namespace quaylink {

inline constexpr std::uint32_t kTrackDataSet = 1;  // a type of data set

// Headers that are shorter cannot be read.
inline constexpr std::uint32_t kShortestDatabaseHeader = 24;  // up to the data-set count
inline constexpr std::uint32_t kShortestDataSetHeader = 16;   // up to the type

struct DataSetHeader {
  Field32 dataSetType;

  static constexpr auto Fields() { return std::tuple(&DataSetHeader::dataSetType); }
};

// One list, chosen by the type: tracks (1, 6), playlists (2, 3, 5) or albums (4). The other two
// lists keep what they had at construction.
class DataSetChunk final : public Chunk, public DataSetHeader {
 public:
  explicit DataSetChunk(Arena& arena);

  TrackListChunk trackList;
  PlaylistListChunk playlistList;
  AlbumListChunk albumList;

  // Returns the total length that the data set states, whatever becomes of its list; -1 for an
  // unknown type.
  std::int32_t Read(Reader& reader) override;
  std::int32_t Write(Writer& writer) override;

 private:
  // The list that the type selects, null for an unknown type.
  Chunk* SelectedList();
};

// Fields that are only carried are named by their file offset.
struct DatabaseHeader {
  Field32 field0x0C = 1;
  Field32 field0x10 = 25;
  Field32 dataSetCount = 5;
  Field64 field0x18;
  Field16 field0x20 = 2;
  Field16 field0x22 = 0x6302;
  Field64 field0x24;
  Field32 field0x2C;
  Field16 field0x30 = 1;
  std::array<Field8, 20> field0x32{};
  Field16 field0x46 = 0x656E;
  Field64 field0x48;
  Field32 field0x50;
  Field32 field0x54;
  std::array<Field8, 20> field0x58{};
  Field32 field0x6C = 0x909DFFFF;

  static constexpr auto Fields() {
    using H = DatabaseHeader;
    return std::tuple(&H::field0x0C, &H::field0x10, &H::dataSetCount, &H::field0x18, &H::field0x20,
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
  std::int32_t Read(Reader& reader) override;
  // Writes `dataSetCount` data sets. Throws std::out_of_range when fewer are held.
  std::int32_t Write(Writer& writer) override;

  // Destroys every data set. The header fields keep their values, and the memory stays for the next
  // reading.
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
