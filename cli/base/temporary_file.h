// A file that no run leaves behind for good: it is removed with this object, by Ctrl-C, and, when
// its run was killed, by the next run that makes one in the same folder. Runs that go on beside
// each other have files of their own.
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

#include "cli/system/system.h"

namespace quaylink::cli {

// Ends the name of a copy under way.
inline constexpr std::string_view kPartSuffix = ".quaylink-part";

class TemporaryFile {
 public:
  // In the system's folder for such files. Throws a Failure when none can be made that the library
  // could be told of.
  TemporaryFile();
  // In that folder. Throws a filesystem_error when none can be made.
  explicit TemporaryFile(const std::filesystem::path& folder);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  const std::filesystem::path& Path() const { return file_.path; }
  // Makes it an ordinary file of that name in the same folder, at once and in place of any that has
  // the name.
  std::error_code MoveTo(const std::filesystem::path& target) const;

 private:
  HeldFile file_;
};

}  // namespace quaylink::cli
