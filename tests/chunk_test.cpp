// Reader, writer, arena, and the conventions that all chunks share.

#include "itunesdb/chunk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <random>
#include <vector>

#include "common/local_file.h"
#include "itunesdb/database.h"
#include "support/database_bytes.h"

namespace quaylink::test {
namespace {

LocalFile FileHolding(const std::string& bytes) {
  LocalFile file(std::tmpfile());
  std::fwrite(bytes.data(), 1, bytes.size(), file.get());
  std::rewind(file.get());
  return file;
}

TEST(Reader, FileAndMemoryGiveTheSameBytesForAnySequenceOfCalls) {
  const std::string bytes = Pattern(3'000'000);
  const LocalFile file = FileHolding(bytes);
  Reader fromFile(file.get());
  Reader fromMemory(AsBytes(bytes));
  std::minstd_rand random(1);
  while (fromMemory.Remaining() > 0) {
    const auto position = static_cast<std::size_t>(fromMemory.Position());
    ASSERT_EQ(fromFile.Position(), position);
    ASSERT_EQ(fromFile.Remaining(), fromMemory.Remaining());
    switch (random() % 3) {
      case 0: {
        const std::size_t size = random() % 9 == 0 ? random() % 100'000 : random() % 300;
        std::string a(size, '\0');
        std::string b(size, '\0');
        const std::size_t got = fromFile.Read(a.data(), size);
        ASSERT_EQ(got, fromMemory.Read(b.data(), size));
        ASSERT_EQ(a.substr(0, got), bytes.substr(position, got));
        ASSERT_EQ(a, b);
        break;
      }
      case 1: {
        const auto a = fromFile.Peek(random() % Reader::kLongestPeek);
        ASSERT_TRUE(std::ranges::equal(a, fromMemory.Peek(a.size())));
        break;
      }
      default: {
        const std::uint64_t distance = random() % 9 == 0 ? random() % 100'000 : random() % 300;
        fromFile.Skip(distance);
        fromMemory.Skip(distance);
      }
    }
  }
}

TEST(Reader, ASkipMayPassTheEndWhereNothingCanBeRead) {
  const LocalFile file = FileHolding("abcdef");
  Reader fromFile(file.get());
  Reader fromMemory(AsBytes("abcdef"));
  for (Reader* reader : {&fromFile, &fromMemory}) {
    EXPECT_EQ(reader->Peek(9).size(), 6u);
    reader->Skip(5'000'000'000);
    char byte = 0;
    EXPECT_EQ(reader->Read(&byte, 1), 0u);
    EXPECT_EQ(reader->Remaining(), 0u);
    EXPECT_TRUE(reader->Peek(4).empty());
    EXPECT_EQ(reader->Position(), 5'000'000'000u);
  }
}

TEST(Arena, HandsOutMemoryThatOverlapsNothingUntilItIsRewound) {
  struct Piece {
    std::uint8_t* begin;
    std::size_t size;
  };
  Arena arena;
  std::minstd_rand random(1);
  for (int round = 0; round < 3; ++round) {
    std::vector<Piece> pieces;
    for (int i = 0; i < 2000; ++i) {
      const std::size_t size = random() % (i % 50 == 0 ? 9000 : 200);
      const std::size_t alignment = std::size_t{1} << random() % 4;
      auto* begin = static_cast<std::uint8_t*>(arena.Allocate(size, alignment));
      ASSERT_EQ(reinterpret_cast<std::uintptr_t>(begin) % alignment, 0u);
      std::fill_n(begin, size, static_cast<std::uint8_t>(i));
      pieces.push_back({begin, size});
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      const auto isMark = [i](std::uint8_t byte) { return byte == static_cast<std::uint8_t>(i); };
      ASSERT_TRUE(std::all_of(pieces[i].begin, pieces[i].begin + pieces[i].size, isMark)) << i;
    }
    arena.Rewind();
    if (round == 1) arena.Trim();
  }
}

#ifdef QUAYLINK_ADDRESS_SANITIZER
TEST(ArenaDeath, ShowsTheSanitizerWhatIsNotHandedOut) {
  Arena arena;
  auto* first = static_cast<volatile std::uint8_t*>(arena.Allocate(24, 8));
  auto* second = static_cast<volatile std::uint8_t*>(arena.Allocate(24, 8));
  EXPECT_DEATH(first[24] = 1, "use-after-poison");
  EXPECT_DEATH(second[24] = 1, "use-after-poison");
  arena.Rewind();
  EXPECT_DEATH(first[0] = 1, "use-after-poison");
}
#endif

TEST(Writer, ATotalLengthIsFilledInWhereItsChunkBegan) {
  Writer writer;
  writer.Append("before", 6);
  TotalLengthSlot slot(writer);
  WriteListHeader(writer, kTrackListTag, 7);
  EXPECT_EQ(slot.Fill(0x01020304), 0x01020304);
  writer.Append("after", 5);
  EXPECT_EQ(BytesOf(writer),
            "before" + std::string("mhlt") + U32(92) + U32(0x01020304) + Zeros(80) + "after");
}

// Lengths made up by hand, of which no file can have so many bytes.
TEST(Writer, HasNoRoomForMoreThanThereIs) {
  Writer writer;
  writer.Append("x", 1);
  EXPECT_THROW(writer.Append(SIZE_MAX), std::bad_alloc);
  EXPECT_EQ(BytesOf(writer), "x");
  if constexpr (sizeof(std::size_t) == 4) {
    Arena arena;
    DataObjectChunk object(arena);
    object.bodyLength = 0xFFFFFFFF;
    EXPECT_THROW(object.Write(writer), std::bad_alloc);
  }
}

template <class H>
bool FieldsAreInFileOrder() {
  const H header;
  const auto* at = reinterpret_cast<const std::uint8_t*>(&header);
  bool inOrder = true;
  const auto look = [&](const auto& field) {
    inOrder = inOrder && reinterpret_cast<const std::uint8_t*>(&field) == at;
    at += sizeof(field);
  };
  std::apply([&](auto... fields) { (look(header.*fields), ...); }, H::Fields());
  return inOrder;
}

// A short header ends after so many of them.
TEST(Header, ListsItsFieldsInTheOrderOfTheFile) {
  EXPECT_TRUE(FieldsAreInFileOrder<DataObjectHeader>());
  EXPECT_TRUE(FieldsAreInFileOrder<DatabaseHeader>());
  EXPECT_TRUE(FieldsAreInFileOrder<TrackItemHeader>());
  EXPECT_TRUE(FieldsAreInFileOrder<AlbumItemHeader>());
  EXPECT_TRUE(FieldsAreInFileOrder<PlaylistHeader>());
  EXPECT_TRUE(FieldsAreInFileOrder<PlaylistItemHeader>());
}

TEST(Chunk, TagsAreComparedWithoutRegardToCaseAndConsumedEitherWay) {
  const struct {
    std::string bytes;
    std::int32_t result;
    std::uint64_t position;
  } cases[] = {{"mhodrest", 4, 4},  {"MHOD", 4, 4}, {"mHoD....", 4, 4},
               {"mhitrest", -1, 4}, {"mho", -1, 3}, {"", -1, 0}};
  for (const auto& c : cases) {
    Reader reader(AsBytes(c.bytes));
    EXPECT_EQ(CheckTag(reader, kDataObjectTag), c.result) << c.bytes;
    EXPECT_EQ(reader.Position(), c.position) << c.bytes;
  }
}

TEST(Chunk, ZerosAreWrittenOnlyForAPositiveCount) {
  Writer writer;
  WriteZeros(0, writer);
  WriteZeros(-5, writer);
  EXPECT_TRUE(writer.Written().empty());
  WriteZeros(3, writer);
  EXPECT_EQ(BytesOf(writer), Zeros(3));
}

std::unique_ptr<Chunk> MakeChunk(std::string_view tag, Arena& arena) {
  if (tag == "mhod") return std::make_unique<DataObjectChunk>(arena);
  if (tag == "mhbd") return std::make_unique<DatabaseChunk>();
  if (tag == "mhsd") return std::make_unique<DataSetChunk>(arena);
  if (tag == "mhlt") return std::make_unique<TrackListChunk>(arena);
  if (tag == "mhit") return std::make_unique<TrackItemChunk>(arena);
  if (tag == "mhla") return std::make_unique<AlbumListChunk>(arena);
  if (tag == "mhia") return std::make_unique<AlbumItemChunk>(arena);
  if (tag == "mhlp") return std::make_unique<PlaylistListChunk>(arena);
  if (tag == "mhyp") return std::make_unique<PlaylistChunk>(arena);
  return std::make_unique<PlaylistItemChunk>(arena);
}

// A chunk that is not there fails after four bytes and leaves the object as it was; so does a
// header that is too short for the words that its kind acts on.
TEST(Chunk, AnotherTagOrTooShortAHeaderFailsTheChunk) {
  const struct {
    std::string tag;
    std::uint32_t shortest;
  } cases[] = {{"mhbd", 24}, {"mhsd", 16}, {"mhlt", 12}, {"mhit", 156}, {"mhla", 12},
               {"mhia", 16}, {"mhlp", 12}, {"mhyp", 20}, {"mhip", 16},  {"mhod", 0}};
  for (const auto& c : cases) {
    Arena arena;
    const std::unique_ptr<Chunk> other = MakeChunk(c.tag, arena);
    const Reading reading = ReadBytes(*other, "mhxx" + U32(500) + U32(500) + Zeros(500));
    EXPECT_EQ(reading.result, -1) << c.tag;
    EXPECT_EQ(reading.consumed, 4u) << c.tag;
    EXPECT_EQ(other->headerLength + other->totalLength, 0u) << c.tag;
    if (c.shortest == 0) continue;
    for (const std::uint32_t length : {0u, 11u, c.shortest - 1, c.shortest}) {
      const std::unique_ptr<Chunk> chunk = MakeChunk(c.tag, arena);
      // A data set needs a known type; the counts of the others are then 0 or beyond their header.
      const std::string fields = c.tag == "mhsd" ? U32(4) : U32(0);
      const std::uint32_t third = c.tag.substr(2, 1) == "l" ? 0 : length;
      const std::string bytes = c.tag + U32(length) + U32(third) + fields + Zeros(400);
      const bool fits = length >= c.shortest;
      EXPECT_EQ(ReadBytes(*chunk, bytes).result >= 0, fits) << c.tag << " " << length;
      EXPECT_EQ(chunk->headerLength, fits ? length : 0) << c.tag << " " << length;
    }
  }
}

}  // namespace
}  // namespace quaylink::test
