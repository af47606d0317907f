// What is mounted on a system that is not Windows.
#pragma once

#include <filesystem>
#include <vector>

namespace quaylink::cli {

// The folders at which disks and parts of them are mounted, by the system's table; one
// may be mounted at several.
std::vector<std::filesystem::path> MountedVolumes(
    const std::filesystem::path& table = "/proc/self/mounts");

}  // namespace quaylink::cli
