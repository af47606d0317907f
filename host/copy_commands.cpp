// The commands that copy one file: copy-track, copy-database and pull.
#include <memory>

#include "host/file_copy.h"
#include "host/file_names.h"
#include "host/library.h"
#include "host/paths.h"
#include "host/program.h"
#include "host/utf8.h"

namespace quaylink::host {
namespace {

struct CopyOptions {
  std::uint32_t index = 0;
  std::string devicePath;
  std::string destination;
};

// Copies to the destination, or into it under the given name when it is a folder.
int CopyOne(const Program& program, const CopyJob& job, const std::string& destination,
            const std::string& name) {
  const auto target = DestinationOf(PathOf(destination), name);
  const CopyResult result = CopyBeside(job, target);
  if (!result.Good()) throw Failure(result.problem);
  if (!program.quiet) program.Print("copied  " + Shown(target) + '\n');
  return kSuccess;
}

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

using CopyCommand = int (*)(const Program&, const CopyOptions&);

void Finish(CLI::App& command, Program& program, const std::shared_ptr<CopyOptions>& options,
            CopyCommand run) {
  command
      .add_option("DEST", options->destination,
                  "The file to write, or a folder to put the copy into")
      ->required()
      ->type_name("PATH");
  command.callback([&program, options, run] {
    program.command = [&program, options, run] { return run(program, *options); };
  });
}

}  // namespace

void AddCopyTrackCommand(CLI::App& app, Program& program) {
  auto options = std::make_shared<CopyOptions>();
  CLI::App* command = app.add_subcommand("copy-track", "Copy the file of one track");
  command
      ->add_option("INDEX", options->index, "The number that 'quaylink tracks' shows for the track")
      ->required()
      ->type_name("");
  command->footer(
      "Examples:\n"
      "  quaylink copy-track 12 song.mp3\n"
      "  quaylink copy-track 12 ~/Music");
  Finish(*command, program, options, CopyTrack);
}

void AddCopyDatabaseCommand(CLI::App& app, Program& program) {
  auto options = std::make_shared<CopyOptions>();
  CLI::App* command = app.add_subcommand("copy-database", "Copy the device's music database");
  command->footer(
      "Example:\n"
      "  quaylink copy-database backup.iTunesDB && quaylink tracks backup.iTunesDB");
  Finish(*command, program, options, CopyDatabase);
}

void AddPullCommand(CLI::App& app, Program& program) {
  auto options = std::make_shared<CopyOptions>();
  CLI::App* command = app.add_subcommand("pull", "Copy any file of the device");
  command
      ->add_option("DEVICE_PATH", options->devicePath,
                   "A path as 'quaylink files' prints it; for a player in disk mode a path on its "
                   "drive, such as F:\\Notes\\a.txt")
      ->required()
      ->type_name("");
  command->footer(
      "Examples:\n"
      "  quaylink pull /DCIM/100APPLE/IMG_0001.JPG ~/Pictures\n"
      "  quaylink files | grep -i jpg | while read -r f; do quaylink pull \"$f\" ~/Pictures; done");
  Finish(*command, program, options, Pull);
}

}  // namespace quaylink::host
