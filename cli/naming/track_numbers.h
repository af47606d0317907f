// The numbers of tracks as names have them: as wide as the largest beside them, so that names in
// alphabetical order are in the order of their numbers, too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cli/collection/property.h"
#include "cli/collection/track.h"

namespace quaylink::cli {

// Under whom a track's album is filed: the album's artist, or "Various Artists" for a compilation
// that names none, or the track's artist. Empty when nobody is known.
std::string_view FilingArtistOf(const Track& track);

class TrackNumbers {
 public:
  // Of the tracks of a whole collection.
  explicit TrackNumbers(const std::vector<Track>& tracks);

  // A property that is a number, with zeros in front where numbers are compared with others: the
  // numbers of track, disc, season and episode, and the index.
  std::string Padded(const Track& track, const Property& property) const;

  // The number on the album: "03", or "2-03" where that has several discs; empty when it has none.
  std::string OnAlbum(const Track& track) const;

 private:
  struct Album {
    std::uint32_t discs = 0;
    std::map<std::uint32_t, std::uint32_t> tracksOnDisc;
  };
  // Null for a track of another collection.
  const Album* AlbumOf(const Track& track) const;
  std::string DiscNumberOf(const Track& track, const Album* album) const;
  std::string TrackNumberOf(const Track& track, const Album* album) const;

  std::size_t trackCount_;
  std::unordered_map<std::string, Album> albums_;
};

}  // namespace quaylink::cli
