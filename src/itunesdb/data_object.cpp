#include "itunesdb/data_object.h"

#include <algorithm>
#include <bit>
#include <string>

namespace quaylink {

namespace {

// Between the entry count and the entries of a list body.
constexpr std::uint32_t kIndexListGap = 40;
constexpr std::uint32_t kJumpTableGap = 8;

std::uint32_t AtMostRemaining(const Stream& stream, std::uint32_t count, std::uint32_t size) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(count, stream.Remaining() / size));
}

// Integers in memory as they stand in the file, and the other way round.
template <class T>
void SwapOnBigEndian(T* values, std::size_t count) {
  if constexpr (std::endian::native == std::endian::big) {
    for (std::size_t i = 0; i < count; ++i) {
      values[i] = LoadLittleEndian<T>(reinterpret_cast<const std::uint8_t*>(values + i));
    }
  }
}

std::uint32_t ReadWord(Stream& stream, std::uint32_t otherwise) {
  std::uint8_t bytes[4];
  return stream.Read(bytes, sizeof(bytes)) == sizeof(bytes) ? LoadLittleEndian<std::uint32_t>(bytes)
                                                            : otherwise;
}

void WriteWord(Stream& stream, std::uint32_t value) {
  StoreLittleEndian(stream.Claim(4), value);
}

// Writes what is held of a body, and zeros for what is stated beyond it.
std::uint32_t WriteBody(Stream& stream, const void* held, std::uint32_t heldLength,
                        std::uint32_t length) {
  const std::uint32_t there = std::min(heldLength, length);
  stream.Write(held, there);
  if (length > there) std::memset(stream.Claim(length - there), 0, length - there);
  return length;
}

}  // namespace

BodyKind BodyKindOf(std::uint32_t objectType) {
  const auto within = [objectType](std::uint32_t first, std::uint32_t last) {
    return objectType >= first && objectType <= last;
  };
  if (within(1, 9) || within(12, 14) || within(18, 24) || within(27, 31) || within(200, 204)) {
    return BodyKind::kWideText;
  }
  if (within(15, 16)) return BodyKind::kByteText;
  if (objectType == kIndexListObject) return BodyKind::kIndexList;
  if (objectType == kJumpTableObject) return BodyKind::kJumpTable;
  return BodyKind::kRaw;
}

std::int32_t DataObjectChunk::Read(Stream& stream) {
  if (CheckTag(stream, kDataObjectTag) < 0) return FailedRead(stream);
  TakeHeader<DataObjectHeader>(stream, stream.Peek(DataObjectHeader::kKnownLength - kTagLength),
                               DataObjectHeader::kKnownLength, headerLength, totalLength, *this);
  wideText = {};
  rawBody = {};
  indexEntries = {};
  jumpEntries = {};
  byteText = {};
  switch (BodyKindOf(objectType)) {
    case BodyKind::kWideText:
      ReadWideText(stream);
      break;
    case BodyKind::kByteText:
      bodyLength = AtMostRemaining(stream, LengthBeyond(DataObjectHeader::kKnownLength), 1);
      byteText = ReadArray<char>(stream, Memory(), bodyLength);
      break;
    case BodyKind::kIndexList:
      ReadIndexList(stream);
      break;
    case BodyKind::kJumpTable:
      ReadJumpTable(stream);
      break;
    case BodyKind::kRaw:
      bodyLength = AtMostRemaining(stream, LengthBeyond(headerLength), 1);
      rawBody = ReadArray<std::uint8_t>(stream, Memory(), bodyLength);
      break;
  }
  return static_cast<std::int32_t>(totalLength);
}

std::uint32_t DataObjectChunk::LengthBeyond(std::uint32_t header) const {
  return totalLength > header ? totalLength - header : 0;
}

void DataObjectChunk::ReadWideText(Stream& stream) {
  HeaderReader<WideTextHeader> reader(*this, stream.Peek(WideTextHeader::kKnownLength),
                                      WideTextHeader::kKnownLength);
  WideTextHeader::Visit(reader);
  stream.SkipBy(WideTextHeader::kKnownLength);
  const std::uint32_t units = AtMostRemaining(stream, bodyLength / 2, 2);
  if (units < bodyLength / 2) bodyLength = units * 2;
  wideText = ReadArray<char16_t>(stream, Memory(), units);
  SwapOnBigEndian(wideText.data(), units);
}

