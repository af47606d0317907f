#include "platform/portable/host_folder.h"

#include <algorithm>
#include <system_error>

#include "common/ascii.h"

namespace quaylink::portable {
namespace {

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
  std::error_code failed;
  std::filesystem::directory_iterator entry(folder, failed);
  for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
    names.push_back(entry->path().filename().string());
  }
  std::ranges::sort(names, IsBefore);
  return names;
}

}  // namespace quaylink::portable
