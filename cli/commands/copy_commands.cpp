// The commands that copy one file: copy-track and copy-database.

#include "cli/base/paths.h"
#include "cli/commands/commands.h"
#include "cli/commands/one_copy.h"
#include "cli/naming/track_namer.h"
#include "cli/source/library.h"
#include "cli/source/reading.h"

namespace quaylink::cli {

int CopyTrack(const Program& program, const CopyOptions& options) {
  Library library(program);
  library.RequireDevice();
  const Collection collection = ReadDeviceCollection(library);
  const std::vector<Track>& tracks = collection.Tracks();
  if (options.index >= tracks.size()) {
    const std::string range = tracks.empty()
                                  ? "it has no tracks"
                                  : "its tracks are 0 to " + std::to_string(tracks.size() - 1);
    throw Failure("the device has no track " + std::to_string(options.index) + ": " + range +
                  " (see 'quaylink tracks')");
  }
  const Track& track = tracks[options.index];
  CopyJob job = library.TrackJob(track);
  job.readProblem = NameOf(track) + ": " + job.readProblem;
  const NameLimits limits = LimitsBelow(PathOf(options.destination));
  const TrackNamer namer(NamePattern("{title}"), tracks, limits);
  return CopyOne(program, job, TargetOf(options.destination, namer.WantedPath(track)));
}

int CopyDatabase(const Program& program, const CopyOptions& options) {
  Library library(program);
  library.RequireDevice();
  return CopyOne(program, library.DatabaseJob(), TargetOf(options.destination, "iTunesDB"));
}

}  // namespace quaylink::cli
