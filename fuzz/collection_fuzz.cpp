// Opens the input as a collection, strictly and tolerantly, and asks for everything in it. The
// first two bytes of the input are no part of the database: they say how long a Play Counts file at
// its end is.

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "itunesdb/database.h"
#include "quaylink/collection.h"
#include "require.h"

namespace quaylink::fuzz {
namespace {

constexpr std::size_t kCompressedFlagOffset = 0xA8;

template <class Struct>
Struct OfOwnSize() {
  Struct value{};
  value.structSize = sizeof(Struct);
  return value;
}

// True for what has neither unfinished nor overlong characters, as far as the first bytes tell.
bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if ((first >= 0x80 && first < 0xC2) || first > 0xF4 || length > text.size()) return false;
    for (const char c : text.substr(1, length - 1)) {
      if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

// Asks for everything, and returns the number of tracks.
std::uint32_t AskAll(const QuaylinkCollection* collection) {
  QuaylinkInfo info = OfOwnSize<QuaylinkInfo>();
  Require(QuaylinkGetInfo(collection, &info) == QUAYLINK_OK, "an open collection tells of itself");
  Require((info.damaged == 1) == (std::strlen(info.damage) > 0), "damage is told in words");
  QuaylinkTrack track = OfOwnSize<QuaylinkTrack>();
  std::uint32_t lastId = 0;
  for (std::uint32_t i = 0; i < info.trackCount; ++i) {
    Require(QuaylinkGetTrack(collection, i, &track) == QUAYLINK_OK, "every track is given");
    Require(i == 0 || track.id > lastId, "tracks ascend");
    lastId = track.id;
    for (auto* field = &track.location; field <= &track.podcastFeed; ++field) {
      Require(IsUtf8(*field), "every string is UTF-8");
    }
  }
  QuaylinkPlaylist playlist = OfOwnSize<QuaylinkPlaylist>();
  for (std::uint32_t i = 0; i < info.playlistCount; ++i) {
    Require(QuaylinkGetPlaylist(collection, i, &playlist) == QUAYLINK_OK,
            "every playlist is given");
    Require(IsUtf8(playlist.name), "every name is UTF-8");
    Require(std::all_of(playlist.tracks, playlist.tracks + playlist.trackCount,
                        [&](std::uint32_t index) { return index < info.trackCount; }),
            "a playlist's tracks are there");
  }
  return info.trackCount;
}

// The number of tracks, or -1 when it is not opened.
std::int64_t Open(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> playCounts,
                  QuaylinkReading reading) {
  QuaylinkOpenOptions options = OfOwnSize<QuaylinkOpenOptions>();
  options.reading = reading;
  options.playCountsBytes = playCounts.data();
  options.playCountsSize = playCounts.size();
  QuaylinkError error = OfOwnSize<QuaylinkError>();
  QuaylinkCollection* collection = nullptr;
  const QuaylinkResult result =
      QuaylinkOpenMemory(bytes.data(), bytes.size(), &options, &collection, &error);
  Require((result == QUAYLINK_OK) == (collection != nullptr) && error.code == result,
          "the result is told everywhere");
  if (!collection) return -1;
  const std::uint32_t count = AskAll(collection);
  QuaylinkClose(collection);
  return count;
}

void OpenInBothWays(std::span<const std::uint8_t> input) {
  if (input.size() < 2) return;
  const std::size_t wanted = input[0] | std::size_t{input[1]} << 8;
  input = input.subspan(2);
  const auto playCounts = input.last(std::min(wanted, input.size()));
  const auto bytes = input.first(input.size() - playCounts.size());

  Open(bytes, playCounts, QUAYLINK_TOLERANT);
  const std::int64_t strict = Open(bytes, {}, QUAYLINK_STRICT);
  if (bytes.size() > kCompressedFlagOffset && bytes[kCompressedFlagOffset] == 1) return;
  DatabaseChunk database;
  Reader reader(bytes);
  const bool accepted = database.Read(reader) >= 0;
  const DataSetChunk* tracks = accepted ? database.TrackDataSet() : nullptr;
  const std::int64_t expected = tracks ? static_cast<std::int64_t>(tracks->trackList.tracks.size())
                                : accepted ? 0
                                           : -1;
  Require(strict == expected, "strict reading gives what the chunks do");
}

}  // namespace
}  // namespace quaylink::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quaylink::fuzz::OpenInBothWays({data, size});
  return 0;
}
