// The registry functions, over the current machine's local-machine tree. An open key is the path to
// it, looked up at each call: the tree may change while the key is open.
#include <algorithm>

#include "platform/portable/handles.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

using portable::CurrentMachine;
using portable::OpenHandleTables;

constexpr DWORD kTypeString = 1;

// The path below local machine of an open key.
LONG FindPath(HKEY handle, const char* caller, std::string& path) {
  if (handle == HKEY_LOCAL_MACHINE) return ERROR_SUCCESS;
  const std::string* open = OpenHandleTables().registryKeys.Find(handle, caller);
  if (!open) return ERROR_INVALID_HANDLE;
  path = *open;
  return CurrentMachine().registry.contains(path) ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

}  // namespace

LONG RegOpenKeyExA(HKEY key, const char* subkey, DWORD options, DWORD access, HKEY* result) {
  if (options != 0 || access != KEY_READ) return ERROR_INVALID_PARAMETER;
  std::string path;
  const LONG found = FindPath(key, "RegOpenKeyExA", path);
  if (found != ERROR_SUCCESS) return found;
  if (key == HKEY_LOCAL_MACHINE && *subkey == '\0') {
    *result = key;  // a predefined key is opened by nobody
    return ERROR_SUCCESS;
  }
  if (!path.empty() && *subkey != '\0') path.push_back('\\');
  path.append(subkey);
  const auto opened = CurrentMachine().registry.find(path);
  if (opened == CurrentMachine().registry.end()) return ERROR_FILE_NOT_FOUND;
  if (opened->second.refusesToOpen) return ERROR_ACCESS_DENIED;
  *result = OpenHandleTables().registryKeys.Add(std::move(path));
  return ERROR_SUCCESS;
}

LONG RegEnumKeyExA(HKEY key, DWORD index, char* name, DWORD* nameLength, DWORD* reserved,
                   char* className, DWORD* classLength, FILETIME* lastWriteTime) {
  if (reserved || className || classLength) return ERROR_INVALID_PARAMETER;
  std::string path;
  const LONG found = FindPath(key, "RegEnumKeyExA", path);
  if (found != ERROR_SUCCESS) return found;
  portable::Machine& machine = CurrentMachine();
  const bool isUsbTree = EqualsIgnoringCase(path, portable::kUsbTree);
  if (isUsbTree && index == 0 && machine.readDevices) machine.readDevices(machine);

  // The length counts the NUL on the way in, and not on the way out.
  if (!path.empty()) path.push_back('\\');
  for (auto at = machine.registry.lower_bound(path); at != machine.registry.end(); ++at) {
    const std::string_view below = at->first;
    if (!EqualsIgnoringCase(below.substr(0, path.size()), path)) break;
    const std::string_view subkey = below.substr(path.size());
    if (subkey.find('\\') != subkey.npos || index-- != 0) continue;
    if (subkey.size() >= *nameLength) return ERROR_MORE_DATA;
    name[subkey.copy(name, subkey.size())] = '\0';
    *nameLength = static_cast<DWORD>(subkey.size());
    *lastWriteTime = {};
    return ERROR_SUCCESS;
  }
  return ERROR_NO_MORE_ITEMS;
}

LONG RegQueryValueExA(HKEY key, const char* valueName, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* dataLength) {
  if (reserved || !data) return ERROR_INVALID_PARAMETER;
  std::string path;
  const LONG found = FindPath(key, "RegQueryValueExA", path);
  if (found != ERROR_SUCCESS) return found;

  const auto& values = CurrentMachine().registry[path].values;
  const auto value = values.find(std::string_view(valueName));
  if (value == values.end()) return ERROR_FILE_NOT_FOUND;
  *type = kTypeString;
  const DWORD capacity = *dataLength;
  *dataLength = static_cast<DWORD>(value->second.size());
  if (value->second.size() > capacity) return ERROR_MORE_DATA;
  std::ranges::copy(value->second, data);
  return ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY key) {
  // Windows lets it pass when a predefined key is closed, but nobody can have opened it.
  const bool closed = OpenHandleTables().registryKeys.Close(key, "RegCloseKey") != 0;
  return closed || key == HKEY_LOCAL_MACHINE ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

}  // namespace quaylink
