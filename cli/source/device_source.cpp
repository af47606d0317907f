#include "cli/source/device_source.h"

#include <algorithm>
#include <utility>

#include "cli/base/paths.h"
#include "cli/base/program.h"
#include "cli/source/device_database.h"
#include "cli/source/drive_letter.h"
#include "cli/source/player_drive.h"
#include "cli/system/system.h"
#include "cli/text/file_kinds.h"
#include "cli/text/folding.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

using Kind = FetchResult::Kind;

// The library writes in blocks of this many bytes: a disk that refused one has no room for another.
constexpr std::size_t kBlockSize = 24576;

// Its bytes; empty when there is no database that can be read.
std::string DatabaseIn(FolderSource& folder) {
  try {
    return folder.ReadDatabase().database;
  } catch (const Failure&) {
    return {};
  }
}

std::unique_ptr<FolderSource> PlayerIn(const fs::path& folder) {
  try {
    return std::make_unique<FolderSource>(folder);
  } catch (const Failure&) {
    return nullptr;
  }
}

bool IsInMusicFolder(const std::string& location) {
  const std::string path = LowerCase(location);
  return path.starts_with("/itunes_control/music/") || path.starts_with("/ipod_control/music/");
}

std::string_view NameIn(std::string_view location) {
  return location.substr(location.rfind('/') + 1);
}

// Whether the disk has room behind a copy, and has taken what there is of it.
std::error_code GrowAndFlush(const std::string& localPath) {
  return TryToGrowAndFlush(PathOf(FromLibrary(localPath)), kBlockSize);
}

}  // namespace

DeviceSource::DeviceSource(const Library& library)
    : library_(library), driveLetter_(IsPhone() ? '\0' : PlayersDriveLetter()) {}

Collection DeviceSource::ReadCollection() {
  DatabaseFiles files = FetchDatabase(library_, driveLetter_);
  database_ = std::move(files.database);
  Collection collection = Collection::OfBytes(database_, files.playCounts, files.name);
  if (!IsPhone()) {
    if (driveLetter_ != '\0') collection.PutOnDrive(driveLetter_);
    return collection;
  }
  for (const Track& track : collection.Tracks()) {
    times_[track.location] = FactsInDatabase(track).time;
  }
  return collection;
}

std::optional<FileFacts> DeviceSource::Look(const Track& track) {
  if (*track.location == '\0') return std::nullopt;
  FolderSource* drive = Drive();
  return drive ? drive->Look(track) : FactsInDatabase(track);
}

FetchResult DeviceSource::Fetch(const std::string& location, const Folder& folder,
                                const std::string& name, const BytesCallback& tell) {
  if (location.empty()) return NamesNoFile();
  if (FolderSource* drive = Drive()) {
    return drive->Fetch(DevicePathOf(location), folder, name, tell);
  }
  FetchResult result = FetchByLibrary(location, folder, name, tell);
  if (!result.Good()) folder.Remove(name);
  return result;
}

std::string DeviceSource::ObstacleIn(const Folder& folder) {
  const bool reachable = Drive() || folder.PathForLibrary("part-1000000");
  return reachable ? "" : std::string(kUntellablePath);
}

bool DeviceSource::Holds(const Folder& folder) {
  FolderSource* drive = Drive();
  return drive && drive->Holds(folder);
}

std::vector<Source::MusicFile> DeviceSource::MusicFiles() {
  if (FolderSource* drive = Drive()) return drive->MusicFiles();
  std::vector<MusicFile> files;
  if (!IsPhone()) return files;
  library_.Connect();
  for (std::string& location : library_.ListFiles()) {
    listed_.insert(LowerCase(location));
    const std::string_view name = NameIn(location);
    if (IsInMusicFolder(location) && IsMusicFileName(name) && !name.starts_with("._")) {
      files.push_back({std::move(location), std::nullopt});
    }
  }
  std::ranges::sort(files, {}, &MusicFile::location);
  return files;
}

bool DeviceSource::Answers() {
  return library_.Connect();
}

FolderSource* DeviceSource::Drive() {
  if (!IsPhone()) std::call_once(driveSought_, [this] { SeekDrive(); });
  return drive_.get();
}

void DeviceSource::SeekDrive() {
  fs::path place;
  for (const fs::path& folder : DriveCandidates(driveLetter_)) {
    std::error_code ignored;
    std::unique_ptr<FolderSource> player = PlayerIn(folder);
    // One drive may be mounted at two places.
    const bool isKnown = drive_ && fs::equivalent(folder, place, ignored);
    if (!player || isKnown || DatabaseIn(*player) != database_) continue;
    if (drive_) {
      // Of two players alike none is known to be the one.
      drive_.reset();
      break;
    }
    drive_ = std::move(player);
    place = folder;
  }
  database_.clear();
}

FetchResult DeviceSource::FetchByLibrary(const std::string& location, const Folder& folder,
                                         const std::string& name, const BytesCallback& tell) const {
  const std::optional<std::string> path = folder.PathForLibrary(name);
  if (!path) return {Kind::kRefused, std::string(kUntellablePath)};
  // The library tells no reasons: whether the copy can be written shows beforehand.
  std::error_code error;
  folder.MakeFile(name, error).Close();
  if (error) return NotTaken(error);
  const bool copied = library_.FileJob(location).copy(path->c_str());
  folder.MakeOrdinary(name);
  const Entry copy = folder.Look(name);
  if (copy.kind == EntryKind::kFile) error = GrowAndFlush(*path);
  if (error) return NotTaken(error);
  if (!copied) return NotCopied(location, folder);
  if (copy.facts.size == 0 && IsPhone()) {
    // An empty file is never copied with success from a phone.
    return {Kind::kRefused, "the copy came out empty" + SpaceHint(folder.FreeBytes(error))};
  }
  const auto time = times_.find(location);
  if (time != times_.end() && time->second != 0) folder.SetTime(name, time->second);
  if (tell) tell(copy.facts.size);
  return {};
}

FetchResult DeviceSource::NotCopied(const std::string& location, const Folder& folder) const {
  if (!listed_.empty() && !listed_.contains(LowerCase(location))) return NoSuchFile(location);
  std::error_code error;
  const std::uint64_t freeBytes = folder.FreeBytes(error);
  return {Kind::kUnreadable,
          MakePrintable(DevicePathOf(location)) +
              ": it could not be read from the device; is the device still attached?" +
              (error ? std::string() : SpaceHint(freeBytes))};
}

}  // namespace quaylink::cli
