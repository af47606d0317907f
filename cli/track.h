// One track as the program shows it.
#pragma once

#include <cstdint>
#include <string>

namespace quaylink::cli {

struct Track {
  std::uint32_t index = 0;                     // of its record in the library
  std::string artist, title, album, location;  // valid UTF-8
  std::string source;                          // the location as the library gave it, byte for byte
};

// How messages call a track: "Artist - Title", or what there is of it.
std::string NameOf(const Track& track);

}  // namespace quaylink::cli
