#include "cli/export/plan.h"

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

#include "cli/base/program.h"
#include "cli/system/system.h"
#include "cli/text/folding.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

// A name that no other track has. What stands there may be the track's copy.
void GiveName(PlannedTrack& planned, TakenNames& names, Destination& destination) {
  for (int i = 0; i < kMostNames; ++i) {
    planned.name = names.TakeFree(planned.wanted);
    const Entry entry = destination.Look(planned.name);
    planned.action = Action::kCopy;
    if (entry.kind == EntryKind::kMissing) return;
    planned.action = Action::kCheck;
    // Only a file of the same size can be the track's.
    if (entry.kind == EntryKind::kFile && entry.facts.size == planned.facts.size) return;
  }
}

class Planner {
 public:
  Planner(Plan& plan, Source& source, Destination& destination, const Journal& journal,
          bool isKnown)
      : plan_(plan),
        source_(source),
        destination_(destination),
        journal_(journal),
        isKnown_(isKnown) {}

  void Make(const std::vector<WantedTrack>& tracks) {
    journal_.ForEach([this](const Record& record) { plan_.names.Take(record.name); });
    for (const WantedTrack& wanted : tracks) {
      if (InterruptRequested()) {
        throw Failure("interrupted before anything was copied", kInterrupted);
      }
      Add(wanted);
    }
    plan_.room += twice_;
    plan_.free = destination_.FreeBytes();
  }

 private:
  void Add(const WantedTrack& wanted) {
    PlannedTrack planned;
    planned.track = wanted.track;
    planned.title = NameOf(wanted.track);
    planned.item = wanted.item;
    planned.wanted = wanted.name;
    const std::optional<FileFacts> facts = FactsOf(planned);
    if (facts) {
      planned.facts = *facts;
      Decide(planned);
      if (!isKnown_) Doubt(planned);
    }
    if (planned.action != Action::kKeep && planned.action != Action::kNone) AddRoom(planned);
    plan_.tracks.push_back(std::move(planned));
  }

  // What is there already takes no more, but while it is fetched once again.
  void AddRoom(const PlannedTrack& planned) {
    const std::uint64_t whole = destination_.RoomFor(planned.facts.size);
    const std::uint64_t there =
        planned.action == Action::kCheck ? whole : destination_.RoomFor(planned.copy.size);
    plan_.bytes += planned.facts.size;
    plan_.room += whole - std::min(whole, there);
    if (planned.action != Action::kCopy) twice_ = std::max(twice_, whole);
  }

  std::optional<FileFacts> FactsOf(PlannedTrack& planned) {
    if (*planned.track.location == '\0') {
      planned.problem = NamesNoFile().problem;
      return std::nullopt;
    }
    std::optional<FileFacts> facts = source_.Look(planned.track);
    if (!facts) planned.problem = NoSuchFile(planned.track.location).problem;
    return facts;
  }

  void Decide(PlannedTrack& planned) {
    const std::string location = LocationOf(planned.track);
    const Record* record = Find(planned);
    const bool same = record && record->source == planned.facts && record->location == location;
    const Entry entry = record ? destination_.Look(record->name) : Entry();
    const bool untouched = entry.kind == EntryKind::kFile && entry.facts == record->copy;
    if (record && (untouched || entry.kind == EntryKind::kMissing || IsCut(entry, *record))) {
      planned.ours = true;
      planned.copy = entry.facts;
      planned.name = record->name;
      planned.action = !untouched
                           ? (entry.kind == EntryKind::kMissing ? Action::kCopy : Action::kCheck)
                       : !same           ? Action::kReplace
                       : record->durable ? Action::kKeep
                                         : Action::kCheck;
      Rename(planned, *record, entry.kind);
      return;
    }
    // Whatever stands there has been changed by somebody, and is left alone.
    GiveName(planned, plan_.names, destination_);
  }

  // Nothing is there already before its bytes are compared, and no copy is replaced.
  void Doubt(PlannedTrack& planned) {
    if (planned.action == Action::kKeep) planned.action = Action::kCheck;
    if (planned.action != Action::kReplace) return;
    planned.ours = false;
    planned.copy = {};
    planned.movesFrom.clear();
    GiveName(planned, plan_.names, destination_);
  }

  // What the journal knows of the track; corrects what it is known by.
  const Record* Find(PlannedTrack& planned) {
    const Record* record = journal_.Find(plan_.player, planned.item);
    if (!record || planned.track.persistentId != 0) return record;
    // Players use the names of files again: one of another size or time that goes by another name,
    // too, is another track's.
    if (record->source == planned.facts || record->wanted == planned.wanted) return record;
    planned.item +=
        ' ' + std::to_string(planned.facts.size) + ' ' + std::to_string(planned.facts.time);
    return journal_.Find(plan_.player, planned.item);
  }

