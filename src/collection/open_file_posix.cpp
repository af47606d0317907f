#include "collection/open_file.h"

namespace quaylink {

LocalFile OpenForReading(const char* utf8Path) {
  return LocalFile(std::fopen(utf8Path, "rb"));
}

bool IsPathSeparator(char c) {
  return c == '/';
}

}  // namespace quaylink
