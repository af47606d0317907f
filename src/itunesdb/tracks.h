// mhlt and mhit: the track list and its tracks.
#pragma once

#include <array>
#include <vector>

#include "itunesdb/data_object.h"

namespace quaylink {

// The attributes of a track. All but the count and the
// id are only carried, and named by their file offset.
struct TrackItemHeader {
  std::uint32_t dataObjectCount = 0;
  std::uint32_t trackId = 0;
  std::uint32_t field0x14 = 1;
  std::uint32_t field0x18 = 0;
  std::uint8_t field0x1C = 0;
  std::uint8_t field0x1D = 0;
  std::uint8_t field0x1E = 0;
  std::uint8_t field0x1F = 0;
  std::uint32_t field0x20 = 0;
  std::uint32_t field0x24 = 0;
  std::uint32_t field0x28 = 0;
  std::uint32_t field0x2C = 0;
  std::uint32_t field0x30 = 0;
  std::uint32_t field0x34 = 0;
  std::uint32_t field0x38 = 0;
  std::uint32_t field0x3C = 0;  // the upper half of the word
  std::uint32_t field0x40 = 0;
  std::uint32_t field0x44 = 0;
  std::uint32_t field0x48 = 0;
  std::uint32_t field0x4C = 0;
  std::uint32_t field0x50 = 0;
  std::uint32_t field0x54 = 0;
  std::uint32_t field0x58 = 0;
  std::uint32_t field0x5C = 0;
  std::uint32_t field0x60 = 0;
  std::uint32_t field0x64 = 0;
  std::uint32_t field0x68 = 0;
  std::uint32_t field0x6C = 0;
  std::uint64_t field0x70 = 0;
  std::uint8_t field0x78 = 0;
  std::uint8_t field0x79 = 0;
  std::uint16_t field0x7A = 0;
  std::uint16_t field0x7C = 0;
  std::uint16_t field0x7E = 0;
  std::uint32_t field0x80 = 0;
  std::uint32_t field0x84 = 0;
  std::uint32_t field0x88 = 0;
  std::uint32_t field0x8C = 0;
  std::uint16_t field0x90 = 0;
  std::uint16_t field0x92 = 0;
  std::uint32_t field0x94 = 0;
  std::uint32_t field0x98 = 0;
  std::uint32_t field0x9C = 0;
  std::uint32_t field0xA0 = 0;
  std::uint8_t field0xA4 = 0;
  std::uint8_t field0xA5 = 0;
  std::uint8_t field0xA6 = 0;
  std::uint8_t field0xA7 = 0;
  std::uint64_t field0xA8 = 0;
  std::uint8_t field0xB0 = 0;
  std::uint8_t field0xB1 = 0;
  std::uint8_t field0xB2 = 0;
  std::uint8_t field0xB3 = 0;
  std::uint32_t field0xB4 = 0;
  std::uint32_t field0xB8 = 0;
  std::uint64_t field0xBC = 0;
  std::uint32_t field0xC4 = 0;
  std::uint32_t field0xC8 = 0;
  std::uint32_t field0xCC = 0;
  std::uint32_t field0xD0 = 0;
  std::uint32_t field0xD4 = 0;
  std::uint32_t field0xD8 = 0;
  std::uint32_t field0xDC = 0;
  std::uint32_t field0xE0 = 0;
  std::uint32_t field0xE4 = 0;
  std::uint32_t field0xE8 = 0;
  std::uint32_t field0xEC = 0;
  std::uint32_t field0xF0 = 0;
  std::uint32_t field0xF4 = 0;
  std::uint32_t field0xF8 = 0;
  std::uint32_t field0xFC = 0;
  std::uint16_t field0x100 = 0;
  std::uint16_t field0x102 = 0;
  std::array<std::uint8_t, 20> field0x104{};
  std::uint64_t field0x118 = 0;
  std::uint32_t field0x120 = 0;
  std::uint64_t field0x124 = 0;
  std::uint32_t field0x12C = 0;
  std::uint32_t field0x130 = 0;
  std::uint64_t field0x134 = 0;
  std::uint32_t field0x13C = 0;
  std::uint32_t field0x140 = 0;
  std::uint32_t field0x144 = 0;
  std::uint64_t field0x148 = 0;
  std::uint64_t field0x150 = 0;
  std::uint64_t field0x158 = 0;
  std::uint32_t field0x160 = 0;
  std::uint32_t field0x164 = 0;
  std::uint32_t field0x168 = 0;
  std::uint32_t field0x16C = 0;
  std::uint64_t field0x170 = 0;
  std::uint64_t field0x178 = 0;
  std::uint32_t field0x180 = 0;

