#include "host/track_options.h"

#include <map>
#include <string>

namespace quaylink::host {

void AddFilterOptions(CLI::App& command, TrackFilter& filter) {
  constexpr const char* kGroup = "Which tracks";
  command.add_option("--artist", filter.artist, "Only tracks whose artist holds TEXT")
      ->type_name("TEXT")
      ->group(kGroup);
  command.add_option("--album", filter.album, "Only tracks whose album holds TEXT")
      ->type_name("TEXT")
      ->group(kGroup);
  command
      .add_option("--match", filter.match, "Only tracks whose artist, album or title holds TEXT")
      ->type_name("TEXT")
      ->group(kGroup);
}

void AddSortOptions(CLI::App& command, SortKey& key, bool& reverse) {
  const auto parse = [&key](const std::string& text) {
    static const std::map<std::string, SortKey> kKeys = {{"index", SortKey::kIndex},
                                                         {"artist", SortKey::kArtist},
                                                         {"album", SortKey::kAlbum},
                                                         {"title", SortKey::kTitle},
                                                         {"location", SortKey::kLocation}};
    const auto found = kKeys.find(text);
    if (found == kKeys.end()) {
      throw CLI::ValidationError(
          "--sort", "'" + text + "' is none of index, artist, album, title and location");
    }
    key = found->second;
  };
  command
      .add_option_function<std::string>("--sort", parse,
                                        "Order by index, artist, album, title or location")
      ->type_name("KEY");
  command.add_flag("--reverse", reverse, "Turn the order round");
}

}  // namespace quaylink::host
