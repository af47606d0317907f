#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "cli/system/typed_path.h"
#include "cli/system/wide_strings.h"

namespace quaylink::cli {
namespace {

constexpr std::string_view kSeparators = "\\/";

bool BeginsWithDrive(std::string_view path) {
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  return path.size() >= 2 && isLetter(path[0]) && path[1] == ':';
}

bool IsThereDrive(char letter) {
  return ((GetLogicalDrives() >> ((letter | 0x20) - 'a')) & 1u) != 0;
}

std::string FullPath(const std::string& path) {
  const std::wstring wide = ToWide(path, CP_UTF8);
  std::wstring full(GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(
      GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full.empty() ? path : ToUtf8(full);
}

// Such as CON and LPT1, which older systems know with any extension, too.
bool IsDevice(const std::string& name) {
  return FullPath(name).starts_with("\\\\.\\");
}

// The command prompt does not know this name of the user's own folder.
void ExpandHome(std::string& path) {
  const bool isHome =
      path.starts_with('~') && (path.size() == 1 || kSeparators.find(path[1]) != kSeparators.npos);
  const wchar_t* home = _wgetenv(L"USERPROFILE");
  if (isHome && home) path.replace(0, 1, ToUtf8(home));
}

// Windows opens a path without the dots and spaces at the end of its names, so the program calls it
// by what it is then. Gives a name in it that is a device's.
std::string CleanNames(std::string& path) {
  std::string clean;
  std::size_t begin = 0;
  while (begin < path.size()) {
    const std::size_t end = std::min(path.find_first_of(kSeparators, begin), path.size());
    std::string name = path.substr(begin, end - begin);
    if (IsDevice(name)) return name;
    if (name != "." && name != "..") {
      const std::size_t last = name.find_last_not_of(". ");
      if (last != std::string::npos) name.erase(last + 1);
    }
    clean += name;
    if (end < path.size()) clean += path[end];
    begin = end + 1;
  }
  path = clean;
  return {};
}

}  // namespace

std::string ReadTypedPath(std::string& path) {
  if (path.starts_with("\\\\?\\")) return {};  // is taken as it is, by agreement
  const std::size_t quote = path.find('"');
  if (quote != std::string::npos) {
    return "the backslash before the quotation mark behind " + path.substr(0, quote) +
           " makes the mark a part of the path; leave that backslash away";
  }
  ExpandHome(path);
  const bool hasDrive = BeginsWithDrive(path);
  if (hasDrive && !IsThereDrive(path[0])) return "there is no drive " + path.substr(0, 2);
  if (path.find_first_of("<>|?*:", hasDrive ? 2 : 0) != std::string::npos) {
    return path + " cannot be a path: in none may there be < > | ? * or a second colon";
  }
  // Relative to the current folder of that drive.
  if (hasDrive && (path.size() == 2 || kSeparators.find(path[2]) == kSeparators.npos)) {
    path = FullPath(path);
  }
  const std::string device = CleanNames(path);
  return device.empty() ? "" : device + " is the name of a device in Windows; choose another";
}

}  // namespace quaylink::cli
