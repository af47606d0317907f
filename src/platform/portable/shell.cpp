// The shell's special folders: identifier lists, the desktop folder that names them, an allocator.
#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "platform/portable/handles.h"
#include "platform/portable/machine.h"

namespace quaylink {

// An identifier list of this shell: the folder's number, followed by its name as an 8-bit string.
struct ITEMIDLIST {
  int folderId;
};

namespace {

using portable::CurrentMachine;
using portable::ShellName;
using portable::SpecialFolder;

constexpr UINT kNameOffset = sizeof(ITEMIDLIST);

// What has been handed out and not given back. A fault in giving it back is the sanitizers' to see.
std::size_t& ObjectCount() {
  return portable::OpenHandleTables().shellObjects;
}

struct Counted {
  Counted() { ++ObjectCount(); }
  ~Counted() { --ObjectCount(); }
};

void* Allocate(std::size_t size) {
  void* block = ::operator new(size);
  ++ObjectCount();
  return block;
}

class Allocator final : public IMalloc, Counted {
 public:
  void Free(void* memory) override {
    if (memory) --ObjectCount();
    ::operator delete(memory);
  }
  ULONG Release() override {
    delete this;
    return 0;
  }
};

class DesktopFolder final : public IShellFolder, Counted {
 public:
  HRESULT GetDisplayNameOf(const ITEMIDLIST* list, DWORD flags, STRRET* name) override;
  ULONG Release() override {
    delete this;
    return 0;
  }
};

const SpecialFolder* FindFolder(int folderId) {
  const auto found = CurrentMachine().specialFolders.find(folderId);
  return found == CurrentMachine().specialFolders.end() ? nullptr : &found->second;
}

WCHAR* AllocateWideName(const std::string& path) {
  const std::u16string wide = portable::WideStringOf(path);
  auto* name = static_cast<WCHAR*>(Allocate((wide.size() + 1) * sizeof(WCHAR)));
  std::copy_n(wide.c_str(), wide.size() + 1, name);
  return name;
}

HRESULT DesktopFolder::GetDisplayNameOf(const ITEMIDLIST* list, DWORD flags, STRRET* name) {
  const SpecialFolder* folder = FindFolder(list->folderId);
  if (!folder || flags != SHGDN_FORPARSING || folder->name == ShellName::kNone) return E_FAIL;
  name->uType = static_cast<UINT>(folder->name);
  if (folder->name == ShellName::kWide) name->pOleStr = AllocateWideName(folder->path);
  if (folder->name == ShellName::kOffset) name->uOffset = kNameOffset;
  if (folder->name == ShellName::kInline) {
    name->cStr[folder->path.copy(name->cStr, MAX_PATH - 1)] = '\0';
  }
  return S_OK;
}

}  // namespace

HRESULT SHGetSpecialFolderLocation(HWND /*owner*/, int folderId, LPITEMIDLIST* list) {
  *list = nullptr;
  const SpecialFolder* folder = FindFolder(folderId);
  if (!folder) return E_FAIL;
  const std::size_t nameSize = folder->path.size() + 1;
  void* block = Allocate(kNameOffset + nameSize);
  *list = new (block) ITEMIDLIST{folderId};
  std::memcpy(static_cast<char*>(block) + kNameOffset, folder->path.c_str(), nameSize);
  return S_OK;
}

HRESULT SHGetDesktopFolder(IShellFolder** desktop) {
  *desktop = CurrentMachine().shellHasDesktop ? new DesktopFolder : nullptr;
  return *desktop ? S_OK : E_FAIL;
}

HRESULT SHGetMalloc(IMalloc** allocator) {
  *allocator = CurrentMachine().shellHasAllocator ? new Allocator : nullptr;
  return *allocator ? S_OK : E_FAIL;
}

}  // namespace quaylink
