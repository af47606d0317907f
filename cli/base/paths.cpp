#include "cli/base/paths.h"

#include "cli/system/system.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {

std::filesystem::path PathOf(std::string_view string) {
  return std::u8string(string.begin(), string.end());
}

std::string Utf8Of(const std::filesystem::path& path) {
  const std::u8string string = path.u8string();
  return MakeValid(std::string(string.begin(), string.end()));
}

std::string Shown(const std::filesystem::path& path) {
  return MakePrintable(Utf8Of(path));
}

std::filesystem::path FolderOf(const std::filesystem::path& file) {
  const std::filesystem::path folder = file.parent_path();
  return folder.empty() ? "." : folder;
}

std::string ReasonOf(const std::error_code& error) {
  return FromLibrary(error.message());
}

}  // namespace quaylink::cli
