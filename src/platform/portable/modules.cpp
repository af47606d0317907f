// Loaded libraries: real shared libraries, in the machine's folders or the host's.
#include <dlfcn.h>

#include <memory>
#include <system_error>

#include "platform/portable/errors.h"
#include "platform/portable/handles.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

using portable::Fail;
using portable::LoadedModule;
using portable::OpenHandleTables;

struct CloseLibrary {
  void operator()(void* library) const { static_cast<void>(::dlclose(library)); }
};

}  // namespace

HMODULE LoadLibraryExA(const char* path, HANDLE file, DWORD flags) {
  if (file != nullptr || flags != LOAD_WITH_ALTERED_SEARCH_PATH) {
    Fail(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  // An empty path would give the program itself.
  const std::filesystem::path hostPath = portable::HostPath(path);
  std::unique_ptr<void, CloseLibrary> library(
      hostPath.empty() ? nullptr : ::dlopen(hostPath.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) {
    std::error_code ignored;
    const bool isFile = std::filesystem::is_regular_file(hostPath, ignored);
    Fail(isFile ? ERROR_BAD_EXE_FORMAT : ERROR_MOD_NOT_FOUND);
    return nullptr;
  }
  // A library loaded again gives the same handle, once more referenced.
  auto& modules = OpenHandleTables().modules;
  HMODULE handle = nullptr;
  for (const auto& [other, module] : modules.All()) {
    if (module.library == library.get()) handle = other;
  }
  if (handle == nullptr) handle = modules.Add(LoadedModule{library.get(), 0});
  ++modules.Find(handle, "LoadLibraryExA")->references;
  static_cast<void>(library.release());
  return handle;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
  const LoadedModule* loaded = OpenHandleTables().modules.Find(module, "GetProcAddress");
  if (loaded == nullptr) {
    Fail(ERROR_INVALID_HANDLE);
    return nullptr;
  }
  void* address = ::dlsym(loaded->library, name);
  if (address == nullptr) Fail(ERROR_PROC_NOT_FOUND);
  return reinterpret_cast<FARPROC>(address);
}

BOOL FreeLibrary(HMODULE module) {
  auto& modules = OpenHandleTables().modules;
  LoadedModule* loaded = modules.Find(module, "FreeLibrary");
  if (loaded == nullptr) return Fail(ERROR_INVALID_HANDLE);
  void* library = loaded->library;
  if (--loaded->references == 0) modules.Close(module, "FreeLibrary");
  return ::dlclose(library) == 0 ? 1 : Fail(ERROR_GEN_FAILURE);
}

DWORD GetModuleFileNameA(HMODULE module, char* path, DWORD size) {
  if (module != nullptr || size == 0) return static_cast<DWORD>(Fail(ERROR_INVALID_PARAMETER));
  const std::string& name = portable::CurrentMachine().hostProgramPath;
  const auto length = static_cast<DWORD>(name.copy(path, size - 1));
  path[length] = '\0';
  if (length == name.size()) return length;
  Fail(ERROR_INSUFFICIENT_BUFFER);
  return size;
}

}  // namespace quaylink
