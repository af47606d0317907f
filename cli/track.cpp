#include "cli/track.h"

#include "cli/utf8.h"

namespace quaylink::cli {

std::string NameOf(const Track& track) {
  if (track.title.empty()) {
    return track.location.empty() ? "track " + std::to_string(track.index)
                                  : MakePrintable(track.location);
  }
  const std::string artist = track.artist.empty() ? "" : track.artist + " - ";
  return MakePrintable(artist + track.title);
}

}  // namespace quaylink::cli
