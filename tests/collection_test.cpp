// What a collection tells of a sound database, and its interface.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <variant>

#include "samples/sample_database.h"
#include "samples/sample_music.h"
#include "support/database_bytes.h"
#include "support/opened_collection.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

struct Number {
  std::size_t offset;
  std::size_t width;
  std::variant<std::uint32_t QuaylinkTrack::*, std::uint64_t QuaylinkTrack::*> field;
};

constexpr Number kNumbers[] = {
    {0x10, 4, &QuaylinkTrack::id},           {0x1F, 1, &QuaylinkTrack::rating},
    {0x20, 4, &QuaylinkTrack::modified},     {0x24, 4, &QuaylinkTrack::fileSize},
    {0x28, 4, &QuaylinkTrack::lengthMs},     {0x2C, 4, &QuaylinkTrack::trackNumber},
    {0x30, 4, &QuaylinkTrack::trackCount},   {0x34, 4, &QuaylinkTrack::year},
    {0x38, 4, &QuaylinkTrack::bitRate},      {0x3E, 2, &QuaylinkTrack::sampleRate},
    {0x50, 4, &QuaylinkTrack::playCount},    {0x58, 4, &QuaylinkTrack::lastPlayed},
    {0x5C, 4, &QuaylinkTrack::discNumber},   {0x60, 4, &QuaylinkTrack::discCount},
    {0x68, 4, &QuaylinkTrack::added},        {0x6C, 4, &QuaylinkTrack::bookmarkMs},
    {0x70, 8, &QuaylinkTrack::persistentId}, {0x7A, 2, &QuaylinkTrack::beatsPerMinute},
    {0x8C, 4, &QuaylinkTrack::released},     {0x9C, 4, &QuaylinkTrack::skipCount},
    {0xA0, 4, &QuaylinkTrack::lastSkipped},  {0xD0, 4, &QuaylinkTrack::mediaType},
    {0xD4, 4, &QuaylinkTrack::seasonNumber}, {0xD8, 4, &QuaylinkTrack::episodeNumber},
};

TEST(Collection, TellsTheNumbersThatATracksHeaderHas) {
  for (const std::uint32_t headerLength : {156u, 244u, 388u, 624u}) {
    const std::string track =
        "mhit" + U32(headerLength) + U32(headerLength) + U32(0) + Pattern(headerLength).substr(16);
    const OpenedCollection opened(TrackDatabase(1, track), QUAYLINK_STRICT);
    const QuaylinkTrack told = opened.Track(0);
    for (const Number& number : kNumbers) {
      std::uint64_t expected = 0;
      if (number.offset + number.width <= headerLength) {
        std::memcpy(&expected, track.data() + number.offset, number.width);
      }
      const std::uint64_t value =
          std::visit([&](auto field) -> std::uint64_t { return told.*field; }, number.field);
      EXPECT_EQ(value, expected) << number.offset << " of " << headerLength;
    }
  }
}

TEST(Collection, TellsTheFlagsOfATrack) {
  const auto told = [](std::size_t offset, char value) {
    std::string track = Track(1, 0, "");
    track[offset] = value;
    return OpenedCollection(TrackDatabase(1, track)).Track(0);
  };
  EXPECT_EQ(told(0x1E, 1).compilation, 1u);
  EXPECT_EQ(told(0x1E, 0).compilation, 0u);
  EXPECT_EQ(told(0x78, 0).checked, 1u);
  EXPECT_EQ(told(0x78, 1).checked, 0u);
}

