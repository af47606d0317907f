// The registry functions, over the current machine's local-machine tree. An open key is the path to
// it, looked up at each call: the tree may change while the key is open.
#include <algorithm>
#include <cstring>

#include "common/ascii.h"
#include "platform/portable/errors.h"
#include "platform/portable/handles.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

using portable::OpenHandleTables;
using portable::RegistryKey;

constexpr DWORD kTypeText = 1;

LONG FindSubkey(RegistryKey& parent, std::string_view path, RegistryKey*& result) {
  RegistryKey* key = &parent;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('\\'), path.size());
    key = key->Find(path.substr(0, end));
    if (key == nullptr) return ERROR_FILE_NOT_FOUND;
    if (key->refusesToOpen) return ERROR_ACCESS_DENIED;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  result = key;
  return ERROR_SUCCESS;
}

// The key behind a handle, and its path below local machine.
LONG FindOpenKey(HKEY handle, const char* caller, RegistryKey*& key, std::string& path) {
  if (handle == HKEY_LOCAL_MACHINE) {
    path.clear();
    key = &portable::UpToDateMachine().localMachine;
    return ERROR_SUCCESS;
  }
  const std::string* openPath = OpenHandleTables().registryKeys.Find(handle, caller);
  if (openPath == nullptr) return ERROR_INVALID_HANDLE;
  path = *openPath;
  const LONG result = FindSubkey(portable::CurrentMachine().localMachine, path, key);
  return result == ERROR_SUCCESS ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

}  // namespace

LONG RegOpenKeyExA(HKEY key, const char* subkey, DWORD options, DWORD access, HKEY* result) {
  if (options != 0 || access != KEY_READ) return ERROR_INVALID_PARAMETER;
  RegistryKey* parent = nullptr;
  std::string path;
  const LONG parentResult = FindOpenKey(key, "RegOpenKeyExA", parent, path);
  if (parentResult != ERROR_SUCCESS) return parentResult;

  const std::string_view name = subkey;
  if (key == HKEY_LOCAL_MACHINE && name.empty()) {
    *result = key;  // a predefined key is not opened once more
    return ERROR_SUCCESS;
  }
  RegistryKey* opened = nullptr;
  const LONG found = FindSubkey(*parent, name, opened);
  if (found != ERROR_SUCCESS) return found;

  if (!path.empty() && !name.empty()) path.push_back('\\');
  path.append(name);
  *result = OpenHandleTables().registryKeys.Add(std::move(path));
  return ERROR_SUCCESS;
}

LONG RegEnumKeyExA(HKEY key, DWORD index, char* name, DWORD* nameLength, DWORD* reserved,
                   char* className, DWORD* classLength, FILETIME* lastWriteTime) {
  if (reserved != nullptr || className != nullptr || classLength != nullptr) {
    return ERROR_INVALID_PARAMETER;
  }
  RegistryKey* parent = nullptr;
  std::string path;
  const LONG found = FindOpenKey(key, "RegEnumKeyExA", parent, path);
  if (found != ERROR_SUCCESS) return found;
  if (index >= parent->subkeys.size()) return ERROR_NO_MORE_ITEMS;

  // The length counts the NUL on the way in, and not on the way out.
  const std::string& subkey = parent->subkeys[index].name;
  if (subkey.size() >= *nameLength) return ERROR_MORE_DATA;
  std::memcpy(name, subkey.c_str(), subkey.size() + 1);
  *nameLength = static_cast<DWORD>(subkey.size());
  *lastWriteTime = {};
  return ERROR_SUCCESS;
}

LONG RegQueryValueExA(HKEY key, const char* valueName, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* dataLength) {
  if (reserved != nullptr || data == nullptr) return ERROR_INVALID_PARAMETER;
  RegistryKey* owner = nullptr;
  std::string path;
  const LONG found = FindOpenKey(key, "RegQueryValueExA", owner, path);
  if (found != ERROR_SUCCESS) return found;

  const auto value = std::ranges::find_if(owner->values, [valueName](const auto& candidate) {
    return EqualsIgnoringCase(candidate.name, valueName);
  });
  if (value == owner->values.end()) return ERROR_FILE_NOT_FOUND;

  *type = kTypeText;
  const DWORD capacity = *dataLength;
  *dataLength = static_cast<DWORD>(value->data.size());
  if (value->data.size() > capacity) return ERROR_MORE_DATA;
  std::copy(value->data.begin(), value->data.end(), data);
  return ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE) {
    // Windows lets this pass, but nothing that opened it can be closing it.
    portable::ReportBadHandle("RegCloseKey");
    return ERROR_SUCCESS;
  }
  const bool closed = OpenHandleTables().registryKeys.Close(key, "RegCloseKey");
  return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

}  // namespace quaylink
