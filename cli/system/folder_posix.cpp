#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>
#include <utility>

#include "cli/system/folder.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

constexpr char kLockName[] = ".quaylink-lock";
constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::error_code LastError() {
  return {errno, std::generic_category()};
}

std::error_code ErrorOf(int result) {
  return result == 0 ? std::error_code() : LastError();
}

int Descriptor(const Handle& handle) {
  return static_cast<int>(handle.Value());
}

Handle Opened(int descriptor, std::error_code& error) {
  error = descriptor < 0 ? LastError() : std::error_code();
  return descriptor < 0 ? Handle() : Handle(descriptor);
}

FileFacts FactsOf(const struct stat& status) {
  // Some file systems know times that are centuries too far away.
  constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max() / kNanoseconds - 1;
  const std::int64_t seconds = std::clamp<std::int64_t>(status.st_mtim.tv_sec, -kLast, kLast);
  return {static_cast<std::uint64_t>(status.st_size),
          seconds * kNanoseconds + status.st_mtim.tv_nsec};
}

// As the system takes them: the time of the last reading stays.
std::array<timespec, 2> TimesOf(std::int64_t time) {
  timespec changed = {time / kNanoseconds, time % kNanoseconds};
  if (changed.tv_nsec < 0) {
    changed.tv_nsec += kNanoseconds;
    --changed.tv_sec;
  }
  return {timespec{0, UTIME_OMIT}, changed};
}

// Of a new file. Asked for before any thread can make one: to ask is to change it for a moment.
const mode_t kOrdinaryMode = [] {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}();

// Whether files of this file system belong to users. Memory sticks are often formatted for systems
// that do not know any: everything on them belongs to whoever has mounted them.
bool KeepsOwners(int descriptor) {
  // MSDOS, exFAT, NTFS (two drivers), file systems in user space, network shares of Windows (two).
  constexpr std::array<std::uint32_t, 7> kWithout = {0x4D44,     0x2011BAB0, 0x5346544E, 0x7366746E,
                                                     0x65735546, 0xFF534D42, 0xFE534D42};
  struct statfs status = {};
  if (fstatfs(descriptor, &status) != 0) return true;
  return std::ranges::find(kWithout, static_cast<std::uint32_t>(status.f_type)) == kWithout.end();
}

}  // namespace

Handle& Handle::operator=(Handle&& other) noexcept {
  std::swap(value_, other.value_);
  return *this;
}

std::error_code Handle::Close() {
  if (!IsOpen()) return {};
  return ErrorOf(close(static_cast<int>(std::exchange(value_, kNone))));
}

FileFacts File::Facts(std::error_code& error) const {
  struct stat status = {};
  error = ErrorOf(fstat(Descriptor(handle_), &status));
  return FactsOf(status);
}

std::size_t File::Read(std::span<char> bytes, std::error_code& error) {
  std::size_t sum = 0;
  while (sum < bytes.size()) {
    const ssize_t count = read(Descriptor(handle_), bytes.data() + sum, bytes.size() - sum);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) error = LastError();
    if (count <= 0) break;
    sum += static_cast<std::size_t>(count);
  }
  return sum;
}

std::error_code File::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(Descriptor(handle_), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return LastError();
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

std::uint64_t File::Append(File& source, std::uint64_t most, std::error_code& error,
                           bool& readingFailed) {
  // What is small goes quicker by way of the program.
  constexpr std::uint64_t kSmall = 64 * 1024;
  readingFailed = false;
  std::uint64_t sum = 0;
  while (most > kSmall && sum < most) {
    const ssize_t count = copy_file_range(Descriptor(source.handle_), nullptr, Descriptor(handle_),
                                          nullptr, static_cast<std::size_t>(most - sum), 0);
    if (count < 0 && errno == EINTR) continue;
    // Some file systems refuse, others say that there is nothing.
    if (count <= 0) break;
    sum += static_cast<std::uint64_t>(count);
  }
  static thread_local const auto buffer = std::make_unique<std::array<char, 256 * 1024>>();
  while (sum < most) {
    const std::size_t wanted = std::min<std::uint64_t>(buffer->size(), most - sum);
    const std::size_t count = source.Read(std::span(*buffer).first(wanted), error);
    readingFailed = static_cast<bool>(error);
    if (!error) error = Write({buffer->data(), count});
    if (error) break;
    sum += count;
    if (count < wanted) break;
  }
  return sum;
}

std::error_code File::SetTime(std::int64_t time) {
  return ErrorOf(futimens(Descriptor(handle_), TimesOf(time).data()));
}

void File::Forget() {
  posix_fadvise(Descriptor(handle_), 0, 0, POSIX_FADV_DONTNEED);
}

std::error_code File::Flush() {
  return ErrorOf(fsync(Descriptor(handle_)));
}

std::size_t Folder::MostHeld() {
  // Beside them there are files, and what else a program opens.
  constexpr rlim_t kOthers = 32;
  constexpr rlim_t kMost = 250;
  rlimit limit = {};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return kMost;
  return std::clamp<rlim_t>((limit.rlim_cur - std::min(limit.rlim_cur, kOthers)) / 3, 1, kMost);
}

Folder Folder::Open(const fs::path& path, std::error_code& error) {
  Handle handle = Opened(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), error);
  if (!handle.IsOpen()) return {};
  std::error_code ignored;
  const fs::path absolute = fs::absolute(path, ignored);
  return {std::move(handle), ignored ? path : absolute};
}

