#include "itunesdb/tracks.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include "common/checked_at.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kLengthOfFields = KnownLength<TrackItemHeader>();

}  // namespace

std::int32_t TrackItemChunk::Read(Reader& reader) {
  if (CheckTag(reader, kTrackItemTag) < 0) return FailedRead(reader);
  if (!ReadHeader<TrackItemHeader>(reader, kShortestTrackHeader, headerLength, totalLength,
                                   *this)) {
    return FailedRead(reader);
  }
  field0x3C = 0;
  headerTail = {};
  if (headerLength > kLengthOfFields) {
    const auto length = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(headerLength - kLengthOfFields, reader.Remaining()));
    headerTail = ReadArray<std::uint8_t>(reader, Memory(), length);
    headerLength = kLengthOfFields + length;
  }
  ReadChildren(reader, Memory(), dataObjectCount, dataObjects);
  return static_cast<std::int32_t>(totalLength);
}

std::int32_t TrackItemChunk::Write(Writer& writer) {
  TotalLengthSlot slot(writer);
  const std::uint32_t written = std::max(headerLength, kLengthOfFields + headerTail.size());
  TrackItemHeader header = *this;
  header.dataObjectCount = dataObjects.size();
  WriteHeader<TrackItemHeader>(writer, kTrackItemTag, written, 0, header, headerTail);
  std::uint32_t sum = written;
  const std::int32_t result = WriteChildren(writer, dataObjects, sum);
  return result < 0 ? result : slot.Fill(sum);
}

std::int32_t TrackItemChunk::DataObjectCount() const {
  return static_cast<std::int32_t>(dataObjects.size());
}

DataObjectChunk& TrackItemChunk::DataObjectAt(std::uint32_t index) const {
  return *CheckedAt(dataObjects, index);
}

void TrackMap::Add(std::vector<Entry> entries) {
  if (entries_.empty()) {
    entries_ = std::move(entries);
  } else {
    std::ranges::move(entries, std::back_inserter(entries_));
  }
  // Players write them in order, and then there is nothing to do.
  const auto outOfOrder = std::ranges::adjacent_find(entries_, std::greater_equal(), &Entry::id);
  if (outOfOrder == entries_.end()) return;
  std::ranges::stable_sort(entries_, {}, &Entry::id);
  const auto sameId = [](const Entry& a, const Entry& b) { return a.id == b.id; };
  entries_.erase(std::unique(entries_.begin(), entries_.end(), sameId), entries_.end());
}

std::int32_t TrackListChunk::Read(Reader& reader) {
  if (CheckTag(reader, kTrackListTag) < 0) return FailedRead(reader);
  std::uint32_t itemCount = 0;
  if (!ReadListHeader(reader, headerLength, itemCount)) return FailedRead(reader);
  std::vector<TrackMap::Entry> items;
  const std::uint32_t sum =
      ReadChildren<TrackItemChunk>(reader, Memory(), itemCount, [&](Owned<TrackItemChunk> item) {
        const std::uint32_t id = item->trackId;
        items.push_back({id, std::move(item)});
      });
  tracks.Add(std::move(items));
  return static_cast<std::int32_t>(headerLength + sum);
}

std::int32_t TrackListChunk::Write(Writer& writer) {
  WriteListHeader(writer, kTrackListTag, static_cast<std::uint32_t>(tracks.size()));
  std::uint32_t sum = kListHeaderLength;
  for (const TrackMap::Entry& track : tracks) {
    if (const std::int32_t result = WriteChild(writer, *track.item, sum); result < 0) return result;
  }
  return static_cast<std::int32_t>(sum);
}

}  // namespace quaylink
