// mhlt and mhit: the track list and its tracks.
#pragma once

#include <array>
#include <vector>

#include "itunesdb/data_object.h"

namespace quaylink {

// The oldest players' headers are this long; a shorter one is no track's.
inline constexpr std::uint32_t kShortestTrackHeader = 156;

// The attributes of a track, from offset 0x0C on. Those that are only carried are named by their
// offset.
struct TrackItemHeader {
  Field32 dataObjectCount;
  Field32 trackId;
  Field32 field0x14 = 1;
  Field32 field0x18;
  Field8 field0x1C;
  Field8 field0x1D;
  Field8 partOfCompilation;  // 0 or 1
  Field8 rating;             // 0 to 100, 20 a star
  Field32 modified;          // seconds since 1904-01-01 00:00, as every time; 0 is none
  Field32 fileSize;          // bytes
  Field32 lengthMs;
  Field32 trackNumber;
  Field32 trackCount;
  Field32 year;
  Field32 bitRate;     // kbit/s
  Field16 field0x3C;   // not kept by reading
  Field16 sampleRate;  // Hz
  Field32 field0x40;
  Field32 field0x44;
  Field32 field0x48;
  Field32 field0x4C;
  Field32 playCount;
  Field32 field0x54;
  Field32 lastPlayed;
  Field32 discNumber;
  Field32 discCount;
  Field32 field0x64;
  Field32 added;
  Field32 bookmarkMs;
  Field64 persistentId;
  Field8 unchecked;  // 0: checked
  Field8 field0x79;
  Field16 beatsPerMinute;
  Field16 field0x7C;
  Field16 field0x7E;
  Field32 field0x80;
  Field32 field0x84;
  Field32 field0x88;
  Field32 released;
  Field16 field0x90;
  Field16 field0x92;
  Field32 field0x94;
  Field32 field0x98;
  Field32 skipCount;
  Field32 lastSkipped;
  Field8 field0xA4;
  Field8 field0xA5;
  Field8 field0xA6;
  Field8 field0xA7;
  Field64 field0xA8;
  Field8 field0xB0;
  Field8 field0xB1;
  Field8 field0xB2;
  Field8 field0xB3;
  Field32 field0xB4;
  Field32 field0xB8;
  Field64 field0xBC;
  Field32 field0xC4;
  Field32 field0xC8;
  Field32 field0xCC;
  Field32 mediaType;  // one bit for each type
  Field32 seasonNumber;
  Field32 episodeNumber;
  Field32 field0xDC;
  Field32 field0xE0;
  Field32 field0xE4;
  Field32 field0xE8;
  Field32 field0xEC;
  Field32 field0xF0;
  Field32 field0xF4;
  Field32 field0xF8;
  Field32 field0xFC;
  Field16 field0x100;
  Field16 field0x102;
  std::array<Field8, 20> field0x104{};
  Field64 field0x118;
  Field32 field0x120;
  Field64 field0x124;
  Field32 field0x12C;
  Field32 field0x130;
  Field64 field0x134;
  Field32 field0x13C;
  Field32 field0x140;
  Field32 field0x144;
  Field64 field0x148;
  Field64 field0x150;
  Field64 field0x158;
  Field32 field0x160;
  Field32 field0x164;
  Field32 field0x168;
  Field32 field0x16C;
  Field64 field0x170;
  Field64 field0x178;
  Field32 field0x180;

  static constexpr auto Fields() {
    using H = TrackItemHeader;
    return std::tuple(
        &H::dataObjectCount, &H::trackId, &H::field0x14, &H::field0x18, &H::field0x1C,
        &H::field0x1D, &H::partOfCompilation, &H::rating, &H::modified, &H::fileSize, &H::lengthMs,
        &H::trackNumber, &H::trackCount, &H::year, &H::bitRate, &H::field0x3C, &H::sampleRate,
        &H::field0x40, &H::field0x44, &H::field0x48, &H::field0x4C, &H::playCount, &H::field0x54,
        &H::lastPlayed, &H::discNumber, &H::discCount, &H::field0x64, &H::added, &H::bookmarkMs,
        &H::persistentId, &H::unchecked, &H::field0x79, &H::beatsPerMinute, &H::field0x7C,
        &H::field0x7E, &H::field0x80, &H::field0x84, &H::field0x88, &H::released, &H::field0x90,
        &H::field0x92, &H::field0x94, &H::field0x98, &H::skipCount, &H::lastSkipped, &H::field0xA4,
        &H::field0xA5, &H::field0xA6, &H::field0xA7, &H::field0xA8, &H::field0xB0, &H::field0xB1,
        &H::field0xB2, &H::field0xB3, &H::field0xB4, &H::field0xB8, &H::field0xBC, &H::field0xC4,
        &H::field0xC8, &H::field0xCC, &H::mediaType, &H::seasonNumber, &H::episodeNumber,
        &H::field0xDC, &H::field0xE0, &H::field0xE4, &H::field0xE8, &H::field0xEC, &H::field0xF0,
        &H::field0xF4, &H::field0xF8, &H::field0xFC, &H::field0x100, &H::field0x102, &H::field0x104,
        &H::field0x118, &H::field0x120, &H::field0x124, &H::field0x12C, &H::field0x130,
        &H::field0x134, &H::field0x13C, &H::field0x140, &H::field0x144, &H::field0x148,
        &H::field0x150, &H::field0x158, &H::field0x160, &H::field0x164, &H::field0x168,
        &H::field0x16C, &H::field0x170, &H::field0x178, &H::field0x180);
  }
};

class TrackItemChunk final : public Chunk, public TrackItemHeader {
 public:
  explicit TrackItemChunk(Arena& arena) : Chunk(arena) {}

  ArenaArray<std::uint8_t> headerTail;  // of the header, beyond the known fields, kept verbatim
  ChunkList<DataObjectChunk> dataObjects;

  // Returns the total length that the item states.
  std::int32_t Read(Reader& reader) override;
  std::int32_t Write(Writer& writer) override;

  std::int32_t DataObjectCount() const;
  // The data object at position `index`, in file order. Throws std::out_of_range beyond the last.
  DataObjectChunk& DataObjectAt(std::uint32_t index) const;
};

// Track items by track id, ascending; of several items with one id the first one added stays.
class TrackMap {
 public:
  struct Entry {
    std::uint32_t id;
    Owned<TrackItemChunk> item;
  };

  // Adds items in the order in which they are given.
  void Add(std::vector<Entry> entries);

  std::size_t size() const { return entries_.size(); }
  std::vector<Entry>::const_iterator begin() const { return entries_.begin(); }
  std::vector<Entry>::const_iterator end() const { return entries_.end(); }

 private:
  std::vector<Entry> entries_;
};

class TrackListChunk final : public Chunk {
 public:
  explicit TrackListChunk(Arena& arena) : Chunk(arena) {}

  TrackMap tracks;

  // Returns the header length and the results of all items read.
  std::int32_t Read(Reader& reader) override;
  std::int32_t Write(Writer& writer) override;
};

}  // namespace quaylink