Entry Folder::Look(const std::string& name) const {
  struct stat status = {};
  if (fstatat(Descriptor(handle_), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    // What cannot be asked about is there.
    return {errno == ENOENT ? EntryKind::kMissing : EntryKind::kOther, {}};
  }
  if (S_ISDIR(status.st_mode)) return {EntryKind::kFolder, {}};
  if (!S_ISREG(status.st_mode)) return {EntryKind::kOther, {}};
  return {EntryKind::kFile, FactsOf(status)};
}

std::vector<std::string> Folder::Names(std::error_code& error) const {
  error = {};
  // A descriptor of its own: reading has a position.
  const int descriptor = openat(Descriptor(handle_), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  DIR* directory = descriptor < 0 ? nullptr : fdopendir(descriptor);
  if (!directory) {
    error = LastError();
    if (descriptor >= 0) close(descriptor);
    return {};
  }
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = readdir(directory)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
    errno = 0;
  }
  if (errno != 0) error = LastError();
  closedir(directory);
  return names;
}

Folder Folder::OpenFolder(const std::string& name, std::error_code& error) const {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  Handle handle = Opened(openat(Descriptor(handle_), name.c_str(), kFlags), error);
  if (!handle.IsOpen()) return {};
  return {std::move(handle), path_ / name};
}

std::error_code Folder::MakeFolder(const std::string& name) const {
  return ErrorOf(mkdirat(Descriptor(handle_), name.c_str(), 0777));
}

Folder Folder::MakePrivateFolder(const std::string& name, std::error_code& error) const {
  error = ErrorOf(mkdirat(Descriptor(handle_), name.c_str(), 0700));
  if (error) return {};
  Folder made = OpenFolder(name, error);
  if (error) return {};
  // The owner of this folder may have put another one in its place.
  struct stat status = {};
  const bool isPrivate = fstat(Descriptor(made.handle_), &status) == 0 &&
                         (status.st_mode & 0077) == 0 && status.st_uid == geteuid();
  if (isPrivate || !KeepsOwners(Descriptor(made.handle_))) return made;
  error = std::make_error_code(std::errc::operation_not_permitted);
  return {};
}

bool Folder::IsOwn() const {
  struct stat status = {};
  return !KeepsOwners(Descriptor(handle_)) ||
         (fstat(Descriptor(handle_), &status) == 0 && status.st_uid == geteuid());
}

File Folder::OpenFile(const std::string& name, std::error_code& error) const {
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  File file(Opened(openat(Descriptor(handle_), name.c_str(), kFlags), error));
  struct stat status = {};
  if (!file.IsOpen()) return {};
  if (fstat(Descriptor(file.handle_), &status) == 0 && S_ISREG(status.st_mode)) {
    file.facts_ = FactsOf(status);
    return file;
  }
  error = std::make_error_code(std::errc::not_supported);
  return {};
}

File Folder::MakeFile(const std::string& name, std::error_code& error) const {
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  return File(Opened(openat(Descriptor(handle_), name.c_str(), kFlags, 0666), error));
}

std::error_code Folder::Move(const std::string& name, const Folder& target,
                             const std::string& newName, bool replaces) const {
  const int from = Descriptor(handle_);
  const int to = Descriptor(target.handle_);
  if (replaces) return ErrorOf(renameat(from, name.c_str(), to, newName.c_str()));
  if (renameat2(from, name.c_str(), to, newName.c_str(), RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL && errno != ENOSYS) return LastError();
  // The file system cannot do that at once. A second name is refused, too, where one is.
  if (linkat(from, name.c_str(), to, newName.c_str(), 0) == 0) {
    return ErrorOf(unlinkat(from, name.c_str(), 0));
  }
  if (errno == EEXIST) return LastError();
  // It knows no second names either: nobody can have put a link there.
  if (target.Look(newName).kind != EntryKind::kMissing) {
    return std::make_error_code(std::errc::file_exists);
  }
  return ErrorOf(renameat(from, name.c_str(), to, newName.c_str()));
}

std::error_code Folder::Remove(const std::string& name) const {
  return ErrorOf(unlinkat(Descriptor(handle_), name.c_str(), 0));
}

std::error_code Folder::RemoveFolder(const std::string& name) const {
  return ErrorOf(unlinkat(Descriptor(handle_), name.c_str(), AT_REMOVEDIR));
}

void Folder::MakeOrdinary(const std::string& name) const {
  fchmodat(Descriptor(handle_), name.c_str(), kOrdinaryMode, 0);
}

std::error_code Folder::SetTime(const std::string& name, std::int64_t time) const {
  return ErrorOf(
      utimensat(Descriptor(handle_), name.c_str(), TimesOf(time).data(), AT_SYMLINK_NOFOLLOW));
}

std::optional<std::string> Folder::PathForLibrary(const std::string& name) const {
  // Leads to this very folder, whatever becomes of its name.
  const std::string self = "/proc/self/fd/" + std::to_string(handle_.Value());
  struct stat here = {};
  struct stat there = {};
  if (fstat(Descriptor(handle_), &here) != 0) return std::nullopt;
  const auto isHere = [&](const std::string& path) {
    return stat(path.c_str(), &there) == 0 && there.st_dev == here.st_dev &&
           there.st_ino == here.st_ino;
  };
  if (isHere(self)) return self + '/' + name;
  // Without that file system, its path is as good where nobody else may change what is on the way.
  const fs::path above = path_.parent_path();
  const bool safe = stat(above.c_str(), &there) == 0 && (there.st_mode & 0022) == 0 &&
                    (there.st_uid == geteuid() || there.st_uid == 0);
  if (!safe || !isHere(path_.native())) return std::nullopt;
  return (path_ / name).native();
}

bool Folder::Lock(std::error_code& error) {
  error = {};
  if (flock(Descriptor(handle_), LOCK_EX | LOCK_NB) == 0) return true;
  if (errno == EWOULDBLOCK) return false;
  // Network file systems lock files only.
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  lock_ = Opened(openat(Descriptor(handle_), kLockName, kFlags, 0666), error);
  if (!lock_.IsOpen() || flock(Descriptor(lock_), LOCK_EX | LOCK_NB) == 0) return !error;
  if (errno != EWOULDBLOCK) error = LastError();
  return false;
}

bool Folder::IsDrive() const {
  struct stat here = {};
  struct stat above = {};
  return fstat(Descriptor(handle_), &here) == 0 &&
         fstatat(Descriptor(handle_), "..", &above, 0) == 0 && here.st_dev != above.st_dev;
}

bool Folder::SharesDriveWith(const Folder& other) const {
  struct stat here = {};
  struct stat there = {};
  return fstat(Descriptor(handle_), &here) == 0 && fstat(Descriptor(other.handle_), &there) == 0 &&
         here.st_dev == there.st_dev;
}

std::uint64_t Folder::FreeBytes(std::error_code& error) const {
  struct statvfs status = {};
  error = ErrorOf(fstatvfs(Descriptor(handle_), &status));
  return std::uint64_t{status.f_bavail} * status.f_frsize;
}

std::uint64_t Folder::BlockSize() const {
  struct statvfs status = {};
  return fstatvfs(Descriptor(handle_), &status) == 0 && status.f_frsize > 0 ? status.f_frsize : 1;
}

std::error_code Folder::Flush(std::span<const std::string>) const {
  // The file system as a whole: one wait for all.
  return ErrorOf(syncfs(Descriptor(handle_)));
}

}  // namespace quaylink::cli
