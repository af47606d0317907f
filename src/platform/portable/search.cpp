// Searching a folder of a drive for all of its entries.
#include <fcntl.h>

#include "platform/portable/handles.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

using portable::FindPlace;
using portable::OpenHandleTables;
using portable::Search;

constexpr std::string_view kAllEntries = "\\*.*";

// Fills the entry of the next name that has not vanished since the folder was listed. False when
// there is none.
bool DeliverNext(Search& search, WIN32_FIND_DATAA& entry) {
  while (search.next < search.names.size()) {
    const std::string& name = search.names[search.next++];
    const std::string ansiName = portable::AnsiStringOf(name);
    struct stat status;
    const int folder = search.folder.Number();
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
    // A link is what it leads to, unless it leads nowhere.
    if (S_ISLNK(status.st_mode)) FindPlace(search.path + "\\" + ansiName).Describe(status);
    entry = {};
    entry.dwFileAttributes = portable::AttributesOf(status);
    ansiName.copy(entry.cFileName, sizeof entry.cFileName - 1);
    return true;
  }
  return false;
}

}  // namespace

HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* entry) {
  std::string_view path = pattern;
  if (!path.ends_with(kAllEntries)) return INVALID_HANDLE_VALUE;
  path.remove_suffix(kAllEntries.size());
  const portable::Place place = FindPlace(path, kAllEntries.size());
  constexpr int kFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  portable::Descriptor folder(::openat(place.folder.Number(), place.name.c_str(), kFlags));
  if (!place.isOnDrive || !folder.IsOpen()) return INVALID_HANDLE_VALUE;

  Search search = {std::string(path), std::move(folder), {}};
  search.names = portable::SortedNames(search.folder);
  search.names.insert(search.names.begin(), {".", ".."});
  if (!DeliverNext(search, *entry)) return INVALID_HANDLE_VALUE;
  return OpenHandleTables().searches.Add(std::move(search));
}

BOOL FindNextFileA(HANDLE handle, WIN32_FIND_DATAA* entry) {
  Search* search = OpenHandleTables().searches.Find(handle, "FindNextFileA");
  return search && DeliverNext(*search, *entry) ? 1 : 0;
}

BOOL FindClose(HANDLE handle) {
  return OpenHandleTables().searches.Close(handle, "FindClose");
}

}  // namespace quaylink
