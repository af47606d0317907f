// What an export does with each track, and why: a plain value, which a dry run shows and a real run
// carries out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/collection/track.h"
#include "cli/export/destination.h"
#include "cli/export/journal.h"
#include "cli/naming/taken_names.h"
#include "cli/source/source.h"

namespace quaylink::cli {

enum class Action {
  kKeep,     // its copy is there
  kCopy,     // it has none
  kReplace,  // it has one, of the file that was on the device before
  kCheck,    // a file stands there that may be its copy: its bytes tell
  kNone      // there is nothing to copy
};

struct PlannedTrack {
  Track track;
  std::string title;  // how messages call it
  std::string item;   // what the journal knows it by
  Action action = Action::kNone;
  std::string wanted;     // the name that its copy should have, "/" between folders
  std::string name;       // the one that it gets, or has
  std::string movesFrom;  // the name that its copy has had until now; empty when that stays
  FileFacts copy;         // of what stands there as its copy
  FileFacts facts;        // of its file on the device
  bool ours = false;      // what stands there is this track's earlier copy, unless it was changed
  std::string problem;    // why there is nothing to copy
};

struct Plan {
  std::string player;  // what the journal knows the player by
  std::vector<PlannedTrack> tracks;
  TakenNames names;         // every name that must not be given any more
  std::uint64_t bytes = 0;  // of the files to be fetched
  std::uint64_t room = 0;   // that they take on the disk
  std::uint64_t free = 0;   // what there is
  bool knowsSizes = true;   // else bytes and room say nothing: the device does not tell any
  std::size_t unnamed = 0;  // music files that the database does not name, and that stay behind
  std::string problem;      // of the database; empty when it is sound

  bool Fits() const { return room <= free; }
  std::size_t Count(Action action) const;
  std::size_t MoveCount() const;
  // Tracks whose copies are there, and stay where they are.
  std::size_t KeepCount() const;
};

// A track that is to be exported, what the journal knows it by, and the name that its copy should
// have.
struct WantedTrack {
  Track track;
  std::string item;
  std::string name;
};

// What a player is known by: the persistent id of its master playlist, and where that has none its
// name. Where there is no such list, because the database is damaged, the player of which the
// journal knows most of the tracks.
std::string PlayerOf(std::span<const QuaylinkPlaylist> playlists,
                     const std::vector<WantedTrack>& tracks, const Journal& journal);

// What the journal knows tracks by: their persistent ids where they have any, else their files, and
// a number where that is not theirs alone. Depends on all tracks of a player, so that a filter does
// not change any.
std::vector<std::string> ItemsOf(const std::vector<Track>& tracks);
// What it knows a file of the device by.
std::string ItemOf(std::string_view devicePath);
std::string LocationOf(const Track& track);

// Where it is not known for sure that the player is the one whose copies the journal knows, nothing
// is there already until its bytes are compared, and no copy is replaced. Throws a Failure when it
// is interrupted.
Plan MakePlan(const std::string& player, const std::vector<WantedTrack>& tracks, Source& source,
              Destination& destination, const Journal& journal, bool isKnown = true);

// A free name for a file that should have one of that name; nothing stands there yet, as far as the
// folder tells.
std::string FreeName(const std::string& wanted, TakenNames& names, Destination& destination);

}  // namespace quaylink::cli
