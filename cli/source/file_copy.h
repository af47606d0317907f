// Copies that are either whole or not there: made beside their final name, checked, then renamed.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

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

// Copies to a file, which is removed again when the copy is not good.
CopyResult CopyChecked(const CopyJob& job, const std::filesystem::path& file);

// The same by way of a file of the same name with kPartSuffix behind it, so that whatever stood at
// the destination is replaced by a whole copy or not at all.
CopyResult CopyBeside(const CopyJob& job, const std::filesystem::path& destination);

// Removes what a run that was killed has left of a copy to that destination.
void RemovePart(const std::filesystem::path& destination);

// Whether new files can be made in a folder at all. A run that is killed here leaves the part of a
// copy without a name.
bool TakesFiles(const std::filesystem::path& folder);

}  // namespace quaylink::cli
