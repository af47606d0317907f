#include "cli/commands/one_copy.h"

#include <filesystem>
#include <system_error>

#include "cli/base/paths.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

// Only a file that the user has named is replaced.
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

}  // namespace

int CopyOne(const Program& program, const CopyJob& job, const std::string& destination,
            const std::string& nameInFolder) {
  const fs::path target = TargetOf(destination, nameInFolder);
  const CopyResult result = CopyBeside(job, target);
  if (!result.Good()) throw Failure(result.problem);
  if (!program.quiet) program.Print("copied  " + Shown(target) + '\n');
  return kSuccess;
}

}  // namespace quaylink::cli
