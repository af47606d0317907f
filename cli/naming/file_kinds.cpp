#include "cli/naming/file_kinds.h"

#include <algorithm>
#include <cstddef>

#include "cli/text/file_kinds.h"
#include "cli/text/folding.h"

namespace quaylink::cli {
namespace {

// A system runs them, or takes orders from them as soon as their folder is shown.
constexpr std::string_view kHarmful[] = {"appinstaller",
                                         "application",
                                         "appref-ms",
                                         "appx",
                                         "bat",
                                         "chm",
                                         "cmd",
                                         "com",
                                         "cpl",
                                         "desktop",
                                         "deskthemepack",
                                         "diagcab",
                                         "dll",
                                         "drv",
                                         "exe",
                                         "gadget",
                                         "hlp",
                                         "hta",
                                         "inf",
                                         "ini",
                                         "jar",
                                         "job",
                                         "js",
                                         "jse",
                                         "library-ms",
                                         "lnk",
                                         "msc",
                                         "msi",
                                         "msix",
                                         "msp",
                                         "mst",
                                         "ocx",
                                         "pif",
                                         "ps1",
                                         "ps1xml",
                                         "psc1",
                                         "psd1",
                                         "psm1",
                                         "reg",
                                         "scf",
                                         "scr",
                                         "sct",
                                         "search-ms",
                                         "searchconnector-ms",
                                         "settingcontent-ms",
                                         "shb",
                                         "shs",
                                         "sys",
                                         "theme",
                                         "themepack",
                                         "url",
                                         "vb",
                                         "vbe",
                                         "vbs",
                                         "website",
                                         "ws",
                                         "wsc",
                                         "wsf",
                                         "wsh",
                                         "xbap"};

bool IsOfExtension(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
         c == '_';
}

}  // namespace

std::string_view FileNameOf(std::string_view location) {
  return location.substr(location.find_last_of("/\\") + 1);
}

std::string_view ExtensionOf(std::string_view name) {
  // The longest that any system acts on has 18.
  constexpr std::size_t kLongest = 20;
  const std::size_t begin = name.size() - std::min(name.size(), kLongest + 1);
  const std::size_t dot = name.substr(begin).rfind('.');
  if (dot == std::string_view::npos || begin + dot == 0) return {};
  const std::string_view extension = name.substr(begin + dot);
  const bool isOne =
      extension.size() > 1 && std::ranges::all_of(extension.substr(1), IsOfExtension);
  return isOne ? extension : std::string_view();
}

std::string Tamed(std::string name, FileKinds kinds) {
  const std::string extension = LowerCase(ExtensionOf(name));
  if (extension.empty()) return name;
  const std::string_view kind = std::string_view(extension).substr(1);
  const bool stays = kinds == FileKinds::kMedia
                         ? IsOfSoundOrFilm(kind) || IsOfPlaylist(kind)
                         : std::ranges::find(kHarmful, kind) == std::end(kHarmful);
  return stays ? name : name + '_';
}

}  // namespace quaylink::cli
