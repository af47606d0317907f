#include <cstdlib>

#include "cli/source/mounted_volumes.h"
#include "cli/source/player_drive.h"

namespace quaylink::cli {

bool IsOrdinaryFileOfDrive(const std::string& path) {
  // Any other path is one of this computer, which the library does not confine.
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  return path.size() > 3 && isLetter(path[0]) && path[1] == ':' && path[2] == '\\';
}

bool IsPlayersDatabaseOrdinary() {
  return true;
}

std::vector<std::filesystem::path> DriveCandidates(char letter) {
  // The library reads it in the same way.
  const char* machine = secure_getenv("QUAYLINK_MACHINE");
  if (!machine || !*machine) return MountedVolumes();
  return {std::filesystem::path(machine) / "drives" / std::string(1, letter)};
}

}  // namespace quaylink::cli
