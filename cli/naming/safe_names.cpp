#include "cli/naming/safe_names.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "cli/base/temporary_file.h"
#include "cli/text/display_width.h"
#include "cli/text/folding.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

// What may come behind a file's name: a number such as " (999999)", which is more tracks than a
// database holds, and the end of a copy under way.
constexpr std::size_t kNumberRoom = 9;
constexpr std::size_t kRoomBehind = kNumberRoom + kPartSuffix.size();
// No name is cut below this, however deep the destination lies.
constexpr std::size_t kShortest = 12;

std::size_t Less(std::size_t whole, std::size_t part) {
  return std::max(whole, part + kShortest) - part;
}

// The bytes of the character that begins at a place of a valid string.
std::size_t SizeAt(std::string_view string, std::size_t position) {
  const auto lead = static_cast<unsigned char>(string[position]);
  return lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

// The place of the character before a place.
std::size_t Before(std::string_view string, std::size_t position) {
  do {
    --position;
  } while ((static_cast<unsigned char>(string[position]) & 0xC0u) == 0x80);
  return position;
}

// The length of valid strings as a system counts it.
class Ruler {
 public:
  explicit Ruler(NameLimits::Measure measure) : inBytes_(measure == NameLimits::Measure::kBytes) {}

  std::size_t LengthAt(std::string_view string, std::size_t position) const {
    const std::size_t size = SizeAt(string, position);
    return inBytes_ ? size : size == 4 ? 2 : 1;
  }
  std::size_t LengthOf(std::string_view string) const {
    if (inBytes_) return string.size();
    std::size_t length = 0;
    for (std::size_t i = 0; i < string.size(); i += SizeAt(string, i)) {
      length += LengthAt(string, i);
    }
    return length;
  }

 private:
  bool inBytes_;
};

bool IsReserved(char32_t character) {
  constexpr std::u32string_view kReserved = U"<>:\"/\\|?*";
  return IsControl(character) || character == kReplacement ||
         kReserved.find(character) != std::u32string_view::npos;
}

constexpr std::size_t kAsciiCount = 0x80;
using AsciiTable = std::array<char, kAsciiCount>;

// Each ASCII character as names have it.
AsciiTable MakeSafeCharacters() {
  AsciiTable table = {};
  for (std::size_t i = 0; i < kAsciiCount; ++i) {
    table[i] = IsReserved(static_cast<char32_t>(i)) ? '_' : static_cast<char>(i);
  }
  return table;
}

std::string WithoutReserved(std::string_view string) {
  static const AsciiTable kSafeCharacters = MakeSafeCharacters();
  std::string safe(string);
  std::size_t end = 0;
  for (std::size_t i = 0; i < string.size();) {
    const auto byte = static_cast<unsigned char>(string[i]);
    if (byte < kAsciiCount) {
      safe[end++] = kSafeCharacters[byte];
      ++i;
      continue;
    }
    const DecodedCharacter next = DecodeAt(string, i);
    if (IsReserved(next.character)) {
      safe[end++] = '_';
    } else {
      string.copy(&safe[end], next.size, i);
      end += next.size;
    }
    i += next.size;
  }
  safe.resize(end);
  return safe;
}

// Names of devices, which Windows takes for the device with any extension behind them.
bool IsDeviceName(std::string_view name) {
  std::string_view stem = name.substr(0, name.find('.'));
  stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
  constexpr std::size_t kLongest = 7;
  if (stem.size() > kLongest) return false;
  const std::string lower = LowerCase(stem);
  constexpr std::array kNames = {"con", "prn", "aux", "nul", "conin$", "conout$"};
  if (std::ranges::find(kNames, lower) != kNames.end()) return true;
  if (!lower.starts_with("com") && !lower.starts_with("lpt")) return false;
  const std::u32string port = Decode(lower.substr(3));
  constexpr std::u32string_view kDigits = U"0123456789\u00B9\u00B2\u00B3";
  return port.size() == 1 && kDigits.find(port[0]) != std::u32string_view::npos;
}

// Windows shows a folder with such an end, ".{21EC2020-3AEA-1069-A2DD-08002B30309D}", as what the
// number stands for.
bool EndsWithClass(std::string_view name) {
  constexpr std::size_t kLength = 39;
  return name.size() > kLength && name.ends_with('}') &&
         name.substr(name.size() - kLength).starts_with(".{");
}

bool EndsAsPart(std::string_view name) {
  return name.size() >= kPartSuffix.size() &&
         LowerCase(name.substr(name.size() - kPartSuffix.size())) == kPartSuffix;
}

// Safe, of any length.
std::string WholeSafeName(std::string_view string) {
  std::string name = WithoutReserved(string);
  name.erase(name.find_last_not_of(". ") + 1);
  name.erase(0, name.find_first_not_of(' '));
  if (name.empty()) return "_";
  // A dot in front hides a file.
  if (name[0] == '.') name[0] = '_';
  if (EndsAsPart(name)) name[name.size() - kPartSuffix.size()] = '_';
  if (EndsWithClass(name)) name[name.rfind('.')] = '_';
  return IsDeviceName(name) ? '_' + name : name;
}

// True where a mark begins that belongs to the character before it.
bool IsJoinedAt(std::string_view name, std::size_t position) {
  const std::string_view character = name.substr(position, SizeAt(name, position));
  return !IsAscii(character) && DisplayWidth(character) == 0;
}

// Cut to a length of at least kShortest by an ellipsis in the middle of what is before the
// extension. What is left of a safe name is safe: it begins and ends as before.
std::string Cut(const std::string& name, std::size_t most, const Ruler& ruler) {
  if (ruler.LengthOf(name) <= most) return name;
  constexpr std::string_view kEllipsis = "\xE2\x80\xA6";  // U+2026
  std::size_t room = most - ruler.LengthOf(kEllipsis);
  const std::size_t roomInFront = (room - std::min(room, ExtensionOf(name).size())) / 2;
  std::size_t front = 0;
  std::size_t used = 0;
  while (used + ruler.LengthAt(name, front) <= roomInFront) {
    used += ruler.LengthAt(name, front);
    front += SizeAt(name, front);
  }
  while (front > 0 && IsJoinedAt(name, front)) front = Before(name, front);
  room -= ruler.LengthOf(std::string_view(name).substr(0, front));
  std::size_t back = name.size();
  for (std::size_t next = Before(name, back); ruler.LengthAt(name, next) <= room;) {
    room -= ruler.LengthAt(name, next);
    back = next;
    next = Before(name, back);
  }
  while (back < name.size() && IsJoinedAt(name, back)) back += SizeAt(name, back);
  while (front > 0 && name[front - 1] == ' ') --front;
  while (back < name.size() && name[back] == ' ') ++back;
  return name.substr(0, front).append(kEllipsis).append(name, back);
}

}  // namespace

std::string SafeName(std::string_view string, const NameLimits& limits) {
  return Cut(WholeSafeName(string), std::max(limits.component, kShortest), Ruler(limits.measure));
}

std::string SafeFileName(std::string_view name, FileKinds kinds, const NameLimits& limits) {
  const std::size_t most = Less(std::min(limits.component, limits.path), kRoomBehind);
  return Cut(Tamed(WholeSafeName(name), kinds), most, Ruler(limits.measure));
}

std::string SafePath(const std::vector<std::string>& components, FileKinds kinds,
                     const NameLimits& limits) {
  const std::size_t separators = components.size() - 1;
  const std::size_t share = Less(limits.path, kRoomBehind + separators) / components.size();
  NameLimits left = limits;
  left.component = std::min(limits.component, share);
  const Ruler ruler(limits.measure);
  std::string path;
  for (std::size_t i = 0; i < separators; ++i) {
    path += SafeName(components[i], left) + '/';
  }
  left.component = limits.component;
  left.path = limits.path - std::min(limits.path, ruler.LengthOf(path));
  return path + SafeFileName(components.back(), kinds, left);
}

}  // namespace quaylink::cli
