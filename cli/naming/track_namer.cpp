#include "cli/naming/track_namer.h"

#include <string_view>
#include <utility>

#include "cli/naming/file_kinds.h"
#include "cli/naming/safe_names.h"

namespace quaylink::cli {

TrackNamer::TrackNamer(NamePattern pattern, const std::vector<Track>& tracks,
                       const NameLimits& limits)
    : pattern_(std::move(pattern)), numbers_(tracks), limits_(limits) {}

std::string TrackNamer::WantedPath(const Track& track) const {
  std::vector<std::string> components = pattern_.ComponentsFor(track, numbers_);
  std::string& name = components.back();
  // Neither a sentence's end nor a space looks well before an extension.
  name.erase(name.find_last_not_of(". ") + 1);
  if (name.empty()) name += '_';
  name += ExtensionOf(FileNameOf(track.location ? track.location : ""));
  return SafePath(components, FileKinds::kMedia, limits_);
}

}  // namespace quaylink::cli
