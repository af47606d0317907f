// Everything that the portable functions have handed out and that is still open.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/portable/places.h"
#include "platform/portable/windows_functions.h"

namespace quaylink::portable {

// Says on stderr that `what` was called with a handle that is not open, and aborts where the
// machine wants it.
void ReportBadHandle(const char* what);

// Never the same value twice, so that a handle used after its close is told from every other, and
// none that looks like a small number, as on Windows.
inline std::uintptr_t lastHandleValue = 0x100;

template <class Handle, class Object>
class HandleTable {
 public:
  Handle Add(Object object) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is a number, never dereferenced.
    const auto handle = reinterpret_cast<Handle>(lastHandleValue += 4);
    objects_.emplace(handle, std::move(object));
    return handle;
  }

  // The object of an open handle; null for any other, which is reported under the caller's name.
  Object* Find(Handle handle, const char* caller) {
    const auto found = objects_.find(handle);
    if (found != objects_.end()) return &found->second;
    ReportBadHandle(caller);
    return nullptr;
  }

  BOOL Close(Handle handle, const char* caller) {
    if (!Find(handle, caller)) return 0;
    objects_.erase(handle);
    return 1;
  }

  std::map<Handle, Object>& All() { return objects_; }

 private:
  std::map<Handle, Object> objects_;
};

struct Search {
  std::string path;  // of the folder, as it was given
  Descriptor folder;
  std::vector<std::string> names;  // the computer's
  std::size_t next = 0;            // the first one still to be delivered
};

struct Handles {
  HandleTable<HKEY, std::string> registryKeys;  // the key's path below local machine
  HandleTable<HANDLE, std::string> devices;     // the device's path
  HandleTable<HANDLE, Search> searches;
  HandleTable<HMODULE, int> modules;  // how often it was loaded; the handle is dlopen's
  std::size_t shellObjects = 0;
};

Handles& OpenHandleTables();

}  // namespace quaylink::portable
