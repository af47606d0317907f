// The work folder: where the phone libraries are gathered with everything that they depend on when
// they cannot be loaded from the vendor's own folder. It is never emptied or removed.
#pragma once

#include <string>

#include "mobile/phone_libraries.h"

namespace quaylink {

// Fills the work folder from the vendor's folders and the host's own, and loads both libraries from
// it. What is missing or cannot be copied is skipped: only the loads decide. CoreFoundation.dll
// then stays in the process until it ends.
PhoneLibraries PrepareWorkFolder();

// The work folder's path with a trailing backslash, after creating it.
std::string MakeWorkFolder();

// The folder of the host's program, without a trailing backslash.
std::string GetApplicationFolder();

// Copies the tree sourceRoot + relativeStart to destinationRoot + relativeStart, shallower levels
// first. Both roots end with a backslash. The destination folder is created even when the source
// does not exist.
void CopyFolderTree(const std::string& sourceRoot, const std::string& destinationRoot,
                    const std::string& relativeStart);

// Copies one file over an existing one. Both folders end with a backslash.
void CopyNamedFile(const std::string& sourceFolder, const std::string& destinationFolder,
                   const std::string& name);

}  // namespace quaylink
