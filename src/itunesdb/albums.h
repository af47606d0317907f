// mhla and mhia: the album list and its albums. Nothing interprets them; they are read so that they
// can be written.
#pragma once

#include "itunesdb/data_object.h"

namespace quaylink {

struct AlbumItemHeader {
  Field32 dataObjectCount;  // as read; the number held is what is written
  Field32 field0x10;
  Field64 field0x14;
  Field32 field0x1C = 2;

  static constexpr auto Fields() {
    using H = AlbumItemHeader;
    return std::tuple(&H::dataObjectCount, &H::field0x10, &H::field0x14, &H::field0x1C);
  }
};

class AlbumItemChunk final : public Chunk, public AlbumItemHeader {
 public:
  explicit AlbumItemChunk(Arena& arena) : Chunk(arena) {}

  ChunkList<DataObjectChunk> dataObjects;

  // Returns the total length that the item states.
  std::int32_t Read(Reader& reader) override;
  std::int32_t Write(Writer& writer) override;
};

class AlbumListChunk final : public Chunk {
 public:
  explicit AlbumListChunk(Arena& arena) : Chunk(arena) {}

  ChunkList<AlbumItemChunk> albumItems;

  // Appends the items read. Returns the header length and the results of all items.
  std::int32_t Read(Reader& reader) override;
  std::int32_t Write(Writer& writer) override;
};

}  // namespace quaylink
