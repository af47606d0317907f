#include "itunesdb/tracks.h"

#include <algorithm>

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
  dataObjects.ShrinkTo(Memory(), dataObjectCount);
  headerTail = {};
  if (headerLength > kKnownLength) {
    const auto length = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(headerLength - kKnownLength, stream.Remaining()));
    headerTail = ReadArray<std::uint8_t>(stream, Memory(), length);
    headerLength = kKnownLength + length;
  }
  ReadChildren(stream, Memory(), dataObjectCount, dataObjects);
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

void TrackMap::Add(std::uint32_t id, Owned<TrackItemChunk> item) {
  if (!entries_.empty() && id <= entries_.back().id) sorted_ = false;
  entries_.push_back({id, std::move(item)});
}

void TrackMap::Sort() const {
  std::ranges::stable_sort(entries_, {}, &Entry::id);
  const auto sameId = [](const Entry& a, const Entry& b) { return a.id == b.id; };
  entries_.erase(std::unique(entries_.begin(), entries_.end(), sameId), entries_.end());
  sorted_ = true;
}

std::int32_t TrackListChunk::Read(Stream& stream) {
  if (CheckTag(stream, kTrackListTag) < 0) return FailedRead(stream);
  std::uint32_t itemCount = 0;
  if (!ReadListHeader(stream, headerLength, itemCount)) return FailedRead(stream);
  std::uint32_t sum = headerLength;
  sum +=
      ReadChildren<TrackItemChunk>(stream, Memory(), itemCount, [this](Owned<TrackItemChunk> item) {
        const std::uint32_t id = item->trackId;
        tracks.Add(id, std::move(item));
      });
  return static_cast<std::int32_t>(sum);
}

std::int32_t TrackListChunk::Write(Stream& stream) {
  WriteListHeader(stream, kTrackListTag, static_cast<std::uint32_t>(tracks.size()));
  std::uint32_t sum = kListHeaderLength;
  for (const TrackMap::Entry& track : tracks) {
    if (const std::int32_t result = WriteChild(stream, *track.item, sum); result < 0) return result;
  }
  return static_cast<std::int32_t>(sum);
}

}  // namespace quaylink