  // A copy that lost its end, or only its time. What was made longer, or was changed at its full
  // length, is somebody's work; whether what is left is a copy's beginning, the bytes will tell.
  static bool IsCut(const Entry& entry, const Record& record) {
    return entry.kind == EntryKind::kFile && entry.facts.size <= record.copy.size;
  }

  // A track that was retagged takes its copy along to its new name.
  void Rename(PlannedTrack& planned, const Record& record, EntryKind kind) {
    if (LowerCase(record.wanted) == LowerCase(planned.wanted)) return;
    if (kind == EntryKind::kMissing) {
      // It may have been renamed by a run that was killed before it could say so.
      planned.ours = false;
      GiveName(planned, plan_.names, destination_);
      return;
    }
    planned.name = FreeName(planned.wanted, plan_.names, destination_);
    planned.movesFrom = record.name;
  }

  Plan& plan_;
  Source& source_;
  Destination& destination_;
  const Journal& journal_;
  bool isKnown_;
  std::uint64_t twice_ = 0;  // the largest file of those that are fetched once again, one by one
};

}  // namespace

std::size_t Plan::Count(Action action) const {
  return static_cast<std::size_t>(std::ranges::count(tracks, action, &PlannedTrack::action));
}

std::size_t Plan::MoveCount() const {
  return static_cast<std::size_t>(std::ranges::count_if(
      tracks, [](const PlannedTrack& track) { return !track.movesFrom.empty(); }));
}

std::size_t Plan::KeepCount() const {
  return static_cast<std::size_t>(std::ranges::count_if(tracks, [](const PlannedTrack& track) {
    return track.action == Action::kKeep && track.movesFrom.empty();
  }));
}

std::string PlayerOf(std::span<const QuaylinkPlaylist> playlists,
                     const std::vector<WantedTrack>& tracks, const Journal& journal) {
  const auto master =
      std::ranges::find(playlists, std::uint32_t{QUAYLINK_MASTER}, &QuaylinkPlaylist::kind);
  if (master != playlists.end()) {
    const std::string id = PersistentIdString(master->persistentId);
    return master->persistentId != 0 ? id : id + ' ' + master->name;
  }
  std::map<std::string, std::size_t> known;
  journal.ForEach([&known](const Record& record) { known[record.player]; });
  for (auto& [player, count] : known) {
    for (const WantedTrack& wanted : tracks) {
      const Record* record = journal.Find(player, wanted.item);
      if (record && record->location == LocationOf(wanted.track)) ++count;
    }
  }
  const auto best = std::ranges::max_element(
      known, {}, [](const auto& playerAndCount) { return playerAndCount.second; });
  return best != known.end() && best->second > 0 ? best->first : PersistentIdString(0);
}

std::string LocationOf(const Track& track) {
  return ItemOf(DevicePathOf(track.location));
}

std::vector<std::string> ItemsOf(const std::vector<Track>& tracks) {
  std::unordered_map<std::uint64_t, std::size_t> ids;
  for (const Track& track : tracks) ++ids[track.persistentId];
  DistinctItems distinct;
  std::vector<std::string> items;
  for (const Track& track : tracks) {
    std::string item = PersistentIdString(track.persistentId);
    if (track.persistentId == 0) {
      item = LocationOf(track);
    } else if (ids[track.persistentId] > 1) {
      item += ' ' + LocationOf(track);
    }
    items.push_back(distinct.Add(std::move(item)));
  }
  return items;
}

std::string ItemOf(std::string_view devicePath) {
  if (MakeValid(devicePath) == devicePath) return std::string(devicePath);
  // The journal holds characters only: each byte becomes the one of its number, and no path of
  // characters begins like that.
  std::u32string characters = U"bytes ";
  for (const char byte : devicePath) characters += static_cast<unsigned char>(byte);
  return Encode(characters);
}

Plan MakePlan(const std::string& player, const std::vector<WantedTrack>& tracks, Source& source,
              Destination& destination, const Journal& journal, bool isKnown) {
  Plan plan;
  plan.player = player;
  plan.tracks.reserve(tracks.size());
  Planner(plan, source, destination, journal, isKnown).Make(tracks);
  return plan;
}

std::string FreeName(const std::string& wanted, TakenNames& names, Destination& destination) {
  std::string name;
  for (int i = 0; i < kMostNames; ++i) {
    name = names.TakeFree(wanted);
    if (destination.Look(name).kind == EntryKind::kMissing) break;
  }
  return name;
}

}  // namespace quaylink::cli
