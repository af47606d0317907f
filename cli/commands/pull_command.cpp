#include <algorithm>
#include <optional>
#include <system_error>
#include <vector>

#include "cli/base/paths.h"
#include "cli/commands/commands.h"
#include "cli/commands/export_steps.h"
#include "cli/commands/one_copy.h"
#include "cli/export/destination.h"
#include "cli/export/export_run.h"
#include "cli/export/flusher.h"
#include "cli/export/journal.h"
#include "cli/export/plan.h"
#include "cli/export/report.h"
#include "cli/naming/safe_names.h"
#include "cli/source/device_source.h"
#include "cli/source/drive_letter.h"
#include "cli/source/library.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

std::vector<std::string> FilesBelow(const Library& library, std::string folder) {
  if (!folder.ends_with('/')) folder += '/';
  library.Connect();
  std::vector<std::string> files = library.ListFiles();
  std::erase_if(files, [&folder](const std::string& file) { return !file.starts_with(folder); });
  std::ranges::sort(files);
  return files;
}

// What tells the phone from others: the persistent id of its master playlist. Nothing when its
// database does not tell it.
std::optional<std::string> PhoneOf(Source& source) {
  try {
    const Collection collection = source.ReadCollection();
    const auto& playlists = collection.Playlists();
    const auto master =
        std::ranges::find(playlists, std::uint32_t{QUAYLINK_MASTER}, &QuaylinkPlaylist::kind);
    if (master == playlists.end() || master->persistentId == 0) return std::nullopt;
    return PersistentIdString(master->persistentId);
  } catch (const Failure&) {
    return std::nullopt;
  }
}

std::vector<std::string> Components(std::string_view path) {
  std::vector<std::string> components;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    if (end > 0) components.emplace_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return components;
}

// Every file goes to where it is on the phone, whichever folder was asked for.
std::vector<WantedTrack> Wanted(const std::vector<std::string>& files, const NameLimits& limits) {
  std::vector<WantedTrack> wanted;
  for (const std::string& file : files) {
    Track track;
    track.title = track.artist = track.album = "";
    track.location = file.c_str();
    track.index = static_cast<std::uint32_t>(wanted.size());
    wanted.push_back(
        {track, ItemOf(file), SafePath(Components(file), FileKinds::kAllButHarmful, limits)});
  }
  return wanted;
}

int PullFolder(const Program& program, const Library& library,
               const std::vector<std::string>& files, const std::string& destinationPath) {
  DeviceSource source(library);
  const std::optional<std::string> phone = PhoneOf(source);
  FinishOnInterrupt(program);
  Destination destination(PathOf(destinationPath), Destination::Use::kWrite);
  Journal journal(destination);
  Plan plan =
      MakePlan("files of " + phone.value_or("a phone"),
               Wanted(files, LimitsBelow(PathOf(destinationPath))), source, destination, journal);
  // Of a phone without a name nothing is known to be there already, until its bytes are compared.
  for (PlannedTrack& track : plan.tracks) {
    if (!phone && track.action == Action::kKeep) track.action = Action::kCheck;
  }
  ExportReport report(program, destination, plan, ReportKind::kExport);
  report.Start();
  Flusher flusher(destination, journal);
  ExportRun run(source, destination, journal, plan, flusher, report);
  run.Run();
  run.Finish();
  const int status = StatusAfter(report, plan, run.StoppedBy());
  report.End(status, run.StoppedBy());
  return status;
}

int PullFile(const Program& program, const Library& library, const CopyOptions& options) {
  const bool isPhone = library.Kind() == DeviceKind::kPhone;
  CopyJob job = library.FileJob(isPhone ? options.devicePath
                                        : PathOnDrive(options.devicePath, PlayersDriveLetter()));
  if (!isPhone) {
    job.readProblem = "there is no such file on the player's drive, or it cannot be read";
  }
  job.readProblem = MakePrintable(options.devicePath) + ": " + job.readProblem;
  return CopyOne(program, job, options.destination,
                 SafeFileName(FileNameOf(options.devicePath), FileKinds::kAllButHarmful,
                              LimitsBelow(PathOf(options.destination))));
}

// A phone does not tell folders from files before one tries.
std::vector<std::string> FilesIfFolder(const Library& library, const std::string& path) {
  try {
    return FilesBelow(library, path);
  } catch (const Failure&) {
    return {};
  }
}

}  // namespace

int Pull(const Program& program, const CopyOptions& options) {
  Library library(program);
  const bool isPhone = library.RequireDevice() == DeviceKind::kPhone;
  std::vector<std::string> files;
  if (isPhone && options.devicePath.ends_with('/')) {
    files = FilesBelow(library, options.devicePath);
    if (files.empty()) {
      throw Failure(MakePrintable(options.devicePath) + ": the phone has no files there");
    }
  } else {
    try {
      return PullFile(program, library, options);
    } catch (const Failure&) {
      if (isPhone) files = FilesIfFolder(library, options.devicePath);
      if (files.empty()) throw;
    }
  }
  return PullFolder(program, library, files, options.destination);
}

}  // namespace quaylink::cli
