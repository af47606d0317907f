// Folders that the shell knows by number. Paths are in the ANSI code page, without a trailing
// backslash.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quaylink {

// The position of a path's last backslash, npos when there is none. In East Asian code pages not
// every byte of that value is one: it may be the second half of a character.
std::size_t LastBackslash(std::string_view path);

// The path of the special folder with that CSIDL number; empty on any failure.
std::string GetSpecialFolderPath(int folderId);

// The folder for files that programs share: the one for 32-bit programs where there are two.
std::string GetCommonFilesFolder();

}  // namespace quaylink
