#include "cli/source/device_database.h"

#include <fstream>
#include <sstream>
#include <utility>

#include "cli/base/temporary_file.h"
#include "cli/source/file_copy.h"

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
  fetched.result = CopyChecked(job, file);
  if (!fetched.result.Good()) return fetched;
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

}  // namespace

DatabaseFiles FetchDatabase(const Library& library, char driveLetter) {
  Fetched database = Fetch(library.DatabaseJob());
  if (database.bytes.empty()) {
    // Newer players keep it compressed, beside an empty one.
    std::string compressed = FetchBeside(library, driveLetter, "iTunesCDB");
    if (compressed.empty() && !database.result.Good()) throw Failure(database.result.problem);
    database.bytes = std::move(compressed);
  }
  return {"the device's music database", std::move(database.bytes),
          FetchBeside(library, driveLetter, "Play Counts")};
}

}  // namespace quaylink::cli
