// The vendor's two phone libraries, loaded into the process, and their functions by name. Whoever
// has other functions to put in their place fills in the entry points and sets `areLoaded`.
#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include "mobile/entry_points.h"
#include "platform/windows_api.h"

namespace quaylink {

struct UnloadModule {
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using LoadedModule = std::unique_ptr<std::remove_pointer_t<HMODULE>, UnloadModule>;

struct PhoneLibraries {
  // Null when the load failed. CoreFoundation.dll is let go first.
  LoadedModule mobileDeviceModule;
  LoadedModule coreFoundationModule;
  EntryPoints entryPoints;
  bool areLoaded = false;             // both of them; otherwise all entry points are null
  bool loadedFromWorkFolder = false;  // or should have been: the loads may have failed
};

// Loads CoreFoundation.dll, then iTunesMobileDevice.dll, from a folder given with its trailing
// backslash. The folder itself is searched first for what they depend on.
PhoneLibraries LoadPhoneLibraries(const std::string& folder);

}  // namespace quaylink
