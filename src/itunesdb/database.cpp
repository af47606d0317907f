#include "itunesdb/database.h"

#include <algorithm>

#include "common/checked_at.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kWrittenDatabaseHeader = 188;
constexpr std::uint32_t kWrittenDataSetHeader = 96;
constexpr std::uint32_t kShortestDatabaseHeader = 24;  // up to the data-set count
constexpr std::uint32_t kShortestDataSetHeader = 16;   // up to the type

constexpr std::uint32_t kTrackDataSet = 1;

}  // namespace

DatabaseChunk theDatabase;

DataSetChunk::DataSetChunk(Arena& arena)
    : Chunk(arena), trackList(arena), playlistList(arena), albumList(arena) {}

Chunk* DataSetChunk::SelectedList() {
  switch (dataSetType) {
    case kTrackDataSet:
    case 6:
      return &trackList;
    case 2:
    case 3:
    case 5:
      return &playlistList;
    case 4:
      return &albumList;
    default:
      return nullptr;
  }
}

std::int32_t DataSetChunk::Read(Stream& stream) {
  if (CheckTag(stream, kDataSetTag) < 0) return FailedRead(stream);
  if (!ReadWholeHeader<DataSetHeader>(stream, kShortestDataSetHeader, headerLength, totalLength,
                                      *this)) {
    return FailedRead(stream);
  }
  Chunk* list = SelectedList();
  if (!list) return FailedRead(stream);
  list->Read(stream);
  return static_cast<std::int32_t>(totalLength);
}

std::int32_t DataSetChunk::Write(Stream& stream) {
  TotalLengthSlot slot(stream);
  WriteHeader<DataSetHeader>(stream, kDataSetTag, kWrittenDataSetHeader, 0, *this);
  Chunk* list = SelectedList();
  if (!list) return -1;
  const std::int32_t result = list->Write(stream);
  if (result < 0) return result;
  return slot.Fill(kWrittenDataSetHeader + static_cast<std::uint32_t>(result));
}

std::int32_t DatabaseChunk::Read(Stream& stream) {
  if (CheckTag(stream, kDatabaseTag) < 0) return FailedRead(stream);
  if (!ReadWholeHeader<DatabaseHeader>(stream, kShortestDatabaseHeader, headerLength, totalLength,
                                       *this)) {
    return FailedRead(stream);
  }
  std::uint32_t sum = headerLength;
  for (std::uint32_t i = 0; i < dataSetCount; ++i) {
    if (stream.Exhausted()) {
      sum -= dataSetCount - i;
      dataSetCount = dataSets.size();
      break;
    }
    sum += static_cast<std::uint32_t>(AddDataSet(0).Read(stream));
  }
  bytesRead_ = static_cast<std::size_t>(std::min(stream.Tell(), stream.Size()));
  return sum == totalLength ? static_cast<std::int32_t>(totalLength) : -1;
}

std::int32_t DatabaseChunk::Write(Stream& stream) {
  headerLength = kWrittenDatabaseHeader;
  stream.Reserve(static_cast<std::size_t>(stream.Tell()) + bytesRead_);
  TotalLengthSlot slot(stream);
  WriteHeader<DatabaseHeader>(stream, kDatabaseTag, headerLength, 0, *this);
  std::uint32_t sum = headerLength;
  for (std::uint32_t i = 0; i < dataSetCount; ++i) {
    DataSetChunk& dataSet = *CheckedAt(dataSets, i);
    if (const std::int32_t result = WriteChild(stream, dataSet, sum); result < 0) return result;
  }
  return slot.Fill(sum);
}

void DatabaseChunk::Clear() {
  dataSets.Clear();
  bytesRead_ = 0;
  Rewind();
}

DataSetChunk& DatabaseChunk::AddDataSet(std::uint32_t type) {
  DataSetChunk& dataSet = dataSets.Append(Memory(), MakeOwned<DataSetChunk>(Memory(), Memory()));
  dataSet.dataSetType = type;
  return dataSet;
}

DataSetChunk* DatabaseChunk::TrackDataSet() const {
  for (const auto& dataSet : dataSets) {
    if (dataSet->dataSetType == kTrackDataSet) return dataSet.get();
  }
  return nullptr;
}

}  // namespace quaylink
