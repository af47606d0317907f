// The commands that copy one file: copy-track, copy-database and pull.
#include <system_error>

#include "cli/commands.h"
#include "cli/file_copy.h"
#include "cli/library.h"
#include "cli/paths.h"
#include "cli/reading.h"
#include "cli/utf8.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

// The destination itself, or, when it is a folder, a new file in it. Only a file that the user has
// named is replaced.
fs::path TargetOf(const std::string& destination, const std::string& nameInFolder) {
  fs::path file = PathOf(destination);
  std::error_code error;
  if (!fs::is_directory(file, error)) return file;
  file /= PathOf(nameInFolder);
  if (fs::is_regular_file(file, error)) {
    throw Failure(Shown(file) + ": is there already; name the file itself to replace it");
  }
  return file;
}

int CopyOne(const Program& program, const CopyJob& job, const std::string& destination,
            const std::string& nameInFolder) {
  const fs::path target = TargetOf(destination, nameInFolder);
  const CopyResult result = CopyBeside(job, target);
  if (!result.Good()) throw Failure(result.problem);
  if (!program.quiet) program.Print("copied  " + Shown(target) + '\n');
  return kSuccess;
}

}  // namespace

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
  return CopyOne(program, job, options.destination, SafeFileName(options.devicePath.substr(name)));
}

}  // namespace quaylink::cli
