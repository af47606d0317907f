// mhod: the variable-length content of tracks, albums, playlists and their items, most of it texts.
#pragma once

#include <memory>
#include <string_view>

#include "itunesdb/chunk.h"

namespace quaylink {

// Object types that the library tells apart from their neighbours.
inline constexpr std::uint32_t kTitleObject = 1;
inline constexpr std::uint32_t kLocationObject = 2;
inline constexpr std::uint32_t kAlbumObject = 3;
inline constexpr std::uint32_t kArtistObject = 4;
inline constexpr std::uint32_t kIndexListObject = 52;
inline constexpr std::uint32_t kJumpTableObject = 53;

// How the body of an object type is laid out.
enum class BodyKind { kWideText, kByteText, kIndexList, kJumpTable, kRaw };
BodyKind BodyKindOf(std::uint32_t objectType);

struct DataObjectHeader {
  std::uint32_t objectType = 0;
  std::uint32_t field0x10 = 0;
  std::uint32_t field0x14 = 0;

  static constexpr std::uint32_t kKnownLength = 24;
  template <class V>
  static void Visit(V& v) {
    using H = DataObjectHeader;
    v.Fields(&H::objectType, &H::field0x10, &H::field0x14);
  }
};

// The words before the text of a UTF-16 body.
struct WideTextHeader {
  std::uint32_t textPosition = 0;
  std::uint32_t bodyLength = 0;  // of the body in bytes; a UTF-16 body has two for each code unit
  std::uint32_t field0x20 = 1;
  std::uint32_t field0x24 = 0;

  static constexpr std::uint32_t kKnownLength = 16;
  template <class V>
  static void Visit(V& v) {
    using H = WideTextHeader;
    v.Fields(&H::textPosition, &H::bodyLength, &H::field0x20, &H::field0x24);
  }
};

struct JumpEntry {
  std::uint32_t words[3];
  bool operator==(const JumpEntry&) const = default;
};

// The header is taken to be 24 bytes long, whatever it states. Which
// of the bodies an object has follows from its type; the others are
// none. Texts and bodies lie in the arena and are followed by a zero.
class DataObjectChunk final : public Chunk, public DataObjectHeader, public WideTextHeader {
 public:
  explicit DataObjectChunk(Arena& arena) : Chunk(arena) {}

  ArenaArray<char16_t> wideText;
  ArenaArray<std::uint8_t> rawBody;
  std::uint32_t indexField = 0;
  std::uint32_t entryCount = 0;  // of index list or jump table, as it is written; the owner sets it
  ArenaArray<std::uint32_t> indexEntries;
  ArenaArray<JumpEntry> jumpEntries;
  ArenaArray<char> byteText;

  // Returns the total length that the object states.
  std::int32_t Read(Stream& stream) override;
  std::int32_t Write(Stream& stream) override;

  // Replaces the UTF-16 text with a copy of `text`, which ends at its NUL. Null does nothing.
  void SetText(const char16_t* text);

  // The text with one code unit for each character, of the same value; none for an empty text.
  static std::unique_ptr<char16_t[]> WidenText(std::string_view text);

 private:
  // The length of the chunk beyond a header; 0 when the chunk is shorter.
  std::uint32_t LengthBeyond(std::uint32_t header) const;

  void ReadWideText(Stream& stream);
  void ReadIndexList(Stream& stream);
  void ReadJumpTable(Stream& stream);
  std::uint32_t WriteWideText(Stream& stream);
  std::uint32_t WriteIndexList(Stream& stream);
  std::uint32_t WriteJumpTable(Stream& stream);
};

}  // namespace quaylink
