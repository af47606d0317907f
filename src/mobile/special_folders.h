// Folders that the shell knows by number. Paths are in the ANSI code page, without a trailing
// backslash.
#pragma once

#include <string>

namespace quaylink {

// The path of the special folder with that CSIDL number; empty on any failure.
std::string GetSpecialFolderPath(int folderId);

// The folder for files that programs share: the one for 32-bit programs where there are two.
std::string GetCommonFilesFolder();

}  // namespace quaylink
