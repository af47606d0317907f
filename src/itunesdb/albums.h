// mhla and mhia: the album list and its albums. Nothing
// interprets them; they are read so that they can be written.
#pragma once

#include "itunesdb/data_object.h"

namespace quaylink {

struct AlbumItemHeader {
  std::uint32_t dataObjectCount = 0;  // as read; the number held is what is written
  std::uint32_t field0x10 = 0;
  std::uint64_t field0x14 = 0;
  std::uint32_t field0x1C = 2;

  static constexpr std::uint32_t kKnownLength = 0x20;
  template <class V>
  static void Visit(V& v) {
    using H = AlbumItemHeader;
    v.Fields(&H::dataObjectCount, &H::field0x10, &H::field0x14, &H::field0x1C);
  }
};

class AlbumItemChunk final : public Chunk, public AlbumItemHeader {
 public:
  explicit AlbumItemChunk(Arena& arena) : Chunk(arena) {}

  ChunkList<DataObjectChunk> dataObjects;

  // Returns the total length that the item states.
  std::int32_t Read(Stream& stream) override;
  std::int32_t Write(Stream& stream) override;
};

class AlbumListChunk final : public Chunk {
 public:
  explicit AlbumListChunk(Arena& arena) : Chunk(arena) {}

  ChunkList<AlbumItemChunk> albumItems;

  // Appends the items read. Returns the header length and the results of all items.
  std::int32_t Read(Stream& stream) override;
  std::int32_t Write(Stream& stream) override;
};

}  // namespace quaylink
