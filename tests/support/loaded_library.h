// What the process itself knows of its libraries and its environment.
#pragma once

#include <string>

namespace quaylink::test {

// Whether the library at that Windows path is loaded in this process.
bool IsLibraryLoaded(const std::string& path);

// Sets an environment variable as loaded libraries see it; an empty value takes it away.
void SetEnvironment(const std::string& name, const std::string& value);

}  // namespace quaylink::test
