// The shell's special folders: identifier lists, the desktop folder that names them, an allocator.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <set>
#include <string>

#include "platform/portable/handles.h"
#include "platform/portable/machine.h"
#include "platform/portable/texts.h"

namespace quaylink {

// An identifier list of this shell: the folder's number, followed by its name as an 8-bit text.
struct ITEMIDLIST {
  int folderId;
};

namespace {

using portable::ShellName;
using portable::SpecialFolder;

constexpr UINT kNameOffset = sizeof(ITEMIDLIST);
constexpr UINT kUnknownNameKind = 7;

int& ObjectCount() {
  return portable::OpenHandleTables().shellObjects;
}

// Memory that the shell has handed out and that its allocator takes back.
std::set<void*>& ShellMemory() {
  static std::set<void*> blocks;
  return blocks;
}

void* Allocate(std::size_t size) {
  auto block = std::make_unique_for_overwrite<std::byte[]>(size);
  ShellMemory().insert(block.get());
  ++ObjectCount();
  return block.release();
}

void Release(void* block) {
  if (block == nullptr) return;
  if (ShellMemory().erase(block) == 0) {
    portable::ReportBadHandle("IMalloc::Free");
    return;
  }
  delete[] static_cast<std::byte*>(block);
  --ObjectCount();
}

const SpecialFolder* FindFolder(int folderId) {
  const auto& folders = portable::CurrentMachine().specialFolders;
  const auto found = folders.find(folderId);
  return found == folders.end() ? nullptr : &found->second;
}

WCHAR* AllocateWideName(const std::string& path) {
  const std::u16string wide = portable::WideTextOf(path);
  auto* name = static_cast<WCHAR*>(Allocate((wide.size() + 1) * sizeof(WCHAR)));
  std::copy_n(wide.c_str(), wide.size() + 1, name);
  return name;
}

class Allocator final : public IMalloc {
 public:
  Allocator() { ++ObjectCount(); }
  ~Allocator() { --ObjectCount(); }
  void Free(void* memory) override { quaylink::Release(memory); }
  ULONG Release() override {
    delete this;
    return 0;
  }
};

class DesktopFolder final : public IShellFolder {
 public:
  DesktopFolder() { ++ObjectCount(); }
  ~DesktopFolder() { --ObjectCount(); }
  HRESULT GetDisplayNameOf(const ITEMIDLIST* list, DWORD flags, STRRET* name) override;
  ULONG Release() override {
    delete this;
    return 0;
  }
};

HRESULT DesktopFolder::GetDisplayNameOf(const ITEMIDLIST* list, DWORD flags, STRRET* name) {
  const SpecialFolder* folder = FindFolder(list->folderId);
  if (folder == nullptr || flags != SHGDN_FORPARSING) return E_FAIL;
  switch (folder->name) {
    case ShellName::kWide:
      name->uType = STRRET_WSTR;
      name->pOleStr = AllocateWideName(folder->path);
      return S_OK;
    case ShellName::kOffset:
      name->uType = STRRET_OFFSET;
      name->uOffset = kNameOffset;
      return S_OK;
    case ShellName::kInline:
      name->uType = STRRET_CSTR;
      name->cStr[folder->path.copy(name->cStr, MAX_PATH - 1)] = '\0';
      return S_OK;
    case ShellName::kUnknownKind:
      name->uType = kUnknownNameKind;
      return S_OK;
    case ShellName::kNoLocation:
    case ShellName::kNoDisplayName:
      break;
  }
  return E_FAIL;
}

}  // namespace

HRESULT SHGetSpecialFolderLocation(HWND /*owner*/, int folderId, LPITEMIDLIST* list) {
  *list = nullptr;
  const SpecialFolder* folder = FindFolder(folderId);
  if (folder == nullptr || folder->name == ShellName::kNoLocation) return E_FAIL;
  const std::size_t nameSize = folder->path.size() + 1;
  void* block = Allocate(kNameOffset + nameSize);
  *list = new (block) ITEMIDLIST{folderId};
  std::memcpy(static_cast<char*>(block) + kNameOffset, folder->path.c_str(), nameSize);
  return S_OK;
}

HRESULT SHGetDesktopFolder(IShellFolder** desktop) {
  *desktop = portable::CurrentMachine().shellHasDesktop ? new DesktopFolder : nullptr;
  return *desktop != nullptr ? S_OK : E_FAIL;
}

HRESULT SHGetMalloc(IMalloc** allocator) {
  *allocator = portable::CurrentMachine().shellHasAllocator ? new Allocator : nullptr;
  return *allocator != nullptr ? S_OK : E_FAIL;
}

}  // namespace quaylink
