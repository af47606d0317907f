// Opening the path of an attached device.
#include <algorithm>

#include "common/ascii.h"
#include "platform/portable/errors.h"
#include "platform/portable/handles.h"
#include "platform/portable/machine.h"

namespace quaylink {

HANDLE CreateFileA(const char* path, DWORD access, DWORD shareMode, void* securityAttributes,
                   DWORD disposition, DWORD flags, HANDLE templateFile) {
  if (access != (GENERIC_READ | GENERIC_WRITE) || shareMode != 0 || securityAttributes != nullptr ||
      disposition != OPEN_EXISTING || flags != 0 || templateFile != nullptr) {
    portable::Fail(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  auto& devices = portable::OpenHandleTables().devices;
  const auto isPath = [path](std::string_view other) { return EqualsIgnoringCase(path, other); };
  if (std::ranges::none_of(portable::UpToDateMachine().devicePaths, isPath)) {
    portable::Fail(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  const auto isOpenDevice = [&isPath](const auto& entry) { return isPath(entry.second); };
  if (std::ranges::any_of(devices.All(), isOpenDevice)) {
    portable::Fail(ERROR_SHARING_VIOLATION);
    return INVALID_HANDLE_VALUE;
  }
  return devices.Add(path);
}

BOOL CloseHandle(HANDLE handle) {
  const bool closed = portable::OpenHandleTables().devices.Close(handle, "CloseHandle");
  return closed ? 1 : portable::Fail(ERROR_INVALID_HANDLE);
}

}  // namespace quaylink
