// Copies that are either whole or not there: made beside their final name, checked, then renamed.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "cli/base/temporary_file.h"

namespace quaylink::cli {

struct CopyJob {
  // Copies to the local path, in the library's form; false when that failed.
  std::function<bool(const char* localPath)> copy;
  // Whether a true result of copy speaks for the writing too. When not, the copy is checked for
  // what can be seen of a disk that refused part of it.
  bool noticesWriteErrors = true;
  // What to tell the user when the copy fails and the local disk is not to blame.
  std::string readProblem;
};

struct CopyResult {
  std::string problem;  // empty when the copy is whole
  bool diskFull = false;
  bool Good() const { return problem.empty(); }
};

// Copies to a file that is there only for it.
CopyResult CopyChecked(const CopyJob& job, const TemporaryFile& file);

// The same by way of a temporary file beside the destination, so that whatever stood there is
// replaced by a whole copy or not at all.
CopyResult CopyBeside(const CopyJob& job, const std::filesystem::path& destination);

// Why nothing may be copied there: what stands there is no ordinary file. Empty when nothing speaks
// against it.
std::string ObstacleAt(const std::filesystem::path& destination);

}  // namespace quaylink::cli
