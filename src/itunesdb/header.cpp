#include "itunesdb/header.h"

#include <string_view>

#include "common/ascii.h"

namespace quaylink {

std::int32_t CheckTag(Reader& reader, const Tag& tag) {
  char found[kTagLength];
  const std::size_t length = reader.Read(found, kTagLength);
  if (length == kTagLength && std::memcmp(found, tag, kTagLength) == 0) return kTagLength;
  const bool equal = EqualsIgnoringCase({found, length}, {tag, kTagLength});
  return equal ? static_cast<std::int32_t>(kTagLength) : -1;
}

void WriteZeros(std::int32_t count, Writer& writer) {
  if (count > 0) writer.AppendZeros(static_cast<std::size_t>(count));
}

bool ReadListHeader(Reader& reader, std::uint32_t& headerLength, std::uint32_t& itemCount) {
  const auto bytes = reader.Peek(kCommonHeaderLength - kTagLength);
  const std::uint32_t stated =
      bytes.size() >= 4 ? LoadLittleEndian<std::uint32_t>(bytes.data()) : headerLength;
  if (stated < kCommonHeaderLength) return false;
  headerLength = stated;
  if (bytes.size() >= 8) itemCount = LoadLittleEndian<std::uint32_t>(bytes.data() + 4);
  reader.Skip(headerLength - kTagLength);
  return true;
}

void WriteListHeader(Writer& writer, const Tag& tag, std::uint32_t itemCount) {
  std::uint8_t* bytes = writer.Append(kCommonHeaderLength);
  std::memcpy(bytes, tag, kTagLength);
  StoreLittleEndian(bytes + 4, kListHeaderLength);
  StoreLittleEndian(bytes + 8, itemCount);
  writer.AppendZeros(kListHeaderLength - kCommonHeaderLength);
}

}  // namespace quaylink
