#include "platform/portable/folder_listing.h"

#include <dirent.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "common/ascii.h"

namespace quaylink::portable {
namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { static_cast<void>(closedir(folder)); }
};

bool IsBefore(const std::string& a, const std::string& b) {
  const auto [inA, inB] = std::ranges::mismatch(a, b, {}, AsciiLower, AsciiLower);
  if (inA == a.end() && inB == b.end()) return a < b;
  if (inA == a.end() || inB == b.end()) return inA == a.end();
  return static_cast<unsigned char>(AsciiLower(*inA)) <
         static_cast<unsigned char>(AsciiLower(*inB));
}

}  // namespace

std::vector<std::string> SortedNames(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  // The standard's directory iterator ends the program when memory runs out.
  const std::unique_ptr<DIR, CloseFolder> listing(opendir(folder.c_str()));
  while (const dirent* entry = listing ? readdir(listing.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  std::ranges::sort(names, IsBefore);
  return names;
}

}  // namespace quaylink::portable
