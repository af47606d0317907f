#include "collection/inflation.h"

#include <zlib.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

#include "itunesdb/header.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kCompressedFlagOffset = 0xA8;
constexpr std::uint8_t kCompressed = 1;
constexpr std::uint32_t kTotalLengthOffset = 8;
constexpr std::uint64_t kMostInflated = 256u << 20;
constexpr std::uint64_t kMostTimes = 100;
constexpr std::size_t kBufferSize = 64 * 1024;

// zlib's memory comes from where all memory does.
void* Allocate(void* /*context*/, uInt count, uInt size) {
  return ::operator new (std::size_t{count} * size, std::nothrow);
}

void Free(void* /*context*/, void* memory) {
  ::operator delete(memory);
}

class Inflater {
 public:
  Inflater() {
    stream_.zalloc = Allocate;
    stream_.zfree = Free;
    if (inflateInit(&stream_) != Z_OK) throw std::bad_alloc();
  }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() { inflateEnd(&stream_); }

  z_stream& Stream() { return stream_; }

 private:
  z_stream stream_{};
};

// Copies the header. False when the database is not a compressed one.
bool TakeHeader(Reader& reader, Writer& inflated) {
  const auto bytes = reader.Peek(kCommonHeaderLength);
  if (bytes.size() < kCommonHeaderLength) return false;
  const auto length = LoadLittleEndian<std::uint32_t>(bytes.data() + 4);
  if (length <= kCompressedFlagOffset || length > Reader::kLongestPeek) return false;
  const auto header = reader.Peek(length);
  if (header.size() < length || header[kCompressedFlagOffset] != kCompressed) return false;
  inflated.Append(header.data(), header.size());
  reader.Skip(length);
  const auto next = reader.Peek(kTagLength);
  return !std::ranges::equal(next, std::string_view(kDataSetTag));
}

}  // namespace

Inflation InflateDatabase(Reader& reader, Writer& inflated) {
  const std::uint64_t most = std::min(reader.Remaining() * kMostTimes, kMostInflated);
  if (!TakeHeader(reader, inflated)) return Inflation::kNotCompressed;
  const std::size_t headerLength = inflated.Size();
  Inflater inflater;
  z_stream& stream = inflater.Stream();
  const auto output = std::make_unique_for_overwrite<std::uint8_t[]>(kBufferSize);
  int status = Z_OK;
  while (status == Z_OK) {
    const auto input = reader.Peek(Reader::kLongestPeek);
    stream.next_in = const_cast<std::uint8_t*>(input.data());  // which zlib does not change
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = output.get();
    stream.avail_out = kBufferSize;
    status = inflate(&stream, Z_NO_FLUSH);
    reader.Skip(input.size() - stream.avail_in);
    inflated.Append(output.get(), kBufferSize - stream.avail_out);
    if (inflated.Size() > most) return Inflation::kTooLarge;
  }
  if (status == Z_MEM_ERROR) throw std::bad_alloc();
  const bool nothing = inflated.Size() == headerLength;
  if (nothing && status != Z_STREAM_END) return Inflation::kNotCompressed;
  inflated.Overwrite(kTotalLengthOffset, static_cast<std::uint32_t>(inflated.Size()));
  if (status == Z_STREAM_END) return Inflation::kInflated;
  return status == Z_BUF_ERROR ? Inflation::kCut : Inflation::kDamaged;
}

}  // namespace quaylink
