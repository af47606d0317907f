#include <dlfcn.h>

#include <cstdlib>

#include "platform/portable/places.h"
#include "support/loaded_library.h"

namespace quaylink::test {

bool IsLibraryLoaded(const std::string& path) {
  void* library = ::dlopen(portable::FindPlace(path).path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (library) ::dlclose(library);
  return library != nullptr;
}

void SetEnvironment(const std::string& name, const std::string& value) {
  if (value.empty()) {
    ::unsetenv(name.c_str());
  } else {
    ::setenv(name.c_str(), value.c_str(), 1);
  }
}

}  // namespace quaylink::test
