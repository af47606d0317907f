#include "cli/source/library.h"

#include <quaylink/quaylink.h>

#include <exception>
#include <optional>
#include <utility>

#include "cli/output/progress.h"
#include "cli/source/player_drive.h"
#include "cli/system/system.h"

namespace quaylink::cli {
namespace {

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

CopyJob Library::FileJob(const std::string& devicePath) const {
  CopyJob job = Job();
  job.copy = [this, devicePath](const char* localPath) {
    if (CopyFile(devicePath, localPath)) return true;
    // The connection may have failed: the next copy tries a fresh one.
    DisconnectIPod();
    return false;
  };
  return job;
}

CopyJob Library::TrackJob(const Track& track) const {
  CopyJob job = FileJob(track.location);
  if (*track.location == '\0') job.readProblem = "the music database names no file for this track";
  return job;
}

CopyJob Library::OptionalFileJob(const std::string& devicePath) const {
  CopyJob job = Job();
  job.copy = [this, devicePath](const char* localPath) { return CopyFile(devicePath, localPath); };
  return job;
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

bool Library::CopyFile(const std::string& devicePath, const char* localPath) const {
  if (kind_ == DeviceKind::kPhone) {
    // Opens a connection only when none is open. A phone's paths are UTF-8 on every system.
    return ConnectIPod() != 0 && CopyGenericFileFromIPod(0, devicePath.c_str(), localPath) != 0;
  }
  const std::optional<std::string> path = ToLibrary(devicePath);
  return path && IsOrdinaryFileOfDrive(*path) &&
         CopyGenericFileFromIPod(0, path->c_str(), localPath) != 0;
}

bool Library::ShowsSpinner() const {
  return kind_ == DeviceKind::kPhone && !program_.quiet && IsTerminal(Stream::kError);
}

}  // namespace quaylink::cli
