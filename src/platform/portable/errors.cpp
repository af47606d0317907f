#include "platform/portable/errors.h"

#include <cerrno>
#include <system_error>

namespace quaylink::portable {
namespace {

// Windows tells a missing file from a missing folder on the way to it.
LONG MissingError(const std::filesystem::path& path) {
  std::error_code ignored;
  const std::filesystem::path folder = path.parent_path();
  const bool folderExists = folder.empty() || std::filesystem::is_directory(folder, ignored);
  return !path.empty() && folderExists ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

LONG ErrorOf(int hostError, const std::filesystem::path& path) {
  switch (hostError) {
    case ENOENT:
      return MissingError(path);
    case ENOTDIR:
    case ELOOP:
      return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EISDIR:
      return ERROR_ACCESS_DENIED;
    case EROFS:
      return ERROR_WRITE_PROTECT;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ERROR_DISK_FULL;
    case ENAMETOOLONG:
      return ERROR_FILENAME_EXCED_RANGE;
    case EIO:
    case ENODEV:
    case ENXIO:
      return ERROR_IO_DEVICE;
    case ETXTBSY:
    case EBUSY:
      return ERROR_SHARING_VIOLATION;
    default:
      return ERROR_GEN_FAILURE;
  }
}

}  // namespace

BOOL Fail(LONG error) {
  SetLastError(static_cast<DWORD>(error));
  return 0;
}

BOOL FailWithErrno(int hostError, const std::filesystem::path& path) {
  return Fail(ErrorOf(hostError, path));
}

}  // namespace quaylink::portable
