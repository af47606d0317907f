#include "itunesdb/data_object.h"

#include <gtest/gtest.h>

#include "support/database_bytes.h"

namespace quaylink::test {
namespace {

std::string TextBody(std::uint32_t position, std::uint32_t length, std::string_view text) {
  return U32(position) + U32(length) + U32(3) + U32(4) + std::string(text);
}

TEST(DataObjectTest, EveryTypeHasItsBodyAndNoOther) {
  std::uint32_t kinds[5] = {};
  for (std::uint32_t type = 0; type < 256; ++type) {
    ++kinds[static_cast<int>(BodyKindOf(type))];
    const std::string bytes = RawObject(type, TextBody(1, 4, Utf16(u"ab")));
    Arena arena;
    DataObjectChunk object(arena);
    EXPECT_EQ(ReadBytes(object, bytes).result, 44);
    const bool wide = (type >= 1 && type <= 9) || (type >= 12 && type <= 14) ||
                      (type >= 18 && type <= 24) || (type >= 27 && type <= 31) ||
                      (type >= 200 && type <= 204);
    EXPECT_EQ(static_cast<bool>(object.wideText), wide) << type;
    EXPECT_EQ(static_cast<bool>(object.byteText), type == 15 || type == 16) << type;
    EXPECT_EQ(static_cast<bool>(object.indexEntries), type == 52) << type;
    EXPECT_EQ(static_cast<bool>(object.jumpEntries), type == 53) << type;
  }
  EXPECT_EQ(kinds[static_cast<int>(BodyKind::kWideText)], 29u);
}

// What is consumed, and what is written again, object by object.
TEST(DataObjectTest, BodiesComeBackAsTheyWereButForWhatWritingSettles) {
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
      {"text of five units", RawObject(1, TextBody(1, 10, five)), 50,
       RawObject(1, TextBody(1, 10, five))},
      {"the text's position is settled", RawObject(1, TextBody(5, 10, five)), 50,
       RawObject(1, TextBody(1, 10, five))},
      {"empty text", RawObject(2, TextBody(1, 0, "")), 40, RawObject(2, TextBody(1, 0, ""))},
      {"an odd length holds whole units", RawObject(3, TextBody(1, 7, Utf16(u"abc") + "d")), 46,
       RawObject(3, TextBody(1, 7, Utf16(u"abc")))},
      {"a text that runs past the end holds what is there",
       RawObject(4, TextBody(1, 999, five + "x")), 50, RawObject(4, TextBody(1, 10, five))},
      {"byte text", RawObject(15, "abcdef"), 30, RawObject(15, "abcdef")},
      {"a header length is stated but not believed",
       "mhod" + U32(40) + U32(30) + U32(16) + U32(1) + U32(2) + "abcdef", 30,
       "mhod" + U32(24) + U32(30) + U32(16) + U32(1) + U32(2) + "abcdef"},
      {"byte text of less than a header", "mhod" + U32(24) + U32(20) + U32(15) + Zeros(8) + "rest",
       24, RawObject(15, "")},
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

TEST(DataObjectTest, ListsWriteTheirHeldEntriesOnlyWhenTheOwnersCountAgrees) {
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

TEST(DataObjectTest, ANewTextReplacesTheOldOneAndSetsTheLength) {
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

TEST(DataObjectTest, ALengthBeyondTheHeldBodyIsFilledWithZeros) {
  Arena arena;
  DataObjectChunk object(arena);
  ReadBytes(object, RawObject(100, "abc"));
  object.SetText(u"longer than the body");
  const std::string written = WrittenBytes(object);
  EXPECT_EQ(written, RawObject(100, "abc" + Zeros(37)));
}

}  // namespace
}  // namespace quaylink::test
