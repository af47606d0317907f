#include "cli/source/reading.h"

#include <filesystem>
#include <system_error>

#include "cli/base/paths.h"
#include "cli/source/device_source.h"
#include "cli/source/folder_source.h"

namespace quaylink::cli {
namespace {

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
  return DeviceSource(library).ReadCollection();
}

Collection ReadCollection(const Program& program, const std::string& file,
                          const std::string& from) {
  if (file == "-") return Collection::OfStandardInput();
  if (!file.empty()) return ReadFile(file);
  if (!from.empty()) return FolderSource(PathOf(from)).ReadCollection();
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
