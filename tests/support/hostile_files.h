// Broken and wicked databases: each costs its reader as much as a file of its size can in some way.
#pragma once

#include <string>
#include <vector>

#include "support/database_bytes.h"

namespace quaylink::test {

struct HostileFile {
  const char* name;
  std::string bytes;  // about the size asked for
};

inline std::string Repeat(std::size_t count, const std::string& piece) {
  std::string bytes;
  bytes.reserve(count * piece.size());
  for (std::size_t i = 0; i < count; ++i) bytes += piece;
  return bytes;
}

// The bytes with another length in the place of the one at that offset.
inline std::string Lengthened(std::string bytes, std::size_t offset, std::uint32_t length) {
  return bytes.replace(offset, 4, U32(length));
}

// A file of `size` bytes that are copies of one piece, which `wrap` makes a database of.
template <class Wrap>
std::string Filled(std::size_t size, const std::string& piece, Wrap wrap) {
  const std::size_t count = size / piece.size();
  return wrap(static_cast<std::uint32_t>(count), Repeat(count, piece));
}

inline std::vector<HostileFile> HostileFiles(std::size_t size) {
  constexpr std::uint32_t kEndless = 0xFFFFFFFF;
  const auto dataSet = [](std::uint32_t type, const std::string& list) {
    return ChunkBytes("mhsd", 16, U32(type), list);
  };
  const auto inDatabase = [](std::uint32_t count, const std::string& dataSets) {
    return Database(count, dataSets, 24);
  };
  const auto inTracks = [&](std::uint32_t count, const std::string& tracks) {
    return inDatabase(1, dataSet(1, ListBytes("mhlt", count, tracks, 12)));
  };
  const auto inTrack = [&](std::uint32_t count, const std::string& objects) {
    return inTracks(1, Track(1, count, objects, 156));
  };
  const auto inAlbums = [&](std::uint32_t count, const std::string& albums) {
    return inDatabase(1, dataSet(4, ListBytes("mhla", count, albums, 12)));
  };
  const auto inPlaylists = [&](std::uint32_t count, const std::string& playlists) {
    return inDatabase(1, dataSet(2, ListBytes("mhlp", count, playlists, 12)));
  };
  const auto playlist = [](std::uint32_t objects, std::uint32_t items, const std::string& body) {
    return ChunkBytes("mhyp", 20, U32(objects) + U32(items), body);
  };
  const auto inPlaylist = [&](std::uint32_t count, const std::string& items) {
    return inPlaylists(1, playlist(0, count, items));
  };
  const auto item = [](std::uint32_t count, const std::string& objects) {
    return ChunkBytes("mhip", 16, U32(count), objects);
  };
  const auto endless = [](auto wrap) {
    return [wrap](std::uint32_t, const std::string& bytes) { return wrap(kEndless, bytes); };
  };

  const std::string object = RawObject(0, "");
  std::vector<HostileFile> files = {
      {"data sets of no tracks",
       Filled(size, dataSet(1, ListBytes("mhlt", 0, "", 12)), inDatabase)},
      {"data sets of no albums",
       Filled(size, dataSet(4, ListBytes("mhla", 0, "", 12)), inDatabase)},
      {"data sets of no playlists",
       Filled(size, dataSet(2, ListBytes("mhlp", 0, "", 12)), inDatabase)},
      {"data sets of one playlist",
       Filled(size, dataSet(2, ListBytes("mhlp", 1, playlist(0, 0, ""), 12)), inDatabase)},
      {"data sets without end",
       Filled(size, dataSet(4, ListBytes("mhla", 0, "", 12)), endless(inDatabase))},
      {"tracks of one id", Filled(size, Track(7, 0, "", 156), inTracks)},
      {"tracks without end", Filled(size, Track(7, kEndless, "", 156), endless(inTracks))},
      {"tracks of a title", Filled(size, Track(7, 1, TextObject(1, u"T"), 156), inTracks)},
      {"data objects without bodies", Filled(size, object, inTrack)},
      {"data objects without end", Filled(size, object, endless(inTrack))},
      {"empty strings", Filled(size, TextObject(2, u""), inTrack)},
      {"titles of a letter", Filled(size, TextObject(1, u"x"), inTrack)},
      {"titles that do not fit",
       Filled(size, TextObject(1, std::u16string(300, u'\u7D42')), inTrack)},
      {"a title of the whole file", inTrack(1, TextObject(1, std::u16string(size / 2, u'\u7D42')))},
      {"empty 8-bit strings", Filled(size, RawObject(15, ""), inTrack)},
      {"empty index lists", Filled(size, RawObject(52, Zeros(48)), inTrack)},
      {"empty jump tables", Filled(size, RawObject(53, Zeros(16)), inTrack)},
      {"an index list of the whole file",
       inTrack(1, RawObject(52, U32(0) + U32(kEndless) + Zeros(size)))},
      {"a jump table of the whole file",
       inTrack(1, RawObject(53, U32(0) + U32(kEndless) + Zeros(size)))},
      {"a body of the whole file", inTrack(1, RawObject(100, Zeros(size)))},
      {"a string of 4 GB", inTrack(1, RawObject(1, U32(1) + U32(kEndless) + Zeros(size)))},
      {"a header of the whole file",
       inTracks(1, ChunkBytes("mhit", static_cast<std::uint32_t>(size), "", ""))},
      {"albums", Filled(size, ChunkBytes("mhia", 16, U32(0), ""), inAlbums)},
      {"albums of an object", Filled(size, ChunkBytes("mhia", 16, U32(1), object), inAlbums)},
      {"playlists", Filled(size, playlist(0, 0, ""), inPlaylists)},
      {"playlists of an object", Filled(size, playlist(1, 0, object), inPlaylists)},
      {"playlists of an item", Filled(size, playlist(0, 1, item(0, "")), inPlaylists)},
      {"playlist items", Filled(size, item(0, ""), inPlaylist)},
      {"playlist items of an object", Filled(size, item(1, object), inPlaylist)},
      {"playlist items of 33 objects", Filled(size, item(33, Repeat(33, object)), inPlaylist)},
      {"nothing that is there", Filled(size, "mhod", endless(inDatabase))},
      {"only zeros", Zeros(size)},
      {"tracks that say they are longer",
       Filled(size, Lengthened(Track(7, 1, object, 156), 8, 100'000), inTracks)},
      {"tracks that say they are shorter",
       Filled(size, Lengthened(Track(7, 3, object + object + object, 156), 8, 1), inTracks)},
      {"tracks of strings that say they are longer",
       Filled(size, Lengthened(Track(7, 1, TextObject(1, u"T"), 156), 184, 100'000), inTracks)},
      {"playlists that lack an item", Filled(size, playlist(0, 2, item(0, "")), inPlaylists)},
      {"tags of tracks", Filled(size, "mhit", inTracks)},
  };

  std::string tracks;
  std::uint32_t count = 0;
  for (; tracks.size() < size; ++count) tracks += Track(kEndless - count, 0, "", 156);
  files.push_back({"tracks by descending id", inTracks(count, tracks)});

  std::string headers;
  for (count = 0; headers.size() < size; ++count) {
    const std::uint32_t more = count % 600;
    headers += ChunkBytes("mhsd", 16 + more, U32(2),
                          ListBytes("mhlp", 1, ChunkBytes("mhyp", 20 + more, "", ""), 12 + more));
  }
  files.push_back({"headers of every length", inDatabase(count, headers)});
  return files;
}

}  // namespace quaylink::test
