#include "collection/sequential_walk.h"

#include <algorithm>

#include "collection/item_reading.h"
#include "collection/playlist_choice.h"
#include "itunesdb/database.h"

namespace quaylink {

namespace {

class SequentialWalk {
 public:
  SequentialWalk(Reader& reader, bool untilFlaw, Contents& contents)
      : reader_(reader), untilFlaw_(untilFlaw), contents_(contents) {}

  WalkResult WalkDatabase();

 private:
  std::uint32_t WalkDataSet();
  void WalkList(const ListKind& kind, std::uint32_t type);
  // True when all of them are whole.
  template <class Items, class Keep>
  bool WalkItems(const ListKind& kind, std::uint32_t count, Items& items, Keep keep);

  bool Ended() const { return reader_.Exhausted() || (untilFlaw_ && contents_.flaw); }
  void NoteFlaw(std::uint64_t offset, const char* subject, const char* trouble) {
    const bool cut = reader_.Remaining() == 0 && trouble != kStatesOtherLength;
    contents_.NoteFlaw(std::min(offset, reader_.Size()), subject, cut ? kIsCut : trouble);
  }

  Reader& reader_;
  const bool untilFlaw_;
  Contents& contents_;
  bool tracksMet_ = false;
  PlaylistChoice choice_;
};

WalkResult SequentialWalk::WalkDatabase() {
  DatabaseHeader header;
  std::uint32_t headerLength = 0;
  std::uint32_t totalLength = 0;
  if (CheckTag(reader_, kDatabaseTag) < 0) return WalkResult::kNoDatabase;
  if (!ReadWholeHeader<DatabaseHeader>(reader_, kShortestDatabaseHeader, headerLength, totalLength,
                                       header)) {
    NoteFlaw(0, "the database", kIsBroken);
    return WalkResult::kRefused;
  }
  std::uint32_t sum = headerLength;
  for (std::uint32_t i = 0; i < header.dataSetCount; ++i) {
    if (Ended()) {
      NoteFlaw(reader_.Position(), "a data set", kIsMissing);
      sum -= header.dataSetCount - i;
      break;
    }
    sum += WalkDataSet();
  }
  const bool accepted = sum == totalLength && static_cast<std::int32_t>(totalLength) >= 0;
  // The end of a header that says nothing may be missing.
  if (reader_.PassedEnd()) NoteFlaw(reader_.Size(), "the database", kIsCut);
  if (!accepted) contents_.NoteFlaw(8, "the database", kStatesOtherLength);
  contents_.playlists = choice_.Take();
  return accepted ? WalkResult::kAccepted : WalkResult::kRefused;
}

// Returns what it adds to the sum of lengths.
std::uint32_t SequentialWalk::WalkDataSet() {
  constexpr std::uint32_t kFailed = UINT32_MAX;
  const std::uint64_t begin = reader_.Position();
  DataSetHeader header;
  std::uint32_t headerLength = 0;
  std::uint32_t totalLength = 0;
  if (CheckTag(reader_, kDataSetTag) < 0 ||
      !ReadWholeHeader<DataSetHeader>(reader_, kShortestDataSetHeader, headerLength, totalLength,
                                      header)) {
    reader_.NoteFailedChunk();
    NoteFlaw(begin, "a data set", kIsMissing);
    return kFailed;
  }
  const ListKind* kind = ListOf(header.dataSetType);
  if (!kind) {
    reader_.NoteFailedChunk();
    NoteFlaw(begin, "a data set", "is of an unknown kind");
    return kFailed;
  }
  WalkList(*kind, header.dataSetType);
  if (reader_.Position() != begin + totalLength) {
    NoteFlaw(begin, "a data set", kStatesOtherLength);
  }
  return totalLength;
}

void SequentialWalk::WalkList(const ListKind& kind, std::uint32_t type) {
  const std::uint64_t begin = reader_.Position();
  std::uint32_t headerLength = 0;
  std::uint32_t count = 0;
  if (CheckTag(reader_, kind.listTag) < 0 || !ReadListHeader(reader_, headerLength, count)) {
    reader_.NoteFailedChunk();
    NoteFlaw(begin, kind.list, kIsMissing);
    return;
  }
  if (&kind == &kAlbums) {
    AlbumReader albums;
    WalkItems(kind, count, albums, [](bool) {});
  } else if (&kind == &kPlaylists) {
    PlaylistReader playlists(choice_.Begin(type), contents_.playlistNames);
    choice_.End(WalkItems(kind, count, playlists, [&](bool whole) {
      if (whole) playlists.Keep();
    }));
  } else {
    const bool wanted = type == kTrackDataSet && !tracksMet_;
    tracksMet_ = tracksMet_ || wanted;
    TrackReader tracks;
    if (wanted) {
      contents_.statedTrackCount = count;
      contents_.tracks.Reserve(static_cast<std::size_t>(
          std::min<std::uint64_t>(count, reader_.Remaining() / kShortestTrackHeader)));
    }
    WalkItems(kind, count, tracks, [&](bool) {
      if (wanted) contents_.tracks.Add(tracks.Item(), contents_.seenTrackCount++);
    });
  }
}

template <class Items, class Keep>
bool SequentialWalk::WalkItems(const ListKind& kind, std::uint32_t count, Items& items, Keep keep) {
  bool allWhole = true;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t begin = reader_.Position();
    if (Ended()) {
      NoteFlaw(begin, kind.item, kIsMissing);
      return false;
    }
    const ItemResult result = items.Read(reader_);
    if (!result.whole) {
      NoteFlaw(begin, kind.item, kIsBroken);
    } else if (reader_.Position() != begin + result.statedLength) {
      NoteFlaw(begin, kind.item, kStatesOtherLength);
    }
    allWhole = allWhole && result.whole;
    keep(result.whole);
  }
  return allWhole;
}

}  // namespace

WalkResult WalkSequentially(Reader& reader, bool untilFlaw, Contents& contents) {
  return SequentialWalk(reader, untilFlaw, contents).WalkDatabase();
}

}  // namespace quaylink
