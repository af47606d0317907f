// What is open, and the opening of devices.
#include "platform/portable/handles.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "platform/portable/machine.h"

namespace quaylink {
namespace portable {

void ReportBadHandle(const char* what) {
  if (!CurrentMachine().abortOnBadHandle) return;
  std::fprintf(stderr, "%s: the handle is not open\n", what);
  std::abort();
}

Handles& OpenHandleTables() {
  static Handles handles;
  return handles;
}

std::size_t CountOpenHandles() {
  Handles& handles = OpenHandleTables();
  return handles.registryKeys.All().size() + handles.devices.All().size() +
         handles.searches.All().size() + handles.shellObjects;
}

}  // namespace portable

HANDLE CreateFileA(const char* path, DWORD access, DWORD shareMode, void* securityAttributes,
                   DWORD disposition, DWORD flags, HANDLE templateFile) {
  auto& devices = portable::OpenHandleTables().devices;
  const bool isKnownUse = access == (GENERIC_READ | GENERIC_WRITE) && shareMode == 0 &&
                          !securityAttributes && disposition == OPEN_EXISTING && flags == 0 &&
                          !templateFile;
  const auto isPath = [path](const auto& open) { return EqualsIgnoringCase(open.second, path); };
  const bool isInUse = std::ranges::any_of(devices.All(), isPath);
  const bool isThere = portable::CurrentMachine().devicePaths.contains(std::string_view(path));
  return isKnownUse && isThere && !isInUse ? devices.Add(path) : INVALID_HANDLE_VALUE;
}

BOOL CloseHandle(HANDLE handle) {
  return portable::OpenHandleTables().devices.Close(handle, "CloseHandle");
}

}  // namespace quaylink
