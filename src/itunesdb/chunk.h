// What all chunk kinds of a database share: the common
// header, the conventions of reading and writing.
//
// A database is a tree of chunks. Each begins with 12 bytes: its tag, the length of its header, and
// a third word, which is the number of items of a list kind and the length of the whole chunk with
// its children otherwise. Body or children follow the header directly.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "itunesdb/arena.h"
#include "itunesdb/arena_array.h"
#include "itunesdb/header_fields.h"
#include "itunesdb/stream.h"

namespace quaylink {

using Tag = char[5];

inline constexpr Tag kDatabaseTag = "mhbd";
inline constexpr Tag kDataSetTag = "mhsd";
inline constexpr Tag kTrackListTag = "mhlt";
inline constexpr Tag kTrackItemTag = "mhit";
inline constexpr Tag kDataObjectTag = "mhod";
inline constexpr Tag kAlbumListTag = "mhla";
inline constexpr Tag kAlbumItemTag = "mhia";
inline constexpr Tag kPlaylistListTag = "mhlp";
inline constexpr Tag kPlaylistTag = "mhyp";
inline constexpr Tag kPlaylistItemTag = "mhip";

inline constexpr std::uint32_t kTagLength = 4;
inline constexpr std::uint32_t kCommonHeaderLength = 12;
inline constexpr std::uint32_t kListHeaderLength = 92;  // of every list kind, as written

// Reads 4 bytes and compares them with the tag without regard to case. Returns 4, or -1 when they
// differ or are not there; the stream stays past what was read.
std::int32_t CheckTag(Stream& stream, const Tag& tag);

// Writes `count` zero bytes; nothing when `count` is below 1.
void WriteZeros(std::int32_t count, Stream& stream);

class Chunk {
 public:
  std::uint32_t headerLength = 0;
  std::uint32_t totalLength = 0;

  virtual ~Chunk() = default;

  // Reads the chunk that begins at the stream's position and leaves the stream
  // after the last byte taken. Returns the chunk's length as its kind reckons
  // it, or -1 when the chunk is not there or is not sound. Lengths add up modulo
  // 2^32, so that a damaged file can give other negative results, which count as
  // failure too. Throws std::bad_alloc; what was read until then stays owned.
  virtual std::int32_t Read(Stream& stream) = 0;

  // Writes the chunk and its children. Returns the number of bytes written, or the negative result
  // of a child, which ends the writing and leaves the total length 0. Throws std::bad_alloc.
  virtual std::int32_t Write(Stream& stream) = 0;

 protected:
  // The arena holds the chunk's children, texts and lists; it must outlive the chunk.
  explicit Chunk(Arena& arena) : arena_(&arena) {}
  Chunk(const Chunk&) = delete;
  Chunk& operator=(const Chunk&) = delete;

  Arena& Memory() const { return *arena_; }

