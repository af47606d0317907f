#include "cli/player_drive.h"

namespace quaylink::cli {

bool IsOrdinaryFileOfDrive(const std::string& path) {
  // Any other path is one of this computer, which the library does not confine.
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  return path.size() > 3 && isLetter(path[0]) && path[1] == ':' && path[2] == '\\';
}

bool IsPlayersDatabaseOrdinary() {
  return true;
}

}  // namespace quaylink::cli
