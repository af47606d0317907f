#include <stdexcept>

#include "cli/commands.h"
#include "cli/export.h"
#include "cli/library.h"
#include "cli/paths.h"

namespace quaylink::cli {

int Export(const Program& program, const ExportOptions& options) {
  const NamePattern pattern = [&] {
    try {
      return NamePattern(options.pattern);
    } catch (const std::invalid_argument& error) {
      throw Failure("--name " + options.pattern + ": " + error.what(), kUsage);
    }
  }();
  Library library(program);
  library.RequireDevice();
  const Database database = library.ReadDeviceDatabase();
  if (!database.problem.empty()) program.Complain(database.problem);
  // Paths come from all tracks, so that a filter does not change the name of any.
  const std::vector<std::string> paths = PathsFor(database.tracks, pattern);
  Exporter exporter(program, library, PathOf(options.destination), options.json);
  for (const Track& track : database.tracks) {
    if (Matches(options.filter, track)) exporter.Add(track, paths[track.index]);
  }
  const int status = options.dryRun ? exporter.ShowPlan() : exporter.Run();
  return status == kSuccess && !database.problem.empty() ? kFailure : status;
}

}  // namespace quaylink::cli
