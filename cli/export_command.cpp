#include <stdexcept>

#include "cli/commands.h"
#include "cli/export.h"
#include "cli/library.h"
#include "cli/paths.h"
#include "cli/reading.h"

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
  const Collection collection = ReadDeviceCollection(library);
  const int collectionStatus = TellProblem(program, collection);
  const TrackSelection selection(options.filter, collection);
  // Paths come from all tracks, so that a filter does not change the name of any.
  const std::vector<std::string> paths = PathsFor(collection.Tracks(), pattern);
  Exporter exporter(program, library, PathOf(options.destination), options.json);
  for (const Track& track : collection.Tracks()) {
    if (selection.Holds(track)) exporter.Add(track, paths[track.index]);
  }
  const int status = options.dryRun ? exporter.ShowPlan() : exporter.Run();
  return status == kSuccess ? collectionStatus : status;
}

}  // namespace quaylink::cli
