// A file of the system's temporary folder that no run leaves behind for good: it is removed with
// this object, by Ctrl-C, and, when its run was killed, by the next run that makes one.
#pragma once

#include <filesystem>
#include <string_view>

#include "cli/system/system.h"

namespace quaylink::cli {

// Ends the name of a copy under way.
inline constexpr std::string_view kPartSuffix = ".quaylink-part";

class TemporaryFile {
 public:
  // Throws a Failure when none can be made that the library could be told of.
  TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  const std::filesystem::path& Path() const { return file_.path; }
  // Ctrl-C removes this file again, after another one was set to be removed.
  void RemoveOnInterrupt() const { SetRemovedOnInterrupt(file_.path); }

 private:
  HeldFile file_;
};

}  // namespace quaylink::cli
