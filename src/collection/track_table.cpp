#include "collection/track_table.h"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <string_view>

namespace quaylink {

namespace {

using StringField = const char* QuaylinkTrack::*;

constexpr std::uint32_t kLastStringObject = 31;

// The property that a data object of each type holds.
constexpr auto kStringFields = [] {
  std::array<StringField, kLastStringObject + 1> fields{};
  fields[kTitleObject] = &QuaylinkTrack::title;
  fields[kLocationObject] = &QuaylinkTrack::location;
  fields[kAlbumObject] = &QuaylinkTrack::album;
  fields[kArtistObject] = &QuaylinkTrack::artist;
  fields[kGenreObject] = &QuaylinkTrack::genre;
  fields[6] = &QuaylinkTrack::fileType;
  fields[8] = &QuaylinkTrack::comment;
  fields[9] = &QuaylinkTrack::category;
  fields[12] = &QuaylinkTrack::composer;
  fields[13] = &QuaylinkTrack::grouping;
  fields[14] = &QuaylinkTrack::description;
  fields[15] = &QuaylinkTrack::podcastUrl;
  fields[16] = &QuaylinkTrack::podcastFeed;
  fields[18] = &QuaylinkTrack::subtitle;
  fields[19] = &QuaylinkTrack::show;
  fields[20] = &QuaylinkTrack::episode;
  fields[21] = &QuaylinkTrack::network;
  fields[22] = &QuaylinkTrack::albumArtist;
  fields[23] = &QuaylinkTrack::sortArtist;
  fields[27] = &QuaylinkTrack::sortTitle;
  fields[28] = &QuaylinkTrack::sortAlbum;
  fields[29] = &QuaylinkTrack::sortAlbumArtist;
  fields[30] = &QuaylinkTrack::sortComposer;
  fields[31] = &QuaylinkTrack::sortShow;
  return fields;
}();

void FillNumbers(const TrackItemHeader& header, QuaylinkTrack& track) {
  track.id = header.trackId;
  track.persistentId = header.persistentId;
  track.trackNumber = header.trackNumber;
  track.trackCount = header.trackCount;
  track.discNumber = header.discNumber;
  track.discCount = header.discCount;
  track.year = header.year;
  track.lengthMs = header.lengthMs;
  track.fileSize = header.fileSize;
  track.bitRate = header.bitRate;
  track.sampleRate = header.sampleRate;
  track.beatsPerMinute = header.beatsPerMinute;
  track.rating = header.rating;
  track.playCount = header.playCount;
  track.skipCount = header.skipCount;
  track.compilation = header.partOfCompilation != 0;
  track.checked = header.unchecked == 0;
  track.mediaType = header.mediaType;
  track.seasonNumber = header.seasonNumber;
  track.episodeNumber = header.episodeNumber;
  track.bookmarkMs = header.bookmarkMs;
  track.added = header.added;
  track.modified = header.modified;
  track.lastPlayed = header.lastPlayed;
  track.lastSkipped = header.lastSkipped;
  track.released = header.released;
}

const char* AddString(const DataObjectChunk& object, StringPool& strings) {
  const std::u16string_view wide(object.wideText.data(), object.wideText.size());
  if (object.objectType == kLocationObject) return strings.AddLocation(wide);
  if (BodyKindOf(object.objectType) == BodyKind::kWideText) return strings.Add(wide);
  return strings.Add(std::string_view(object.byteText.data(), object.byteText.size()));
}

}  // namespace

void TrackTable::Add(const TrackItemChunk& item, std::uint32_t placeInFile) {
  Row& row = rows_.emplace_back(Row{{}, placeInFile});
  FillNumbers(item, row.track);
  // Of several strings of one type the last one counts.
  std::array<const DataObjectChunk*, kStringFields.size()> found{};
  for (const auto& object : item.dataObjects) {
    const std::uint32_t type = object->objectType;
    if (type < found.size()) found[type] = object.get();
  }
  for (std::size_t type = 0; type < found.size(); ++type) {
    if (!kStringFields[type]) continue;
    row.track.*kStringFields[type] = found[type] ? AddString(*found[type], strings_) : "";
  }
}

void TrackTable::Sort() {
  const auto idOf = [](const Row& row) { return row.track.id; };
  // Players write them in order, and then there is nothing to do.
  if (std::ranges::is_sorted(rows_, std::less_equal(), idOf)) return;
  std::vector<std::uint32_t> order(rows_.size());
  std::iota(order.begin(), order.end(), 0u);
  const auto idAt = [&](std::uint32_t index) { return idOf(rows_[index]); };
  std::ranges::stable_sort(order, {}, idAt);
  const auto sameId = [&](std::uint32_t a, std::uint32_t b) { return idAt(a) == idAt(b); };
  order.erase(std::unique(order.begin(), order.end(), sameId), order.end());
  std::vector<Row> sorted;
  sorted.reserve(order.size());
  for (const std::uint32_t index : order) sorted.push_back(rows_[index]);
  rows_ = std::move(sorted);
}

std::optional<std::uint32_t> TrackTable::IndexOf(std::uint32_t id, std::uint32_t guess) const {
  if (guess < rows_.size() && rows_[guess].track.id == id) return guess;
  const auto found =
      std::ranges::lower_bound(rows_, id, {}, [](const Row& row) { return row.track.id; });
  if (found == rows_.end() || found->track.id != id) return std::nullopt;
  return static_cast<std::uint32_t>(found - rows_.begin());
}

}  // namespace quaylink
