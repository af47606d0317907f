// Track lists as they are printed: a table for people, comma-separated values for other programs.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/collection/property.h"
#include "cli/collection/track.h"

namespace quaylink::cli {

// A table of number, artist, album, title and length, and of more properties where others are
// named, as wide as Table allows.
std::string TrackTable(const std::vector<Track>& tracks, const std::vector<const Property*>& others,
                       std::size_t width);

// Comma-separated values of all properties with a line of their names, quoted where a value needs
// it.
std::string TrackCsv(const std::vector<Track>& tracks);

}  // namespace quaylink::cli
