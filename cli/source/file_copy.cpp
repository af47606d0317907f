#include "cli/source/file_copy.h"

#include <cstddef>
#include <optional>
#include <system_error>

#include "cli/base/paths.h"
#include "cli/source/source.h"
#include "cli/system/folder.h"
#include "cli/system/system.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

// The library writes in blocks of this many bytes: a disk that refused one has no room for another.
constexpr std::size_t kBlockSize = 24576;

CopyResult LocalProblem(const std::string& name, const std::error_code& error) {
  const std::string string = name + ": cannot be written: " + ReasonOf(error);
  const bool full = error == std::errc::no_space_on_device;
  return {full ? string + "; free some space and run again" : string, full};
}

std::string SpaceHintFor(const fs::path& file) {
  std::error_code error;
  const fs::space_info space = fs::space(FolderOf(file), error);
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
  const Folder folder = Folder::Open(file.parent_path(), error);
  return folder.IsOpen() ? folder.PathForLibrary(Utf8Of(file.filename())) : std::nullopt;
}

CopyResult Untellable(const std::string& name) {
  return {name + ": " + std::string(kUntellablePath), false};
}

// Messages call the copy by that name.
CopyResult CopyTo(const CopyJob& job, const fs::path& file, const std::string& name) {
  const std::optional<std::string> localPath = PathForLibrary(file);
  if (!localPath) return Untellable(name);
  std::error_code ignored;
  const fs::perms before = fs::status(file, ignored).permissions();
  const bool copied = job.copy(localPath->c_str());
  MakeOrdinary(file, before);
  if (!copied) {
    const bool exists = fs::exists(file, ignored);
    const std::error_code refused =
        exists ? TryToGrowAndFlush(file, kBlockSize) : std::error_code();
    if (refused) return LocalProblem(name, refused);
    return {job.readProblem + SpaceHintFor(file), false};
  }
  return Check(job, file, name);
}

}  // namespace

CopyResult CopyChecked(const CopyJob& job, const TemporaryFile& file) {
  return CopyTo(job, file.Path(), Shown(file.Path()));
}

CopyResult CopyBeside(const CopyJob& job, const fs::path& destination) {
  if (const std::string obstacle = ObstacleAt(destination); !obstacle.empty()) return {obstacle};
  const std::string name = Shown(destination);
  const fs::path folder = FolderOf(destination);
  // As long as the names that such files have.
  if (!PathForLibrary(folder / "quaylink-123456.quaylink-part")) return Untellable(name);
  // The library tells no reasons: whether the copy can be written shows beforehand.
  try {
    const TemporaryFile part(folder);
    CopyResult result = CopyTo(job, part.Path(), name);
    if (!result.Good()) return result;
    const std::error_code error = part.MoveTo(destination);
    return error ? LocalProblem(name, error) : result;
  } catch (const fs::filesystem_error& error) {
    return LocalProblem(name, error.code());
  }
}

std::string ObstacleAt(const fs::path& destination) {
  std::error_code error;
  if (!fs::exists(destination, error) || fs::is_regular_file(destination, error)) return {};
  return Shown(destination) + ": is there already, and is no ordinary file";
}

}  // namespace quaylink::cli
