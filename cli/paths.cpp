#include "cli/paths.h"

#include "cli/system.h"
#include "cli/utf8.h"

namespace quaylink::cli {

std::filesystem::path PathOf(std::string_view text) {
  return std::u8string(text.begin(), text.end());
}

std::string TextOf(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return MakeValid(std::string(text.begin(), text.end()));
}

std::string Shown(const std::filesystem::path& path) {
  return MakePrintable(TextOf(path));
}

std::string ReasonOf(const std::error_code& error) {
  return FromLibrary(error.message());
}

std::string LacksCharacter(const std::string& name) {
  return name + ": this system's code page lacks a character of the name; choose another";
}

}  // namespace quaylink::cli
