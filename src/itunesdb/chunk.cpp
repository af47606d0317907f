#include "itunesdb/chunk.h"

namespace quaylink {

std::int32_t FailedRead(Reader& reader) {
  reader.NoteFailedChunk();
  return -1;
}

std::int32_t WriteChild(Writer& writer, Chunk& child, std::uint32_t& sum) {
  const std::int32_t result = child.Write(writer);
  if (result < 0) return result;
  sum += static_cast<std::uint32_t>(result);
  return 0;
}

std::int32_t TotalLengthSlot::Fill(std::uint32_t totalLength) {
  writer_.Overwrite(chunkBegin_ + 8, totalLength);
  return static_cast<std::int32_t>(totalLength);
}

}  // namespace quaylink
