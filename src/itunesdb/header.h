// The headers of chunks: a tag, the length of the header, a third word, and the fields of the kind.
//
// The struct of a kind's fields is laid out as they stand in the file from offset 0x0C on. Reading
// and writing copy it as a whole, and the length of what is known of a header follows from it. Its
// function Fields lists the fields once more, in file order, because a header of an older player
// may end in the midst of them:
//
//   struct H {
//     Field32 a = 1;
//     Field64 b;
//     static constexpr auto Fields() { return std::tuple(&H::a, &H::b); }
//   };
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>

#include "itunesdb/little_endian.h"
#include "itunesdb/reader.h"
#include "itunesdb/writer.h"

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
// differ or are not there; the reader stays past what was read.
std::int32_t CheckTag(Reader& reader, const Tag& tag);

// Writes `count` zero bytes; nothing when `count` is below 1.
void WriteZeros(std::int32_t count, Writer& writer);

// The headers of the list kinds, which hold no fields of their own. Reading one leaves the reader
// where the items begin. False, with nothing changed, when the stated header is too short.
bool ReadListHeader(Reader& reader, std::uint32_t& headerLength, std::uint32_t& itemCount);
void WriteListHeader(Writer& writer, const Tag& tag, std::uint32_t itemCount);

// The length of the fields that lie wholly inside the first `length` bytes of H.
template <class H>
constexpr std::size_t WholeFields(std::size_t length) {
  std::size_t end = 0;
  std::size_t whole = 0;
  const auto add = [&](std::size_t size) {
    end += size;
    if (end <= length) whole = end;
  };
  std::apply([&](auto... fields) { (add(sizeof(std::declval<H>().*fields)), ...); }, H::Fields());
  return whole;
}

// From the tag to the end of the fields.
template <class H>
constexpr std::uint32_t KnownLength() {
  static_assert(std::is_trivially_copyable_v<H> && alignof(H) == 1);
  static_assert(WholeFields<H>(SIZE_MAX) == sizeof(H), "Fields lists another number of bytes");
  return kCommonHeaderLength + sizeof(H);
}

// Takes what there is of the words and fields that follow the tag out of `bytes`, from a header of
// `length` bytes that ends in the midst of the fields, or in the midst of which the file ends.
template <class H>
void TakeShortHeader(std::span<const std::uint8_t> bytes, std::uint32_t length,
                     std::uint32_t& headerLength, std::uint32_t& thirdWord, H& fields) {
  if (bytes.size() >= 4) headerLength = LoadLittleEndian<std::uint32_t>(bytes.data());
  if (bytes.size() >= 8) thirdWord = LoadLittleEndian<std::uint32_t>(bytes.data() + 4);
  const auto inFile = bytes.subspan(std::min<std::size_t>(bytes.size(), 8));
  const std::size_t stated = WholeFields<H>(length - kCommonHeaderLength);
  H taken;
  std::memcpy(&taken, &fields, stated);
  const std::size_t there = WholeFields<H>(std::min(stated, inFile.size()));
  if (there > 0) std::memcpy(&taken, inFile.data(), there);
  fields = taken;
}

// Takes the words and fields that follow the tag out of `bytes`, which the reader has next, from a
// header of `length` bytes. Fields that lie wholly inside that length are read, the others get the
// defaults of a new object; what the file is too short for stays as it was. The reader is left
// where the known fields end or the header does, whichever comes first.
template <class H>
void TakeHeader(Reader& reader, std::span<const std::uint8_t> bytes, std::uint32_t length,
                std::uint32_t& headerLength, std::uint32_t& thirdWord, H& fields) {
  constexpr std::uint32_t kKnown = KnownLength<H>();
  if (length >= kKnown && bytes.size() >= kKnown - kTagLength) {
    headerLength = LoadLittleEndian<std::uint32_t>(bytes.data());
    thirdWord = LoadLittleEndian<std::uint32_t>(bytes.data() + 4);
    std::memcpy(&fields, bytes.data() + 8, sizeof(H));
  } else {
    TakeShortHeader(bytes, length, headerLength, thirdWord, fields);
  }
  reader.Skip(std::min(length, kKnown) - kTagLength);
}

// Reads what follows the tag: the stated header length, the third word, and the fields. False, with
// nothing changed, when the stated header is too short for its first `minimum` bytes, without which
// the kind cannot be read.
template <class H>
bool ReadHeader(Reader& reader, std::uint32_t minimum, std::uint32_t& headerLength,
                std::uint32_t& thirdWord, H& fields) {
  static_assert(KnownLength<H>() <= Reader::kLongestPeek);
  const auto bytes = reader.Peek(KnownLength<H>() - kTagLength);
  const std::uint32_t stated =
      bytes.size() >= 4 ? LoadLittleEndian<std::uint32_t>(bytes.data()) : headerLength;
  if (stated < minimum) return false;
  TakeHeader(reader, bytes, stated, headerLength, thirdWord, fields);
  return true;
}

// The same for a kind that skips the rest of its header: the reader is left where the body begins.
template <class H>
bool ReadWholeHeader(Reader& reader, std::uint32_t minimum, std::uint32_t& headerLength,
                     std::uint32_t& thirdWord, H& fields) {
  if (!ReadHeader(reader, minimum, headerLength, thirdWord, fields)) return false;
  if (headerLength > KnownLength<H>()) reader.Skip(headerLength - KnownLength<H>());
  return true;
}

// Writes tag, header length, third word, the fields and the tail, and zeros up to the header
// length.
template <class H>
void WriteHeader(Writer& writer, const Tag& tag, std::uint32_t headerLength,
                 std::uint32_t thirdWord, const H& fields,
                 std::span<const std::uint8_t> tail = {}) {
  std::uint8_t* bytes = writer.Append(KnownLength<H>());
  std::memcpy(bytes, tag, kTagLength);
  StoreLittleEndian(bytes + 4, headerLength);
  StoreLittleEndian(bytes + 8, thirdWord);
  std::memcpy(bytes + kCommonHeaderLength, &fields, sizeof(H));
  writer.Append(tail.data(), tail.size());
  const std::size_t written = KnownLength<H>() + tail.size();
  if (headerLength > written) writer.AppendZeros(headerLength - written);
}

}  // namespace quaylink
