// Searching a folder for all of its entries.
#include <sys/stat.h>

#include <system_error>

#include "platform/portable/errors.h"
#include "platform/portable/folder_listing.h"
#include "platform/portable/handles.h"
#include "platform/portable/machine.h"
#include "platform/portable/texts.h"

namespace quaylink {
namespace {

namespace fs = std::filesystem;
using portable::OpenHandleTables;
using portable::Search;

constexpr std::string_view kAllEntries = "\\*.*";

// Fills the entry of a name. False when it has vanished since the folder was listed.
bool Describe(const fs::path& folder, const std::string& name, WIN32_FIND_DATAA& entry) {
  const fs::path path = folder / name;
  struct stat status;
  if (::stat(path.c_str(), &status) != 0 && ::lstat(path.c_str(), &status) != 0) return false;
  entry = {};
  entry.dwFileAttributes =
      S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
  portable::AnsiTextOf(name).copy(entry.cFileName, sizeof entry.cFileName - 1);
  return true;
}

bool DeliverNext(Search& search, WIN32_FIND_DATAA& entry) {
  while (search.next < search.names.size()) {
    if (Describe(search.folder, search.names[search.next++], entry)) return true;
  }
  return false;
}

HANDLE FailToFind(LONG error) {
  portable::Fail(error);
  return INVALID_HANDLE_VALUE;
}

}  // namespace

HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* entry) {
  std::string_view path = pattern;
  if (!path.ends_with(kAllEntries)) return FailToFind(ERROR_INVALID_PARAMETER);
  path.remove_suffix(kAllEntries.size());

  Search search;
  search.folder = portable::HostPath(path);
  std::error_code ignored;
  if (!fs::is_directory(search.folder, ignored)) return FailToFind(ERROR_PATH_NOT_FOUND);
  search.names = portable::SortedNames(search.folder);
  search.names.insert(search.names.begin(), {".", ".."});
  if (!DeliverNext(search, *entry)) return FailToFind(ERROR_FILE_NOT_FOUND);
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
