// Which tracks a command works on, and in which order it shows them.
#pragma once

#include <string>
#include <vector>

#include "cli/track.h"

namespace quaylink::cli {

// Strings to be found, without regard to case; an empty one is found everywhere.
struct TrackFilter {
  std::string artist;
  std::string album;
  std::string match;  // in the artist, the album or the title
};

bool Matches(const TrackFilter& filter, const Track& track);

std::vector<Track> Select(const TrackFilter& filter, const std::vector<Track>& tracks);

enum class SortKey { kIndex, kArtist, kAlbum, kTitle, kLocation };

// Sorts without regard to case. Tracks of one artist are ordered by album, then as in the library.
void Sort(std::vector<Track>& tracks, SortKey key, bool reverse);

}  // namespace quaylink::cli
