#include "cli/file_names.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <numeric>
#include <set>
#include <stdexcept>

#include "cli/file_copy.h"
#include "cli/folding.h"
#include "cli/system.h"
#include "cli/utf8.h"

namespace quaylink::cli {
namespace {

// In UTF-16 units. A name of this length, with a number, an extension and kPartSuffix behind it,
// stays below the 255 bytes that Linux file systems allow; a whole relative path leaves a
// destination folder about 75 of the 260 units that a Windows path may have.
constexpr std::size_t kLongestName = 69;
constexpr std::size_t kLongestPath = 160;
constexpr std::size_t kLongestExtension = 8;

std::size_t UnitsOf(std::u32string_view string) {
  return std::accumulate(
      string.begin(), string.end(), std::size_t{0},
      [](std::size_t sum, char32_t character) { return sum + (character > 0xFFFF ? 2 : 1); });
}

std::size_t UnitsOf(std::string_view string) {
  return UnitsOf(Decode(string));
}

bool IsReserved(char32_t character) {
  constexpr std::u32string_view kReserved = U"<>:\"/\\|?*";
  return IsControl(character) || character == kReplacement ||
         kReserved.find(character) != std::u32string_view::npos;
}

// Names of devices, which Windows takes for the device with any extension behind them.
bool IsDeviceName(std::string_view name) {
  std::string stem(name.substr(0, name.find('.')));
  stem.erase(stem.find_last_not_of(' ') + 1);
  stem = LowerCase(stem);
  constexpr std::array kNames = {"con", "prn", "aux", "nul", "conin$", "conout$"};
  if (std::find(kNames.begin(), kNames.end(), stem) != kNames.end()) return true;
  if (!stem.starts_with("com") && !stem.starts_with("lpt")) return false;
  const std::u32string port = Decode(stem.substr(3));
  constexpr std::u32string_view kDigits = U"0123456789\u00B9\u00B2\u00B3";
  return port.size() == 1 && kDigits.find(port[0]) != std::u32string_view::npos;
}

// Cut to so many units, and without the dots and spaces at its end, which Windows drops.
std::string Shortened(std::string_view name, std::size_t units) {
  std::u32string characters = Decode(name);
  while (UnitsOf(characters) > units) characters.pop_back();
  characters.erase(characters.find_last_not_of(U". ") + 1);
  return characters.empty() ? "_" : Encode(characters);
}

void ShortenLongest(std::vector<std::string>& components, std::size_t units) {
  const auto longer = [](const std::string& left, const std::string& right) {
    return UnitsOf(left) < UnitsOf(right);
  };
  const auto sum = [&] {
    return std::accumulate(
        components.begin(), components.end(), components.size(),
        [](std::size_t length, const std::string& name) { return length + UnitsOf(name); });
  };
  while (sum() > units) {
    auto longest = std::max_element(components.begin(), components.end(), longer);
    if (UnitsOf(*longest) <= 1) return;
    // What is left of a safe name need not be safe.
    *longest = SafeName(Shortened(*longest, UnitsOf(*longest) - 1));
  }
}

// The file's name in a location of either form.
std::string_view FileNameOf(std::string_view location) {
  return location.substr(location.find_last_of("/\\:") + 1);
}

// With the dot, and safe.
std::string ExtensionOf(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return {};
  return '.' + Shortened(SafeName(name.substr(dot + 1)), kLongestExtension);
}

std::string StemOf(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return std::string(dot == 0 ? name : name.substr(0, dot));
}

// The string as a record of the library has it, or the substitute for one without letters.
std::string FirstWithString(std::string_view string, const std::string& substitute) {
  if (string.find_first_not_of(' ') == std::string_view::npos) return substitute;
  return ThroughCodePage(string);
}

}  // namespace

std::string SafeName(std::string_view string) {
  std::u32string characters = Decode(string);
  for (char32_t& character : characters) {
    if (IsReserved(character)) character = U'_';
  }
  characters.erase(0, characters.find_first_not_of(U' '));
  std::string name = Shortened(Encode(characters), kLongestName);
  // A dot in front hides a file.
  if (name[0] == '.') name[0] = '_';
  if (LowerCase(name).ends_with(kPartSuffix)) name[name.size() - kPartSuffix.size()] = '_';
  return IsDeviceName(name) ? '_' + name : name;
}

std::string SafeFileName(std::string_view name) {
  const std::string stem = StemOf(name);
  // A dot far from the end belongs to a sentence.
  const bool extended = UnitsOf(name) - UnitsOf(stem) <= kLongestExtension + 1;
  if (UnitsOf(name) <= kLongestName || !extended) return SafeName(name);
  return SafeName(stem) + ExtensionOf(name);
}

NamePattern::NamePattern(std::string_view string) {
  components_.emplace_back();
  std::string literal;
  const auto endLiteral = [&] {
    if (!literal.empty()) components_.back().push_back({Piece::Kind::kLiteral, literal});
    literal.clear();
  };
  const auto endComponent = [&] {
    endLiteral();
    if (components_.back().empty()) {
      throw std::invalid_argument("there is a folder or file without a name in it");
    }
  };
  for (std::size_t position = 0; position < string.size(); ++position) {
    const char character = string[position];
    if (character == '/' || character == '\\') {
      endComponent();
      components_.emplace_back();
    } else if (character == '{') {
      const std::size_t end = string.find('}', position);
      if (end == std::string_view::npos) throw std::invalid_argument("a \"{\" has no \"}\"");
      endLiteral();
      components_.back().push_back(PropertyCalled(string.substr(position + 1, end - position - 1)));
      position = end;
    } else {
      literal += character;
    }
  }
  endComponent();
}

NamePattern::Piece NamePattern::PropertyCalled(std::string_view name) {
  static const std::map<std::string_view, Piece::Kind> kProperties = {
      {"artist", Piece::Kind::kArtist},
      {"album", Piece::Kind::kAlbum},
      {"title", Piece::Kind::kTitle},
      {"index", Piece::Kind::kIndex},
      {"file", Piece::Kind::kFile}};
  const auto found = kProperties.find(name);
  if (found == kProperties.end()) {
    throw std::invalid_argument("{" + std::string(name) +
                                "} is none of {artist}, {album}, {title}, {index} and {file}");
  }
  return {found->second, {}};
}

std::vector<std::string> NamePattern::ComponentsFor(const Track& track) const {
  const std::string stem = StemOf(FileNameOf(track.location));
  const auto valueOf = [&](const Piece& piece) -> std::string {
    switch (piece.kind) {
      case Piece::Kind::kArtist:
        return FirstWithString(track.artist, "Unknown Artist");
      case Piece::Kind::kAlbum:
        return FirstWithString(track.album, "Unknown Album");
      case Piece::Kind::kTitle:
        return FirstWithString(track.title, FirstWithString(stem, "Untitled"));
      case Piece::Kind::kIndex:
        return std::to_string(track.index);
      case Piece::Kind::kFile:
        return FirstWithString(stem, "Untitled");
      case Piece::Kind::kLiteral:
        break;
    }
    return piece.literal;
  };
  std::vector<std::string> names;
  for (const std::vector<Piece>& component : components_) {
    std::string name;
    for (const Piece& piece : component) name += valueOf(piece);
    names.push_back(SafeName(name));
  }
  return names;
}

std::vector<std::string> PathsFor(const std::vector<Track>& tracks, const NamePattern& pattern) {
  std::vector<std::string> paths;
  paths.reserve(tracks.size());
  std::set<std::string> taken;
  std::map<std::string, unsigned> nextNumbers;
  for (const Track& track : tracks) {
    std::vector<std::string> components = pattern.ComponentsFor(track);
    ShortenLongest(components, kLongestPath);
    std::string stem = components[0];
    for (std::size_t i = 1; i < components.size(); ++i) stem.append("/").append(components[i]);
    const std::string extension = ExtensionOf(FileNameOf(track.location));
    std::string path = stem + extension;
    unsigned& number = nextNumbers.try_emplace(LowerCase(path), 2).first->second;
    // A number may make a path that a track's own title has made before.
    while (!taken.insert(LowerCase(path)).second) {
      path = stem;
      path.append(" (").append(std::to_string(number++)).append(")").append(extension);
    }
    paths.push_back(path);
  }
  return paths;
}

}  // namespace quaylink::cli
