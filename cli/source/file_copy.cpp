#include "cli/source/file_copy.h"

#include <cerrno>
#include <cstddef>
#include <fstream>
#include <optional>
#include <system_error>

#include "cli/base/paths.h"
#include "cli/base/temporary_file.h"
#include "cli/source/source.h"
#include "cli/system/folder.h"
#include "cli/system/system.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

// The library writes in blocks of this many bytes: a disk that refused one has no room for another.
constexpr std::size_t kBlockSize = 24576;

// A file that does not outlive an interruption, nor this object unless it is kept.
class UnfinishedFile {
 public:
  explicit UnfinishedFile(const fs::path& path) : path_(path) { SetRemovedOnInterrupt(path_); }
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;
  ~UnfinishedFile() {
    SetRemovedOnInterrupt({});
    std::error_code ignored;
    if (!kept_) fs::remove(path_, ignored);
  }
  void Keep() { kept_ = true; }

 private:
  fs::path path_;
  bool kept_ = false;
};

CopyResult LocalProblem(const std::string& name, const std::error_code& error) {
  const std::string string = name + ": cannot be written: " + ReasonOf(error);
  const bool full = error == std::errc::no_space_on_device;
  return {full ? string + "; free some space and run again" : string, full};
}

std::error_code CreateEmpty(const fs::path& file) {
  errno = 0;
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  if (stream) return {};
  return errno != 0 ? std::error_code(errno, std::generic_category())
                    : std::make_error_code(std::errc::io_error);
}

std::string SpaceHintFor(const fs::path& file) {
  std::error_code error;
  const fs::space_info space =
      fs::space(file.parent_path().empty() ? "." : file.parent_path(), error);
  return error ? std::string() : SpaceHint(space.available);
}

CopyResult Check(const CopyJob& job, const fs::path& file, const std::string& name) {
  if (const auto error = TryToGrowAndFlush(file, job.noticesWriteErrors ? 0 : kBlockSize)) {
    return LocalProblem(name, error);
  }
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  if (error) return LocalProblem(name, error);
  // An empty file is never copied with success where write errors go unnoticed.
  if (size == 0 && !job.noticesWriteErrors) {
    return {name + ": the copy came out empty" + SpaceHintFor(file), false};
  }
  return {};
}

// By way of the short name of its folder, where there is none by the long one.
std::optional<std::string> PathForLibrary(const fs::path& file) {
  if (std::optional<std::string> path = LocalPathForLibrary(file)) return path;
  std::error_code error;
  const fs::path above = file.parent_path();
  const Folder folder = Folder::Open(above.empty() ? "." : above, error);
  return folder.IsOpen() ? folder.PathForLibrary(Utf8Of(file.filename())) : std::nullopt;
}

// Copies to a file, which then gets its final name. Messages call it by that.
CopyResult CopyTo(const CopyJob& job, const fs::path& file, const fs::path& finalName) {
  const std::string name = Shown(finalName);
  const std::optional<std::string> localPath = PathForLibrary(file);
  if (!localPath) {
    return {name + ": " + std::string(kUntellablePath), false};
  }
  // The library tells no reasons: whether the destination can be written shows beforehand.
  if (const auto error = CreateEmpty(file)) return LocalProblem(name, error);
  UnfinishedFile unfinished(file);
  std::error_code ignored;
  const fs::perms ordinary = fs::status(file, ignored).permissions();
  const bool copied = job.copy(localPath->c_str());
  MakeOrdinary(file, ordinary);
  if (!copied) {
    const bool exists = fs::exists(file, ignored);
    const std::error_code refused =
        exists ? TryToGrowAndFlush(file, kBlockSize) : std::error_code();
    if (refused) return LocalProblem(name, refused);
    return {job.readProblem + SpaceHintFor(file), false};
  }
  CopyResult result = Check(job, file, name);
  if (!result.Good()) return result;
  std::error_code error;
  if (file != finalName) fs::rename(file, finalName, error);
  if (error) return LocalProblem(name, error);
  unfinished.Keep();
  return {};
}

fs::path PartOf(const fs::path& destination) {
  fs::path part = destination;
  part += kPartSuffix;
  // The library is not told the final name, which may be one that it cannot be told.
  if (!LocalPathForLibrary(part.filename())) part.replace_filename("copy").concat(kPartSuffix);
  return part;
}

}  // namespace

CopyResult CopyChecked(const CopyJob& job, const fs::path& file) {
  return CopyTo(job, file, file);
}

CopyResult CopyBeside(const CopyJob& job, const fs::path& destination) {
  std::error_code error;
  if (fs::exists(destination, error) && !fs::is_regular_file(destination, error)) {
    return {Shown(destination) + ": is there already, and is no ordinary file", false};
  }
  RemovePart(destination);
  return CopyTo(job, PartOf(destination), destination);
}

void RemovePart(const fs::path& destination) {
  const fs::path part = PartOf(destination);
  std::error_code ignored;
  if (!fs::is_directory(fs::symlink_status(part, ignored))) fs::remove(part, ignored);
}

bool TakesFiles(const fs::path& folder) {
  const fs::path nameless = folder / "";
  const bool made = std::ofstream(PartOf(nameless)).is_open();
  RemovePart(nameless);
  return made;
}

}  // namespace quaylink::cli
