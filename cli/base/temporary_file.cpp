#include "cli/base/temporary_file.h"

#include <system_error>

#include "cli/base/paths.h"
#include "cli/base/program.h"
#include "cli/system/folder.h"

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

HeldFile CreateIn(const fs::path& folder) {
  RemoveForsakenFiles(folder);
  return CreateHeldFile(folder, kPrefix, kPartSuffix);
}

HeldFile Create() {
  try {
    return CreateIn(fs::temp_directory_path());
  } catch (const fs::filesystem_error& error) {
    throw Failure("no temporary file can be made: " + ReasonOf(error.code()));
  }
}

}  // namespace

TemporaryFile::TemporaryFile() : file_(Create()) {
  SetRemovedOnInterrupt(file_.path);
  if (LocalPathForLibrary(file_.path)) return;
  RemoveHeldFile(file_);
  throw Failure(Shown(file_.path.parent_path()) +
                ": this system's code page lacks a character of the temporary folder's name; "
                "set TMP to another folder");
}

TemporaryFile::TemporaryFile(const fs::path& folder) : file_(CreateIn(folder)) {
  SetRemovedOnInterrupt(file_.path);
}

std::error_code TemporaryFile::MoveTo(const fs::path& target) const {
  std::error_code error;
  // Some folders may be written to and not be read.
  const Folder folder = Folder::Open(file_.path.parent_path(), error);
  if (folder.IsOpen()) folder.MakeOrdinary(Utf8Of(file_.path.filename()));
  fs::rename(file_.path, target, error);
  return error;
}

TemporaryFile::~TemporaryFile() {
  SetRemovedOnInterrupt({});
  RemoveHeldFile(file_);
}

}  // namespace quaylink::cli
