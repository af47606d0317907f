// The names that are taken in one destination, and free ones in place of them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace quaylink::cli {

// So often a free name is sought in a folder: where that tells nothing, each seems to be taken.
inline constexpr int kMostNames = 1000;

// Upper and lower case make no difference, as on many file systems.
class TakenNames {
 public:
  // False when the path was taken before.
  bool Take(std::string_view path);

  // Takes the wanted path, or the first free one of "Title (2).mp3", "Title (3).mp3" and so on.
  std::string TakeFree(std::string_view wantedPath);

 private:
  std::unordered_set<std::string> taken_;
  std::unordered_map<std::string, std::uint32_t> nextNumbers_;  // of paths wanted more than once
};

}  // namespace quaylink::cli