 private:
  Arena* arena_;
};

// The result of a chunk that could not be read.
std::int32_t FailedRead(Stream& stream);

// Takes the words and fields that follow the tag out of `bytes`, which the stream has next, from a
// header of `length` bytes. The stream is left where H's known fields end or the header does,
// whichever comes first.
template <class H>
void TakeHeader(Stream& stream, std::span<const std::uint8_t> bytes, std::uint32_t length,
                std::uint32_t& headerLength, std::uint32_t& thirdWord, H& fields) {
  constexpr std::size_t kWords = kCommonHeaderLength - kTagLength;
  if (bytes.size() >= 4) headerLength = LoadLittleEndian<std::uint32_t>(bytes.data());
  if (bytes.size() >= 8) thirdWord = LoadLittleEndian<std::uint32_t>(bytes.data() + 4);
  HeaderReader<H> reader(fields, bytes.subspan(std::min(bytes.size(), kWords)),
                         length - kCommonHeaderLength);
  H::Visit(reader);
  stream.SkipBy(std::min(length, H::kKnownLength) - kTagLength);
}

// Reads what follows the tag: the stated header length, the third word, and the fields of H. Fields
// that lie wholly inside the stated header are read, the others get the defaults of a new object.
// False, with nothing changed, when the stated header is too short for its first `minimum` bytes,
// without which the kind cannot be read.
template <class H>
bool ReadHeader(Stream& stream, std::uint32_t minimum, std::uint32_t& headerLength,
                std::uint32_t& thirdWord, H& fields) {
  static_assert(H::kKnownLength <= Stream::kLongestPeek);
  const auto bytes = stream.Peek(H::kKnownLength - kTagLength);
  const std::uint32_t stated =
      bytes.size() >= 4 ? LoadLittleEndian<std::uint32_t>(bytes.data()) : headerLength;
  if (stated < minimum) return false;
  TakeHeader(stream, bytes, stated, headerLength, thirdWord, fields);
  return true;
}

// The same for a kind that skips the rest of its header: the stream is left where the body begins.
template <class H>
bool ReadWholeHeader(Stream& stream, std::uint32_t minimum, std::uint32_t& headerLength,
                     std::uint32_t& thirdWord, H& fields) {
  if (!ReadHeader(stream, minimum, headerLength, thirdWord, fields)) return false;
  if (headerLength > H::kKnownLength) stream.SkipBy(headerLength - H::kKnownLength);
  return true;
}

// Writes tag, header length, third word, the fields of
// H and the tail, and zeros up to the header length.
template <class H>
void WriteHeader(Stream& stream, const Tag& tag, std::uint32_t headerLength,
                 std::uint32_t thirdWord, const H& fields,
                 std::span<const std::uint8_t> tail = {}) {
  std::uint8_t* bytes = stream.Claim(H::kKnownLength);
  std::copy_n(tag, kTagLength, bytes);
  StoreLittleEndian(bytes + 4, headerLength);
  StoreLittleEndian(bytes + 8, thirdWord);
  HeaderWriter<H> writer(fields, bytes + kCommonHeaderLength);
  H::Visit(writer);
  stream.Write(tail.data(), tail.size());
  const auto written = static_cast<std::uint32_t>(H::kKnownLength + tail.size());
  WriteZeros(static_cast<std::int32_t>(headerLength - written), stream);
}

// The headers of the list kinds, which hold no fields of their own.
bool ReadListHeader(Stream& stream, std::uint32_t& headerLength, std::uint32_t& itemCount);
void WriteListHeader(Stream& stream, const Tag& tag, std::uint32_t itemCount);

// The place of a total length, which is filled in when the children have been written.
class TotalLengthSlot {
 public:
  // Of the chunk that begins at the stream's position.
  explicit TotalLengthSlot(Stream& stream) : stream_(stream), chunkBegin_(stream.Tell()) {}
  // Returns the length, as the result of the chunk's Write.
  std::int32_t Fill(std::uint32_t totalLength);

 private:
  Stream& stream_;
  std::uint64_t chunkBegin_;
};

// Reads `count` values as they stand in the file;
// zeros take the place of those that it does not have.
template <class T>
ArenaArray<T> ReadArray(Stream& stream, Arena& arena, std::uint32_t count) {
  auto result = ArenaArray<T>::WithRoomFor(arena, count);
  const std::size_t size = count * sizeof(T);
  const std::size_t got = stream.Read(result.data(), size);
  std::memset(reinterpret_cast<std::uint8_t*>(result.data()) + got, 0, size - got);
  return result;
}

// Reads `count` children, giving each to `keep` whatever its result, and returns the sum of the
// results. Reading stops early where there is no point in going on; each child left unread takes 1
// off the sum, as a failed one would.
template <class Child, class Keep>
std::uint32_t ReadChildren(Stream& stream, Arena& arena, std::uint32_t count, Keep keep) {
  std::uint32_t sum = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (stream.Exhausted()) return sum - (count - i);
    Owned<Child> child = MakeOwned<Child>(arena, arena);
    sum += static_cast<std::uint32_t>(child->Read(stream));
    keep(std::move(child));
  }
  return sum;
}

// The same for children that are kept in a list.
template <class Child>
std::uint32_t ReadChildren(Stream& stream, Arena& arena, std::uint32_t count,
                           ChunkList<Child>& children) {
  // No more room than this on the word of a file; a list that is really longer grows.
  constexpr std::uint32_t kMostReserved = 32;
  children.Reserve(arena, children.size() + std::min(count, kMostReserved));
  return ReadChildren<Child>(stream, arena, count,
                             [&](Owned<Child> child) { children.Append(arena, std::move(child)); });
}

// Writes a child and adds its length to the sum. Returns
// the child's result when that is negative, else 0.
std::int32_t WriteChild(Stream& stream, Chunk& child, std::uint32_t& sum);

// Writes the children in order. Returns 0, or the first negative result, which ends the writing.
template <class Child>
std::int32_t WriteChildren(Stream& stream, const ChunkList<Child>& children, std::uint32_t& sum) {
  for (const Owned<Child>& child : children) {
    if (const std::int32_t result = WriteChild(stream, *child, sum); result < 0) return result;
  }
  return 0;
}

}  // namespace quaylink
