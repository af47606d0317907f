// A collection as a host opens it, and asks it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quaylink/collection.h"

namespace quaylink::test {

template <class Struct>
Struct OfOwnSize() {
  Struct value{};
  value.structSize = sizeof(Struct);
  return value;
}

class OpenedCollection {
 public:
  explicit OpenedCollection(std::string_view bytes, QuaylinkReading reading = QUAYLINK_TOLERANT,
                            std::string_view playCounts = {}) {
    QuaylinkOpenOptions options = OfOwnSize<QuaylinkOpenOptions>();
    options.reading = reading;
    options.playCountsBytes = playCounts.data();
    options.playCountsSize = playCounts.size();
    result = QuaylinkOpenMemory(bytes.data(), bytes.size(), &options, &collection, &error);
    Ask();
  }
  static OpenedCollection OfFile(const std::string& path,
                                 QuaylinkPlayCounts playCounts = QUAYLINK_PLAY_COUNTS_BESIDE,
                                 const char* playCountsPath = nullptr) {
    OpenedCollection opened;
    QuaylinkOpenOptions options = OfOwnSize<QuaylinkOpenOptions>();
    options.playCounts = playCounts;
    options.playCountsPath = playCountsPath;
    opened.result = QuaylinkOpenFile(path.c_str(), &options, &opened.collection, &opened.error);
    opened.Ask();
    return opened;
  }
  static OpenedCollection OfStream(QuaylinkReadCallback read, void* context) {
    OpenedCollection opened;
    opened.result = QuaylinkOpenStream(read, context, nullptr, &opened.collection, &opened.error);
    opened.Ask();
    return opened;
  }
  OpenedCollection(OpenedCollection&& other) noexcept
      : collection(std::exchange(other.collection, nullptr)),
        result(other.result),
        error(other.error),
        info(other.info) {}
  OpenedCollection& operator=(OpenedCollection&&) = delete;
  ~OpenedCollection() { QuaylinkClose(collection); }

  QuaylinkTrack Track(std::uint32_t index) const {
    QuaylinkTrack track = OfOwnSize<QuaylinkTrack>();
    EXPECT_EQ(QuaylinkGetTrack(collection, index, &track), QUAYLINK_OK);
    return track;
  }
  QuaylinkPlaylist Playlist(std::uint32_t index) const {
    QuaylinkPlaylist playlist = OfOwnSize<QuaylinkPlaylist>();
    EXPECT_EQ(QuaylinkGetPlaylist(collection, index, &playlist), QUAYLINK_OK);
    return playlist;
  }
  // Everything that is told of a track, in one string.
  std::string AllOf(std::uint32_t index) const {
    const QuaylinkTrack track = Track(index);
    std::string all;
    for (auto* field = &track.location; field <= &track.podcastFeed; ++field) {
      all += std::string(*field) + '|';
    }
    for (auto* field = &track.trackNumber; field <= &track.released; ++field) {
      all += std::to_string(*field) + ' ';
    }
    return all + std::to_string(track.id) + ' ' + std::to_string(track.persistentId);
  }
  std::vector<std::string> Everything() const {
    std::vector<std::string> all;
    for (std::uint32_t i = 0; i < info.trackCount; ++i) all.push_back(AllOf(i));
    return all;
  }
  std::vector<std::uint32_t> TracksOf(std::uint32_t playlist) const {
    const QuaylinkPlaylist list = Playlist(playlist);
    return {list.tracks, list.tracks + list.trackCount};
  }

  QuaylinkCollection* collection = nullptr;
  QuaylinkResult result = QUAYLINK_OK;
  QuaylinkError error = OfOwnSize<QuaylinkError>();
  QuaylinkInfo info = OfOwnSize<QuaylinkInfo>();  // with zeros where nothing is open

 private:
  OpenedCollection() = default;

  void Ask() {
    EXPECT_EQ(result == QUAYLINK_OK, collection != nullptr);
    EXPECT_EQ(error.code, result);
    if (collection) {
      EXPECT_EQ(QuaylinkGetInfo(collection, &info), QUAYLINK_OK);
    }
  }
};

}  // namespace quaylink::test
