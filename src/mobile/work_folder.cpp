#include "mobile/work_folder.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "mobile/special_folders.h"
#include "platform/folder_search.h"

namespace quaylink {
namespace {

enum class Kind { kTree, kFile };

struct Item {
  Kind kind;
  const char* name;
};

constexpr Item kApplicationSupportItems[] = {
    {Kind::kTree, "CFNetwork.resources"},
    {Kind::kTree, "Foundation.resources"},
    {Kind::kTree, "CoreFoundation.resources"},
    {Kind::kFile, "ASL.dll"},
    {Kind::kFile, "CFNetwork.dll"},
    {Kind::kFile, "CoreFoundation.dll"},
    {Kind::kFile, "Foundation.dll"},
    {Kind::kFile, "icudt40.dll"},
    {Kind::kFile, "icuin40.dll"},
    {Kind::kFile, "icuuc40.dll"},
    {Kind::kFile, "libtidy.dll"},
    {Kind::kFile, "libxml2.dll"},
    {Kind::kFile, "objc.dll"},
    {Kind::kFile, "pthreadVC2.dll"},
    {Kind::kFile, "SQLite3.dll"},
};

constexpr Item kMobileDeviceItems[] = {
    {Kind::kTree, "AppleMobileBackup.resources"},
    {Kind::kFile, "DeviceLink.dll"},
    {Kind::kFile, "AppleMobileBackup.exe"},
    {Kind::kFile, "AppleMobileBackup_main.dll"},
    {Kind::kFile, "iTunesMobileDevice.dll"},
    {Kind::kFile, "libeay32.dll"},
    {Kind::kFile, "MobileDevice.dll"},
    {Kind::kFile, "ssleay32.dll"},
};

constexpr Item kHostItems[] = {
    {Kind::kFile, "zlib1.dll"},
    {Kind::kFile, "OrvendelHelper.exe"},
};

template <std::size_t kCount>
void CopyItems(const Item (&items)[kCount], const std::string& source, const std::string& work) {
  for (const Item& item : items) {
    if (item.kind == Kind::kTree) {
      CopyFolderTree(source, work, item.name);
    } else {
      CopyNamedFile(source, work, item.name);
    }
  }
}

}  // namespace

PhoneLibraries PrepareWorkFolder() {
  const std::string work = MakeWorkFolder();
  const std::string common = GetCommonFilesFolder();
  CopyItems(kApplicationSupportItems, common + "\\Apple\\Apple Application Support\\", work);
  CopyItems(kMobileDeviceItems, common + "\\Apple\\Mobile Device Support\\", work);
  CopyItems(kHostItems, GetApplicationFolder() + "\\", work);
  PhoneLibraries libraries = LoadPhoneLibraries(work);
  libraries.loadedFromWorkFolder = true;
  static_cast<void>(libraries.coreFoundationModule.release());
  return libraries;
}

std::string MakeWorkFolder() {
  std::string path = GetSpecialFolderPath(CSIDL_PERSONAL) + "\\Orvendel_WorkFolder";
  CreateDirectoryA(path.c_str(), nullptr);
  return path + "\\";
}

std::string GetApplicationFolder() {
  // Older systems fill the whole buffer without a terminating zero when the path does not fit.
  char path[MAX_PATH] = {};
  const DWORD length = std::min<DWORD>(GetModuleFileNameA(nullptr, path, MAX_PATH), MAX_PATH - 1);
  const std::string program(path, length);
  return program.substr(0, LastBackslash(program));
}

void CopyFolderTree(const std::string& sourceRoot, const std::string& destinationRoot,
                    const std::string& relativeStart) {
  std::vector<std::string> pending{relativeStart};
  for (std::size_t i = 0; i < pending.size(); ++i) {
    const std::string relative = pending[i];
    CreateDirectoryA((destinationRoot + relative).c_str(), nullptr);
    for (FolderSearch search(sourceRoot + relative + "\\*.*"); search.Found(); search.Next()) {
      const WIN32_FIND_DATAA& entry = search.Entry();
      const char* name = entry.cFileName;
      if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
      std::string entryPath = relative + "\\" + name;
      if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        pending.push_back(std::move(entryPath));
      } else {
        CopyFileA((sourceRoot + entryPath).c_str(), (destinationRoot + entryPath).c_str(), 0);
      }
    }
  }
}

void CopyNamedFile(const std::string& sourceFolder, const std::string& destinationFolder,
                   const std::string& name) {
  CopyFileA((sourceFolder + name).c_str(), (destinationFolder + name).c_str(), 0);
}

}  // namespace quaylink
