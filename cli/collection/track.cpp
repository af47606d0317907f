#include "cli/collection/track.h"

#include <string_view>

#include "cli/text/utf8.h"

namespace quaylink::cli {

std::string NameOf(const Track& track) {
  const std::string_view title = track.title;
  const std::string_view artist = track.artist;
  const std::string_view location = track.location;
  if (title.empty()) {
    return location.empty() ? "track " + std::to_string(track.index) : MakePrintable(location);
  }
  return MakePrintable(artist.empty() ? title : std::string(artist) + " - " + std::string(title));
}

}  // namespace quaylink::cli
