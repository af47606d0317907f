#include "itunesdb/data_object.h"

#include <gtest/gtest.h>

#include "support/database_bytes.h"

namespace quaylink::test {
namespace {

std::string TextBody(std::uint32_t position, std::uint32_t length, std::string_view text) {
  return U32(position) + U32(length) + U32(3) + U32(4) + std::string(text);
}

// Types at the edges of the runs that have the same kind of body.
TEST(DataObject, EveryTypeHasItsBodyAndNoOther) {
  const struct {
    BodyKind kind;
    std::vector<std::uint32_t> types;
  } cases[] = {
      {BodyKind::kWideText, {1, 2, 3, 4, 5, 9, 12, 13, 14, 18, 22, 24, 27, 28, 31, 200, 204}},
      {BodyKind::kByteText, {15, 16}},
      {BodyKind::kIndexList, {52}},
      {BodyKind::kJumpTable, {53}},
      {BodyKind::kRaw, {0, 10, 11, 17, 25, 26, 32, 50, 51, 54, 100, 199, 205, 0x80000001}},
  };
  for (const auto& c : cases) {
    for (const std::uint32_t type : c.types) {
      Arena arena;
      DataObjectChunk object(arena);
      EXPECT_EQ(ReadBytes(object, RawObject(type, TextBody(1, 4, Utf16(u"ab")))).result, 44);
      EXPECT_EQ(static_cast<bool>(object.wideText), c.kind == BodyKind::kWideText) << type;
      EXPECT_EQ(static_cast<bool>(object.byteText), c.kind == BodyKind::kByteText) << type;
      EXPECT_EQ(static_cast<bool>(object.indexEntries), c.kind == BodyKind::kIndexList) << type;
      EXPECT_EQ(static_cast<bool>(object.jumpEntries), c.kind == BodyKind::kJumpTable) << type;
      EXPECT_EQ(static_cast<bool>(object.rawBody), c.kind == BodyKind::kRaw) << type;
    }
  }
}

// What is consumed, and what is written again, object by object.
TEST(DataObject, BodiesComeBackAsTheyWereButForWhatWritingSettles) {
  const std::string five = Utf16(u"Hello");
  const std::string entries3 = U32(7) + U32(8) + U32(9);
  const std::string jumps2 = Pattern(24);
  const std::string header24 = U32(100) + U32(5) + U32(6);
  const struct {
    const char* name;
    std::string bytes;
    std::uint64_t consumed;
    std::string written;
  } cases[] = {
      {"string of five units", RawObject(1, TextBody(1, 10, five)), 50,
       RawObject(1, TextBody(1, 10, five))},
      {"the string's position is settled", RawObject(1, TextBody(5, 10, five)), 50,
       RawObject(1, TextBody(1, 10, five))},
      {"empty string", RawObject(2, TextBody(1, 0, "")), 40, RawObject(2, TextBody(1, 0, ""))},
      {"an odd length holds whole units", RawObject(3, TextBody(1, 7, Utf16(u"abc") + "d")), 46,
       RawObject(3, TextBody(1, 7, Utf16(u"abc")))},
      {"a string that runs past the end holds what is there",
       RawObject(4, TextBody(1, 999, five + "x")), 50, RawObject(4, TextBody(1, 10, five))},
      {"8-bit string", RawObject(15, "abcdef"), 30, RawObject(15, "abcdef")},
      {"a header length is stated but not believed",
       "mhod" + U32(40) + U32(30) + U32(16) + U32(1) + U32(2) + "abcdef", 30,
       "mhod" + U32(24) + U32(30) + U32(16) + U32(1) + U32(2) + "abcdef"},
      {"8-bit string of less than a header",
       "mhod" + U32(24) + U32(20) + U32(15) + Zeros(8) + "rest", 24, RawObject(15, "")},
      {"opaque body", ChunkBytes("mhod", 24, header24, Pattern(36)), 60,
       ChunkBytes("mhod", 24, header24, Pattern(36))},
      {"an opaque body is as long as the stated header leaves it",
       "mhod" + U32(44) + U32(60) + header24 + Pattern(36), 40,
       ChunkBytes("mhod", 24, header24, Pattern(16))},
      {"opaque body longer than the file", "mhod" + U32(24) + U32(4000) + header24 + Pattern(10),
       34, ChunkBytes("mhod", 24, header24, Pattern(10))},
      {"index list", RawObject(52, U32(77) + U32(3) + Zeros(40) + entries3), 84,
       RawObject(52, U32(77) + U32(3) + Zeros(40) + entries3)},
      {"index list with a count beyond the file",
       RawObject(52, U32(77) + U32(0xFFFFFFFF) + Pattern(40) + entries3 + "x"), 84,
       RawObject(52, U32(77) + U32(3) + Zeros(40) + entries3)},
      {"a jump table's count is its owner's to set",
       RawObject(53, U32(78) + U32(2) + Zeros(8) + jumps2), 64,
       RawObject(53, U32(78) + U32(0) + Zeros(8))},
  };
  for (const auto& c : cases) {
    Arena arena;
    DataObjectChunk object(arena);
    const Reading reading = ReadBytes(object, c.bytes);
    EXPECT_EQ(reading.result, static_cast<std::int32_t>(object.totalLength)) << c.name;
    EXPECT_EQ(reading.consumed, c.consumed) << c.name;
    EXPECT_EQ(WrittenBytes(object), c.written) << c.name;
  }
}

TEST(DataObject, ListsWriteTheirHeldEntriesOnlyWhenTheOwnersCountAgrees) {
  Arena arena;
  DataObjectChunk index(arena);
  ReadBytes(index, RawObject(52, U32(0) + U32(2) + Zeros(40) + U32(9) + U32(5)));
  index.entryCount = 3;
  EXPECT_EQ(WrittenBytes(index),
            RawObject(52, U32(0) + U32(3) + Zeros(40) + U32(0) + U32(1) + U32(2)));

  DataObjectChunk jumps(arena);
  ReadBytes(jumps, RawObject(53, U32(0) + U32(2) + Zeros(8) + Pattern(24)));
  jumps.entryCount = 2;
  EXPECT_EQ(WrittenBytes(jumps), RawObject(53, U32(0) + U32(2) + Zeros(8) + Pattern(24)));
  jumps.entryCount = 1;
  EXPECT_EQ(WrittenBytes(jumps),
            RawObject(53, U32(0) + U32(1) + Zeros(8) + U32(0) + U32(0) + U32(1)));
}

TEST(DataObject, ANewTextReplacesTheOldOneAndSetsTheLength) {
  Arena arena;
  DataObjectChunk object(arena);
  ReadBytes(object, TextObject(1, u"before"));
  object.SetText(nullptr);
  EXPECT_EQ(WrittenBytes(object), TextObject(1, u"before"));
  object.SetText(DataObjectChunk::WidenText("IPOD").get());
  EXPECT_EQ(object.bodyLength, 8u);
  EXPECT_EQ(WrittenBytes(object), TextObject(1, u"IPOD"));
  EXPECT_EQ(DataObjectChunk::WidenText(""), nullptr);
  EXPECT_EQ(DataObjectChunk::WidenText("\xFF")[0], u'\xFF');
}

TEST(DataObject, ALengthBeyondTheHeldBodyIsFilledWithZeros) {
  Arena arena;
  DataObjectChunk object(arena);
  ReadBytes(object, RawObject(100, "abc"));
  object.SetText(u"longer than the body");
  const std::string written = WrittenBytes(object);
  EXPECT_EQ(written, RawObject(100, "abc" + Zeros(37)));
}

}  // namespace
}  // namespace quaylink::test
