// Which tracks a command works on, and in which order it shows them.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "cli/collection/collection.h"
#include "cli/collection/property.h"
#include "cli/collection/track.h"

namespace quaylink::cli {

// What tracks must be like, all at once. Strings are found wherever they stand in a property,
// without regard to case and accents; an empty one is found everywhere.
struct TrackFilter {
  std::vector<std::pair<const Property*, std::string>> strings;
  std::vector<std::string> matches;  // in the artist, the album or the title
  std::vector<std::pair<std::uint32_t, std::uint32_t>> years;  // the first and the last
  std::vector<std::uint32_t> mediaTypes;                       // bits QUAYLINK_MEDIA_...
  std::vector<std::string> playlists;                          // whole names
};

class TrackSelection {
 public:
  // Fails when the collection has no playlist of a name in the filter.
  TrackSelection(const TrackFilter& filter, const Collection& collection);

  bool Holds(const Track& track) const;
  // The collection's tracks that it holds.
  std::vector<Track> Tracks() const;

 private:
  const Collection& collection_;
  TrackFilter filter_;                        // its strings in the form that is searched
  std::vector<std::vector<bool>> playlists_;  // for each name, which tracks are in a list of it
};

// Sorts numbers by value and strings without regard to case and accents. The tracks of an artist
// are ordered by album, those of an album by their numbers, and what is equal then as in the
// collection.
void Sort(std::vector<Track>& tracks, const Property& by);

}  // namespace quaylink::cli