  static constexpr std::uint32_t kKnownLength = 0x184;
  template <class V>
  static void Visit(V& v) {
    using H = TrackItemHeader;
    v.Fields(&H::dataObjectCount, &H::trackId, &H::field0x14, &H::field0x18, &H::field0x1C,
             &H::field0x1D, &H::field0x1E, &H::field0x1F, &H::field0x20, &H::field0x24,
             &H::field0x28, &H::field0x2C, &H::field0x30, &H::field0x34, &H::field0x38);
    v.UpperHalf(&H::field0x3C);
    v.Fields(
        &H::field0x40, &H::field0x44, &H::field0x48, &H::field0x4C, &H::field0x50, &H::field0x54,
        &H::field0x58, &H::field0x5C, &H::field0x60, &H::field0x64, &H::field0x68, &H::field0x6C,
        &H::field0x70, &H::field0x78, &H::field0x79, &H::field0x7A, &H::field0x7C, &H::field0x7E,
        &H::field0x80, &H::field0x84, &H::field0x88, &H::field0x8C, &H::field0x90, &H::field0x92,
        &H::field0x94, &H::field0x98, &H::field0x9C, &H::field0xA0, &H::field0xA4, &H::field0xA5,
        &H::field0xA6, &H::field0xA7, &H::field0xA8, &H::field0xB0, &H::field0xB1, &H::field0xB2,
        &H::field0xB3, &H::field0xB4, &H::field0xB8, &H::field0xBC, &H::field0xC4, &H::field0xC8,
        &H::field0xCC, &H::field0xD0, &H::field0xD4, &H::field0xD8, &H::field0xDC, &H::field0xE0,
        &H::field0xE4, &H::field0xE8, &H::field0xEC, &H::field0xF0, &H::field0xF4, &H::field0xF8,
        &H::field0xFC, &H::field0x100, &H::field0x102, &H::field0x104, &H::field0x118,
        &H::field0x120, &H::field0x124, &H::field0x12C, &H::field0x130, &H::field0x134,
        &H::field0x13C, &H::field0x140, &H::field0x144, &H::field0x148, &H::field0x150,
        &H::field0x158, &H::field0x160, &H::field0x164, &H::field0x168, &H::field0x16C,
        &H::field0x170, &H::field0x178, &H::field0x180);
  }
};

class TrackItemChunk final : public Chunk, public TrackItemHeader {
 public:
  explicit TrackItemChunk(Arena& arena);

  ArenaArray<std::uint8_t> headerTail;  // of the header, beyond the known fields, kept verbatim
  ChunkList<DataObjectChunk> dataObjects;

  // Returns the total length that the item states.
  std::int32_t Read(Stream& stream) override;
  std::int32_t Write(Stream& stream) override;

  std::int32_t DataObjectCount() const;
  // The data object at position `index`, in file order. Throws std::out_of_range beyond the last.
  DataObjectChunk& DataObjectAt(std::uint32_t index) const;
};

// Track items by track id, ascending; of several items with one id the
// first one added stays. Items may be added in any order: those that come
// out of order are put in their place when the map is next looked at.
class TrackMap {
 public:
  struct Entry {
    std::uint32_t id;
    Owned<TrackItemChunk> item;
  };

  void Add(std::uint32_t id, Owned<TrackItemChunk> item);

  std::size_t size() const { return Entries().size(); }
  std::vector<Entry>::const_iterator begin() const { return Entries().begin(); }
  std::vector<Entry>::const_iterator end() const { return Entries().end(); }

 private:
  const std::vector<Entry>& Entries() const {
    if (!sorted_) Sort();
    return entries_;
  }
  void Sort() const;

  mutable std::vector<Entry> entries_;
  mutable bool sorted_ = true;
};

class TrackListChunk final : public Chunk {
 public:
  explicit TrackListChunk(Arena& arena) : Chunk(arena) {}

  TrackMap tracks;

  // Returns the header length and the results of all items read.
  std::int32_t Read(Stream& stream) override;
  std::int32_t Write(Stream& stream) override;
};

}  // namespace quaylink
