// Opening, copying, creating, removing and asking about files.
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "platform/portable/handles.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

using portable::Descriptor;
using portable::FindPlace;
using portable::Place;

constexpr std::size_t kCopyBlock = std::size_t{256} * 1024;
constexpr mode_t kAnyoneWrites = 0222;
constexpr mode_t kFileMode = 0666;    // of what is made, less the process's mask
constexpr mode_t kFolderMode = 0777;  // the same
constexpr int kCreate = O_CREAT | O_TRUNC;

bool IsReadOnly(const struct stat& status) {
  return (status.st_mode & kAnyoneWrites) == 0;
}

bool IsSame(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool IsLoadedLibrary(const struct stat& file) {
  const auto isFile = [](dl_phdr_info* library, std::size_t /*size*/, void* data) {
    struct stat status;
    const bool exists = ::stat(library->dlpi_name, &status) == 0;
    return exists && IsSame(status, *static_cast<const struct stat*>(data)) ? 1 : 0;
  };
  struct stat wanted = file;
  return ::dl_iterate_phdr(isFile, &wanted) != 0;
}

// On a drive nothing else is taken for a file; elsewhere the host may mean a device, such as
// /dev/null, but not a pipe, which could block for ever.
bool IsFile(const Place& place, const struct stat& status) {
  return S_ISREG(status.st_mode) || (!place.isOnDrive && S_ISCHR(status.st_mode));
}

int OpenEntry(const Place& place, int flags) {
  const int number = ::openat(place.folder.Number(), place.name.c_str(), flags, kFileMode);
  if (number >= 0) return number;
  if (errno == EINTR) return OpenEntry(place, flags);
  // Whoever has a lease of the file gives it back.
  const bool isLeased = errno == EWOULDBLOCK && (flags & O_NONBLOCK) != 0;
  return isLeased ? OpenEntry(place, flags & ~O_NONBLOCK) : number;
}

// Not open when it cannot be opened in that way on Windows.
Descriptor OpenFile(const Place& place, int flags) {
  struct stat status;
  const bool exists = place.Describe(status);
  if (exists && !IsFile(place, status)) return Descriptor();
  const bool isToChange = exists && (flags & kCreate) != 0;
  if (isToChange && (IsReadOnly(status) || IsLoadedLibrary(status))) return Descriptor();
  const int careful = place.isOnDrive ? O_NOFOLLOW | O_NONBLOCK : 0;
  Descriptor file(OpenEntry(place, flags | careful | O_CLOEXEC));
  // Another file may have taken its place.
  const bool isFile = ::fstat(file.Number(), &status) == 0 && IsFile(place, status);
  return isFile ? std::move(file) : Descriptor();
}

bool CopyContents(const Descriptor& source, const Descriptor& destination) {
  std::vector<char> block(kCopyBlock);
  while (true) {
    ssize_t left = ::read(source.Number(), block.data(), block.size());
    if (left < 0 && errno == EINTR) continue;
    if (left <= 0) return left == 0;
    for (const char* next = block.data(); left > 0;) {
      const ssize_t size = ::write(destination.Number(), next, static_cast<std::size_t>(left));
      if (size < 0 && errno != EINTR) return false;
      next += std::max<ssize_t>(size, 0);
      left -= std::max<ssize_t>(size, 0);
    }
  }
}

}  // namespace

LocalFile OpenLocalFile(const char* path, const char* mode) {
  const int writing = (std::strchr(mode, '+') ? O_RDWR : O_WRONLY) | kCreate;
  Descriptor file = OpenFile(FindPlace(path), *mode == 'r' ? O_RDONLY : writing);
  LocalFile stream(file.IsOpen() ? ::fdopen(file.Number(), mode) : nullptr);
  if (stream) file.Release();
  return stream;
}

bool RemoveLocalFile(const char* path) try {
  const Place place = FindPlace(path);
  struct stat status;
  return place.Describe(status) && !IsReadOnly(status) &&
         ::unlinkat(place.folder.Number(), place.name.c_str(), 0) == 0;
} catch (const std::bad_alloc&) {
  return false;
}

BOOL CopyFileA(const char* source, const char* destination, BOOL failIfExists) {
  const Descriptor from = OpenFile(FindPlace(source), O_RDONLY);
  struct stat status;
  if (failIfExists != 0 || ::fstat(from.Number(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return 0;
  }
  const Place place = FindPlace(destination);
  struct stat oldStatus;
  if (place.Describe(oldStatus) && IsSame(status, oldStatus)) return 0;
  Descriptor to = OpenFile(place, O_WRONLY | kCreate);
  if (!to.IsOpen() || !CopyContents(from, to)) return 0;

  // The copy keeps the time of the last write, where the file system can, and the read-only mark.
  struct stat copied;
  if (::fstat(to.Number(), &copied) == 0 && S_ISREG(copied.st_mode)) {
    const timespec times[] = {status.st_atim, status.st_mtim};
    static_cast<void>(::futimens(to.Number(), times));
    if (IsReadOnly(status)) ::fchmod(to.Number(), copied.st_mode & 0777 & ~kAnyoneWrites);
  }
  return to.Close() ? 1 : 0;
}

BOOL CreateDirectoryA(const char* path, void* /*securityAttributes*/) {
  constexpr std::size_t kRoomForAName = 12;
  const Place place = FindPlace(path, kRoomForAName);
  return ::mkdirat(place.folder.Number(), place.name.c_str(), kFolderMode) == 0 ? 1 : 0;
}

DWORD portable::AttributesOf(const struct stat& status) {
  if (S_ISDIR(status.st_mode)) return FILE_ATTRIBUTE_DIRECTORY;
  return IsReadOnly(status) ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL;
}

DWORD GetFileAttributesA(const char* path) {
  struct stat status;
  return FindPlace(path).Describe(status) ? portable::AttributesOf(status)
                                          : INVALID_FILE_ATTRIBUTES;
}

}  // namespace quaylink
