// The playlists of a collection with their tracks.
#pragma once

#include <cstdint>
#include <vector>

#include "collection/track_table.h"
#include "quaylink/collection.h"

namespace quaylink {

class PlaylistTable {
 public:
  // A playlist is begun, gets its items in the order of the file, and is ended: kept, or forgotten.
  void Begin();
  void AddItem(std::uint32_t trackId, std::uint32_t position);
  void Keep(QuaylinkPlaylist playlist);
  void Forget();
  // The position of an item that has none.
  static constexpr std::uint32_t kNoPosition = UINT32_MAX;

  // Puts the indexes of the tracks in the place of their ids, and leaves out ids that no track has.
  void Resolve(const TrackTable& tracks);

  std::uint32_t size() const { return static_cast<std::uint32_t>(playlists_.size()); }
  // Once they are resolved.
  const QuaylinkPlaylist& operator[](std::size_t index) const { return playlists_[index]; }

 private:
  struct Item {
    std::uint32_t trackId;
    std::uint32_t position;
  };

  std::vector<QuaylinkPlaylist> playlists_;
  std::vector<Item> items_;            // of the playlist that was begun
  std::vector<std::uint32_t> tracks_;  // of all playlists, one after another
};

}  // namespace quaylink