TEST(Collection, TellsTheStringsOfATrackByTheirType) {
  using Field = const char* QuaylinkTrack::*;
  const std::pair<std::uint32_t, Field> strings[] = {
      {1, &QuaylinkTrack::title},         {2, &QuaylinkTrack::location},
      {3, &QuaylinkTrack::album},         {4, &QuaylinkTrack::artist},
      {5, &QuaylinkTrack::genre},         {6, &QuaylinkTrack::fileType},
      {8, &QuaylinkTrack::comment},       {9, &QuaylinkTrack::category},
      {12, &QuaylinkTrack::composer},     {13, &QuaylinkTrack::grouping},
      {14, &QuaylinkTrack::description},  {15, &QuaylinkTrack::podcastUrl},
      {16, &QuaylinkTrack::podcastFeed},  {18, &QuaylinkTrack::subtitle},
      {19, &QuaylinkTrack::show},         {20, &QuaylinkTrack::episode},
      {21, &QuaylinkTrack::network},      {22, &QuaylinkTrack::albumArtist},
      {23, &QuaylinkTrack::sortArtist},   {27, &QuaylinkTrack::sortTitle},
      {28, &QuaylinkTrack::sortAlbum},    {29, &QuaylinkTrack::sortAlbumArtist},
      {30, &QuaylinkTrack::sortComposer}, {31, &QuaylinkTrack::sortShow}};
  std::string objects = TextObject(200, u"no property");
  for (const auto& [type, field] : strings) {
    const std::string text = "of type " + std::to_string(type);
    objects += type == 15 || type == 16
                   ? RawObject(type, text)
                   : TextObject(type, std::u16string(text.begin(), text.end()));
  }
  const auto count = static_cast<std::uint32_t>(std::size(strings) + 1);
  const OpenedCollection opened(TrackDatabase(2, Track(1, count, objects) + Track(2, 0, "")));
  for (const auto& [type, field] : strings) {
    EXPECT_EQ(opened.Track(0).*field, "of type " + std::to_string(type));
    EXPECT_STREQ(opened.Track(1).*field, "");
  }
}

