#include "itunesdb/chunk.h"

#include "common/ascii.h"

namespace quaylink {

namespace {

struct ListHeader {
  static constexpr std::uint32_t kKnownLength = kCommonHeaderLength;
  template <class V>
  static void Visit(V&) {}
};

}  // namespace

std::int32_t CheckTag(Stream& stream, const Tag& tag) {
  const auto bytes = stream.Peek(kTagLength);
  stream.SkipBy(static_cast<std::int64_t>(bytes.size()));
  const std::string_view found(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const std::string_view expected(tag, kTagLength);
  const bool equal = found == expected || EqualsIgnoringCase(found, expected);
  return equal ? static_cast<std::int32_t>(kTagLength) : -1;
}

void WriteZeros(std::int32_t count, Stream& stream) {
  if (count < 1) return;
  const auto size = static_cast<std::size_t>(count);
  std::memset(stream.Claim(size), 0, size);
}

std::int32_t FailedRead(Stream& stream) {
  stream.NoteFailedChunk();
  return -1;
}

bool ReadListHeader(Stream& stream, std::uint32_t& headerLength, std::uint32_t& itemCount) {
  ListHeader none;
  return ReadWholeHeader(stream, kCommonHeaderLength, headerLength, itemCount, none);
}

void WriteListHeader(Stream& stream, const Tag& tag, std::uint32_t itemCount) {
  WriteHeader(stream, tag, kListHeaderLength, itemCount, ListHeader{});
}

std::int32_t WriteChild(Stream& stream, Chunk& child, std::uint32_t& sum) {
  const std::int32_t result = child.Write(stream);
  if (result < 0) return result;
  sum += static_cast<std::uint32_t>(result);
  return 0;
}

std::int32_t TotalLengthSlot::Fill(std::uint32_t totalLength) {
  const std::uint64_t end = stream_.Tell();
  std::uint8_t bytes[4];
  StoreLittleEndian(bytes, totalLength);
  stream_.SeekTo(chunkBegin_ + 8);
  stream_.Write(bytes, sizeof(bytes));
  stream_.SeekTo(end);
  return static_cast<std::int32_t>(totalLength);
}

}  // namespace quaylink
