// Copying, creating, removing and asking about files.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <vector>

#include "platform/portable/errors.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

namespace fs = std::filesystem;
using portable::Fail;
using portable::FailWithErrno;
using portable::HostPath;

constexpr std::size_t kCopyBlock = std::size_t{256} * 1024;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }
  // Some file systems report a failed write only here.
  bool Close() {
    const bool closed = number_ < 0 || ::close(number_) == 0;
    number_ = -1;
    return closed;
  }

 private:
  int number_;
};

bool WriteAll(const Descriptor& file, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(file.Number(), bytes, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

// Copies what is left of the source. The result is null,
// or the path on which a call failed, with errno set.
const fs::path* CopyContents(const Descriptor& source, const fs::path& sourcePath,
                             const Descriptor& destination, const fs::path& destinationPath) {
  std::vector<char> block(kCopyBlock);
  while (true) {
    const ssize_t size = ::read(source.Number(), block.data(), block.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return &sourcePath;
    if (size == 0) return nullptr;
    if (!WriteAll(destination, block.data(), static_cast<std::size_t>(size))) {
      return &destinationPath;
    }
  }
}

bool IsSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace

BOOL CopyFileA(const char* source, const char* destination, BOOL failIfExists) {
  if (failIfExists != 0) return Fail(ERROR_INVALID_PARAMETER);
  const fs::path sourcePath = HostPath(source);
  Descriptor from(::open(sourcePath.c_str(), O_RDONLY | O_CLOEXEC));
  if (!from.IsOpen()) return FailWithErrno(errno, sourcePath);
  struct stat sourceStatus;
  if (::fstat(from.Number(), &sourceStatus) != 0) return FailWithErrno(errno, sourcePath);
  if (S_ISDIR(sourceStatus.st_mode)) return Fail(ERROR_ACCESS_DENIED);

  const fs::path destinationPath = HostPath(destination);
  struct stat oldStatus;
  const bool exists = ::stat(destinationPath.c_str(), &oldStatus) == 0;
  if (exists && IsSameFile(sourceStatus, oldStatus)) return Fail(ERROR_SHARING_VIOLATION);
  constexpr mode_t kAnyone = 0666;  // less the process's mask
  Descriptor to(::open(destinationPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kAnyone));
  if (!to.IsOpen()) return FailWithErrno(errno, destinationPath);

  const fs::path* failed = CopyContents(from, sourcePath, to, destinationPath);
  if (failed != nullptr) return FailWithErrno(errno, *failed);
  // The copy keeps the time of the last write, where the file system can.
  const timespec times[] = {sourceStatus.st_atim, sourceStatus.st_mtim};
  static_cast<void>(::futimens(to.Number(), times));
  return to.Close() ? 1 : FailWithErrno(errno, destinationPath);
}

BOOL CreateDirectoryA(const char* path, void* /*securityAttributes*/) {
  const fs::path hostPath = HostPath(path);
  constexpr mode_t kAnyone = 0777;
  if (::mkdir(hostPath.c_str(), kAnyone) == 0) return 1;
  if (errno == EEXIST) return Fail(ERROR_ALREADY_EXISTS);
  return errno == ENOENT ? Fail(ERROR_PATH_NOT_FOUND) : FailWithErrno(errno, hostPath);
}

DWORD GetFileAttributesA(const char* path) {
  const fs::path hostPath = HostPath(path);
  struct stat status;
  if (::stat(hostPath.c_str(), &status) != 0) {
    FailWithErrno(errno, hostPath);
    return INVALID_FILE_ATTRIBUTES;
  }
  return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

std::FILE* fopen(const char* path, const char* mode) {
  std::FILE* file = std::fopen(HostPath(path).c_str(), mode);
  struct stat status;
  // A folder can be opened for reading here, but not on Windows.
  if (file != nullptr && ::fstat(::fileno(file), &status) == 0 && S_ISDIR(status.st_mode)) {
    std::fclose(file);
    errno = EACCES;
    return nullptr;
  }
  return file;
}

int _unlink(const char* path) {
  try {
    return ::unlink(HostPath(path).c_str());
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return -1;
  }
}

}  // namespace quaylink
