#include "itunesdb/albums.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kWrittenHeaderLength = 88;
constexpr std::uint32_t kShortestHeader = 16;  // up to the data-object count

}  // namespace

std::int32_t AlbumItemChunk::Read(Stream& stream) {
  if (CheckTag(stream, kAlbumItemTag) < 0) return FailedRead(stream);
  if (!ReadWholeHeader<AlbumItemHeader>(stream, kShortestHeader, headerLength, totalLength,
                                        *this)) {
    return FailedRead(stream);
  }
  ReadChildren(stream, Memory(), dataObjectCount, dataObjects);
  return static_cast<std::int32_t>(totalLength);
}

std::int32_t AlbumItemChunk::Write(Stream& stream) {
  TotalLengthSlot slot(stream);
  AlbumItemHeader header = *this;
  header.dataObjectCount = dataObjects.size();
  WriteHeader(stream, kAlbumItemTag, kWrittenHeaderLength, 0, header);
  std::uint32_t sum = kWrittenHeaderLength;
  const std::int32_t result = WriteChildren(stream, dataObjects, sum);
  return result < 0 ? result : slot.Fill(sum);
}

std::int32_t AlbumListChunk::Read(Stream& stream) {
  if (CheckTag(stream, kAlbumListTag) < 0) return FailedRead(stream);
  std::uint32_t itemCount = 0;
  if (!ReadListHeader(stream, headerLength, itemCount)) return FailedRead(stream);
  return static_cast<std::int32_t>(headerLength +
                                   ReadChildren(stream, Memory(), itemCount, albumItems));
}

std::int32_t AlbumListChunk::Write(Stream& stream) {
  WriteListHeader(stream, kAlbumListTag, albumItems.size());
  std::uint32_t sum = kListHeaderLength;
  const std::int32_t result = WriteChildren(stream, albumItems, sum);
  return result < 0 ? result : static_cast<std::int32_t>(sum);
}

}  // namespace quaylink
