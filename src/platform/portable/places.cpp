#include <sys/stat.h>

#include <algorithm>
#include <system_error>

#include "common/ascii.h"
#include "platform/portable/folder_listing.h"
#include "platform/portable/machine.h"
#include "platform/portable/texts.h"

namespace quaylink {
namespace portable {
namespace {

namespace fs = std::filesystem;

// Where a path that begins with a backslash lies.
constexpr char kCurrentDrive = 'C';

bool IsLetter(char c) {
  return AsciiLower(c) >= 'a' && AsciiLower(c) <= 'z';
}

bool BeginsWithDrive(std::string_view path) {
  return path.size() >= 2 && IsLetter(path[0]) && path[1] == ':';
}

const Drive* FindDrive(char letter) {
  const auto& drives = CurrentMachine().drives;
  auto found = drives.find(letter);
  if (found == drives.end()) found = UpToDateMachine().drives.find(letter);
  return found == drives.end() ? nullptr : &found->second;
}

// The names of a path in order, with "." and ".." worked out as Windows does, the disk unseen.
std::vector<std::string_view> SplitNames(std::string_view path) {
  std::vector<std::string_view> names;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of("\\/"), path.size());
    const std::string_view name = path.substr(0, end);
    if (name == "..") {
      if (!names.empty()) names.pop_back();
    } else if (!name.empty() && name != ".") {
      names.push_back(name);
    }
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return names;
}

bool IsValidName(std::string_view name) {
  return std::ranges::none_of(name, [](char c) {
    return (c >= 0 && c < 0x20) || std::string_view("<>:\"|?*").find(c) != std::string_view::npos;
  });
}

// The entry of a folder with that name: the one spelled so, or the first that differs in case only.
fs::path FollowName(const fs::path& folder, const std::string& name) {
  fs::path exact = folder / name;
  struct stat ignored;
  if (::lstat(exact.c_str(), &ignored) == 0) return exact;
  for (const std::string& other : SortedNames(folder)) {
    if (EqualsIgnoringCase(other, name)) return folder / other;
  }
  return exact;
}

}  // namespace

fs::path HostPath(std::string_view localPath) {
  const bool hasDrive = BeginsWithDrive(localPath);
  if (!hasDrive && !localPath.starts_with('\\')) return localPath;
  if (localPath.starts_with("\\\\")) return {};

  const Drive* drive = FindDrive(hasDrive ? AsciiUpper(localPath[0]) : kCurrentDrive);
  if (drive == nullptr) return {};
  fs::path path = drive->root;
  for (const std::string_view name : SplitNames(localPath.substr(hasDrive ? 2 : 0))) {
    if (!IsValidName(name)) return {};
    path = FollowName(path, HostTextOf(name));
  }
  return path;
}

}  // namespace portable

UINT GetDriveTypeA(const char* rootPath) {
  const std::string_view root = rootPath;
  if (root.size() != 3 || !root.ends_with(":\\")) return DRIVE_NO_ROOT_DIR;
  const auto& drives = portable::UpToDateMachine().drives;
  const auto found = drives.find(AsciiUpper(root[0]));
  std::error_code ignored;
  const bool present =
      found != drives.end() && std::filesystem::is_directory(found->second.root, ignored);
  return present ? found->second.kind : DRIVE_NO_ROOT_DIR;
}

}  // namespace quaylink
