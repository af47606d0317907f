// The commands that copy one file: copy-track, copy-database and pull.
#include "host/commands.h"
#include "host/file_copy.h"
#include "host/library.h"
#include "host/paths.h"
#include "host/utf8.h"

namespace quaylink::host {
namespace {

// Copies to the destination, or into it under the given name when it is a folder.
int CopyOne(const Program& program, const CopyJob& job, const std::string& destination,
            const std::string& name) {
  const auto target = DestinationOf(PathOf(destination), name);
  const CopyResult result = CopyBeside(job, target);
  if (!result.Good()) throw Failure(result.problem);
  if (!program.quiet) program.Print("copied  " + Shown(target) + '\n');
  return kSuccess;
}

}  // namespace

int CopyTrack(const Program& program, const CopyOptions& options) {
  Library library(program);
  library.RequireDevice();
  const std::vector<Track> tracks = library.ReadDeviceDatabase();
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
  return CopyOne(program, job, options.destination,
                 PathsFor({track}, NamePattern("{title}")).front());
}

int CopyDatabase(const Program& program, const CopyOptions& options) {
  Library library(program);
  library.RequireDevice();
  return CopyOne(program, library.DatabaseJob(), options.destination, "iTunesDB");
}

int Pull(const Program& program, const CopyOptions& options) {
  Library library(program);
  library.RequireDevice();
  CopyJob job = library.FileJob(options.devicePath);
  job.readProblem = MakePrintable(options.devicePath) + ": " + job.readProblem;
  const std::size_t name = options.devicePath.find_last_of("/\\") + 1;
  return CopyOne(program, job, options.destination, SafeName(options.devicePath.substr(name)));
}

}  // namespace quaylink::host
