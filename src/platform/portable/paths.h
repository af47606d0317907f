// Which local paths are Windows paths.
#pragma once

#include <string_view>

namespace quaylink::portable {

// True for a path that begins with a drive letter and ":" or with a backslash.
bool IsOnDrive(std::string_view path);

}  // namespace quaylink::portable
