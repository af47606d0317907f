// Track lists as they are printed: a table for people, comma-separated values for other programs.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/track.h"

namespace quaylink::cli {

// A table for a terminal of that many columns, its own columns aligned and long strings cut, though
// none to less than a few letters; 0 cuts nothing.
std::string TrackTable(const std::vector<Track>& tracks, std::size_t width);

// Comma-separated values with a line of names, quoted where a value needs it.
std::string TrackCsv(const std::vector<Track>& tracks);

}  // namespace quaylink::cli
