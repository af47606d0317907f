#include "itunesdb/tracks.h"

#include <gtest/gtest.h>

#include "support/database_bytes.h"

namespace quaylink::test {
namespace {

std::vector<std::uint32_t> IdsOf(const TrackListChunk& list) {
  std::vector<std::uint32_t> ids;
  for (const auto& track : list.tracks) ids.push_back(track.id);
  return ids;
}

TEST(TrackItem, EveryHeaderByteComesBackButTheLowerHalfOfOneWord) {
  for (const std::uint32_t headerLength : {388u, 400u, 584u, 700u}) {
    std::string bytes = ChunkBytes("mhit", headerLength, U32(1) + U32(42) + Pattern(headerLength),
                                   TextObject(1, u"Title"));
    Arena arena;
    TrackItemChunk item(arena);
    const Reading reading = ReadBytes(item, bytes + "next");
    EXPECT_EQ(reading.result, static_cast<std::int32_t>(bytes.size()));
    EXPECT_EQ(reading.consumed, bytes.size());
    EXPECT_EQ(item.trackId, 42u);
    EXPECT_EQ(item.headerTail.size(), headerLength - 388);
    bytes[0x3C] = bytes[0x3D] = 0;
    EXPECT_EQ(WrittenBytes(item), bytes) << headerLength;
    EXPECT_EQ(WrittenBytes(item), bytes) << "a second time, header " << headerLength;
  }
}

TEST(TrackItem, ShortHeadersOfOlderPlayersAreReadAndWrittenInFull) {
  for (const std::uint32_t headerLength : {156u, 160u, 244u, 328u, 387u}) {
    const std::string fields = U32(1) + U32(42) + Pattern(headerLength);
    Arena arena;
    TrackItemChunk item(arena);
    // What the object held before does not shine through.
    ReadBytes(item, ChunkBytes("mhit", 400, U32(0) + U32(7) + std::string(400, '\x55'), ""));
    const Reading reading =
        ReadBytes(item, ChunkBytes("mhit", headerLength, fields, TextObject(1, u"Old")));
    EXPECT_EQ(reading.consumed, headerLength + TextObject(1, u"Old").size());
    EXPECT_EQ(item.trackId, 42u);
    ASSERT_EQ(item.DataObjectCount(), 1);
    EXPECT_EQ(item.DataObjectAt(0).wideText.size(), 3u);

    std::string known = fields.substr(0, headerLength - 12);
    if (headerLength == 387) known.resize(0x180 - 12);  // the last field is cut, and so not read
    std::string expected = ChunkBytes("mhit", 388, known, TextObject(1, u"Old"));
    expected[0x3C] = expected[0x3D] = 0;
    EXPECT_EQ(WrittenBytes(item), expected) << headerLength;
  }
}

TEST(TrackItem, ATailLongerThanTheFileIsHeldAsFarAsItGoes) {
  const std::string whole = ChunkBytes("mhit", 388, U32(3) + U32(42), "") + "tail";
  std::string bytes = whole;
  bytes.replace(4, 4, U32(0xFFFFFFF0));
  Arena arena;
  TrackItemChunk item(arena);
  ReadBytes(item, bytes);
  EXPECT_EQ(item.headerLength, 392u);
  EXPECT_EQ(item.headerTail.size(), 4u);
  EXPECT_EQ(item.DataObjectCount(), 0);
  EXPECT_THROW(item.DataObjectAt(0), std::out_of_range);
}

TEST(TrackItem, ANewItemIsWrittenWithTheFullHeader) {
  Arena arena;
  TrackItemChunk item(arena);
  EXPECT_EQ(WrittenBytes(item), ChunkBytes("mhit", 388, U32(0) + U32(0) + U32(1), ""));
}

TEST(TrackList, TracksAreOrderedByUnsignedIdAndTheFirstOfAnIdStays) {
  const std::string tracks = Track(30, 1, TextObject(1, u"first")) + Track(0x80000000, 0, "") +
                             Track(10, 0, "") + Track(30, 1, TextObject(1, u"second one")) +
                             Track(20, 0, "");
  Arena arena;
  TrackListChunk list(arena);
  const Reading reading = ReadBytes(list, ListBytes("mhlt", 5, tracks, 100));
  EXPECT_EQ(reading.result, static_cast<std::int32_t>(100 + tracks.size()));
  EXPECT_EQ(IdsOf(list), (std::vector<std::uint32_t>{10, 20, 30, 0x80000000}));
  EXPECT_EQ(WrittenBytes(list),
            ListBytes("mhlt", 4,
                      Track(10, 0, "") + Track(20, 0, "") + Track(30, 1, TextObject(1, u"first")) +
                          Track(0x80000000, 0, "")));
}

TEST(TrackList, TheFirstOfNeighboursWithOneIdStays) {
  Arena arena;
  TrackListChunk list(arena);
  ReadBytes(list, ListBytes("mhlt", 2, Track(30, 0, "") + Track(30, 0, "")));
  EXPECT_EQ(IdsOf(list), std::vector<std::uint32_t>{30});
}

TEST(TrackList, AnItemThatFailsStandsUnderIdZeroAndTakesOneOffTheSum) {
  const std::string good = Track(5, 0, "");
  Arena arena;
  TrackListChunk list(arena);
  const Reading reading = ReadBytes(list, ListBytes("mhlt", 2, "junk" + good));
  EXPECT_EQ(reading.result, static_cast<std::int32_t>(92 - 1 + good.size()));
  EXPECT_EQ(IdsOf(list), (std::vector<std::uint32_t>{0, 5}));
}

TEST(TrackList, ItemsBeyondTheEndTakeOneEachOffTheSumWhichWrapsAround) {
  Arena arena;
  TrackListChunk list(arena);
  const std::string good = Track(5, 0, "");
  const Reading reading = ReadBytes(list, ListBytes("mhlt", 0xFFFFFFFF, good));
  EXPECT_EQ(reading.result, static_cast<std::int32_t>(92 + good.size() + 2));
  EXPECT_EQ(IdsOf(list), std::vector<std::uint32_t>{5});
}

TEST(TrackList, AfterThirtyTwoFailuresNothingMoreIsLookedFor) {
  Arena arena;
  TrackListChunk list(arena);
  const std::string junk(4 * 1000, 'x');
  const Reading reading = ReadBytes(list, ListBytes("mhlt", 1000, junk));
  EXPECT_EQ(reading.consumed, 92u + 32 * 4);
  EXPECT_EQ(reading.result, 92 - 1000);
}

}  // namespace
}  // namespace quaylink::test
