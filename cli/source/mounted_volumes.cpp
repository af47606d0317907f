#include "cli/source/mounted_volumes.h"

#include <mntent.h>

#include <cstdio>
#include <memory>
#include <string_view>

namespace quaylink::cli {

std::vector<std::filesystem::path> MountedVolumes(const std::filesystem::path& table) {
  const auto close = [](std::FILE* file) { endmntent(file); };
  const std::unique_ptr<std::FILE, decltype(close)> mounts(setmntent(table.c_str(), "re"));
  std::vector<std::filesystem::path> folders;
  while (const mntent* mount = mounts ? getmntent(mounts.get()) : nullptr) {
    // Others are no disks; to ask a network about its files may take for ever.
    if (std::string_view(mount->mnt_fsname).starts_with("/dev/")) {
      folders.emplace_back(mount->mnt_dir);
    }
  }
  return folders;
}

}  // namespace quaylink::cli
