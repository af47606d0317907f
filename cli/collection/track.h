// One track as the program shows it.
#pragma once

#include <quaylink/collection.h>

#include <cstdint>
#include <string>

namespace quaylink::cli {

// The strings belong to the collection that the track is of. A location of a player's drive begins
// with the drive's letter.
struct Track : QuaylinkTrack {
  Track() : QuaylinkTrack() {}

  std::uint32_t index = 0;  // in the collection
};

// How messages call a track: "Artist - Title", or what there is of it.
std::string NameOf(const Track& track);

}  // namespace quaylink::cli
