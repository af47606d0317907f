// Whether two databases hold the same, but for what writing settles anew: counts, lengths, and the
// bodies that are not written.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "itunesdb/database.h"

namespace quaylink::test {

bool SameTree(const DataObjectChunk& a, const DataObjectChunk& b);
bool SameTree(const TrackItemChunk& a, const TrackItemChunk& b);
bool SameTree(const AlbumItemChunk& a, const AlbumItemChunk& b);
bool SameTree(const PlaylistItemChunk& a, const PlaylistItemChunk& b);
bool SameTree(const PlaylistChunk& a, const PlaylistChunk& b);
bool SameTree(const DataSetChunk& a, const DataSetChunk& b);

// Headers are nothing but their bytes.
template <class H>
bool SameHeader(const H& a, const H& b) {
  static_assert(alignof(H) == 1);
  return std::memcmp(&a, &b, sizeof(H)) == 0;
}

// The same for a header with the count of data objects, which is what is held once it was written.
template <class H>
bool SameCountedHeader(H a, const H& b) {
  a.dataObjectCount = b.dataObjectCount;
  return SameHeader(a, b);
}

template <class List>
bool SameLists(const List& a, const List& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& x, const auto& y) { return SameTree(*x, *y); });
}

inline bool SameTree(const DataObjectChunk& a, const DataObjectChunk& b) {
  if (!SameHeader<DataObjectHeader>(a, b)) return false;
  switch (BodyKindOf(a.objectType)) {
    case BodyKind::kWideText:
      return a.field0x20 == b.field0x20 && a.field0x24 == b.field0x24 &&
             std::ranges::equal(a.wideText, b.wideText);
    case BodyKind::kByteText:
      return std::ranges::equal(a.byteText, b.byteText);
    case BodyKind::kIndexList:
      return a.indexField == b.indexField && std::ranges::equal(a.indexEntries, b.indexEntries);
    case BodyKind::kJumpTable:  // its count is its owner's to set, and only playlists would
      return a.indexField == b.indexField;
    case BodyKind::kRaw:
      return std::ranges::equal(a.rawBody, b.rawBody);
  }
  return false;
}

inline bool SameTree(const TrackItemChunk& a, const TrackItemChunk& b) {
  return SameCountedHeader<TrackItemHeader>(a, b) &&
         std::ranges::equal(a.headerTail, b.headerTail) && SameLists(a.dataObjects, b.dataObjects);
}

inline bool SameTree(const AlbumItemChunk& a, const AlbumItemChunk& b) {
  return SameCountedHeader<AlbumItemHeader>(a, b) && SameLists(a.dataObjects, b.dataObjects);
}

inline bool SameTree(const PlaylistItemChunk& a, const PlaylistItemChunk& b) {
  return SameCountedHeader<PlaylistItemHeader>(a, b) && SameLists(a.dataObjects, b.dataObjects);
}

// The data objects of a playlist that are written.
inline std::vector<const DataObjectChunk*> WrittenObjects(const PlaylistChunk& playlist) {
  std::vector<const DataObjectChunk*> objects;
  for (const auto& object : playlist.dataObjects) {
    const bool left =
        object->objectType == kIndexListObject || object->objectType == kJumpTableObject;
    if (!left) objects.push_back(object.get());
  }
  return objects;
}

inline bool SameTree(const PlaylistChunk& a, const PlaylistChunk& b) {
  PlaylistHeader header = a;
  header.itemCount = b.itemCount;
  return SameCountedHeader<PlaylistHeader>(header, b) &&
         SameLists(WrittenObjects(a), WrittenObjects(b)) && SameLists(a.items, b.items);
}

inline bool SameTree(const DataSetChunk& a, const DataSetChunk& b) {
  const auto sameTrack = [](const TrackMap::Entry& x, const TrackMap::Entry& y) {
    return x.id == y.id && SameTree(*x.item, *y.item);
  };
  if (a.dataSetType != b.dataSetType) return false;
  switch (a.dataSetType) {
    case 1:
    case 6:
      return std::ranges::equal(a.trackList.tracks, b.trackList.tracks, sameTrack);
    case 4:
      return SameLists(a.albumList.albumItems, b.albumList.albumItems);
    default:
      return SameLists(a.playlistList.playlists, b.playlistList.playlists);
  }
}

inline bool SameTree(const DatabaseChunk& a, const DatabaseChunk& b) {
  return SameHeader<DatabaseHeader>(a, b) && SameLists(a.dataSets, b.dataSets);
}

}  // namespace quaylink::test
