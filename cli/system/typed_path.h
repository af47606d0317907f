// Paths as users type them on a command line.
#pragma once

#include <string>

namespace quaylink::cli {

// Puts the path that is meant in the place of what was typed. Gives what is wrong with it; nothing
// when it can be used.
std::string ReadTypedPath(std::string& path);

}  // namespace quaylink::cli
