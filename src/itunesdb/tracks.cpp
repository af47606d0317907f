#include "itunesdb/tracks.h"

#include <ranges>

#include "common/checked_at.h"

namespace quaylink {

namespace {

// The oldest players' headers are this long; a shorter one is no track's.
constexpr std::uint32_t kShortestTrackHeader = 156;

// Room that a new item makes for its data objects.
constexpr std::uint32_t kUsualDataObjects = 32;

}  // namespace

TrackItemChunk::TrackItemChunk(Arena& arena) : Chunk(arena) {
  dataObjects.Reserve(arena, kUsualDataObjects);
}

std::int32_t TrackItemChunk::Read(Stream& stream) {
  if (CheckTag(stream, kTrackItemTag) < 0) return FailedRead(stream);
  if (!ReadHeader<TrackItemHeader>(stream, kShortestTrackHeader, headerLength, totalLength,
                                   *this)) {
    return FailedRead(stream);
  }
  dataObjects.ShrinkTo(arena(), dataObjectCount);
  headerTail = {};
  if (headerLength > kKnownLength) {
    const auto length = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(headerLength - kKnownLength, stream.Remaining()));
    headerTail = ReadArray<std::uint8_t>(stream, arena(), length);
    headerLength = kKnownLength + length;
  }
  ReadChildren(stream, arena(), dataObjectCount, dataObjects);
  return static_cast<std::int32_t>(totalLength);
}

std::int32_t TrackItemChunk::Write(Stream& stream) {
  TotalLengthSlot slot(stream);
  const std::uint32_t written = std::max(headerLength, kKnownLength + headerTail.size());
  TrackItemHeader header = *this;
  header.dataObjectCount = dataObjects.size();
  WriteHeader<TrackItemHeader>(stream, kTrackItemTag, written, 0, header, headerTail);
  std::uint32_t sum = written;
  const std::int32_t result = WriteChildren(stream, dataObjects, sum);
  return result < 0 ? result : slot.Fill(sum);
}

std::int32_t TrackItemChunk::DataObjectCount() const {
  return static_cast<std::int32_t>(dataObjects.size());
}

DataObjectChunk& TrackItemChunk::DataObjectAt(std::uint32_t index) const {
  return *CheckedAt(dataObjects, index);
}

std::int32_t TrackListChunk::Read(Stream& stream) {
  if (CheckTag(stream, kTrackListTag) < 0) return FailedRead(stream);
  std::uint32_t itemCount = 0;
  if (!ReadListHeader(stream, headerLength, itemCount)) return FailedRead(stream);
  std::uint32_t sum = headerLength;
  sum +=
      ReadChildren<TrackItemChunk>(stream, arena(), itemCount, [this](Owned<TrackItemChunk> item) {
        const std::uint32_t id = item->trackId;
        tracks.emplace_hint(tracks.end(), id, std::move(item));  // players write ascending ids
      });
  return static_cast<std::int32_t>(sum);
}

std::int32_t TrackListChunk::Write(Stream& stream) {
  WriteListHeader(stream, kTrackListTag, static_cast<std::uint32_t>(tracks.size()));
  std::uint32_t sum = kListHeaderLength;
  const std::int32_t result = WriteChildren(stream, std::views::values(tracks), sum);
  return result < 0 ? result : static_cast<std::int32_t>(sum);
}

}  // namespace quaylink
