#include "cli/naming/taken_names.h"

#include <cstddef>

#include "cli/naming/file_kinds.h"
#include "cli/text/folding.h"

namespace quaylink::cli {

bool TakenNames::Take(std::string_view path) {
  return taken_.insert(LowerCase(path)).second;
}

std::string TakenNames::TakeFree(std::string_view wantedPath) {
  const std::string lower = LowerCase(wantedPath);
  if (taken_.insert(lower).second) return std::string(wantedPath);
  const std::string_view extension = ExtensionOf(wantedPath.substr(wantedPath.rfind('/') + 1));
  const auto numbered = [&](std::string_view path, const std::string& number) {
    const std::size_t stemSize = path.size() - extension.size();
    return std::string(path.substr(0, stemSize)).append(number).append(path.substr(stemSize));
  };
  std::uint32_t& next = nextNumbers_.try_emplace(lower, 2).first->second;
  std::string number;
  // A number may make a path that a track's own title has made before.
  do {
    number = " (" + std::to_string(next++) + ')';
  } while (!taken_.insert(numbered(lower, number)).second);
  return numbered(wantedPath, number);
}

}  // namespace quaylink::cli
