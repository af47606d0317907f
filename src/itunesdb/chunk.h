// What all chunk kinds of a database share: the conventions of reading and writing.
//
// A database is a tree of chunks. Each begins with 12 bytes: its tag, the length of its header, and
// a third word, which is the number of items of a list kind and the length of the whole chunk with
// its children otherwise. Body or children follow the header directly.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "itunesdb/arena.h"
#include "itunesdb/arena_array.h"
#include "itunesdb/header.h"
#include "itunesdb/reader.h"
#include "itunesdb/writer.h"

namespace quaylink {

class Chunk {
 public:
  std::uint32_t headerLength = 0;
  std::uint32_t totalLength = 0;

  virtual ~Chunk() = default;

  // Reads the chunk that begins at the reader's position and leaves the reader after the last byte
  // taken. Returns the chunk's length as its kind reckons it, or -1 when the chunk is not there or
  // is not sound. Lengths add up modulo 2^32, so that a damaged file can give other negative
  // results, which count as failure too. Throws std::bad_alloc, and leaks nothing.
  virtual std::int32_t Read(Reader& reader) = 0;

  // Writes the chunk and its children. Returns the number of bytes written, or a negative result
  // where it or a child cannot be written, which ends the writing and leaves the total length 0.
  // Throws std::bad_alloc.
  virtual std::int32_t Write(Writer& writer) = 0;

 protected:
  // The arena holds the children that the chunk reads or adds, and their bodies; it must outlive
  // the chunk.
  explicit Chunk(Arena& arena) : arena_(&arena) {}
  Chunk(const Chunk&) = delete;
  Chunk& operator=(const Chunk&) = delete;

  Arena& Memory() const { return *arena_; }

 private:
  Arena* arena_;
};

// The result of a chunk that could not be read.
std::int32_t FailedRead(Reader& reader);

// The place of a total length, which is filled in when the children have been written.
class TotalLengthSlot {
 public:
  // Of the chunk that begins at the writer's end.
  explicit TotalLengthSlot(Writer& writer) : writer_(writer), chunkBegin_(writer.Size()) {}
  // Returns the length, as the result of the chunk's Write.
  std::int32_t Fill(std::uint32_t totalLength);

 private:
  Writer& writer_;
  std::size_t chunkBegin_;
};

// Reads `count` values as they stand in the file; zeros take the place of those that it lacks.
template <class T>
ArenaArray<T> ReadArray(Reader& reader, Arena& arena, std::uint32_t count) {
  auto result = ArenaArray<T>::WithRoomFor(arena, count);
  const std::size_t size = count * sizeof(T);
  const std::size_t got = reader.Read(result.data(), size);
  if (got < size) std::memset(reinterpret_cast<std::uint8_t*>(result.data()) + got, 0, size - got);
  return result;
}

// Reads `count` children, giving each to `keep` whatever its result, and returns the sum of the
// results. Reading stops early where there is no point in going on; each child left unread takes 1
// off the sum, as a failed one would.
template <class Child, class Keep>
std::uint32_t ReadChildren(Reader& reader, Arena& arena, std::uint32_t count, Keep keep) {
  std::uint32_t sum = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (reader.Exhausted()) return sum - (count - i);
    Owned<Child> child = MakeOwned<Child>(arena, arena);
    sum += static_cast<std::uint32_t>(child->Read(reader));
    keep(std::move(child));
  }
  return sum;
}

// The same for children that are kept in a list.
template <class Child>
std::uint32_t ReadChildren(Reader& reader, Arena& arena, std::uint32_t count,
                           ChunkList<Child>& children) {
  // No more room than this on the word of a file; a list that is really longer grows.
  constexpr std::uint32_t kMostReserved = 32;
  children.Reserve(arena, children.size() + std::min(count, kMostReserved));
  return ReadChildren<Child>(reader, arena, count,
                             [&](Owned<Child> child) { children.Append(arena, std::move(child)); });
}

// Writes a child and adds its length to the sum. Returns the child's result when that is negative,
// else 0.
std::int32_t WriteChild(Writer& writer, Chunk& child, std::uint32_t& sum);

// Writes the children in order. Returns 0, or the first negative result, which ends the writing.
template <class Child>
std::int32_t WriteChildren(Writer& writer, const ChunkList<Child>& children, std::uint32_t& sum) {
  for (const Owned<Child>& child : children) {
    if (const std::int32_t result = WriteChild(writer, *child, sum); result < 0) return result;
  }
  return 0;
}

}  // namespace quaylink
