#include <windows.h>

#include "cli/source/player_drive.h"

namespace quaylink::cli {
namespace {

// The functions for the system's code page are used throughout, because the library uses them.
bool IsReachedWithoutLink(const std::string& path) {
  std::size_t end = path.find_first_not_of("\\/", 2);
  while (end != std::string::npos) {
    end = path.find_first_of("\\/", end + 1);
    const DWORD attributes = GetFileAttributesA(path.substr(0, end).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return false;
  }
  return true;
}

// Names such as CON and NUL are devices in every folder. To ask what a file is needs no access to
// its contents.
bool IsFileOnDisk(const std::string& path) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file = CreateFileA(path.c_str(), 0, kShared, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool isOnDisk = GetFileType(file) == FILE_TYPE_DISK;
  CloseHandle(file);
  return isOnDisk;
}

}  // namespace

bool IsOrdinaryFileOfDrive(const std::string& path) {
  const auto isSeparator = [](char c) { return c == '\\' || c == '/'; };
  const bool isOfDrive = path.size() > 3 && path[1] == ':' && isSeparator(path[2]);
  return isOfDrive && IsReachedWithoutLink(path) && IsFileOnDisk(path);
}

bool IsPlayersDatabaseOrdinary() {
  for (char letter = 'B'; letter <= 'Z'; ++letter) {
    const std::string root = std::string(1, letter) + ":\\";
    if (GetDriveTypeA(root.c_str()) != DRIVE_REMOVABLE) continue;
    const DWORD music = GetFileAttributesA((root + "iPod_Control\\Music").c_str());
    if (music == INVALID_FILE_ATTRIBUTES || (music & FILE_ATTRIBUTE_DIRECTORY) == 0) continue;
    return IsOrdinaryFileOfDrive(root + "iPod_Control\\iTunes\\iTunesDB");
  }
  return false;
}

std::vector<std::filesystem::path> DriveCandidates(char letter) {
  return {std::string{letter} + ":\\"};
}

}  // namespace quaylink::cli
