#include "collection/salvage.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "collection/item_reading.h"
#include "collection/playlist_choice.h"
#include "common/ascii.h"
#include "itunesdb/database.h"

namespace quaylink {

namespace {

using Position = std::uint64_t;

class SalvageWalk {
 public:
  SalvageWalk(std::span<const std::uint8_t> bytes, Contents& contents)
      : bytes_(bytes), contents_(contents) {}

  void WalkDatabase();

 private:
  void WalkDataSet();
  void LeaveDataSet(Position begin, Position end);
  void WalkList(const ListKind& kind, std::uint32_t type, Position end);
  std::uint32_t WalkListHeader(const ListKind& kind, Position end);
  void WalkTracks(std::uint32_t count, std::uint32_t type, Position end);
  // True when all of them are whole.
  template <class Items, class Keep>
  bool WalkItems(const ListKind& kind, std::uint32_t count, Position end, Items& items, Keep keep);
  template <class Items>
  bool ReadWhole(const ListKind& kind, Position end, Items& items);

  Position Size() const { return bytes_.size(); }
  // Both positions lie in the database or at its end.
  std::span<const std::uint8_t> Between(Position begin, Position end) const {
    return bytes_.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
  }
  std::uint32_t WordAt(Position position) const;
  bool IsAt(Position position, const Tag& tag) const;
  // Moves to the first of these tags at or after the position; to `end` when there is none.
  void ScanFor(Position end, std::initializer_list<const Tag*> tags);
  // Reads an item from the position, as if the database ended at `end`, and moves behind it, or to
  // where a chunk was not to be read.
  template <class Items>
  ItemResult Read(Position end, Items& items);
  bool FitsWhatFollows(const ListKind& kind, Position end) const {
    return at_ == end || IsAt(at_, kind.itemTag) || IsAt(at_, kDataSetTag);
  }
  void NoteFlaw(Position offset, const char* subject, const char* trouble) {
    const bool cut = at_ >= Size() && trouble != kStatesOtherLength;
    contents_.NoteFlaw(std::min(offset, Size()), subject, cut ? kIsCut : trouble);
  }

