#include "collection/playlist_table.h"

#include <algorithm>

namespace quaylink {

void PlaylistTable::Begin() {
  items_.clear();
}

void PlaylistTable::AddItem(std::uint32_t trackId, std::uint32_t position) {
  items_.push_back({trackId, position});
}

void PlaylistTable::Keep(QuaylinkPlaylist playlist) {
  // Most stand in the order of their positions.
  if (!std::ranges::is_sorted(items_, {}, &Item::position)) {
    std::ranges::stable_sort(items_, {}, &Item::position);
  }
  for (const Item& item : items_) tracks_.push_back(item.trackId);
  playlist.trackCount = static_cast<std::uint32_t>(items_.size());
  playlists_.push_back(playlist);
}

void PlaylistTable::Forget() {
  items_ = {};
}

void PlaylistTable::Resolve(const TrackTable& tracks) {
  const std::uint32_t* next = tracks_.data();
  std::uint32_t* resolved = tracks_.data();
  std::uint32_t guess = 0;  // a list often goes on with the next track
  for (QuaylinkPlaylist& playlist : playlists_) {
    playlist.tracks = resolved;
    for (const std::uint32_t* const end = next + playlist.trackCount; next != end; ++next) {
      const auto index = tracks.IndexOf(*next, guess);
      if (!index) continue;
      *resolved++ = *index;
      guess = *index + 1;
    }
    playlist.trackCount = static_cast<std::uint32_t>(resolved - playlist.tracks);
  }
  items_ = {};
}

}  // namespace quaylink
