#include <vector>

#include "cli/commands.h"
#include "cli/json.h"
#include "cli/library.h"
#include "cli/paths.h"
#include "cli/system.h"
#include "cli/track_list.h"

namespace quaylink::cli {
namespace {

std::string Count(std::size_t shown, std::size_t all) {
  const std::string tracks = all == 1 ? " track" : " tracks";
  return (shown == all ? "" : std::to_string(shown) + " of ") + std::to_string(all) + tracks;
}

}  // namespace

int ListTracks(const Program& program, const TracksOptions& options) {
  Library library(program);
  Database all;
  if (options.file.empty()) {
    library.RequireDevice();
    all = library.ReadDeviceDatabase();
  } else {
    const auto file = PathOf(options.file);
    all = library.ReadDatabase(file, Shown(file));
  }
  std::vector<Track> tracks = Select(options.filter, all.tracks);
  Sort(tracks, options.sort, options.reverse);
  if (options.json) {
    program.Print(TrackJson(tracks));
  } else if (options.csv) {
    program.Print(TrackCsv(tracks));
  } else {
    const bool terminal = IsTerminal(Stream::kOutput);
    if (!tracks.empty()) {
      program.Print(TrackTable(tracks, terminal ? TerminalWidth(Stream::kOutput) : 0));
    }
    if (!program.quiet) program.Print(Count(tracks.size(), all.tracks.size()) + '\n');
  }
  if (all.problem.empty()) return kSuccess;
  program.Complain(all.problem);
  return kFailure;
}

}  // namespace quaylink::cli