  std::span<const std::uint8_t> bytes_;
  Contents& contents_;
  Position at_ = 0;
  bool chunkMissing_ = false;  // where the last reading of an item ended
  bool headerWhole_ = true;    // of the list
  bool placesKnown_ = true;    // of its items
  bool tracksMet_ = false;
  PlaylistChoice choice_;
};

void SalvageWalk::WalkDatabase() {
  Reader reader(bytes_);
  reader.Skip(kTagLength);
  DatabaseHeader header;
  std::uint32_t headerLength = 0;
  std::uint32_t totalLength = 0;
  if (ReadWholeHeader<DatabaseHeader>(reader, kShortestDatabaseHeader, headerLength, totalLength,
                                      header)) {
    at_ = reader.Position();
  } else {
    NoteFlaw(0, "the database", kIsBroken);
  }
  // The length of the header itself may be wrong, here and below.
  if (!IsAt(at_, kDataSetTag)) at_ = kShortestDatabaseHeader;
  for (std::uint32_t i = 0; i < header.dataSetCount || IsAt(at_, kDataSetTag); ++i) {
    if (!IsAt(at_, kDataSetTag)) {
      NoteFlaw(at_, "a data set", kIsMissing);
      if (tracksMet_) {
        ScanFor(Size(), {&kDataSetTag});
      } else {
        ScanFor(Size(), {&kDataSetTag, &kTrackListTag, &kTrackItemTag});
      }
      if (at_ >= Size()) break;
    }
    if (i >= header.dataSetCount) NoteFlaw(at_, "the database", "has more data sets than it says");
    if (IsAt(at_, kDataSetTag)) {
      WalkDataSet();
    } else {
      WalkList(kTracks, kTrackDataSet, Size());
    }
  }
  if (at_ > Size()) NoteFlaw(Size(), "the database", kIsCut);
  if (at_ != totalLength) NoteFlaw(8, "the database", kStatesOtherLength);
  contents_.playlists = choice_.Take();
}

void SalvageWalk::WalkDataSet() {
  const Position begin = at_;
  Reader reader(Between(begin, Size()));
  reader.Skip(kTagLength);
  DataSetHeader header;
  std::uint32_t headerLength = 0;
  std::uint32_t totalLength = 0;
  if (!ReadWholeHeader<DataSetHeader>(reader, kShortestDataSetHeader, headerLength, totalLength,
                                      header)) {
    at_ += kTagLength;
    NoteFlaw(begin, "a data set", kIsBroken);
    return;
  }
  const Position end = begin + totalLength;
  at_ = begin + reader.Position();
  std::uint32_t type = header.dataSetType;
  const ListKind* kind = ListOf(type);
  if (kind != &kTracks && !tracksMet_ && IsAt(at_, kTrackListTag)) {
    NoteFlaw(begin, "a data set", "states another kind than it is of");
    type = kTrackDataSet;
    kind = &kTracks;
  }
  if (kind) {
    if (!IsAt(at_, kind->listTag)) at_ = begin + kShortestDataSetHeader;
    WalkList(*kind, type, end <= Size() && end > begin ? end : Size());
  } else if (end >= at_ && (end >= Size() || IsAt(end, kDataSetTag))) {
    at_ = end;
    if (end > Size()) NoteFlaw(begin, "a data set", kIsCut);
  }
  LeaveDataSet(begin, end);
}

void SalvageWalk::LeaveDataSet(Position begin, Position end) {
  if (at_ == end) return;
  NoteFlaw(begin, "a data set", kStatesOtherLength);
  if (!IsAt(at_, kDataSetTag) && end > at_ && IsAt(end, kDataSetTag)) at_ = end;
}

void SalvageWalk::WalkList(const ListKind& kind, std::uint32_t type, Position end) {
  placesKnown_ = true;
  headerWhole_ = true;
  const std::uint32_t count = WalkListHeader(kind, end);
  if (&kind == &kTracks) {
    WalkTracks(count, type, end);
  } else if (&kind == &kAlbums) {
    AlbumReader albums;
    WalkItems(kind, count, end, albums, [] {});
  } else {
    PlaylistReader playlists(choice_.Begin(type), contents_.playlistNames);
    const bool allWhole = WalkItems(kind, count, end, playlists, [&] { playlists.Keep(); });
    choice_.End(headerWhole_ && allWhole);
  }
}

// Returns the number of items that the list states, 0 when there is no such list; then the items
// that there may be are looked for.
std::uint32_t SalvageWalk::WalkListHeader(const ListKind& kind, Position end) {
  const Position begin = at_;
  if (!IsAt(at_, kind.listTag)) {
    NoteFlaw(begin, kind.list, kIsMissing);
    ScanFor(end, {&kind.listTag, &kind.itemTag, &kDataSetTag});
    headerWhole_ = placesKnown_ = IsAt(at_, kind.listTag);
    if (!headerWhole_) return 0;
  }
  const Position list = at_;
  Reader reader(Between(list, Size()));
  reader.Skip(kTagLength);
  std::uint32_t headerLength = 0;
  std::uint32_t count = 0;
  const bool read = ReadListHeader(reader, headerLength, count);
  at_ = list + reader.Position();
  if (!read || (count > 0 && !IsAt(at_, kind.itemTag))) {
    NoteFlaw(list, kind.list, kIsBroken);
    headerWhole_ = placesKnown_ = false;
    at_ = list + kTagLength;
    ScanFor(end, {&kind.itemTag, &kDataSetTag});
  }
  return count;
}

void SalvageWalk::WalkTracks(std::uint32_t count, std::uint32_t type, Position end) {
  TrackReader tracks;
  if (type != kTrackDataSet || tracksMet_) {
    WalkItems(kTracks, count, end, tracks, [] {});
    return;
  }
  contents_.statedTrackCount = count;
  WalkItems(kTracks, count, end, tracks, [&] {
    contents_.tracks.Add(tracks.Item(),
                         placesKnown_ ? contents_.seenTrackCount : TrackTable::kUnknownPlace);
  });
  // With neither a list nor a track it was another data set's type that was wrong.
  tracksMet_ = headerWhole_ || contents_.seenTrackCount > 0;
}

template <class Items, class Keep>
bool SalvageWalk::WalkItems(const ListKind& kind, std::uint32_t count, Position end, Items& items,
                            Keep keep) {
  bool allWhole = true;
  for (std::uint32_t i = 0; i < count || IsAt(at_, kind.itemTag); ++i) {
    if (!IsAt(at_, kind.itemTag) && (at_ >= end || IsAt(at_, kDataSetTag))) {
      NoteFlaw(at_, kind.item, kIsMissing);
      return false;
    }
    if (i >= count) NoteFlaw(at_, kind.list, "has more items than it says");
    const bool whole = ReadWhole(kind, end, items);
    if (whole) keep();
    allWhole = allWhole && whole;
    if (&kind == &kTracks) ++contents_.seenTrackCount;
  }
  return allWhole;
}

// Tells whether the item at the position is whole, and moves to where the next one should be.
template <class Items>
bool SalvageWalk::ReadWhole(const ListKind& kind, Position end, Items& items) {
  const Position begin = at_;
  if (IsAt(begin, kind.itemTag)) {
    const Position statedEnd = begin + WordAt(begin + 8);
    const bool endsInside = statedEnd > begin && statedEnd <= Size();
    bool whole = Read(endsInside ? statedEnd : Size(), items).whole;
    if (whole && at_ == statedEnd) return true;
    const bool fitsThere = endsInside && (statedEnd == end || IsAt(statedEnd, kind.itemTag) ||
                                          IsAt(statedEnd, kDataSetTag));
    if (!whole && fitsThere) {
      NoteFlaw(begin, kind.item, kIsBroken);
      at_ = statedEnd;
      return false;
    }
    // It may be the stated length that is wrong.
    if (!whole && endsInside && !chunkMissing_) {
      at_ = begin;
      whole = Read(Size(), items).whole;
    }
    if (whole && FitsWhatFollows(kind, end)) {
      NoteFlaw(begin, kind.item, kStatesOtherLength);
      return true;
    }
    NoteFlaw(begin, kind.item, kIsBroken);
    at_ = std::max(at_, begin + 1);
  } else {
    NoteFlaw(begin, kind.item, kIsMissing);
  }
  placesKnown_ = false;
  ScanFor(end, {&kind.itemTag, &kDataSetTag});
  return false;
}

template <class Items>
ItemResult SalvageWalk::Read(Position end, Items& items) {
  const Position begin = at_;
  Reader reader(Between(begin, end));
  reader.SetMostFailedChunks(1);
  const ItemResult result = items.Read(reader);
  at_ = begin + reader.Position();
  chunkMissing_ = reader.FailedChunks() > 0;
  // What stands in the place of a chunk's tag may be the next item's.
  if (chunkMissing_) at_ -= std::min<Position>(kTagLength, reader.Position());
  return result;
}

std::uint32_t SalvageWalk::WordAt(Position position) const {
  return position + 4 <= Size() ? LoadLittleEndian<std::uint32_t>(bytes_.data() + position) : 0;
}

bool SalvageWalk::IsAt(Position position, const Tag& tag) const {
  if (position + kTagLength > Size()) return false;
  const auto* found = reinterpret_cast<const char*>(bytes_.data() + position);
  return EqualsIgnoringCase({found, kTagLength}, {tag, kTagLength});
}

void SalvageWalk::ScanFor(Position end, std::initializer_list<const Tag*> tags) {
  for (; at_ < end; ++at_) {
    if (AsciiLower(static_cast<char>(bytes_[static_cast<std::size_t>(at_)])) != 'm') continue;
    if (std::ranges::any_of(tags, [this](const Tag* tag) { return IsAt(at_, *tag); })) return;
  }
}

}  // namespace

void Salvage(std::span<const std::uint8_t> bytes, Contents& contents) {
  SalvageWalk(bytes, contents).WalkDatabase();
}

}  // namespace quaylink
