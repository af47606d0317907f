#include "platform/portable/places.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <iterator>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/portable/machine.h"

namespace quaylink {
namespace portable {
namespace {

namespace fs = std::filesystem;

// Where a path that begins with a backslash lies.
constexpr char kCurrentDrive = 'C';

constexpr int kMostLinks = 40;  // in one path, as the kernel has it

bool BeginsWithDrive(std::string_view path) {
  return path.size() >= 2 && path[1] == ':' && AsciiUpper(path[0]) >= 'A' &&
         AsciiUpper(path[0]) <= 'Z';
}

const Drive* FindDrive(char letter) {
  Machine& machine = CurrentMachine();
  if (!machine.drives.contains(letter) && machine.readDrives) machine.readDrives(machine);
  const auto found = machine.drives.find(letter);
  return found == machine.drives.end() ? nullptr : &found->second;
}

// The names in a path, without those that mean the folder they stand in.
std::vector<std::string_view> SplitNames(std::string_view path, std::string_view separators) {
  std::vector<std::string_view> names;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of(separators), path.size());
    const std::string_view name = path.substr(0, end);
    if (!name.empty() && name != ".") names.push_back(name);
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return names;
}

bool IsValidName(std::string_view name) {
  return std::ranges::none_of(name, [](char c) {
    const bool isControl = static_cast<unsigned char>(c) < 0x20;
    return isControl || std::string_view("<>:\"|?*").find(c) != std::string_view::npos;
  });
}

// Opens the entry of that name, a link itself: the one spelled so, or else the first that differs
// in case only, whose spelling the name then gets.
Descriptor OpenEntry(const Descriptor& folder, std::string& name) {
  constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
  Descriptor entry(::openat(folder.Number(), name.c_str(), kFlags));
  if (entry.IsOpen() || errno != ENOENT) return entry;
  for (const std::string& other : SortedNames(folder)) {
    if (!EqualsIgnoringCase(other, name)) continue;
    name = other;
    return Descriptor(::openat(folder.Number(), name.c_str(), kFlags));
  }
  return entry;
}

// Empty when the entry is no link.
std::string LinkTarget(const Descriptor& entry) {
  char target[PATH_MAX];
  const ssize_t size = ::readlinkat(entry.Number(), "", target, sizeof target);
  return {target, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

// Takes the root off a link's target, which may name what is on the drive by its whole path. False
// for one that lies elsewhere.
bool RemoveRoot(std::string_view root, std::string& target) {
  if (root.ends_with('/')) root.remove_suffix(1);
  if (!target.starts_with(root)) return false;
  target.erase(0, root.size());
  return target.empty() || target[0] == '/';
}

// Where names lead to from a drive's root; `left` holds the next one last. Each step opens a name
// in an open folder and no link by itself, so that it stays on the drive whatever changes there
// meanwhile.
Place FollowNames(const fs::path& root, std::vector<std::string> left) {
  std::vector<Descriptor> folders;  // from the root on; one that is missing is not open
  Descriptor rootFolder(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  folders.push_back(std::move(rootFolder));
  fs::path path = root;
  std::string name;
  for (int links = 0; !left.empty();) {
    name = std::move(left.back());
    left.pop_back();
    if (name == "..") {
      if (folders.size() == 1) return {};
      folders.pop_back();
      path = path.parent_path();
      name.clear();
      continue;
    }
    Descriptor entry = OpenEntry(folders.back(), name);
    std::string target = LinkTarget(entry);
    if (target.empty()) {
      path /= name;
      if (!left.empty()) folders.push_back(std::move(entry));
      continue;
    }
    name.clear();
    if (++links > kMostLinks) return {};
    if (target[0] == '/') {
      if (!RemoveRoot(root.native(), target)) return {};
      folders.resize(1);
      path = root;
    }
    const std::vector<std::string_view> names = SplitNames(target, "/");
    left.insert(left.end(), names.rbegin(), names.rend());
  }
  if (name.empty()) name.push_back('.');
  return {std::move(folders.back()), std::move(name), std::move(path), true};
}

}  // namespace

int Descriptor::Release() {
  return std::exchange(number_, -1);
}

bool Descriptor::Close() {
  const int number = Release();
  return number < 0 || ::close(number) == 0;
}

bool Place::Describe(struct stat& status) const {
  const int flags = isOnDrive ? AT_SYMLINK_NOFOLLOW : 0;
  return ::fstatat(folder.Number(), name.c_str(), &status, flags) == 0;
}

Place FindPlace(std::string_view localPath, std::size_t roomBehind) {
  const bool hasDrive = BeginsWithDrive(localPath);
  if (!hasDrive && !localPath.starts_with('\\')) {
    return {Descriptor(AT_FDCWD), std::string(localPath), localPath, false};
  }
  const bool isTooLong = WideStringOf(localPath).size() + roomBehind >= MAX_PATH;
  const Drive* drive = FindDrive(hasDrive ? AsciiUpper(localPath[0]) : kCurrentDrive);
  if (isTooLong || localPath.starts_with("\\\\") || !drive) return {};

  // Windows works ".." out before it looks at the disk, and knows nothing above the root.
  std::vector<std::string_view> names;
  for (const std::string_view name : SplitNames(localPath.substr(hasDrive ? 2 : 0), "\\/")) {
    if (!IsValidName(name)) return {};
    if (name != "..") {
      names.push_back(name);
    } else if (!names.empty()) {
      names.pop_back();
    }
  }
  std::vector<std::string> left;
  std::transform(names.rbegin(), names.rend(), std::back_inserter(left), Utf8StringOf);
  return FollowNames(drive->root, std::move(left));
}

std::vector<std::string> SortedNames(const Descriptor& folder) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  Descriptor opened(::openat(folder.Number(), ".", kFlags));
  const auto close = [](DIR* listing) { static_cast<void>(::closedir(listing)); };
  const std::unique_ptr<DIR, decltype(close)> listing(opened.IsOpen() ? ::fdopendir(opened.Number())
                                                                      : nullptr);
  if (listing) opened.Release();

  // The standard's directory iterator ends the program when memory runs out.
  std::vector<std::string> names;
  while (const dirent* entry = listing ? ::readdir(listing.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  std::ranges::sort(names, [](const std::string& a, const std::string& b) {
    return NameOrder()(a, b) || (!NameOrder()(b, a) && a < b);
  });
  return names;
}

std::vector<std::string> SortedNames(const fs::path& folder) {
  return SortedNames(Descriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)));
}

}  // namespace portable

UINT GetDriveTypeA(const char* rootPath) {
  const std::string_view root = rootPath;
  if (root.size() != 3 || !root.ends_with(":\\")) return DRIVE_NO_ROOT_DIR;
  const char letter = AsciiUpper(root[0]);
  portable::Machine& machine = portable::CurrentMachine();
  // Whoever goes through the letters in order sees the drives of one moment.
  const bool isNewLook =
      letter <= std::exchange(machine.lastLetterAskedFor, letter) || machine.drives.empty();
  if (isNewLook && machine.readDrives) machine.readDrives(machine);
  const auto found = machine.drives.find(letter);
  if (found == machine.drives.end()) return DRIVE_NO_ROOT_DIR;
  std::error_code failed;
  const bool isThere = std::filesystem::is_directory(found->second.root, failed);
  return isThere ? found->second.kind : DRIVE_NO_ROOT_DIR;
}

}  // namespace quaylink
