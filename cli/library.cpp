#include "cli/library.h"

#include <quaylink/quaylink.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <fstream>
#include <system_error>

#include "cli/paths.h"
#include "cli/player_drive.h"
#include "cli/progress.h"
#include "cli/system.h"
#include "cli/temporary_file.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

// What is wrong with a database; empty when it seems whole. One that gave no tracks is looked at
// more strictly, because it may have none, or be something else.
std::string ProblemWith(const fs::path& file, bool hasTracks) {
  std::error_code error;
  if (fs::is_directory(file, error)) return "is a folder, not a music database";
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    return "cannot be opened: " + ReasonOf({errno, std::generic_category()});
  }
  std::array<char, 12> header = {};
  stream.read(header.data(), header.size());
  if (!stream || std::memcmp(header.data(), "mhbd", 4) != 0) return "is not a music database";
  // The header's third word is the size of the whole file, low byte first.
  std::uintmax_t stated = 0;
  for (std::size_t i = 12; i-- > 8;) {
    stated = (stated << 8u) | static_cast<unsigned char>(header[i]);
  }
  const std::uintmax_t size = fs::file_size(file, error);
  const bool whole = hasTracks ? size >= stated : size == stated;
  return whole ? "" : "is damaged, or was not copied whole";
}

Track TrackOf(const TrackRecord& record, std::size_t index) {
  Track track;
  track.index = static_cast<std::uint32_t>(index);
  track.artist = FromLibrary(record.artist);
  track.album = FromLibrary(record.album);
  track.title = FromLibrary(record.title);
  track.location = FromLibrary(record.location);
  track.source = record.location;
  return track;
}

struct Listing {
  std::vector<std::string> files;
  std::exception_ptr problem;
};

void QUAYLINK_CALL AddFile(const char* devicePath, void* context) {
  // An exception must not pass through the library.
  auto& listing = *static_cast<Listing*>(context);
  try {
    listing.files.emplace_back(devicePath);
  } catch (...) {
    listing.problem = std::current_exception();
  }
}

}  // namespace

std::string AdviceFor(DeviceKind kind) {
  if (kind != DeviceKind::kPhone) {
    return "no Apple device is attached. Is the player in disk mode and mounted, or the phone "
           "plugged in?";
  }
  return "the phone does not answer. " + std::string(kPhoneAdvice);
}

Library::Library(const Program& program) : program_(program) {
  const std::string problem = ProblemWithEnvironment();
  if (!problem.empty()) throw Failure(problem);
  if (InitializeIPod() == 0) throw Failure("there is not enough memory");
}

Library::~Library() {
  DisconnectIPod();
  TerminateIPod();
}

DeviceKind Library::FindDevice() {
  if (IsIPodConnected() == 0) return kind_ = DeviceKind::kNone;
  // While no connection is open, only a player in disk mode lets itself be listed: it has nothing
  // to list.
  Listing listing;
  const bool listed = EnumGenericFileFromIPod(0, AddFile, &listing) != 0;
  return kind_ = listed ? DeviceKind::kDisk : DeviceKind::kPhone;
}

bool Library::Connect() const {
  const Spinner spinner("Connecting to the phone", ShowsSpinner());
  return ConnectIPod() != 0;
}

DeviceKind Library::RequireDevice() {
  if (FindDevice() == DeviceKind::kNone || !Connect()) throw Failure(AdviceFor(kind_));
  return kind_;
}

CopyJob Library::DatabaseJob() const {
  CopyJob job = Job();
  job.readProblem =
      kind_ == DeviceKind::kPhone
          ? "the phone's music database could not be copied. Has the phone music of its "
            "own, and is it still attached?"
          : "the player's music database could not be copied. Has music been put on the "
            "player, and is it still mounted?";
  job.copy = [this](const char* localPath) {
    if (kind_ == DeviceKind::kDisk && !IsPlayersDatabaseOrdinary()) return false;
    const Spinner spinner("Looking for the music database on the phone", ShowsSpinner());
    return CopyITunesDB(localPath) != 0;
  };
  return job;
}

