#include "cli/base/temporary_file.h"

#include <system_error>

#include "cli/base/paths.h"
#include "cli/base/program.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "quaylink-";

// Runs that were killed have left these, and hold them no longer.
void RemoveForsakenFiles(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = Utf8Of(entry->path().filename());
    if (name.starts_with(kPrefix) && name.ends_with(kPartSuffix)) RemoveUnlessHeld(entry->path());
  }
}

HeldFile CreateFile() {
  try {
    const fs::path folder = fs::temp_directory_path();
    RemoveForsakenFiles(folder);
    return CreateHeldFile(folder, kPrefix, kPartSuffix);
  } catch (const fs::filesystem_error& error) {
    throw Failure("no temporary file can be made: " + ReasonOf(error.code()));
  }
}

}  // namespace

TemporaryFile::TemporaryFile() : file_(CreateFile()) {
  RemoveOnInterrupt();
  if (LocalPathForLibrary(file_.path)) return;
  RemoveHeldFile(file_);
  throw Failure(Shown(file_.path.parent_path()) +
                ": this system's code page lacks a character of the temporary folder's name; "
                "set TMP to another folder");
}

TemporaryFile::~TemporaryFile() {
  SetRemovedOnInterrupt({});
  RemoveHeldFile(file_);
}

}  // namespace quaylink::cli
