#include "cli/reading.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/drive_letter.h"
#include "cli/file_copy.h"
#include "cli/paths.h"
#include "cli/temporary_file.h"

namespace quaylink::cli {
namespace {

struct Fetched {
  std::string bytes;
  CopyResult result;
};

// A file of the device, by way of a temporary one.
Fetched Fetch(const CopyJob& job) {
  const TemporaryFile file;
  Fetched fetched;
  fetched.result = CopyChecked(job, file.Path());
  if (!fetched.result.Good()) return fetched;
  file.RemoveOnInterrupt();
  std::ostringstream bytes;
  bytes << std::ifstream(file.Path(), std::ios::binary).rdbuf();
  fetched.bytes = std::move(bytes).str();
  return fetched;
}

// The folders in which a device may keep its database.
std::vector<std::string> DatabaseFolders(char driveLetter) {
  if (driveLetter == '\0') return {"/iTunes_Control/iTunes/", "/iPod_Control/iTunes/"};
  return {std::string{driveLetter} + ":\\iPod_Control\\iTunes\\"};
}

// What lies beside the database; empty when there is none.
std::string FetchBeside(const Library& library, char driveLetter, const std::string& name) {
  for (const std::string& folder : DatabaseFolders(driveLetter)) {
    std::string bytes = Fetch(library.OptionalFileJob(folder + name)).bytes;
    if (!bytes.empty()) return bytes;
  }
  return {};
}

Collection ReadFile(const std::string& file) {
  const std::filesystem::path path = PathOf(file);
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw Failure(Shown(path) + ": is a folder, not a music database");
  }
  return Collection::OfFile(file, Shown(path));
}

}  // namespace

Collection ReadDeviceCollection(const Library& library) {
  const char driveLetter = library.Kind() == DeviceKind::kPhone ? '\0' : PlayersDriveLetter();
  Fetched database = Fetch(library.DatabaseJob());
  if (database.bytes.empty()) {
    // Newer players keep it compressed, beside an empty one.
    std::string compressed = FetchBeside(library, driveLetter, "iTunesCDB");
    if (compressed.empty() && !database.result.Good()) throw Failure(database.result.problem);
    database.bytes = std::move(compressed);
  }
  const std::string playCounts = FetchBeside(library, driveLetter, "Play Counts");
  Collection collection =
      Collection::OfBytes(database.bytes, playCounts, "the device's music database");
  if (driveLetter != '\0') collection.PutOnDrive(driveLetter);
  return collection;
}

Collection ReadCollection(const Program& program, const std::string& file) {
  if (file == "-") return Collection::OfStandardInput();
  if (!file.empty()) return ReadFile(file);
  Library library(program);
  library.RequireDevice();
  return ReadDeviceCollection(library);
}

int TellProblem(const Program& program, const Collection& collection) {
  if (collection.LacksPlayCounts()) {
    program.Note(
        collection.Name() +
        ": the play counts beside it are broken or belong to another database, and are left out");
  }
  const std::string problem = collection.Problem();
  if (problem.empty()) return kSuccess;
  program.Complain(problem);
  if (program.verbose) program.Note(collection.ProblemInDetail());
  return kFailure;
}

}  // namespace quaylink::cli
