#include "mobile/special_folders.h"

#include <memory>

#include "platform/windows_api.h"

namespace quaylink {
namespace {

struct Release {
  template <class ShellObject>
  void operator()(ShellObject* object) const {
    object->Release();
  }
};

// Memory that the shell hands over and its allocator takes back.
class ShellMemory {
 public:
  ShellMemory(IMalloc& allocator, void* memory) : allocator_(allocator), memory_(memory) {}
  ~ShellMemory() { allocator_.Free(memory_); }
  ShellMemory(const ShellMemory&) = delete;
  ShellMemory& operator=(const ShellMemory&) = delete;

 private:
  IMalloc& allocator_;
  void* memory_;
};

std::string ToAnsi(const WCHAR* wide) {
  char bytes[MAX_PATH] = {};
  const int length =
      WideCharToMultiByte(CP_ACP, 0, wide, -1, bytes, sizeof bytes, nullptr, nullptr);
  return length > 0 ? std::string(bytes) : std::string();
}

// The string of a name that the shell returned for `list`, whichever way it is handed over.
std::string StringOf(const STRRET& name, LPITEMIDLIST list, IMalloc& allocator) {
  switch (name.uType) {
    case STRRET_WSTR: {
      const ShellMemory wideName(allocator, name.pOleStr);
      return ToAnsi(name.pOleStr);
    }
    case STRRET_OFFSET:
      return reinterpret_cast<const char*>(list) + name.uOffset;
    case STRRET_CSTR:
      return name.cStr;
    default:
      return {};
  }
}

}  // namespace

std::size_t LastBackslash(std::string_view path) {
  std::size_t last = std::string_view::npos;
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (path[i] == '\\') last = i;
    if (IsDBCSLeadByte(static_cast<BYTE>(path[i])) != 0) ++i;
  }
  return last;
}

std::string GetSpecialFolderPath(int folderId) {
  // The allocator comes first: without it nothing that the shell hands out could be given back.
  IMalloc* allocatorObject = nullptr;
  if (SHGetMalloc(&allocatorObject) != S_OK) return {};
  const std::unique_ptr<IMalloc, Release> allocator(allocatorObject);

  LPITEMIDLIST list = nullptr;
  if (SHGetSpecialFolderLocation(nullptr, folderId, &list) != S_OK) return {};
  const ShellMemory listMemory(*allocator, list);

  IShellFolder* desktopObject = nullptr;
  if (SHGetDesktopFolder(&desktopObject) != S_OK) return {};
  const std::unique_ptr<IShellFolder, Release> desktop(desktopObject);

  STRRET name = {};
  if (desktop->GetDisplayNameOf(list, SHGDN_FORPARSING, &name) != S_OK) return {};
  std::string path = StringOf(name, list, *allocator);
  // A drive's root has a trailing backslash, and some shells name the documents folder with one.
  if (!path.empty() && LastBackslash(path) == path.size() - 1) path.pop_back();
  return path;
}

std::string GetCommonFilesFolder() {
  std::string folder = GetSpecialFolderPath(CSIDL_PROGRAM_FILES_COMMONX86);
  if (folder.empty()) folder = GetSpecialFolderPath(CSIDL_PROGRAM_FILES_COMMON);
  return folder;
}

}  // namespace quaylink