void DataObjectChunk::ReadIndexList(Stream& stream) {
  indexField = ReadWord(stream, indexField);
  entryCount = ReadWord(stream, entryCount);
  stream.SkipBy(kIndexListGap);
  entryCount = AtMostRemaining(stream, entryCount, sizeof(std::uint32_t));
  indexEntries = ReadArray<std::uint32_t>(stream, Memory(), entryCount);
  SwapOnBigEndian(indexEntries.data(), entryCount);
}

void DataObjectChunk::ReadJumpTable(Stream& stream) {
  indexField = ReadWord(stream, indexField);
  const std::uint32_t stated = ReadWord(stream, 0);
  stream.SkipBy(kJumpTableGap);
  const std::uint32_t count = AtMostRemaining(stream, stated, sizeof(JumpEntry));
  jumpEntries = ReadArray<JumpEntry>(stream, Memory(), count);
  for (JumpEntry& entry : jumpEntries) SwapOnBigEndian(entry.words, std::size(entry.words));
}

std::int32_t DataObjectChunk::Write(Stream& stream) {
  TotalLengthSlot slot(stream);
  WriteHeader<DataObjectHeader>(stream, kDataObjectTag, DataObjectHeader::kKnownLength, 0, *this);
  std::uint32_t body = 0;
  switch (BodyKindOf(objectType)) {
    case BodyKind::kWideText:
      body = WriteWideText(stream);
      break;
    case BodyKind::kByteText:
      body = WriteBody(stream, byteText.data(), byteText.size(), bodyLength);
      break;
    case BodyKind::kIndexList:
      body = WriteIndexList(stream);
      break;
    case BodyKind::kJumpTable:
      body = WriteJumpTable(stream);
      break;
    case BodyKind::kRaw:
      body = WriteBody(stream, rawBody.data(), rawBody.size(), bodyLength);
      break;
  }
  return slot.Fill(DataObjectHeader::kKnownLength + body);
}

std::uint32_t DataObjectChunk::WriteWideText(Stream& stream) {
  textPosition = 1;
  HeaderWriter<WideTextHeader> writer(*this, stream.Claim(WideTextHeader::kKnownLength));
  WideTextHeader::Visit(writer);
  SwapOnBigEndian(wideText.data(), wideText.size());
  const std::uint32_t length =
      WriteBody(stream, wideText.data(), wideText.size() * 2, bodyLength / 2 * 2);
  SwapOnBigEndian(wideText.data(), wideText.size());
  return WideTextHeader::kKnownLength + length;
}

std::uint32_t DataObjectChunk::WriteIndexList(Stream& stream) {
  WriteWord(stream, indexField);
  WriteWord(stream, entryCount);
  WriteZeros(kIndexListGap, stream);
  const bool held = indexEntries.size() == entryCount;
  for (std::uint32_t i = 0; i < entryCount; ++i) WriteWord(stream, held ? indexEntries[i] : i);
  return 8 + kIndexListGap + entryCount * 4;
}

std::uint32_t DataObjectChunk::WriteJumpTable(Stream& stream) {
  WriteWord(stream, indexField);
  WriteWord(stream, entryCount);
  WriteZeros(kJumpTableGap, stream);
  const bool held = jumpEntries.size() == entryCount;
  for (std::uint32_t i = 0; i < entryCount; ++i) {
    const JumpEntry entry = held ? jumpEntries[i] : JumpEntry{{i, i, 1}};
    for (const std::uint32_t word : entry.words) WriteWord(stream, word);
  }
  return 8 + kJumpTableGap + entryCount * 12;
}

void DataObjectChunk::SetText(const char16_t* text) {
  if (!text) return;
  const std::u16string_view units(text);
  wideText = ArenaArray<char16_t>::CopyOf(Memory(), units);
  bodyLength = static_cast<std::uint32_t>(units.size() * 2);
}

std::unique_ptr<char16_t[]> DataObjectChunk::WidenText(std::string_view text) {
  if (text.empty()) return nullptr;
  auto wide = std::make_unique<char16_t[]>(text.size() + 1);
  std::ranges::transform(text, wide.get(), [](char c) {
    return static_cast<char16_t>(static_cast<unsigned char>(c));
  });
  return wide;
}

}  // namespace quaylink
