#include "itunesdb/albums.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kWrittenHeaderLength = 88;
constexpr std::uint32_t kShortestHeader = 16;  // up to the data-object count

}  // namespace

std::int32_t AlbumItemChunk::Read(Reader& reader) {
  if (CheckTag(reader, kAlbumItemTag) < 0) return FailedRead(reader);
  if (!ReadWholeHeader<AlbumItemHeader>(reader, kShortestHeader, headerLength, totalLength,
                                        *this)) {
    return FailedRead(reader);
  }
  ReadChildren(reader, Memory(), dataObjectCount, dataObjects);
  return static_cast<std::int32_t>(totalLength);
}

std::int32_t AlbumItemChunk::Write(Writer& writer) {
  TotalLengthSlot slot(writer);
  AlbumItemHeader header = *this;
  header.dataObjectCount = dataObjects.size();
  WriteHeader(writer, kAlbumItemTag, kWrittenHeaderLength, 0, header);
  std::uint32_t sum = kWrittenHeaderLength;
  const std::int32_t result = WriteChildren(writer, dataObjects, sum);
  return result < 0 ? result : slot.Fill(sum);
}

std::int32_t AlbumListChunk::Read(Reader& reader) {
  if (CheckTag(reader, kAlbumListTag) < 0) return FailedRead(reader);
  std::uint32_t itemCount = 0;
  if (!ReadListHeader(reader, headerLength, itemCount)) return FailedRead(reader);
  return static_cast<std::int32_t>(headerLength +
                                   ReadChildren(reader, Memory(), itemCount, albumItems));
}

std::int32_t AlbumListChunk::Write(Writer& writer) {
  WriteListHeader(writer, kAlbumListTag, albumItems.size());
  std::uint32_t sum = kListHeaderLength;
  const std::int32_t result = WriteChildren(writer, albumItems, sum);
  return result < 0 ? result : static_cast<std::int32_t>(sum);
}

}  // namespace quaylink
