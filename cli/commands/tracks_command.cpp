#include <algorithm>
#include <string>
#include <vector>

#include "cli/commands/commands.h"
#include "cli/output/json.h"
#include "cli/output/table.h"
#include "cli/output/track_list.h"
#include "cli/source/reading.h"
#include "cli/system/system.h"

namespace quaylink::cli {
namespace {

std::string Count(std::size_t shown, std::size_t all) {
  const std::string tracks = all == 1 ? " track" : " tracks";
  return (shown == all ? "" : std::to_string(shown) + " of ") + std::to_string(all) + tracks;
}

}  // namespace

int ListTracks(const Program& program, const TracksOptions& options) {
  const Collection collection = ReadCollection(program, options.file, options.from);
  std::vector<Track> tracks = [&] {
    try {
      return TrackSelection(options.filter, collection).Tracks();
    } catch (const Failure&) {
      TellProblem(program, collection);  // what is missing may have been lost
      throw;
    }
  }();
  if (options.sort) Sort(tracks, *options.sort);
  if (options.reverse) std::ranges::reverse(tracks);
  if (options.json) {
    PrintTrackJson(program, tracks);
  } else if (options.csv) {
    // A terminal would show it.
    const bool begins = !IsTerminal(Stream::kOutput);
    program.Print((begins ? std::string(kCsvBeginning) : "") + TrackCsv(tracks));
  } else {
    if (!tracks.empty()) program.Print(TrackTable(tracks, options.columns, TableWidth()));
    if (!program.quiet) program.Print(Count(tracks.size(), collection.Tracks().size()) + '\n');
  }
  return TellProblem(program, collection);
}

}  // namespace quaylink::cli
