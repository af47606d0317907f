#include "host/paths.h"

#include "host/utf8.h"

namespace quaylink::host {

std::filesystem::path PathOf(std::string_view text) {
  return std::u8string(text.begin(), text.end());
}

std::string Shown(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return MakePrintable(std::string(text.begin(), text.end()));
}

}  // namespace quaylink::host
