// mhod: the variable-length content of tracks, albums, playlists and their items, most of it
// strings.
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
inline constexpr std::uint32_t kGenreObject = 5;
inline constexpr std::uint32_t kSmartPreferencesObject = 50;
inline constexpr std::uint32_t kSmartRulesObject = 51;
inline constexpr std::uint32_t kIndexListObject = 52;
inline constexpr std::uint32_t kJumpTableObject = 53;
inline constexpr std::uint32_t kPositionObject = 100;  // of a playlist's item

// How the body of an object type is laid out.
enum class BodyKind { kWideText, kByteText, kIndexList, kJumpTable, kRaw };
BodyKind BodyKindOf(std::uint32_t objectType);

struct DataObjectHeader {
  Field32 objectType;
  Field32 field0x10;
  Field32 field0x14;

  static constexpr auto Fields() {
    using H = DataObjectHeader;
    return std::tuple(&H::objectType, &H::field0x10, &H::field0x14);
  }
};

// The words before the string of a UTF-16 body, as they stand in the file.
struct WideTextHeader {
  Field32 textPosition;
  Field32 bodyLength;  // of the body in bytes; a UTF-16 body has two for each code unit
  Field32 field0x20 = 1;
  Field32 field0x24;
};

struct JumpEntry {
  std::uint32_t words[3];
  bool operator==(const JumpEntry&) const = default;
};

// The header is taken to be 24 bytes long, whatever it states. Reading gives an object the one body
// that its type has and takes the others from it; SetText gives it a wideText whatever its type.
// Writing writes the body of its type. Bodies lie in the arena.
class DataObjectChunk final : public Chunk, public DataObjectHeader, public WideTextHeader {
 public:
  explicit DataObjectChunk(Arena& arena) : Chunk(arena) {}

  ArenaArray<char16_t> wideText;
  ArenaArray<std::uint8_t> rawBody;
  std::uint32_t indexField = 0;
  // Of an index list or a jump table, as it is written. Reading sets it for an index list only; a
  // playlist sets it for all its data objects before it writes them.
  std::uint32_t entryCount = 0;
  ArenaArray<std::uint32_t> indexEntries;
  ArenaArray<JumpEntry> jumpEntries;
  ArenaArray<char> byteText;

  // Returns the total length that the object states.
  std::int32_t Read(Reader& reader) override;
  std::int32_t Write(Writer& writer) override;

  // The number of bytes that the last reading took. A sound object states the same.
  std::uint32_t LengthTaken() const;

  // Replaces the UTF-16 string with a copy of `text`, which ends at its NUL. Null does nothing.
  void SetText(const char16_t* text);

  // The string with one code unit for each character, of the same value; none for an empty one.
  static std::unique_ptr<char16_t[]> WidenText(std::string_view text);

 private:
  // The length of the chunk beyond a header; 0 when the chunk is shorter.
  std::uint32_t LengthBeyond(std::uint32_t header) const;

  void ReadWideText(Reader& reader);
  void ReadIndexList(Reader& reader);
  void ReadJumpTable(Reader& reader);
  std::uint32_t WriteWideText(Writer& writer);
  std::uint32_t WriteIndexList(Writer& writer);
  std::uint32_t WriteJumpTable(Writer& writer);
};

}  // namespace quaylink
