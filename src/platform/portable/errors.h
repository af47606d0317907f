// Windows results of failed host calls.
#pragma once

#include <filesystem>

#include "platform/portable/windows_functions.h"

namespace quaylink::portable {

// Sets the last error; the result is FALSE.
BOOL Fail(LONG error);

// Sets the last error from the `errno` value that a host call on `path` left; the result is FALSE.
BOOL FailWithErrno(int hostError, const std::filesystem::path& path);

}  // namespace quaylink::portable
