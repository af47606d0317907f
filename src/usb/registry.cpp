#include "usb/registry.h"

#include "platform/windows_api.h"

namespace quaylink {
namespace {

constexpr DWORD kNameSize = 256;   // bytes, with the NUL
constexpr DWORD kValueSize = 256;  // bytes; the last one stays zero

// The keys from local machine down to the one at a path, closed again in the opposite order. A path
// that begins with a backslash opens the predefined key itself once more, which is never closed.
class OpenKeys {
 public:
  OpenKeys() = default;
  ~OpenKeys() {
    while (!keys_.empty()) {
      if (keys_.back() != HKEY_LOCAL_MACHINE) RegCloseKey(keys_.back());
      keys_.pop_back();
    }
  }
  OpenKeys(const OpenKeys&) = delete;
  OpenKeys& operator=(const OpenKeys&) = delete;

  bool Open(const std::vector<std::string>& components) {
    keys_.reserve(components.size());
    for (const std::string& component : components) {
      HKEY key = nullptr;
      if (RegOpenKeyExA(Last(), component.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
      keys_.push_back(key);
    }
    return true;
  }

  HKEY Last() const { return keys_.empty() ? HKEY_LOCAL_MACHINE : keys_.back(); }

 private:
  std::vector<HKEY> keys_;
};

}  // namespace

bool IsSupportedWindowsNt() {
  OSVERSIONINFOA version = {};
  version.dwOSVersionInfoSize = sizeof version;
  if (GetVersionExA(&version) == 0) return false;
  return version.dwPlatformId == VER_PLATFORM_WIN32_NT && version.dwMajorVersion >= 4 &&
         version.dwMajorVersion <= 6;
}

void SplitRegistryPath(std::string_view path, std::vector<std::string>& components,
                       std::string& remainder) {
  for (std::size_t end = path.find('\\'); end != path.npos; end = path.find('\\')) {
    components.emplace_back(path.substr(0, end));
    path.remove_prefix(end + 1);
  }
  remainder = path;
}

bool EnumerateSubkeys(std::string_view path, std::vector<std::string>& names) {
  if (!IsSupportedWindowsNt()) return false;
  std::vector<std::string> components;
  std::string remainder;
  SplitRegistryPath(path, components, remainder);
  if (!remainder.empty()) return false;

  OpenKeys keys;
  if (!keys.Open(components)) return false;
  for (DWORD index = 0;; ++index) {
    char name[kNameSize];
    DWORD nameLength = kNameSize;
    FILETIME lastWriteTime;
    const LONG result = RegEnumKeyExA(keys.Last(), index, name, &nameLength, nullptr, nullptr,
                                      nullptr, &lastWriteTime);
    if (result != ERROR_SUCCESS) return result == ERROR_NO_MORE_ITEMS;
    names.emplace_back(name);
  }
}

bool ReadStringValue(std::string_view path, std::string& value) {
  if (!IsSupportedWindowsNt()) return false;
  std::vector<std::string> components;
  std::string valueName;
  SplitRegistryPath(path, components, valueName);

  OpenKeys keys;
  if (!keys.Open(components)) return false;
  char data[kValueSize] = {};
  DWORD dataLength = kValueSize - 1;
  DWORD type = 0;
  const LONG result = RegQueryValueExA(keys.Last(), valueName.c_str(), nullptr, &type,
                                       reinterpret_cast<BYTE*>(data), &dataLength);
  if (result != ERROR_SUCCESS) return false;
  value = data;
  return true;
}

}  // namespace quaylink
