#include <sys/stat.h>

#include "collection/open_file.h"

namespace quaylink {

LocalFile OpenForReading(const char* utf8Path) {
  return LocalFile(std::fopen(utf8Path, "rb"));
}

LocalFile OpenOrdinaryFile(const char* utf8Path) {
  struct stat status {};
  const bool isOrdinary = ::stat(utf8Path, &status) == 0 && S_ISREG(status.st_mode);
  return isOrdinary ? OpenForReading(utf8Path) : nullptr;
}

bool IsPathSeparator(char c) {
  return c == '/';
}

}  // namespace quaylink
