#include "collection/play_counts.h"

#include <algorithm>
#include <array>
#include <limits>

#include "itunesdb/header.h"

namespace quaylink {

namespace {

constexpr Tag kPlayCountsTag = "mhdp";
constexpr std::uint32_t kShortestHeader = 16;
constexpr std::uint32_t kShortestEntry = 12;
constexpr std::uint32_t kBestRating = 100;

// An entry as it stands in the file; what it is too short for is 0.
struct Entry {
  Field32 plays;
  Field32 lastPlayed;
  Field32 bookmarkMs;
  Field32 rating;
  Field32 field0x10;
  Field32 skips;
  Field32 lastSkipped;
};

std::uint32_t SumOf(std::uint32_t a, std::uint32_t b) {
  return a + std::min(b, std::numeric_limits<std::uint32_t>::max() - a);
}

void Replace(std::uint32_t& value, std::uint32_t newer) {
  if (newer != 0) value = newer;
}

void Apply(const Entry& entry, bool hasRating, QuaylinkTrack& track) {
  const bool tellsNothing = entry.plays == 0 && entry.lastPlayed == 0 && entry.bookmarkMs == 0 &&
                            entry.rating == 0 && entry.field0x10 == 0 && entry.skips == 0 &&
                            entry.lastSkipped == 0;
  if (tellsNothing) return;
  track.playCount = SumOf(track.playCount, entry.plays);
  track.skipCount = SumOf(track.skipCount, entry.skips);
  Replace(track.lastPlayed, entry.lastPlayed);
  Replace(track.lastSkipped, entry.lastSkipped);
  Replace(track.bookmarkMs, entry.bookmarkMs);
  if (hasRating && entry.rating <= kBestRating) track.rating = entry.rating;
}

}  // namespace

bool TakePlayCounts(Reader& reader, Contents& contents) {
  std::array<Field32, 3> words;  // header length, entry length, number of entries
  if (CheckTag(reader, kPlayCountsTag) < 0 ||
      reader.Read(words.data(), sizeof(words)) < sizeof(words)) {
    return false;
  }
  const auto [headerLength, entryLength, count] = words;
  if (headerLength < kShortestHeader || entryLength < kShortestEntry) return false;
  if (count != contents.statedTrackCount && count != contents.seenTrackCount) return false;
  reader.Skip(headerLength - kShortestHeader);
  if (reader.Remaining() / entryLength < count) return false;

  const std::size_t known = std::min<std::size_t>(entryLength, sizeof(Entry));
  const bool hasRating = known > offsetof(Entry, rating);
  std::uint32_t place = 0;  // of the next entry
  for (TrackTable::Row& row : contents.tracks.Rows()) {
    if (row.placeInFile >= count) break;
    reader.Skip(std::uint64_t{row.placeInFile - place} * entryLength);
    Entry entry;
    reader.Read(&entry, known);
    reader.Skip(entryLength - known);
    place = row.placeInFile + 1;
    Apply(entry, hasRating, row.track);
  }
  return true;
}

}  // namespace quaylink
