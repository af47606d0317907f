#include "collection/item_reading.h"

#include <algorithm>
#include <string_view>

namespace quaylink {

namespace {

bool AreWhole(const ChunkList<DataObjectChunk>& objects, std::uint32_t count) {
  return objects.size() == count && std::ranges::all_of(objects, [](const auto& object) {
           return object->LengthTaken() == object->totalLength;
         });
}

// What has to do with the reader: it has not failed since, and has not passed the end.
class Watch {
 public:
  explicit Watch(const Reader& reader) : reader_(reader), failedChunks_(reader.FailedChunks()) {}
  bool AllWell() const { return reader_.FailedChunks() == failedChunks_ && !reader_.PassedEnd(); }

 private:
  const Reader& reader_;
  int failedChunks_;
};

}  // namespace

const ListKind* ListOf(std::uint32_t dataSetType) {
  switch (dataSetType) {
    case 1:
    case 6:
      return &kTracks;
    case 2:
    case 3:
    case 5:
      return &kPlaylists;
    case 4:
      return &kAlbums;
    default:
      return nullptr;
  }
}

ItemResult TrackReader::Read(Reader& reader) {
  item_.reset();
  memory_.Rewind();
  TrackItemChunk& item = item_.emplace(memory_);
  const Watch watch(reader);
  item.Read(reader);
  const bool whole = watch.AllWell() && AreWhole(item.dataObjects, item.dataObjectCount);
  return {whole, item.totalLength};
}

ItemResult AlbumReader::Read(Reader& reader) {
  memory_.Rewind();
  AlbumItemChunk item(memory_);
  const Watch watch(reader);
  item.Read(reader);
  const bool whole = watch.AllWell() && AreWhole(item.dataObjects, item.dataObjectCount);
  return {whole, item.totalLength};
}

ItemResult PlaylistReader::Read(Reader& reader) {
  const Watch watch(reader);
  PlaylistHeader header;
  std::uint32_t headerLength = 0;
  std::uint32_t totalLength = 0;
  if (CheckTag(reader, kPlaylistTag) < 0 ||
      !ReadWholeHeader<PlaylistHeader>(reader, kShortestPlaylistHeader, headerLength, totalLength,
                                       header)) {
    reader.NoteFailedChunk();
    return {};
  }
  if (table_) table_->Begin();
  bool smart = false;
  playlist_ = {};
  playlist_.persistentId = header.playlistId;
  playlist_.name = "";
  bool whole = ReadObjects(reader, header.dataObjectCount, [&](const DataObjectChunk& object) {
    if (object.objectType == kTitleObject && table_) {
      playlist_.name =
          names_.Add(std::u16string_view(object.wideText.data(), object.wideText.size()));
    }
    smart = smart || object.objectType == kSmartPreferencesObject ||
            object.objectType == kSmartRulesObject;
  });
  for (std::uint32_t i = 0; i < header.itemCount; ++i) {
    if (reader.Exhausted()) return {false, totalLength};
    whole = ReadItem(reader) && whole;
  }
  playlist_.kind = header.masterFlag == 1    ? QUAYLINK_MASTER
                   : header.podcastFlag == 1 ? QUAYLINK_PODCASTS
                   : smart                   ? QUAYLINK_SMART
                                             : QUAYLINK_ORDINARY;
  return {whole && watch.AllWell(), totalLength};
}

void PlaylistReader::Keep() {
  if (table_) table_->Keep(playlist_);
}

bool PlaylistReader::ReadItem(Reader& reader) {
  PlaylistItemHeader header;
  std::uint32_t headerLength = 0;
  std::uint32_t totalLength = 0;
  if (CheckTag(reader, kPlaylistItemTag) < 0 ||
      !ReadWholeHeader<PlaylistItemHeader>(reader, kShortestPlaylistItemHeader, headerLength,
                                           totalLength, header)) {
    reader.NoteFailedChunk();
    return false;
  }
  std::uint32_t position = PlaylistTable::kNoPosition;
  const bool whole =
      ReadObjects(reader, header.dataObjectCount, [&](const DataObjectChunk& object) {
        if (object.objectType == kPositionObject && object.rawBody.size() >= 4) {
          position = LoadLittleEndian<std::uint32_t>(object.rawBody.data());
        }
      });
  if (table_ && header.groupFlag == 0) table_->AddItem(header.trackId, position);
  return whole;
}

template <class Take>
bool PlaylistReader::ReadObjects(Reader& reader, std::uint32_t count, Take take) {
  bool whole = true;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (reader.Exhausted()) return false;
    {
      DataObjectChunk object(memory_);
      object.Read(reader);
      whole = whole && object.LengthTaken() == object.totalLength;
      take(object);
    }
    memory_.Rewind();
  }
  return whole;
}

}  // namespace quaylink
