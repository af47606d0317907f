// Listing a folder of the computer.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quaylink::portable {

// The names in a folder of the computer without "." and "..", sorted without regard to case (names
// that are equal so, by their bytes). Empty when the folder cannot be read.
std::vector<std::string> SortedNames(const std::filesystem::path& folder);

}  // namespace quaylink::portable
