// Builds databases with the library's own chunks and writer, from a description in plain words.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "itunesdb/database.h"

namespace quaylink::samples {

struct StringObject {
  std::uint32_t objectType;
  std::u16string string;
};

struct Track {
  std::uint32_t id;
  std::vector<StringObject> strings;
  TrackItemHeader properties{};  // all but the id
};

struct Album {
  std::u16string title;
  std::u16string artist;
};

struct Playlist {
  std::u16string name;
  bool isMaster;
  std::vector<std::uint32_t> trackIds;
  bool isSmart = false;
  bool isPodcasts = false;
};

// What a player counted of one track since its database was written.
struct PlayCount {
  std::uint32_t plays = 0;
  std::uint32_t lastPlayed = 0;  // seconds since 1904
  std::uint32_t bookmarkMs = 0;
  std::uint32_t rating = 0;
  std::uint32_t skips = 0;
  std::uint32_t lastSkipped = 0;
};

struct Library {
  std::vector<Track> tracks;
  std::vector<Album> albums;
  std::vector<Playlist> playlists;
};

// Fills an empty database with the data sets that players write: albums, tracks, playlists twice
// over, and an empty list of the player's own menus.
void BuildDatabase(const Library& library, DatabaseChunk& database);

// The bytes of that database. Throws std::bad_alloc.
std::vector<std::uint8_t> WriteDatabase(const Library& library);

// The bytes of the file that a player writes beside its database. An entry takes 12 to 28 bytes, as
// on one kind of player or another.
std::vector<std::uint8_t> WritePlayCounts(const std::vector<PlayCount>& counts,
                                          std::uint32_t entryLength = 28);

// The bytes of the database as newer players keep it: all but its header is compressed.
std::vector<std::uint8_t> Compress(std::span<const std::uint8_t> database);

// The bytes of a database of one track, one album and one playlist that between them have data
// objects of every body.
std::vector<std::uint8_t> WriteDatabaseOfEveryKind();

// A library of made-up tracks with eight strings each, one album for ten tracks, and two playlists
// of all tracks.
Library MakeLargeLibrary(std::uint32_t trackCount);

}  // namespace quaylink::samples
