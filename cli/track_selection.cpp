#include "cli/track_selection.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/utf8.h"

namespace quaylink::cli {
namespace {

bool Contains(const std::string& string, const std::string& wanted) {
  return wanted.empty() || FoldCase(string).find(FoldCase(wanted)) != std::string::npos;
}

std::string KeyOf(const Track& track, SortKey key) {
  switch (key) {
    case SortKey::kArtist:
      // The separator sorts before every character of a name.
      return FoldCase(track.artist) + '\0' + FoldCase(track.album);
    case SortKey::kAlbum:
      return FoldCase(track.album);
    case SortKey::kTitle:
      return FoldCase(track.title);
    case SortKey::kLocation:
      return FoldCase(track.location);
    case SortKey::kIndex:
      break;
  }
  return {};
}

}  // namespace

bool Matches(const TrackFilter& filter, const Track& track) {
  return Contains(track.artist, filter.artist) && Contains(track.album, filter.album) &&
         (Contains(track.artist, filter.match) || Contains(track.album, filter.match) ||
          Contains(track.title, filter.match));
}

std::vector<Track> Select(const TrackFilter& filter, const std::vector<Track>& tracks) {
  std::vector<Track> selected;
  std::copy_if(tracks.begin(), tracks.end(), std::back_inserter(selected),
               [&](const Track& track) { return Matches(filter, track); });
  return selected;
}

void Sort(std::vector<Track>& tracks, SortKey key, bool reverse) {
  std::vector<std::pair<std::string, Track>> keyed;
  keyed.reserve(tracks.size());
  for (Track& track : tracks) keyed.emplace_back(KeyOf(track, key), std::move(track));
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& left, const auto& right) { return left.first < right.first; });
  if (reverse) std::reverse(keyed.begin(), keyed.end());
  std::transform(keyed.begin(), keyed.end(), tracks.begin(),
                 [](auto& entry) { return std::move(entry.second); });
}

}  // namespace quaylink::cli
