#include <stdlib.h>

#include "platform/windows_api.h"
#include "support/loaded_library.h"

namespace quaylink::test {

bool IsLibraryLoaded(const std::string& path) {
  return GetModuleHandleA(path.c_str()) != nullptr;
}

void SetEnvironment(const std::string& name, const std::string& value) {
  _putenv((name + "=" + value).c_str());
}

}  // namespace quaylink::test
