// The names of tracks' copies.
#pragma once

#include <string>
#include <vector>

#include "cli/collection/track.h"
#include "cli/naming/name_pattern.h"
#include "cli/naming/track_numbers.h"
#include "cli/system/system.h"

namespace quaylink::cli {

class TrackNamer {
 public:
  // The tracks are those of the whole collection; how wide numbers are depends on them.
  TrackNamer(NamePattern pattern, const std::vector<Track>& tracks, const NameLimits& limits);

  // The relative path that the track's copy should have, "/" between folders, with the extension of
  // the track's file. Another track may want the same: see TakenNames.
  std::string WantedPath(const Track& track) const;

 private:
  NamePattern pattern_;
  TrackNumbers numbers_;
  NameLimits limits_;
};

}  // namespace quaylink::cli
