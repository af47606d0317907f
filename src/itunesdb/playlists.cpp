#include "itunesdb/playlists.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <random>

#include "platform/windows_api.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kWrittenPlaylistHeader = 108;
constexpr std::uint32_t kWrittenItemHeader = 76;

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

std::int32_t PlaylistItemChunk::Read(Reader& reader) {
  if (CheckTag(reader, kPlaylistItemTag) < 0) return FailedRead(reader);
  if (!ReadWholeHeader<PlaylistItemHeader>(reader, kShortestPlaylistItemHeader, headerLength,
                                           totalLength, *this)) {
    return FailedRead(reader);
  }
  return static_cast<std::int32_t>(headerLength +
                                   ReadChildren(reader, Memory(), dataObjectCount, dataObjects));
}

std::int32_t PlaylistItemChunk::Write(Writer& writer) {
  TotalLengthSlot slot(writer);
  PlaylistItemHeader header = *this;
  header.dataObjectCount = dataObjects.size();
  WriteHeader(writer, kPlaylistItemTag, kWrittenItemHeader, 0, header);
  std::uint32_t sum = kWrittenItemHeader;
  const std::int32_t result = WriteChildren(writer, dataObjects, sum);
  return result < 0 ? result : slot.Fill(sum);
}

PlaylistChunk::PlaylistChunk(Arena& arena) : Chunk(arena) {
  playlistId = NewPersistentId();
}

std::int32_t PlaylistChunk::Read(Reader& reader) {
  if (CheckTag(reader, kPlaylistTag) < 0) return FailedRead(reader);
  if (!ReadWholeHeader<PlaylistHeader>(reader, kShortestPlaylistHeader, headerLength, totalLength,
                                       *this)) {
    return FailedRead(reader);
  }
  field0x30 = {};
  if (playlistId == 0) playlistId = NewPersistentId();
  std::uint32_t sum = headerLength;
  sum += ReadChildren(reader, Memory(), dataObjectCount, dataObjects);
  sum += ReadChildren(reader, Memory(), itemCount, items);
  return static_cast<std::int32_t>(sum);
}

std::int32_t PlaylistChunk::Write(Writer& writer) {
  TotalLengthSlot slot(writer);
  dataObjectCount = dataObjects.size();
  itemCount = items.size();
  PlaylistHeader header = *this;
  for (const auto& object : dataObjects) object->entryCount = itemCount;
  header.dataObjectCount = static_cast<std::uint32_t>(
      std::ranges::count_if(dataObjects, [](const auto& object) { return IsWritten(*object); }));
  WriteHeader(writer, kPlaylistTag, kWrittenPlaylistHeader, 0, header);
  std::uint32_t sum = kWrittenPlaylistHeader;
  for (const auto& object : dataObjects) {
    if (!IsWritten(*object)) continue;
    if (const std::int32_t result = WriteChild(writer, *object, sum); result < 0) return result;
  }
  const std::int32_t result = WriteChildren(writer, items, sum);
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

std::int32_t PlaylistListChunk::Read(Reader& reader) {
  if (CheckTag(reader, kPlaylistListTag) < 0) return FailedRead(reader);
  std::uint32_t playlistCount = 0;
  if (!ReadListHeader(reader, headerLength, playlistCount)) return FailedRead(reader);
  ClearPlaylists();
  return static_cast<std::int32_t>(headerLength +
                                   ReadChildren(reader, Memory(), playlistCount, playlists));
}

std::int32_t PlaylistListChunk::Write(Writer& writer) {
  WriteListHeader(writer, kPlaylistListTag, playlists.size());
  std::uint32_t sum = kListHeaderLength;
  const std::int32_t result = WriteChildren(writer, playlists, sum);
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
