#include <memory>
#include <vector>

#include "host/library.h"
#include "host/paths.h"
#include "host/program.h"
#include "host/system.h"
#include "host/track_list.h"
#include "host/track_options.h"
#include "host/track_selection.h"

namespace quaylink::host {
namespace {

struct TracksOptions {
  std::string file;
  bool json = false;
  bool csv = false;
  SortKey sort = SortKey::kIndex;
  bool reverse = false;
  TrackFilter filter;
};

std::string Count(std::size_t shown, std::size_t all) {
  const std::string tracks = all == 1 ? " track" : " tracks";
  return (shown == all ? "" : std::to_string(shown) + " of ") + std::to_string(all) + tracks;
}

int ListTracks(const Program& program, const TracksOptions& options) {
  Library library(program);
  std::vector<Track> all;
  if (options.file.empty()) {
    library.RequireDevice();
    all = library.ReadDeviceDatabase();
  } else {
    const auto file = PathOf(options.file);
    all = library.ReadDatabase(file, Shown(file));
  }
  std::vector<Track> tracks = Select(options.filter, all);
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
    if (!program.quiet) program.Print(Count(tracks.size(), all.size()) + '\n');
  }
  return kSuccess;
}

}  // namespace

void AddTracksCommand(CLI::App& app, Program& program) {
  auto options = std::make_shared<TracksOptions>();
  CLI::App* command =
      app.add_subcommand("tracks", "List the tracks of a device or of a database file");
  command->add_option("FILE", options->file,
                      "A copied music database; without it that of the attached device");
  CLI::Option* json = command->add_flag("--json", options->json, "Print a JSON array of objects");
  command->add_flag("--csv", options->csv, "Print comma-separated values")->excludes(json);
  AddFilterOptions(*command, options->filter);
  AddSortOptions(*command, options->sort, options->reverse);
  command->footer(
      "Examples:\n"
      "  quaylink tracks\n"
      "  quaylink tracks --artist björk --sort album\n"
      "  quaylink tracks iTunesDB --json | jq '.[].title'");
  command->callback([&program, options] {
    program.command = [&program, options] { return ListTracks(program, *options); };
  });
}

}  // namespace quaylink::host
