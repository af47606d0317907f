#include "itunesdb/database.h"

#include "common/checked_at.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kWrittenDatabaseHeader = 188;
constexpr std::uint32_t kWrittenDataSetHeader = 96;

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

std::int32_t DataSetChunk::Read(Reader& reader) {
  if (CheckTag(reader, kDataSetTag) < 0) return FailedRead(reader);
  if (!ReadWholeHeader<DataSetHeader>(reader, kShortestDataSetHeader, headerLength, totalLength,
                                      *this)) {
    return FailedRead(reader);
  }
  Chunk* list = SelectedList();
  if (!list) return FailedRead(reader);
  list->Read(reader);
  return static_cast<std::int32_t>(totalLength);
}

std::int32_t DataSetChunk::Write(Writer& writer) {
  TotalLengthSlot slot(writer);
  WriteHeader<DataSetHeader>(writer, kDataSetTag, kWrittenDataSetHeader, 0, *this);
  Chunk* list = SelectedList();
  if (!list) return -1;
  const std::int32_t result = list->Write(writer);
  if (result < 0) return result;
  return slot.Fill(kWrittenDataSetHeader + static_cast<std::uint32_t>(result));
}

std::int32_t DatabaseChunk::Read(Reader& reader) {
  const std::uint64_t remaining = reader.Remaining();
  if (CheckTag(reader, kDatabaseTag) < 0) return FailedRead(reader);
  if (!ReadWholeHeader<DatabaseHeader>(reader, kShortestDatabaseHeader, headerLength, totalLength,
                                       *this)) {
    return FailedRead(reader);
  }
  std::uint32_t sum = headerLength;
  for (std::uint32_t i = 0; i < dataSetCount; ++i) {
    if (reader.Exhausted()) {
      sum -= dataSetCount - i;
      dataSetCount = dataSets.size();
      break;
    }
    sum += static_cast<std::uint32_t>(AddDataSet(0).Read(reader));
  }
  bytesRead_ = static_cast<std::size_t>(remaining - reader.Remaining());
  return sum == totalLength ? static_cast<std::int32_t>(totalLength) : -1;
}

std::int32_t DatabaseChunk::Write(Writer& writer) {
  headerLength = kWrittenDatabaseHeader;
  writer.Reserve(bytesRead_);
  TotalLengthSlot slot(writer);
  WriteHeader<DatabaseHeader>(writer, kDatabaseTag, headerLength, 0, *this);
  std::uint32_t sum = headerLength;
  for (std::uint32_t i = 0; i < dataSetCount; ++i) {
    DataSetChunk& dataSet = *CheckedAt(dataSets, i);
    if (const std::int32_t result = WriteChild(writer, dataSet, sum); result < 0) return result;
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
