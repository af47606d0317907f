// The tracks and playlists of one database.
#pragma once

#include <quaylink/collection.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/collection/track.h"

namespace quaylink::cli {

// Reads tolerantly: whatever is whole in a damaged database is there. What is no database at all is
// a Failure, whose message begins with the name given.
class Collection {
 public:
  // A file or pipe, with the play counts beside it.
  static Collection OfFile(const std::string& path, const std::string& name);
  static Collection OfStandardInput();
  // Of a device: the bytes of its database and, unless empty, of its play counts.
  static Collection OfBytes(std::string_view database, std::string_view playCounts,
                            const std::string& name);

  const std::vector<Track>& Tracks() const { return tracks_; }
  const std::vector<QuaylinkPlaylist>& Playlists() const { return playlists_; }
  // How messages call it.
  const std::string& Name() const { return name_; }
  // In one line; empty when the database is whole.
  std::string Problem() const;
  // Where that is and of what kind, for those who want to know more.
  std::string ProblemInDetail() const;
  bool LacksPlayCounts() const { return info_.playCounts == QUAYLINK_PLAY_COUNTS_LEFT; }

  // From now on locations are paths of that drive.
  void PutOnDrive(char letter);

 private:
  struct Close {
    void operator()(QuaylinkCollection* collection) const { QuaylinkClose(collection); }
  };
  using Handle = std::unique_ptr<QuaylinkCollection, Close>;

  Collection(Handle handle, std::string name);
  template <class Open>
  static Collection Opened(const std::string& name, Open open);

  Handle handle_;
  std::string name_;
  QuaylinkInfo info_ = {};
  std::vector<Track> tracks_;
  std::vector<QuaylinkPlaylist> playlists_;
  std::vector<std::string> locations_;  // of tracks on a drive
};

}  // namespace quaylink::cli
