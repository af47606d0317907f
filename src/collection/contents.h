// What reading a database gathers, and what it found wrong.
#pragma once

#include <cstdint>
#include <optional>

#include "collection/playlist_table.h"
#include "collection/string_pool.h"
#include "collection/track_table.h"

namespace quaylink {

// Something that is not as it should be, in two halves of a sentence for people.
struct Flaw {
  std::uint64_t offset;
  const char* subject;
  const char* trouble;
};

inline constexpr char kIsCut[] = "is cut off by the end of the database";
inline constexpr char kIsBroken[] = "is broken";
inline constexpr char kIsMissing[] = "is missing";
inline constexpr char kStatesOtherLength[] = "states another length than it has";

struct Contents {
  TrackTable tracks;  // in the order of the file
  // How many tracks the file says there are, and how many it was seen to have, whole or not.
  std::uint32_t statedTrackCount = 0;
  std::uint32_t seenTrackCount = 0;
  PlaylistTable playlists;
  StringPool playlistNames;
  std::optional<Flaw> flaw;  // the first one

  void NoteFlaw(std::uint64_t offset, const char* subject, const char* trouble) {
    if (!flaw) flaw = Flaw{offset, subject, trouble};
  }
};

}  // namespace quaylink
