#include "cli/list_options.h"

#include <charconv>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "cli/system/typed_path.h"

namespace quaylink::cli {
namespace {

constexpr char kFilters[] = "Which tracks (each may be repeated; all must hold)";

std::optional<std::uint32_t> NumberIn(std::string_view string) {
  std::uint32_t number = 0;
  const char* end = string.data() + string.size();
  const auto [stop, error] = std::from_chars(string.data(), end, number);
  const bool padded = string.size() > 1 && string[0] == '0';
  if (error != std::errc() || stop != end || padded) return std::nullopt;
  return number;
}

// An option that may be given several times, once with each value.
void AddRepeated(CLI::App& command, const std::string& name, const std::string& typeName,
                 const std::string& description, std::function<void(const std::string&)> take) {
  const auto takeAll = [take = std::move(take)](const std::vector<std::string>& values) {
    for (const std::string& value : values) take(value);
  };
  command.add_option_function<std::vector<std::string>>(name, takeAll, description)
      ->allow_extra_args(false)
      ->type_name(typeName)
      ->group(kFilters);
}

const Property& PropertyCalled(const std::string& option, const std::string& key) {
  const Property* property = FindProperty(key);
  if (!property) {
    throw CLI::ValidationError(option, "'" + key + "' is no property of tracks");
  }
  return *property;
}

std::pair<std::uint32_t, std::uint32_t> YearsIn(const std::string& string) {
  const std::size_t dash = string.find('-');
  const auto first = NumberIn(std::string_view(string).substr(0, dash));
  const auto last =
      dash == std::string::npos ? first : NumberIn(std::string_view(string).substr(dash + 1));
  if (!first || !last) {
    throw CLI::ValidationError("--year", "'" + string + "' is no year such as 1999 or 1990-1999");
  }
  return {*first, *last};
}

std::uint32_t MediaTypeCalled(const std::string& name) {
  constexpr std::pair<std::string_view, std::uint32_t> kNames[] = {
      {"audio", QUAYLINK_MEDIA_AUDIO},
      {"video", QUAYLINK_MEDIA_VIDEO},
      {"podcast", QUAYLINK_MEDIA_PODCAST},
      {"audiobook", QUAYLINK_MEDIA_AUDIOBOOK},
      {"music-video", QUAYLINK_MEDIA_MUSIC_VIDEO},
      {"television", QUAYLINK_MEDIA_TELEVISION}};
  for (const auto& [known, mediaType] : kNames) {
    if (known == name) return mediaType;
  }
  throw CLI::ValidationError("--kind", "'" + name +
                                           "' is none of audio, video, podcast, audiobook, "
                                           "music-video and television");
}

}  // namespace

std::string RefuseEmpty(const std::string& string) {
  return string.empty() ? "must not be empty" : "";
}

CLI::Validator ReadPath() {
  return {[](std::string& path) { return path.empty() ? RefuseEmpty(path) : ReadTypedPath(path); },
          ""};
}

CLI::Validator ReadDevicePath() {
  // The names on a phone may hold anything.
  return {
      [](std::string& path) { return path.starts_with('/') ? std::string() : ReadPath()(path); },
      ""};
}

std::string RefuseMalformedNumber(const std::string& string) {
  return NumberIn(string) ? "" : "'" + string + "' is no number of a track";
}

void AddFilterOptions(CLI::App& command, TrackFilter& filter) {
  for (const std::string key : {"artist", "album", "genre"}) {
    AddRepeated(command, "--" + key, "TEXT", "Only tracks whose " + key + " holds TEXT",
                [&filter, key](const std::string& string) {
                  filter.strings.emplace_back(FindProperty(key), string);
                });
  }
  AddRepeated(command, "--match", "TEXT", "Only tracks whose artist, album or title holds TEXT",
              [&filter](const std::string& string) { filter.matches.push_back(string); });
  AddRepeated(command, "--year", "YEAR", "Only tracks of that year, or of years such as 1990-1999",
              [&filter](const std::string& string) { filter.years.push_back(YearsIn(string)); });
  AddRepeated(command, "--playlist", "NAME", "Only tracks of the playlist of that name",
              [&filter](const std::string& string) { filter.playlists.push_back(string); });
  AddRepeated(command, "--kind", "KIND",
              "Only audio, video, podcast, audiobook, music-video or television",
              [&filter](const std::string& string) {
                filter.mediaTypes.push_back(MediaTypeCalled(string));
              });
}

void AddSortOptions(CLI::App& command, const Property*& sort, bool& reverse) {
  command
      .add_option_function<std::string>(
          "--sort", [&sort](const std::string& key) { sort = &PropertyCalled("--sort", key); },
          "Order by a property; index when not given")
      ->type_name("KEY");
  command.add_flag("--reverse", reverse, "Turn the order round");
}

void AddColumnsOption(CLI::App& command, std::vector<const Property*>& columns) {
  const auto take = [&columns](const std::vector<std::string>& keys) {
    for (const std::string& key : keys) columns.push_back(&PropertyCalled("--columns", key));
  };
  command
      .add_option_function<std::vector<std::string>>("--columns", take,
                                                     "Show more properties in the table")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("KEY,...");
}

}  // namespace quaylink::cli
