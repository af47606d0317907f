// Loaded libraries: real shared libraries, on the machine's drives or elsewhere on the computer.
#include <dlfcn.h>

#include <memory>

#include "platform/portable/handles.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

using portable::OpenHandleTables;
using Library = std::unique_ptr<void, decltype([](void* library) { ::dlclose(library); })>;

}  // namespace

HMODULE LoadLibraryExA(const char* path, HANDLE file, DWORD flags) {
  if (file || flags != LOAD_WITH_ALTERED_SEARCH_PATH) return nullptr;
  const portable::Place place = portable::FindPlace(path);
  struct stat status;
  const bool isFile = place.Describe(status) && S_ISREG(status.st_mode);
  // An empty path would give the program itself, and the loader waits for what is no file.
  if (place.path.empty() || (place.isOnDrive && !isFile)) return nullptr;
  Library library(::dlopen(place.path.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) return nullptr;
  const auto handle = static_cast<HMODULE>(library.get());
  ++OpenHandleTables().modules.All()[handle];
  static_cast<void>(library.release());
  return handle;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
  if (!OpenHandleTables().modules.Find(module, "GetProcAddress")) return nullptr;
  return reinterpret_cast<FARPROC>(::dlsym(module, name));
}

BOOL FreeLibrary(HMODULE module) {
  auto& modules = OpenHandleTables().modules;
  int* timesLoaded = modules.Find(module, "FreeLibrary");
  if (!timesLoaded) return 0;
  if (--*timesLoaded == 0) modules.Close(module, "FreeLibrary");
  return ::dlclose(module) == 0 ? 1 : 0;
}

DWORD GetModuleFileNameA(HMODULE module, char* path, DWORD size) {
  if (module || size == 0) return 0;
  const std::string& name = portable::CurrentMachine().hostProgramPath;
  const auto length = static_cast<DWORD>(name.copy(path, size - 1));
  path[length] = '\0';
  return length == name.size() ? length : size;
}

}  // namespace quaylink
