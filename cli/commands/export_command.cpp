#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <stdexcept>
#include <unordered_set>

#include "cli/base/paths.h"
#include "cli/commands/commands.h"
#include "cli/commands/export_steps.h"
#include "cli/export/destination.h"
#include "cli/export/journal.h"
#include "cli/export/plan.h"
#include "cli/export/playlist_files.h"
#include "cli/naming/safe_names.h"
#include "cli/naming/track_namer.h"
#include "cli/source/device_source.h"
#include "cli/source/folder_source.h"
#include "cli/source/reading.h"
#include "cli/text/folding.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

NamePattern PatternIn(const ExportOptions& options) {
  try {
    return NamePattern(options.pattern);
  } catch (const std::invalid_argument& error) {
    throw Failure("--name " + options.pattern + ": " + error.what(), kUsage);
  }
}

// What is to be exported: tracks of the collection, and files that it does not name.
struct Selection {
  std::optional<Collection> collection;
  std::string problem;             // of the collection
  std::vector<std::string> items;  // what the journal knows each of its tracks by
  std::vector<WantedTrack> tracks;
  std::deque<std::string> locations;  // of the files
  std::size_t unnamed = 0;            // files that stay behind
};

class Selector {
 public:
  Selector(const Program& program, const ExportOptions& options, Source& source,
           const NameLimits& limits)
      : program_(program), options_(options), source_(source), limits_(limits) {}

  Selection Make(const NamePattern& pattern) {
    ReadCollection();
    if (selection_.collection) AddTracks(pattern);
    AddUnnamed();
    return std::move(selection_);
  }

 private:
  void ReadCollection() {
    try {
      selection_.collection = source_.ReadCollection();
      TellProblem(program_, *selection_.collection);
      selection_.problem = selection_.collection->Problem();
    } catch (const Failure& failure) {
      if (!options_.rescue) throw;
      selection_.problem = failure.what();
      program_.Complain(selection_.problem);
    }
  }

  // What names are like depends on all tracks, so that a filter does not change any.
  void AddTracks(const NamePattern& pattern) {
    const std::vector<Track>& tracks = selection_.collection->Tracks();
    const TrackSelection chosen(options_.filter, *selection_.collection);
    const TrackNamer namer(pattern, tracks, limits_);
    selection_.items = ItemsOf(tracks);
    for (const Track& track : tracks) {
      if (!chosen.Holds(track)) continue;
      selection_.tracks.push_back({track, selection_.items[track.index], namer.WantedPath(track)});
    }
  }

  void AddUnnamed() {
    std::unordered_set<std::string> named;
    if (selection_.collection) {
      for (const Track& track : selection_.collection->Tracks()) {
        named.insert(LowerCase(DevicePathOf(track.location)));
      }
    }
    for (const Source::MusicFile& file : MusicFiles()) {
      const std::string path = DevicePathOf(file.location);
      if (named.contains(LowerCase(path))) continue;
      if (!options_.rescue) {
        ++selection_.unnamed;
        continue;
      }
      Track track;
      track.title = track.artist = track.album = "";
      track.location = selection_.locations.emplace_back(file.location).c_str();
      track.index = static_cast<std::uint32_t>(
          (selection_.collection ? selection_.collection->Tracks().size() : 0) +
          selection_.locations.size() - 1);
      selection_.tracks.push_back({track, ItemOf(path), RescuedName(path)});
    }
  }

  std::vector<Source::MusicFile> MusicFiles() {
    try {
      return source_.MusicFiles();
    } catch (const Failure&) {
      if (options_.rescue) throw;
      program_.Note("Whether the device has music files that its database lacks did not show.");
      return {};
    }
  }

  // "/iPod_Control/Music/F05/ABCD.mp3" becomes "Rescued/F05/ABCD.mp3".
  std::string RescuedName(std::string_view path) const {
    std::vector<std::string> components = {"Rescued"};
    std::size_t depth = 0;
    while (!path.empty()) {
      path.remove_prefix(1);
      const std::size_t end = std::min(path.find('/'), path.size());
      if (++depth > 2) components.emplace_back(path.substr(0, end));
      path.remove_prefix(end);
    }
    return SafePath(components, FileKinds::kMedia, limits_);
  }

  const Program& program_;
  const ExportOptions& options_;
  Source& source_;
  NameLimits limits_;
  Selection selection_;
};

// The device's own way to be found.
struct OpenSource {
  explicit OpenSource(const Program& program, const std::string& from) {
    if (!from.empty()) {
      source = std::make_unique<FolderSource>(PathOf(from));
      return;
    }
    library.emplace(program);
    library->RequireDevice();
    source = std::make_unique<DeviceSource>(*library);
  }

  std::optional<Library> library;
  std::unique_ptr<Source> source;
};

Plan PlanFor(const Selection& selection, Source& source, Destination& destination,
             const Journal& journal) {
  static const std::vector<QuaylinkPlaylist> kNone;
  const auto& playlists = selection.collection ? selection.collection->Playlists() : kNone;
  const bool isKnown = std::ranges::any_of(
      playlists, [](const QuaylinkPlaylist& list) { return list.kind == QUAYLINK_MASTER; });
  Plan plan = MakePlan(PlayerOf(playlists, selection.tracks, journal), selection.tracks, source,
                       destination, journal, isKnown);
  plan.unnamed = selection.unnamed;
  plan.problem = selection.problem;
  return plan;
}

// Names of all tracks' copies: those of this run, and of earlier ones.
std::vector<std::string> CopiesOf(const std::vector<std::string>& items, const Plan& plan,
                                  const std::vector<Fate>& fates, const Journal& journal,
                                  Destination& destination) {
  std::vector<std::string> copies(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Record* record = journal.Find(plan.player, items[i]);
    if (record && destination.Look(record->name).kind == EntryKind::kFile) copies[i] = record->name;
  }
  for (std::size_t i = 0; i < plan.tracks.size(); ++i) {
    const PlannedTrack& track = plan.tracks[i];
    const bool there = fates[i] != Fate::kFailed && fates[i] != Fate::kPending;
    if (there && track.track.index < copies.size()) copies[track.track.index] = track.name;
  }
  return copies;
}

}  // namespace

int Export(const Program& program, const ExportOptions& options) {
  const NamePattern pattern = PatternIn(options);
  const NameLimits limits = LimitsBelow(PathOf(options.destination));
  const OpenSource open(program, options.from);
  const Selection selection = Selector(program, options, *open.source, limits).Make(pattern);
  FolderJob job = {*open.source, PathOf(options.destination)};
  job.plan = [&](Destination& destination, const Journal& journal) {
    return PlanFor(selection, *open.source, destination, journal);
  };
  if (options.dryRun) return ShowFolderPlan(program, job);
  if (options.verify) return VerifyFolder(program, job);
  if (selection.collection && !options.noPlaylists) {
    job.complete = [&](const DoneTracks& done) {
      const PlaylistExport playlists = {
          *selection.collection,
          CopiesOf(selection.items, done.plan, done.fates, done.journal, done.destination),
          options.filter.playlists, limits};
      return ExportPlaylists(playlists, done.plan, done.destination, done.journal, done.flusher,
                             done.report);
    };
  }
  return FillFolder(program, job);
}

}  // namespace quaylink::cli
