// Searching a folder for the names that match a pattern.
#include <sys/stat.h>

#include <cstring>
#include <system_error>

#include "common/ascii.h"
#include "platform/portable/errors.h"
#include "platform/portable/handles.h"
#include "platform/portable/host_folder.h"
#include "platform/portable/machine.h"
#include "platform/portable/paths.h"
#include "platform/portable/texts.h"

namespace quaylink {
namespace {

namespace fs = std::filesystem;
using portable::OpenHandleTables;
using portable::Search;

// "*" stands for any run of characters and "?" for any one; "*.*" matches names without a dot too.
bool Matches(std::string_view pattern, std::string_view name) {
  if (pattern == "*.*") return true;
  if (pattern.empty()) return name.empty();
  if (pattern[0] == '*') {
    return Matches(pattern.substr(1), name) || (!name.empty() && Matches(pattern, name.substr(1)));
  }
  if (name.empty()) return false;
  const bool same = pattern[0] == '?' || AsciiLower(pattern[0]) == AsciiLower(name[0]);
  return same && Matches(pattern.substr(1), name.substr(1));
}

// A time as Windows counts it: steps of 100 ns since 1601.
FILETIME FileTimeOf(const timespec& time) {
  constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
  const auto steps = static_cast<std::uint64_t>(
      (std::int64_t{time.tv_sec} + kSecondsFrom1601To1970) * 10'000'000 + time.tv_nsec / 100);
  return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

// Fills the entry of a name. False when it has vanished since the folder was listed.
bool Describe(const fs::path& folder, const std::string& name, WIN32_FIND_DATAA& entry) {
  const fs::path path = folder / name;
  struct stat status;
  if (::stat(path.c_str(), &status) != 0 && ::lstat(path.c_str(), &status) != 0) return false;

  const bool isFolder = S_ISDIR(status.st_mode);
  const auto size = isFolder ? 0 : static_cast<std::uint64_t>(status.st_size);
  entry = {};
  entry.dwFileAttributes = isFolder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
  entry.ftCreationTime = FileTimeOf(status.st_ctim);
  entry.ftLastAccessTime = FileTimeOf(status.st_atim);
  entry.ftLastWriteTime = FileTimeOf(status.st_mtim);
  entry.nFileSizeHigh = static_cast<DWORD>(size >> 32);
  entry.nFileSizeLow = static_cast<DWORD>(size);
  portable::AnsiTextOf(name).copy(entry.cFileName, sizeof entry.cFileName - 1);
  return true;
}

bool DeliverNext(Search& search, WIN32_FIND_DATAA& entry) {
  while (search.next < search.names.size()) {
    if (Describe(search.folder, search.names[search.next++], entry)) return true;
  }
  return false;
}

bool IsDriveRoot(const fs::path& folder) {
  for (const auto& [letter, drive] : portable::CurrentMachine().drives) {
    std::error_code ignored;
    if (fs::equivalent(drive.root, folder, ignored)) return true;
  }
  return false;
}

}  // namespace

HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* entry) {
  const std::string_view path = pattern;
  const char* separators = portable::IsOnDrive(path) ? "\\/:" : "/";
  const std::size_t nameStart = path.find_last_of(separators) + 1;  // 0 when there is none
  const std::string_view namePattern = path.substr(nameStart);
  const std::string_view folderPath = nameStart == 0 ? "." : path.substr(0, nameStart);

  Search search;
  search.folder = portable::HostPath(folderPath);
  std::error_code ignored;
  if (!fs::is_directory(search.folder, ignored)) {
    portable::Fail(ERROR_PATH_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  const bool hasWildcard = namePattern.find_first_of("*?") != std::string_view::npos;
  if (hasWildcard && !IsDriveRoot(search.folder)) {
    for (const char* self : {".", ".."}) {
      if (Matches(namePattern, self)) search.names.emplace_back(self);
    }
  }
  for (std::string& name : portable::SortedNames(search.folder)) {
    if (Matches(namePattern, portable::AnsiTextOf(name))) search.names.push_back(std::move(name));
  }
  if (!DeliverNext(search, *entry)) {
    portable::Fail(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  return OpenHandleTables().searches.Add(std::move(search));
}

BOOL FindNextFileA(HANDLE handle, WIN32_FIND_DATAA* entry) {
  Search* search = OpenHandleTables().searches.Find(handle, "FindNextFileA");
  if (search == nullptr) return portable::Fail(ERROR_INVALID_HANDLE);
  return DeliverNext(*search, *entry) ? 1 : portable::Fail(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE handle) {
  const bool closed = OpenHandleTables().searches.Close(handle, "FindClose");
  return closed ? 1 : portable::Fail(ERROR_INVALID_HANDLE);
}

}  // namespace quaylink
