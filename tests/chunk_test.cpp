// The stream and the conventions that all chunks share.

#include "itunesdb/chunk.h"

#include <gtest/gtest.h>

#include <random>

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

TEST(StreamTest, FileAndMemoryGiveTheSameBytesForAnySequenceOfCalls) {
  const std::string bytes = Pattern(300'000);
  const LocalFile file = FileHolding(bytes);
  Stream fromFile(file.get());
  Stream fromMemory(AsBytes(bytes));
  std::minstd_rand random(1);
  for (int call = 0; call < 3000; ++call) {
    const std::uint64_t position = fromMemory.Tell();
    ASSERT_EQ(fromFile.Remaining(), fromMemory.Remaining());
    switch (random() % 5) {
      case 0: {
        const std::size_t size = random() % 3 == 0 ? random() % 100'000 : random() % 300;
        std::string a(size, '\0');
        std::string b(size, '\0');
        const std::size_t got = fromFile.Read(a.data(), size);
        ASSERT_EQ(got, fromMemory.Read(b.data(), size));
        ASSERT_EQ(a.substr(0, got), position < bytes.size()
                                        ? bytes.substr(static_cast<std::size_t>(position), got)
                                        : "");
        ASSERT_EQ(a, b);
        break;
      }
      case 1: {
        const auto a = fromFile.Peek(random() % Stream::kLongestPeek);
        ASSERT_TRUE(std::ranges::equal(a, fromMemory.Peek(a.size())));
        break;
      }
      case 2: {
        const auto distance = static_cast<std::int64_t>(random() % 50'000);
        fromFile.SkipBy(distance);
        fromMemory.SkipBy(distance);
        break;
      }
      default: {
        const std::uint64_t to = random() % (bytes.size() + 20'000);
        fromFile.SeekTo(to);
        fromMemory.SeekTo(to);
      }
    }
  }
}

TEST(StreamTest, NothingCanBeReadBeyondTheEndAndAWayBackLeadsToTheBytesAgain) {
  Stream stream(AsBytes("abcdef"));
  stream.SkipBy(5'000'000'000);
  char byte = 0;
  EXPECT_EQ(stream.Read(&byte, 1), 0u);
  EXPECT_EQ(stream.Remaining(), 0u);
  EXPECT_TRUE(stream.Peek(4).empty());
  EXPECT_EQ(stream.Tell(), 5'000'000'000u);
  stream.SeekTo(4);
  EXPECT_EQ(stream.Peek(4).size(), 2u);
}

TEST(StreamTest, WritingGoesOverWhatStandsAtThePosition) {
  Stream stream;
  stream.Write("abcdef", 6);
  stream.SeekTo(2);
  stream.Write("XY", 2);
  stream.SeekTo(6);
  stream.Write("gh", 2);
  EXPECT_EQ(BytesOf(stream), "abXYefgh");
}

TEST(ChunkTest, TagsAreComparedWithoutRegardToCaseAndConsumedEitherWay) {
  const struct {
    std::string bytes;
    std::int32_t result;
    std::uint64_t position;
  } cases[] = {{"mhodrest", 4, 4},  {"MHOD", 4, 4}, {"mHoD....", 4, 4},
               {"mhitrest", -1, 4}, {"mho", -1, 3}, {"", -1, 0}};
  for (const auto& c : cases) {
    Stream stream(AsBytes(c.bytes));
    EXPECT_EQ(CheckTag(stream, kDataObjectTag), c.result) << c.bytes;
    EXPECT_EQ(stream.Tell(), c.position) << c.bytes;
  }
}

TEST(ChunkTest, ZerosAreWrittenOnlyForAPositiveCount) {
  Stream stream;
  WriteZeros(0, stream);
  WriteZeros(-5, stream);
  EXPECT_TRUE(stream.Written().empty());
  WriteZeros(3, stream);
  EXPECT_EQ(BytesOf(stream), Zeros(3));
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
TEST(ChunkTest, AnotherTagOrTooShortAHeaderFailsTheChunk) {
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
