// The work folder: where the phone libraries are gathered with everything that they depend on when
// they cannot be loaded from the maker's own folder. It is never emptied or removed.
#pragma once

#include <string>

#include "platform/windows_api.h"

namespace quaylink {

// Handles of the two phone libraries. Each is null, or all ones, when its load failed.
struct PhoneLibraries {
  HMODULE coreFoundation = nullptr;
  HMODULE mobileDevice = nullptr;
};

// Loads CoreFoundation.dll, then iTunesMobileDevice.dll, from a folder given with its trailing
// backslash. The folder itself is searched first for what they depend on.
PhoneLibraries LoadPhoneLibraries(const std::string& folder);

// Fills the work folder from the maker's folders and the host's own, and loads both libraries from
// it. What is missing or cannot be copied is skipped: only the loads decide.
PhoneLibraries PrepareWorkFolder();

// The work folder's path with a trailing backslash, after creating it.
std::string MakeWorkFolder();

// The folder of the host's program, without a trailing backslash.
std::string GetApplicationFolder();

// Copies the tree sourceRoot + relativeStart to destinationRoot +
// relativeStart, shallower levels first. Both roots end with a backslash.
// The destination folder is created even when the source does not exist.
void CopyFolderTree(const std::string& sourceRoot, const std::string& destinationRoot,
                    const std::string& relativeStart);

// Copies one file over an existing one. Both folders end with a backslash.
void CopyNamedFile(const std::string& sourceFolder, const std::string& destinationFolder,
                   const std::string& name);

}  // namespace quaylink
