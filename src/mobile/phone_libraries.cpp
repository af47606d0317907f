#include "mobile/phone_libraries.h"

#include <cstdint>

namespace quaylink {
namespace {

LoadedModule Load(const std::string& path) {
  const HMODULE module = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  const bool isModule = module && reinterpret_cast<std::uintptr_t>(module) != UINTPTR_MAX;
  return LoadedModule(isModule ? module : nullptr);
}

}  // namespace

PhoneLibraries LoadPhoneLibraries(const std::string& folder) {
  PhoneLibraries libraries;
  libraries.coreFoundationModule = Load(folder + "CoreFoundation.dll");
  libraries.mobileDeviceModule = Load(folder + "iTunesMobileDevice.dll");
  libraries.areLoaded = libraries.coreFoundationModule && libraries.mobileDeviceModule;
  if (!libraries.areLoaded) return libraries;

  libraries.entryPoints.ForEach([&](PhoneLibrary library, const char* name, auto& slot) {
    const LoadedModule& module = library == PhoneLibrary::kCoreFoundation
                                     ? libraries.coreFoundationModule
                                     : libraries.mobileDeviceModule;
    // By way of the one function type from which every other may be cast to without a warning.
    using AnyFunction = void (*)();
    using Slot = std::remove_reference_t<decltype(slot)>;
    slot =
        reinterpret_cast<Slot>(reinterpret_cast<AnyFunction>(GetProcAddress(module.get(), name)));
  });
  return libraries;
}

}  // namespace quaylink
