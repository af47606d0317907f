#include "cli/collection/track_selection.h"

#include <algorithm>
#include <string_view>

#include "cli/base/program.h"
#include "cli/text/folding.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

bool Contains(std::string_view string, const std::string& searched) {
  return SearchForm(string).find(searched) != std::string::npos;
}

bool Matches(const Track& track, const std::string& searched) {
  return Contains(track.artist, searched) || Contains(track.album, searched) ||
         Contains(track.title, searched);
}

// Databases of older players hold music only, and do not say so.
bool IsOfMedia(const Track& track, std::uint32_t mediaType) {
  if (track.mediaType == 0) return mediaType == QUAYLINK_MEDIA_AUDIO;
  return (track.mediaType & mediaType) != 0;
}

std::vector<bool> TracksInPlaylist(const Collection& collection, const std::string& name) {
  const std::string searched = SearchForm(name);
  std::vector<bool> members(collection.Tracks().size());
  bool found = false;
  for (const QuaylinkPlaylist& playlist : collection.Playlists()) {
    if (SearchForm(playlist.name) != searched) continue;
    found = true;
    for (std::uint32_t i = 0; i < playlist.trackCount; ++i) members[playlist.tracks[i]] = true;
  }
  if (!found) {
    throw Failure(collection.Name() + ": has no playlist \"" + MakePrintable(name) +
                  "\" (see 'quaylink playlists')");
  }
  return members;
}

struct SortKey {
  std::string string;
  std::uint64_t number;
  const Track* track;
};

SortKey KeyOf(const Track& track, const Property& by) {
  if (!by.IsString()) return {{}, NumberOf(track, by), &track};
  SortKey key = {SearchForm(StringOf(track, by)), 0, &track};
  const bool isArtist = by.key == "artist";
  // The separator sorts before every character of a name.
  if (isArtist) key.string += '\0' + SearchForm(track.album);
  if (isArtist || by.key == "album") {
    key.number = (std::uint64_t{track.discNumber} << 32u) + track.trackNumber;
  }
  return key;
}

}  // namespace

TrackSelection::TrackSelection(const TrackFilter& filter, const Collection& collection)
    : collection_(collection), filter_(filter) {
  for (auto& wanted : filter_.strings) wanted.second = SearchForm(wanted.second);
  for (std::string& match : filter_.matches) match = SearchForm(match);
  for (const std::string& name : filter_.playlists) {
    playlists_.push_back(TracksInPlaylist(collection, name));
  }
}

bool TrackSelection::Holds(const Track& track) const {
  using std::ranges::all_of;
  return all_of(playlists_, [&](const auto& members) { return members[track.index]; }) &&
         all_of(filter_.years,
                [&](const auto& years) {
                  return track.year >= years.first && track.year <= years.second;
                }) &&
         all_of(filter_.mediaTypes, [&](auto mediaType) { return IsOfMedia(track, mediaType); }) &&
         all_of(filter_.strings,
                [&](const auto& wanted) {
                  return Contains(StringOf(track, *wanted.first), wanted.second);
                }) &&
         all_of(filter_.matches, [&](const auto& match) { return Matches(track, match); });
}

std::vector<Track> TrackSelection::Tracks() const {
  std::vector<Track> selected;
  std::ranges::copy_if(collection_.Tracks(), std::back_inserter(selected),
                       [this](const Track& track) { return Holds(track); });
  return selected;
}

void Sort(std::vector<Track>& tracks, const Property& by) {
  std::vector<SortKey> keys;
  keys.reserve(tracks.size());
  for (const Track& track : tracks) keys.push_back(KeyOf(track, by));
  std::ranges::stable_sort(keys, [](const SortKey& left, const SortKey& right) {
    const int order = left.string.compare(right.string);
    return order != 0 ? order < 0 : left.number < right.number;
  });
  std::vector<Track> sorted;
  sorted.reserve(tracks.size());
  for (const SortKey& key : keys) sorted.push_back(*key.track);
  tracks = std::move(sorted);
}

}  // namespace quaylink::cli