CopyJob Library::TrackJob(const Track& track) const {
  CopyJob job = Job();
  if (track.source.empty()) job.readProblem = "the music database names no file for this track";
  job.copy = [this, track](const char* localPath) {
    // For a phone CopyFileFromIPod would open and close a connection for each track.
    if (kind_ == DeviceKind::kPhone) return CopyFromPhone(track.source, localPath);
    return IsOrdinaryFileOfDrive(track.source) && CopyFileFromIPod(track.index, localPath) != 0;
  };
  return job;
}

CopyJob Library::FileJob(const std::string& devicePath) const {
  CopyJob job = Job();
  job.copy = [this, devicePath](const char* localPath) {
    if (kind_ == DeviceKind::kPhone) return CopyFromPhone(devicePath, localPath);
    const std::optional<std::string> path = ToLibrary(devicePath);
    return path && IsOrdinaryFileOfDrive(*path) &&
           CopyGenericFileFromIPod(0, path->c_str(), localPath) != 0;
  };
  return job;
}

Database Library::ReadDatabase(const fs::path& file, const std::string& name) const {
  const std::optional<std::string> path = LocalPathForLibrary(file);
  if (!path) throw Failure(LacksCharacter(name));
  std::error_code error;
  // The library would wait for what a pipe or a device may never give.
  if (fs::exists(file, error) && !fs::is_regular_file(file, error) &&
      !fs::is_directory(file, error)) {
    throw Failure(name + ": is no ordinary file");
  }
  const int32_t count = ParseITunesDB(path->c_str(), 0, nullptr);
  std::vector<TrackRecord> records(static_cast<std::size_t>(std::max(count, 0)));
  if (count > 0)
    records.resize(
        static_cast<std::size_t>(std::max(ParseITunesDB(path->c_str(), count, records.data()), 0)));
  Database database;
  database.problem = ProblemWith(file, !records.empty());
  if (!database.problem.empty()) {
    database.problem.insert(0, name + ": ");
    if (records.empty()) throw Failure(database.problem);
    database.problem += "; " + std::to_string(records.size()) + " of its tracks could be read";
  }
  database.tracks.reserve(records.size());
  for (const TrackRecord& record : records) {
    database.tracks.push_back(TrackOf(record, database.tracks.size()));
  }
  return database;
}

Database Library::ReadDeviceDatabase() const {
  const TemporaryFile file;
  const CopyResult result = CopyChecked(DatabaseJob(), file.Path());
  if (!result.Good()) throw Failure(result.problem);
  file.RemoveOnInterrupt();
  return ReadDatabase(file.Path(), "the device's music database");
}

std::vector<std::string> Library::ListFiles() const {
  Listing listing;
  const Spinner spinner("Listing the phone's files", ShowsSpinner());
  if (EnumGenericFileFromIPod(0, AddFile, &listing) == 0) {
    throw Failure("the phone's files could not be listed; is it still attached?");
  }
  if (listing.problem) std::rethrow_exception(listing.problem);
  return std::move(listing.files);
}

CopyJob Library::Job() const {
  CopyJob job;
  job.noticesWriteErrors = kind_ != DeviceKind::kPhone;
  job.readProblem = "it could not be read from the device; is the device still attached?";
  return job;
}

bool Library::CopyFromPhone(const std::string& devicePath, const char* localPath) const {
  // Opens a connection only when none is open.
  if (ConnectIPod() == 0) return false;
  if (CopyGenericFileFromIPod(0, devicePath.c_str(), localPath) != 0) return true;
  // The connection may have failed: the next copy tries a fresh one.
  DisconnectIPod();
  return false;
}

bool Library::ShowsSpinner() const {
  return kind_ == DeviceKind::kPhone && !program_.quiet && IsTerminal(Stream::kError);
}

}  // namespace quaylink::cli
