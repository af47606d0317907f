#include <windows.h>

#include <cerrno>
#include <memory>

#include "collection/open_file.h"

namespace quaylink {

LocalFile OpenForReading(const char* utf8Path) {
  constexpr int kToItsEnd = -1;
  const int size =
      MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8Path, kToItsEnd, nullptr, 0);
  if (size <= 0) {
    errno = EINVAL;
    return nullptr;
  }
  const auto path = std::make_unique<wchar_t[]>(static_cast<std::size_t>(size));
  MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8Path, kToItsEnd, path.get(), size);
  return LocalFile(_wfopen(path.get(), L"rb"));
}

LocalFile OpenOrdinaryFile(const char* utf8Path) {
  return OpenForReading(utf8Path);  // folders do not open, and there are no pipes in them
}

bool IsPathSeparator(char c) {
  return c == '/' || c == '\\' || c == ':';
}

}  // namespace quaylink
