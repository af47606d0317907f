// Everything that the portable functions have handed out and that is still open. Handle values are
// never used again, so that a handle used after its close is told from every other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/portable/windows_functions.h"

namespace quaylink::portable {

// Says on stderr that `what` was called with a handle that
// is not open, and aborts where the machine wants it.
void ReportBadHandle(const char* what);

std::uintptr_t NextHandleValue();

template <class Handle, class Object>
class HandleTable {
 public:
  Handle Add(Object object) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is a number, never dereferenced.
    const auto handle = reinterpret_cast<Handle>(NextHandleValue());
    objects_.emplace(handle, std::move(object));
    return handle;
  }

  // The object behind an open handle; null for any
  // other, which is reported under the caller's name.
  Object* Find(Handle handle, const char* caller) {
    const auto found = objects_.find(handle);
    if (found != objects_.end()) return &found->second;
    ReportBadHandle(caller);
    return nullptr;
  }

  bool Close(Handle handle, const char* caller) {
    if (Find(handle, caller) == nullptr) return false;
    objects_.erase(handle);
    return true;
  }

  const std::map<Handle, Object>& All() const { return objects_; }
  int Count() const { return static_cast<int>(objects_.size()); }

 private:
  std::map<Handle, Object> objects_;
};

struct Search {
  std::filesystem::path folder;
  std::vector<std::string> names;  // the host's
  std::size_t next = 0;            // the first one still to be delivered
};

struct LoadedModule {
  void* library;  // from dlopen
  int references;
};

struct Handles {
  HandleTable<HKEY, std::string> registryKeys;  // the key's path below local machine
  HandleTable<HANDLE, std::string> devices;     // the device's path
  HandleTable<HANDLE, Search> searches;
  HandleTable<HMODULE, LoadedModule> modules;
  int shellObjects = 0;
};

Handles& OpenHandleTables();

}  // namespace quaylink::portable
