#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/base/paths.h"
#include "cli/commands/commands.h"
#include "cli/commands/export_steps.h"
#include "cli/commands/one_copy.h"
#include "cli/export/destination.h"
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

std::vector<std::string> Listed(const Library& library) {
  library.Connect();
  return library.ListFiles();
}

std::vector<std::string> FilesBelow(std::vector<std::string> files, std::string folder) {
  if (!folder.ends_with('/')) folder += '/';
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
               const std::vector<std::string>& files, const PullOptions& options) {
  DeviceSource source(library);
  const std::optional<std::string> phone = PhoneOf(source);
  FolderJob job = {source, PathOf(options.destination), ReportKind::kPull};
  job.plan = [&](Destination& destination, const Journal& journal) {
    Plan plan =
        MakePlan("files of " + phone.value_or("a phone"), Wanted(files, LimitsBelow(job.folder)),
                 source, destination, journal, phone.has_value());
    plan.knowsSizes = false;
    return plan;
  };
  return options.dryRun ? ShowFolderPlan(program, job) : FillFolder(program, job);
}

// How large a file on the player's drive is, 0 where that cannot be told. Nothing when there is
// none.
std::optional<std::uint64_t> SizeOnDrive(const Library& library, const std::string& path) {
  DeviceSource source(library);
  try {
    // By its database the drive is known.
    source.ReadCollection();
  } catch (const Failure&) {
    // There is none, and the drive's files may be read all the same.
  }
  const std::u8string normal = PathOf(DevicePathOf(path)).lexically_normal().generic_u8string();
  const std::string location(normal.begin(), normal.end());
  Track track;
  track.location = location.c_str();
  const std::optional<FileFacts> facts = source.Look(track);
  return facts ? std::optional(facts->size) : std::nullopt;
}

int PullFile(const Program& program, const Library& library, const PullOptions& options) {
  const bool isPhone = library.Kind() == DeviceKind::kPhone;
  const std::string location =
      isPhone ? options.devicePath : PathOnDrive(options.devicePath, PlayersDriveLetter());
  CopyJob job = library.FileJob(location);
  if (!isPhone) {
    job.readProblem = "there is no such file on the player's drive, or it cannot be read";
  }
  const std::string named = MakePrintable(options.devicePath) + ": ";
  const std::filesystem::path target = TargetOf(
      options.destination, SafeFileName(FileNameOf(options.devicePath), FileKinds::kAllButHarmful,
                                        LimitsBelow(PathOf(options.destination))));
  if (!program.tellsEvents && !options.dryRun) {
    job.readProblem = named + job.readProblem;
    return CopyOne(program, job, target);
  }
  const std::optional<std::uint64_t> size = isPhone ? 0 : SizeOnDrive(library, location);
  if (options.dryRun && !size) throw Failure(named + job.readProblem);
  const FilePull pull = {library, job, location, size.value_or(0), target};
  return options.dryRun ? ShowPull(program, pull) : TellPull(program, pull);
}

Failure NoFilesThere(const std::string& path) {
  return Failure(MakePrintable(path) + ": the phone has no files there");
}

// A phone does not tell folders from files before one tries.
std::vector<std::string> FilesIfFolder(const Library& library, const std::string& path) {
  try {
    return FilesBelow(Listed(library), path);
  } catch (const Failure&) {
    return {};
  }
}

// What is told as it goes must be known before: whether a path is a file's. The listing of a phone
// takes its time, and is spared where the path looks like one.
int PullTold(const Program& program, const Library& library, const PullOptions& options) {
  const std::string& path = options.devicePath;
  const bool looksLikeFile = FileNameOf(path).find('.') != std::string_view::npos;
  if (looksLikeFile && !options.dryRun) return PullFile(program, library, options);
  const std::vector<std::string> listed = Listed(library);
  if (std::ranges::find(listed, path) != listed.end()) return PullFile(program, library, options);
  const std::vector<std::string> files = FilesBelow(listed, path);
  if (files.empty()) throw NoFilesThere(path);
  return PullFolder(program, library, files, options);
}

int PullUntold(const Program& program, const Library& library, const PullOptions& options) {
  try {
    return PullFile(program, library, options);
  } catch (const Failure&) {
    const std::vector<std::string> files = FilesIfFolder(library, options.devicePath);
    if (files.empty()) throw;
    return PullFolder(program, library, files, options);
  }
}

}  // namespace

int Pull(const Program& program, const PullOptions& options) {
  Library library(program);
  if (library.RequireDevice() != DeviceKind::kPhone) return PullFile(program, library, options);
  if (options.devicePath.ends_with('/')) {
    const std::vector<std::string> files = FilesBelow(Listed(library), options.devicePath);
    if (files.empty()) throw NoFilesThere(options.devicePath);
    return PullFolder(program, library, files, options);
  }
  const bool isTold = program.tellsEvents || options.dryRun;
  return isTold ? PullTold(program, library, options) : PullUntold(program, library, options);
}

}  // namespace quaylink::cli
