// The playlists stand in a database twice: in the data set of type 2, and, grouped by show where
// they are of podcasts, in that of type 3, which older players do not have.
#pragma once

#include <cstdint>

#include "collection/playlist_table.h"

namespace quaylink {

class PlaylistChoice {
 public:
  // The table for the playlists of a data set that is about to be read, null when they are not
  // wanted.
  PlaylistTable* Begin(std::uint32_t dataSetType) {
    open_ = dataSetType == 3 ? &byShow_ : dataSetType == 2 && !byShow_.whole ? &plain_ : nullptr;
    if (open_ && open_->met) open_ = nullptr;
    if (!open_) return nullptr;
    open_->met = true;
    return &open_->playlists;
  }
  // Tells whether all of them could be read.
  void End(bool whole) {
    if (open_) open_->whole = whole;
  }

  // Those to be given: of type 3, unless more could be saved of the others.
  PlaylistTable Take() {
    const bool takeByShow =
        byShow_.whole || (byShow_.met && byShow_.playlists.size() >= plain_.playlists.size());
    return std::move(takeByShow ? byShow_.playlists : plain_.playlists);
  }

 private:
  struct Set {
    PlaylistTable playlists;
    bool met = false;
    bool whole = false;
  };

  Set plain_;
  Set byShow_;
  Set* open_ = nullptr;
};

}  // namespace quaylink
