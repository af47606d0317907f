// Local paths and their texts in UTF-8.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace quaylink::host {

std::filesystem::path PathOf(std::string_view text);

// The path as messages show it.
std::string Shown(const std::filesystem::path& path);

}  // namespace quaylink::host
