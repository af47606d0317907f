#include "itunesdb/playlists.h"

#include <cstdlib>
#include <exception>
#include <random>

#include "platform/windows_api.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kWrittenPlaylistHeader = 108;
constexpr std::uint32_t kWrittenItemHeader = 76;
constexpr std::uint32_t kShortestPlaylistHeader = 20;  // up to the item count
constexpr std::uint32_t kShortestItemHeader = 16;      // up to the data-object count

// Where the system has no random numbers either, the identifier is left to the C runtime's.
void FillRandomly(GUID& guid) {
  try {
    std::random_device source;
    guid.Data1 = source();
    guid.Data2 = static_cast<std::uint16_t>(source());
    guid.Data3 = static_cast<std::uint16_t>(source());
  } catch (const std::exception&) {
    guid = {};
  }
}

bool IsWritten(const DataObjectChunk& object) {
  return object.objectType != kIndexListObject && object.objectType != kJumpTableObject;
}

}  // namespace

std::uint64_t NewPersistentId() {
  GUID guid{};
  if (CoCreateGuid(&guid) != S_OK) {
    FillRandomly(guid);
  }
  const auto random = static_cast<std::uint64_t>(std::rand()) & 0x7FFF;
  return std::uint64_t{guid.Data1} << 32 | std::uint64_t{guid.Data2} << 16 | guid.Data3 | random;
}

std::int32_t PlaylistItemChunk::Read(Stream& stream) {
  if (CheckTag(stream, kPlaylistItemTag) < 0) return FailedRead(stream);
  if (!ReadWholeHeader<PlaylistItemHeader>(stream, kShortestItemHeader, headerLength, totalLength,
                                           *this)) {
    return FailedRead(stream);
  }
  return static_cast<std::int32_t>(headerLength +
                                   ReadChildren(stream, Memory(), dataObjectCount, dataObjects));
}

std::int32_t PlaylistItemChunk::Write(Stream& stream) {
  TotalLengthSlot slot(stream);
  PlaylistItemHeader header = *this;
  header.dataObjectCount = dataObjects.size();
  WriteHeader(stream, kPlaylistItemTag, kWrittenItemHeader, 0, header);
  std::uint32_t sum = kWrittenItemHeader;
  const std::int32_t result = WriteChildren(stream, dataObjects, sum);
  return result < 0 ? result : slot.Fill(sum);
}

PlaylistChunk::PlaylistChunk(Arena& arena) : Chunk(arena) {
  playlistId = NewPersistentId();
}

std::int32_t PlaylistChunk::Read(Stream& stream) {
  if (CheckTag(stream, kPlaylistTag) < 0) return FailedRead(stream);
  if (!ReadWholeHeader<PlaylistHeader>(stream, kShortestPlaylistHeader, headerLength, totalLength,
                                       *this)) {
    return FailedRead(stream);
  }
  if (playlistId == 0) playlistId = NewPersistentId();
  std::uint32_t sum = headerLength;
  sum += ReadChildren(stream, Memory(), dataObjectCount, dataObjects);
  sum += ReadChildren(stream, Memory(), itemCount, items);
  return static_cast<std::int32_t>(sum);
}

std::int32_t PlaylistChunk::Write(Stream& stream) {
  TotalLengthSlot slot(stream);
  dataObjectCount = dataObjects.size();
  itemCount = items.size();
  PlaylistHeader header = *this;
  header.dataObjectCount = 0;
  for (const auto& object : dataObjects) {
    object->entryCount = itemCount;
    if (IsWritten(*object)) ++header.dataObjectCount;
  }
  WriteHeader(stream, kPlaylistTag, kWrittenPlaylistHeader, 0, header);
  std::uint32_t sum = kWrittenPlaylistHeader;
  for (const auto& object : dataObjects) {
    if (!IsWritten(*object)) continue;
    if (const std::int32_t result = WriteChild(stream, *object, sum); result < 0) return result;
  }
  const std::int32_t result = WriteChildren(stream, items, sum);
  return result < 0 ? result : slot.Fill(sum);
}

DataObjectChunk* PlaylistChunk::FindDataObject(std::uint32_t type) const {
  for (const auto& object : dataObjects) {
    if (object->objectType == type) return object.get();
  }
  return nullptr;
}

DataObjectChunk& PlaylistChunk::GetOrAddDataObject(std::uint32_t type) {
  if (type != 0) {
    if (DataObjectChunk* found = FindDataObject(type)) return *found;
  }
  Owned<DataObjectChunk> object = MakeOwned<DataObjectChunk>(Memory(), Memory());
  object->objectType = type;
  return dataObjects.Append(Memory(), std::move(object));
}

PlaylistListChunk::PlaylistListChunk(Arena& arena) : Chunk(arena) {
  EnsureMasterPlaylist();
}

std::int32_t PlaylistListChunk::Read(Stream& stream) {
  if (CheckTag(stream, kPlaylistListTag) < 0) return FailedRead(stream);
  std::uint32_t playlistCount = 0;
  if (!ReadListHeader(stream, headerLength, playlistCount)) return FailedRead(stream);
  ClearPlaylists();
  return static_cast<std::int32_t>(headerLength +
                                   ReadChildren(stream, Memory(), playlistCount, playlists));
}

std::int32_t PlaylistListChunk::Write(Stream& stream) {
  WriteListHeader(stream, kPlaylistListTag, playlists.size());
  std::uint32_t sum = kListHeaderLength;
  const std::int32_t result = WriteChildren(stream, playlists, sum);
  return result < 0 ? result : static_cast<std::int32_t>(sum);
}

PlaylistChunk& PlaylistListChunk::EnsureMasterPlaylist() {
  if (!playlists.empty()) return *playlists[0];
  PlaylistChunk& playlist = AddPlaylist();
  playlist.masterFlag = 1;
  playlist.GetOrAddDataObject(kTitleObject).SetText(DataObjectChunk::WidenText("IPOD").get());
  return playlist;
}

PlaylistChunk& PlaylistListChunk::AddPlaylist() {
  return playlists.Append(Memory(), MakeOwned<PlaylistChunk>(Memory(), Memory()));
}

void PlaylistListChunk::ClearPlaylists() {
  playlists.Clear();
}

}  // namespace quaylink
