#include "itunesdb/data_object.h"

#include <algorithm>

namespace quaylink {

namespace {

constexpr std::uint32_t kLengthOfHeader = KnownLength<DataObjectHeader>();

// Between the entry count and the entries of a list body.
constexpr std::uint32_t kIndexListGap = 40;
constexpr std::uint32_t kJumpTableGap = 8;

std::uint32_t AtMostRemaining(const Reader& reader, std::uint32_t count, std::uint32_t size) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(count, reader.Remaining() / size));
}

std::uint32_t ReadWord(Reader& reader, std::uint32_t otherwise) {
  Field32 word;
  const bool there = reader.Read(&word, sizeof(word)) == sizeof(word);
  return there ? std::uint32_t{word} : otherwise;
}

void WriteWord(Writer& writer, std::uint32_t value) {
  StoreLittleEndian(writer.Append(4), value);
}

// Writes what is held of a body, and zeros for what is stated beyond it.
std::uint32_t WriteBody(Writer& writer, const void* held, std::uint32_t heldLength,
                        std::uint32_t length) {
  const std::uint32_t there = std::min(heldLength, length);
  writer.Append(held, there);
  writer.AppendZeros(length - there);
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

std::int32_t DataObjectChunk::Read(Reader& reader) {
  if (CheckTag(reader, kDataObjectTag) < 0) return FailedRead(reader);
  TakeHeader<DataObjectHeader>(reader, reader.Peek(kLengthOfHeader - kTagLength), kLengthOfHeader,
                               headerLength, totalLength, *this);
  wideText = {};
  rawBody = {};
  indexEntries = {};
  jumpEntries = {};
  byteText = {};
  switch (BodyKindOf(objectType)) {
    case BodyKind::kWideText:
      ReadWideText(reader);
      break;
    case BodyKind::kByteText:
      bodyLength = AtMostRemaining(reader, LengthBeyond(kLengthOfHeader), 1);
      byteText = ReadArray<char>(reader, Memory(), bodyLength);
      break;
    case BodyKind::kIndexList:
      ReadIndexList(reader);
      break;
    case BodyKind::kJumpTable:
      ReadJumpTable(reader);
      break;
    case BodyKind::kRaw:
      bodyLength = AtMostRemaining(reader, LengthBeyond(headerLength), 1);
      rawBody = ReadArray<std::uint8_t>(reader, Memory(), bodyLength);
      break;
  }
  return static_cast<std::int32_t>(totalLength);
}

std::uint32_t DataObjectChunk::LengthTaken() const {
  switch (BodyKindOf(objectType)) {
    case BodyKind::kWideText:
      return kLengthOfHeader + sizeof(WideTextHeader) + wideText.size() * 2;
    case BodyKind::kByteText:
      return kLengthOfHeader + byteText.size();
    case BodyKind::kIndexList:
      return kLengthOfHeader + 8 + kIndexListGap + indexEntries.size() * 4;
    case BodyKind::kJumpTable:
      return kLengthOfHeader + 8 + kJumpTableGap + jumpEntries.size() * 12;
    case BodyKind::kRaw:
      break;
  }
  return kLengthOfHeader + rawBody.size();
}

std::uint32_t DataObjectChunk::LengthBeyond(std::uint32_t header) const {
  return totalLength > header ? totalLength - header : 0;
}

void DataObjectChunk::ReadWideText(Reader& reader) {
  WideTextHeader& words = *this;
  const auto bytes = reader.Peek(sizeof(words));
  std::memcpy(&words, bytes.data(), bytes.size() / sizeof(Field32) * sizeof(Field32));
  reader.Skip(sizeof(words));
  const std::uint32_t units = AtMostRemaining(reader, bodyLength / 2, 2);
  if (units < bodyLength / 2) bodyLength = units * 2;
  wideText = ReadArray<char16_t>(reader, Memory(), units);
}

void DataObjectChunk::ReadIndexList(Reader& reader) {
  indexField = ReadWord(reader, indexField);
  entryCount = ReadWord(reader, entryCount);
  reader.Skip(kIndexListGap);
  entryCount = AtMostRemaining(reader, entryCount, sizeof(std::uint32_t));
  indexEntries = ReadArray<std::uint32_t>(reader, Memory(), entryCount);
}

void DataObjectChunk::ReadJumpTable(Reader& reader) {
  indexField = ReadWord(reader, indexField);
  const std::uint32_t stated = ReadWord(reader, 0);
  reader.Skip(kJumpTableGap);
  const std::uint32_t count = AtMostRemaining(reader, stated, sizeof(JumpEntry));
  jumpEntries = ReadArray<JumpEntry>(reader, Memory(), count);
}

std::int32_t DataObjectChunk::Write(Writer& writer) {
  TotalLengthSlot slot(writer);
  WriteHeader<DataObjectHeader>(writer, kDataObjectTag, kLengthOfHeader, 0, *this);
  std::uint32_t body = 0;
  switch (BodyKindOf(objectType)) {
    case BodyKind::kWideText:
      body = WriteWideText(writer);
      break;
    case BodyKind::kByteText:
      body = WriteBody(writer, byteText.data(), byteText.size(), bodyLength);
      break;
    case BodyKind::kIndexList:
      body = WriteIndexList(writer);
      break;
    case BodyKind::kJumpTable:
      body = WriteJumpTable(writer);
      break;
    case BodyKind::kRaw:
      body = WriteBody(writer, rawBody.data(), rawBody.size(), bodyLength);
      break;
  }
  return slot.Fill(kLengthOfHeader + body);
}

std::uint32_t DataObjectChunk::WriteWideText(Writer& writer) {
  textPosition = 1;
  const WideTextHeader& words = *this;
  writer.Append(&words, sizeof(words));
  return sizeof(words) +
         WriteBody(writer, wideText.data(), wideText.size() * 2, bodyLength / 2 * 2);
}

std::uint32_t DataObjectChunk::WriteIndexList(Writer& writer) {
  WriteWord(writer, indexField);
  WriteWord(writer, entryCount);
  writer.AppendZeros(kIndexListGap);
  const bool held = indexEntries.size() == entryCount;
  for (std::uint32_t i = 0; i < entryCount; ++i) WriteWord(writer, held ? indexEntries[i] : i);
  return 8 + kIndexListGap + entryCount * 4;
}

std::uint32_t DataObjectChunk::WriteJumpTable(Writer& writer) {
  WriteWord(writer, indexField);
  WriteWord(writer, entryCount);
  writer.AppendZeros(kJumpTableGap);
  const bool held = jumpEntries.size() == entryCount;
  for (std::uint32_t i = 0; i < entryCount; ++i) {
    const JumpEntry entry = held ? jumpEntries[i] : JumpEntry{{i, i, 1}};
    for (const std::uint32_t word : entry.words) WriteWord(writer, word);
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
