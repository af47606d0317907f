// Local paths, and how they are spelled in UTF-8.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace quaylink::cli {

std::filesystem::path PathOf(std::string_view string);

// The path itself, but for bytes that are no UTF-8.
std::string Utf8Of(const std::filesystem::path& path);

// The path as messages show it.
std::string Shown(const std::filesystem::path& path);

// The folder in which a file of that path is.
std::filesystem::path FolderOf(const std::filesystem::path& file);

// What the system says about an error.
std::string ReasonOf(const std::error_code& error);

// What is wrong with a path that cannot be told to the library.
inline constexpr std::string_view kUntellablePath =
    "the path is too long, or this system's code page lacks a character of it; choose another";

}  // namespace quaylink::cli