TEST(Collection, GivesStringsInUtf8) {
  const std::string longAscii = "sixteen letters, and then some more of them";
  const struct {
    std::string object;
    std::string expected;
  } cases[] = {
      {TextObject(1, u"Café 港 \U0001F3B5"), "Café 港 \U0001F3B5"},
      {TextObject(1, std::u16string(longAscii.begin(), longAscii.end()) + u"é"), longAscii + "é"},
      {TextObject(1, std::u16string(15, u'a') + u"\U0001F3B5!"),
       std::string(15, 'a') + "\U0001F3B5!"},
      {TextObject(1, u"\xD83C."), "\uFFFD."},
      {TextObject(1, u"\xDF4F\xD83C"), "\uFFFD\uFFFD"},
      {TextObject(1, std::u16string(u"ends\0here, as it does in a record", 33)), "ends"},
      {TextObject(1, u"the first") + TextObject(1, u"the last"), "the last"},
      {TextObject(2, u":iPod_Control:Music:F05:港.mp3"), "/iPod_Control/Music/F05/港.mp3"},
      {RawObject(15, "https://music.example/é"), "https://music.example/é"},
      {RawObject(15, std::string("ends\0here", 9)), "ends"},
      {RawObject(15, "\xC0\x80 \xE0\x80\x80 \xED\xA0\x80 \xF5 \xC3"),
       "\uFFFD\uFFFD \uFFFD\uFFFD\uFFFD \uFFFD\uFFFD\uFFFD \uFFFD \uFFFD"},
      {RawObject(15, "\xF0\x8F\xBF\xBF\xF4\x90\x80\x80"),
       "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
  };
  for (const auto& [object, expected] : cases) {
    const auto count = static_cast<std::uint32_t>(object.find("mhod", 1) == object.npos ? 1 : 2);
    const OpenedCollection opened(TrackDatabase(1, Track(1, count, object)));
    const QuaylinkTrack track = opened.Track(0);
    EXPECT_EQ(std::string(track.title) + track.location + track.podcastUrl, expected);
  }
}

TEST(Collection, HasTheTracksByIdAndOfEachIdTheFirst) {
  std::string tracks;
  for (const auto& [id, title] : {std::pair{30u, u"a"}, {10u, u"b"}, {20u, u"c"}, {10u, u"d"}}) {
    tracks += Track(id, 1, TextObject(1, title));
  }
  const OpenedCollection opened(TrackDatabase(4, tracks));
  ASSERT_EQ(opened.info.trackCount, 3u);
  EXPECT_EQ(opened.info.damaged, 0u);
  EXPECT_STREQ(opened.Track(0).title, "b");
  EXPECT_STREQ(opened.Track(1).title, "c");
  EXPECT_STREQ(opened.Track(2).title, "a");
}

// --- Playlists ---

std::string Item(std::uint32_t trackId, const std::string& objects = {}, std::uint16_t group = 0) {
  return ChunkBytes("mhip", 76,
                    U32(objects.empty() ? 0 : 1) + U16(group) + U16(0) + U32(0) + U32(trackId),
                    objects);
}
std::string Position(std::uint32_t position) {
  return RawObject(100, U32(position) + Zeros(16));
}
std::string Playlist(std::uint32_t objectCount, const std::string& objects, std::uint32_t itemCount,
                     const std::string& items, std::uint8_t master = 0, std::uint16_t podcasts = 0,
                     std::uint64_t persistentId = 0) {
  return ChunkBytes("mhyp", 108,
                    U32(objectCount) + U32(itemCount) + U32(master) + U32(0) + U64(persistentId) +
                        U32(0) + U16(0) + U16(podcasts),
                    objects + items);
}
std::string Playlists(std::uint32_t type, std::uint32_t count, const std::string& playlists) {
  return DataSet(type, ListBytes("mhlp", count, playlists));
}

TEST(Collection, TellsThePlaylistsWithTheirTracks) {
  const std::string tracks =
      DataSet(1, ListBytes("mhlt", 3, Track(7, 0, "") + Track(8, 0, "") + Track(9, 0, "")));
  const std::string lists =
      Playlist(1, TextObject(1, u"My player"), 3, Item(7) + Item(8) + Item(9), 1, 0, 5) +
      Playlist(0, "", 4, Item(9) + Item(7, Position(3)) + Item(8, Position(2)) + Item(7)) +
      Playlist(2, RawObject(51, Zeros(40)) + TextObject(1, u"Smart"), 2, Item(8) + Item(77)) +
      Playlist(1, TextObject(1, u"Shows"), 2, Item(1, TextObject(1, u"A show"), 256) + Item(9), 0,
               1);
  const struct {
    const char* name;
    QuaylinkPlaylistKind kind;
    std::uint64_t persistentId;
    std::vector<std::uint32_t> tracks;
  } expected[] = {{"My player", QUAYLINK_MASTER, 5, {0, 1, 2}},
                  {"", QUAYLINK_ORDINARY, 0, {1, 0, 2, 0}},
                  {"Smart", QUAYLINK_SMART, 0, {1}},
                  {"Shows", QUAYLINK_PODCASTS, 0, {2}}};
  const std::string own = Playlists(5, 1, Playlist(0, "", 0, ""));  // the player's own menus
  const std::string ungrouped = Playlists(2, 1, Playlist(0, "", 0, ""));
  const std::string databases[] = {
      Database(2, Playlists(2, 4, lists) + tracks),
      Database(4, tracks + Playlists(3, 4, lists) + ungrouped + own),
      Database(4, ungrouped + own + Playlists(3, 4, lists) + tracks),
  };
  for (const std::string& database : databases) {
    const OpenedCollection opened(database, QUAYLINK_STRICT);
    EXPECT_STREQ(opened.info.damage, "");
    ASSERT_EQ(opened.info.playlistCount, std::size(expected));
    for (std::uint32_t i = 0; i < std::size(expected); ++i) {
      const QuaylinkPlaylist playlist = opened.Playlist(i);
      EXPECT_STREQ(playlist.name, expected[i].name);
      EXPECT_EQ(playlist.kind, static_cast<std::uint32_t>(expected[i].kind));
      EXPECT_EQ(playlist.persistentId, expected[i].persistentId);
      EXPECT_EQ(opened.TracksOf(i), expected[i].tracks) << i;
    }
  }
}

// --- Play counts ---

TEST(Collection, TakesInWhatThePlayerHasCountedSince) {
  using samples::PlayCount;
  // In the order of the file, which is not that of the ids.
  samples::Track second{2, {}};
  second.properties.playCount = 3;
  second.properties.rating = 40;
  second.properties.lastPlayed = 70;
  second.properties.bookmarkMs = 9;
  const std::string sound = BytesOf(samples::WriteDatabase({{{1, {}}, second}, {}, {}}));
  const struct {
    PlayCount count;
    std::uint32_t entryLength;
    std::array<std::uint32_t, 6> expected;  // plays, last played, bookmark, rating, skips, skipped
  } cases[] = {
      {{2, 80, 500, 100, 4, 90}, 28, {5, 80, 500, 100, 4, 90}},
      {{2, 80, 500, 100, 4, 90}, 20, {5, 80, 500, 100, 0, 0}},
      {{2, 80, 500, 100, 4, 90}, 16, {5, 80, 500, 100, 0, 0}},
      {{2, 80, 500, 100, 4, 90}, 12, {5, 80, 500, 40, 0, 0}},
      {{2, 80, 500, 100, 4, 90}, 100, {5, 80, 500, 100, 4, 90}},
      {{0, 0, 0, 0, 0, 0}, 28, {3, 70, 9, 40, 0, 0}},
      {{1, 0, 0, 0, 0, 0}, 28, {4, 70, 9, 0, 0, 0}},
      {{0, 0, 0, 20, 1, 0}, 28, {3, 70, 9, 20, 1, 0}},
      {{0xFFFFFFFF, 0, 0, 40, 0, 0}, 28, {0xFFFFFFFF, 70, 9, 40, 0, 0}},
  };
  for (const auto& [count, entryLength, expected] : cases) {
    const OpenedCollection opened(sound, QUAYLINK_STRICT,
                                  BytesOf(samples::WritePlayCounts({{}, count}, entryLength)));
    EXPECT_EQ(opened.info.playCounts, QUAYLINK_PLAY_COUNTS_TAKEN);
    const QuaylinkTrack told = opened.Track(1);
    EXPECT_EQ((std::array{told.playCount, told.lastPlayed, told.bookmarkMs, told.rating,
                          told.skipCount, told.lastSkipped}),
              expected);
    EXPECT_EQ(opened.AllOf(0), OpenedCollection(sound).AllOf(0));
  }
}

TEST(Collection, GivesPlayCountsToTheTracksInTheOrderOfTheFile) {
  const std::string database = TrackDatabase(2, Track(20, 0, "") + Track(10, 0, ""));
  const OpenedCollection opened(database, QUAYLINK_TOLERANT,
                                BytesOf(samples::WritePlayCounts({{.plays = 1}, {.plays = 2}})));
  EXPECT_EQ(opened.Track(0).playCount, 2u);
  EXPECT_EQ(opened.Track(1).playCount, 1u);
}

TEST(Collection, LeavesPlayCountsThatAreBrokenOrOfAnotherDatabase) {
  const std::string database = TrackDatabase(2, Track(1, 0, "") + Track(2, 0, ""));
  const auto counts = [](std::size_t count) {
    return BytesOf(samples::WritePlayCounts(std::vector<samples::PlayCount>(count, {.plays = 1})));
  };
  std::string otherTag = counts(2);
  otherTag[3] = 'x';
  std::string shortEntries = counts(2);
  shortEntries[8] = 8;
  for (const std::string& bytes : {counts(1), counts(3), counts(2).substr(0, 100), otherTag,
                                   shortEntries, std::string("mhdp"), std::string("")}) {
    const OpenedCollection opened(database, QUAYLINK_STRICT, bytes);
    EXPECT_EQ(opened.info.playCounts, QUAYLINK_PLAY_COUNTS_LEFT);
    EXPECT_EQ(opened.Track(0).playCount, 0u);
  }
}

// --- Where a database comes from ---

TEST(Collection, IsTheSameFromMemoryAStreamAFileAndCompressed) {
  const TestMachine machine;
  const auto plain = samples::WriteDatabase(samples::MakeLargeLibrary(200));
  const auto compressed = samples::Compress(plain);
  const auto expected = OpenedCollection(BytesOf(plain)).Everything();
  ASSERT_EQ(expected.size(), 200u);
  for (const auto* bytes : {&plain, &compressed}) {
    const bool isCompressed = bytes == &compressed;
    const auto expectSame = [&](const OpenedCollection& opened) {
      EXPECT_EQ(opened.result, QUAYLINK_OK) << opened.error.message;
      EXPECT_EQ(opened.info.compressed, isCompressed ? 1u : 0u);
      EXPECT_STREQ(opened.info.damage, "");
      EXPECT_EQ(opened.info.playlistCount, 1u);
      EXPECT_EQ(opened.Everything(), expected);
    };
    expectSame(OpenedCollection(BytesOf(*bytes), QUAYLINK_STRICT));

    const std::u8string path =
        std::filesystem::path(machine.LocalPath("")).u8string() + u8"Datenbank für 港.iTunesDB";
    std::ofstream(std::filesystem::path(path), std::ios::binary) << BytesOf(*bytes);
    expectSame(OpenedCollection::OfFile({path.begin(), path.end()}));

    std::span<const std::uint8_t> rest = *bytes;
    const QuaylinkReadCallback inPieces = [](void* context, void* buffer,
                                             std::uint32_t size) -> std::int32_t {
      auto& left = *static_cast<std::span<const std::uint8_t>*>(context);
      const std::size_t piece = std::min<std::size_t>({left.size(), size, left.size() % 1000 + 1});
      std::ranges::copy(left.first(piece), static_cast<std::uint8_t*>(buffer));
      left = left.subspan(piece);
      return static_cast<std::int32_t>(piece);
    };
    expectSame(OpenedCollection::OfStream(inPieces, &rest));
  }
}

TEST(Collection, LooksBesideItsFileAsNewerPlayersLayItOut) {
  const TestMachine machine;
  const std::filesystem::path folder = machine.LocalPath("player");
  std::filesystem::create_directories(folder);
  const auto write = [&](const char* name, const std::vector<std::uint8_t>& bytes) {
    std::ofstream(folder / name, std::ios::binary) << BytesOf(bytes);
  };
  const auto music = samples::SampleMusic("iPod_Control");
  write("iTunesDB", {});
  const std::string path = (folder / "iTunesDB").string();
  EXPECT_EQ(OpenedCollection::OfFile(path).result, QUAYLINK_NOT_A_DATABASE);
  write("iTunesCDB", samples::Compress(samples::WriteDatabase(samples::SampleLibrary(music))));
  write("Play Counts", samples::WritePlayCounts(samples::SamplePlayCounts(music)));

  const OpenedCollection opened = OpenedCollection::OfFile(path);
  EXPECT_EQ(opened.info.trackCount, music.size());
  EXPECT_EQ(opened.info.playCounts, QUAYLINK_PLAY_COUNTS_TAKEN);
  EXPECT_EQ(opened.Track(3).playCount, 3u + 5u);

  const OpenedCollection without = OpenedCollection::OfFile(path, QUAYLINK_PLAY_COUNTS_IGNORED);
  EXPECT_EQ(without.info.playCounts, QUAYLINK_PLAY_COUNTS_NONE);
  EXPECT_EQ(without.Track(3).playCount, 3u);

  std::filesystem::rename(folder / "Play Counts", folder / "counted");
  const std::string counted = (folder / "counted").string();
  const auto with = [&](const char* playCounts) {
    return OpenedCollection::OfFile(path, QUAYLINK_PLAY_COUNTS_IGNORED, playCounts);
  };
  EXPECT_EQ(OpenedCollection::OfFile(path).Track(3).playCount, 3u);
  EXPECT_EQ(with(counted.c_str()).Track(3).playCount, 8u);
  EXPECT_EQ(with("no such file").result, QUAYLINK_CANNOT_OPEN);
}

TEST(Collection, SaysWhyNothingIsOpened) {
  const TestMachine machine;
  EXPECT_EQ(OpenedCollection::OfFile(machine.LocalPath("missing")).result, QUAYLINK_CANNOT_OPEN);
  const QuaylinkReadCallback failing = [](void*, void*, std::uint32_t) -> std::int32_t {
    return -1;
  };
  EXPECT_EQ(OpenedCollection::OfStream(failing, nullptr).result, QUAYLINK_CANNOT_READ);
  const QuaylinkReadCallback lying = [](void*, void*, std::uint32_t size) {
    return static_cast<std::int32_t>(size + 1);
  };
  EXPECT_EQ(OpenedCollection::OfStream(lying, nullptr).result, QUAYLINK_CANNOT_READ);
  const QuaylinkReadCallback endless = [](void*, void* buffer, std::uint32_t size) {
    std::memset(buffer, 'x', size);
    return static_cast<std::int32_t>(size);
  };
  EXPECT_EQ(OpenedCollection::OfStream(endless, nullptr).result, QUAYLINK_NOT_A_DATABASE);
  EXPECT_EQ(OpenedCollection("").result, QUAYLINK_NOT_A_DATABASE);

  // A few kilobytes that would be 40 MB.
  const std::string bomb = Database(1, DataSet(1, ListBytes("mhlt", 0, Zeros(40 << 20))));
  const OpenedCollection tooLarge(BytesOf(samples::Compress(AsBytes(bomb))));
  EXPECT_EQ(tooLarge.result, QUAYLINK_TOO_LARGE);
  EXPECT_STRNE(tooLarge.error.message, "");
  EXPECT_EQ(tooLarge.error.offset, QUAYLINK_NO_OFFSET);
}

// --- The interface ---

TEST(Collection, FillsTheStructsOfOlderAndNewerHosts) {
  const OpenedCollection opened(TrackDatabase(1, Track(5, 1, TextObject(1, u"Title"))));
  struct Newer {
    QuaylinkTrack track;
    const char* added;
  } newer{{}, "not told"};
  newer.track.structSize = sizeof(newer);
  EXPECT_EQ(QuaylinkGetTrack(opened.collection, 0, &newer.track), QUAYLINK_OK);
  EXPECT_STREQ(newer.track.title, "Title");
  EXPECT_EQ(newer.track.structSize, sizeof(newer));
  EXPECT_EQ(newer.added, nullptr);

  QuaylinkTrack track{};
  for (const std::size_t size : {std::size_t{0}, sizeof(track) - 1, std::size_t{1} << 30}) {
    track.structSize = static_cast<std::uint32_t>(size);
    EXPECT_EQ(QuaylinkGetTrack(opened.collection, 0, &track), QUAYLINK_INVALID_ARGUMENT);
  }
  track.structSize = sizeof(track);
  EXPECT_EQ(QuaylinkGetTrack(opened.collection, 1, &track), QUAYLINK_OUT_OF_RANGE);
  EXPECT_EQ(track.id, 0u);
}

TEST(Collection, RefusesArgumentsThatItDoesNotUnderstand) {
  const std::string bytes = TrackDatabase(0, "");
  const auto open = [&](const QuaylinkOpenOptions* options) {
    QuaylinkCollection* collection = nullptr;
    const auto result =
        QuaylinkOpenMemory(bytes.data(), bytes.size(), options, &collection, nullptr);
    QuaylinkClose(collection);
    return result;
  };
  struct {
    QuaylinkOpenOptions options;
    std::uint64_t added;
  } newer{{sizeof(newer), 0, 0, 0, nullptr, nullptr, 0}, 0};
  EXPECT_EQ(open(nullptr), QUAYLINK_OK);
  EXPECT_EQ(open(&newer.options), QUAYLINK_OK);
  newer.added = 1;
  EXPECT_EQ(open(&newer.options), QUAYLINK_INVALID_ARGUMENT);
  const QuaylinkOpenOptions sound = OfOwnSize<QuaylinkOpenOptions>();
  for (auto field : {&QuaylinkOpenOptions::structSize, &QuaylinkOpenOptions::reading,
                     &QuaylinkOpenOptions::playCounts, &QuaylinkOpenOptions::reserved}) {
    QuaylinkOpenOptions options = sound;
    options.*field = 2;
    EXPECT_EQ(open(&options), QUAYLINK_INVALID_ARGUMENT);
  }
  QuaylinkCollection* collection = nullptr;
  QuaylinkError unsized{};
  EXPECT_EQ(QuaylinkOpenMemory(bytes.data(), bytes.size(), nullptr, &collection, &unsized),
            QUAYLINK_INVALID_ARGUMENT);
  EXPECT_EQ(QuaylinkOpenMemory(nullptr, 1, nullptr, &collection, nullptr),
            QUAYLINK_INVALID_ARGUMENT);
  EXPECT_EQ(QuaylinkOpenFile(nullptr, nullptr, &collection, nullptr), QUAYLINK_INVALID_ARGUMENT);
  EXPECT_EQ(QuaylinkOpenStream(nullptr, nullptr, nullptr, &collection, nullptr),
            QUAYLINK_INVALID_ARGUMENT);
  EXPECT_EQ(QuaylinkOpenMemory(bytes.data(), bytes.size(), nullptr, nullptr, nullptr),
            QUAYLINK_INVALID_ARGUMENT);
  EXPECT_EQ(QuaylinkGetInfo(nullptr, nullptr), QUAYLINK_INVALID_ARGUMENT);
  EXPECT_EQ(collection, nullptr);
  EXPECT_EQ(QuaylinkCollectionVersion(),
            static_cast<std::uint32_t>(QUAYLINK_COLLECTION_VERSION_NUMBER));
}

TEST(Collection, IsOpenedOnManyThreadsAtOnce) {
  const auto plain = samples::WriteDatabase(samples::MakeLargeLibrary(300));
  const std::string sources[] = {BytesOf(plain), BytesOf(samples::Compress(plain)),
                                 BytesOf(plain).substr(0, plain.size() / 2)};
  const OpenedCollection shared(sources[0]);
  const auto expected = shared.Everything();
  std::atomic<int> same = 0;
  std::vector<std::thread> threads;
  for (const std::string& source : sources) {
    threads.emplace_back([&] {
      for (int i = 0; i < 5; ++i) {
        auto all = OpenedCollection(source).Everything();
        all.resize(expected.size());
        const bool begins = std::ranges::mismatch(all, expected).in1 - all.begin() >= 100;
        same += begins && shared.Everything() == expected ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(same, 15);
}

}  // namespace
}  // namespace quaylink::test
