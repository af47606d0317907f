#include "cli/naming/name_pattern.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

#include "cli/naming/file_kinds.h"
#include "cli/system/system.h"
#include "cli/text/formats.h"

namespace quaylink::cli {
namespace {

// The name of the track's file on the device, without its extension.
std::string_view StemOf(const Track& track) {
  const std::string_view name = FileNameOf(track.location ? track.location : "");
  return name.substr(0, name.size() - ExtensionOf(name).size());
}

// Empty when there is nothing in the string to be read.
std::string Named(std::string_view string) {
  return std::string(string.find_first_not_of(' ') == std::string_view::npos ? "" : string);
}

std::string ValueOfProperty(const Track& track, const Property& property,
                            const TrackNumbers& numbers) {
  using enum Property::Kind;
  if (property.IsString()) return Named(StringOf(track, property));
  // The index counts from 0.
  if (NumberOf(track, property) == 0 && property.key != "index") return {};
  if (property.kind == kNumber) return numbers.Padded(track, property);
  const std::string value = ValueOf(track, property);
  // The hour, with its colons, is nothing for a name.
  return property.kind == kTime ? value.substr(0, value.find('T')) : value;
}

}  // namespace

// Reads a pattern from its beginning to its end.
class NamePattern::Parser {
 public:
  explicit Parser(std::string_view string) : string_(string) {}

  std::vector<Component> Parse() {
    components_.emplace_back();
    BeginPart(false);
    for (position_ = 0; position_ < string_.size(); ++position_) TakeCharacter();
    EndComponent();
    return std::move(components_);
  }

 private:
  void TakeCharacter() {
    const char character = string_[position_];
    if (character == '/' || character == '\\') {
      EndComponent();
      components_.emplace_back();
      BeginPart(false);
    } else if (character == '[') {
      if (LastPart().optional) throw std::invalid_argument("a \"[\" stands within brackets");
      BeginPart(true);
    } else if (character == ']') {
      EndOptionalPart();
      BeginPart(false);
    } else if (character == '{') {
      TakeBraces();
    } else {
      TakeLiteral(character);
    }
  }

  void TakeBraces() {
    const std::size_t end = string_.find('}', position_);
    if (end == std::string_view::npos) throw std::invalid_argument("a \"{\" has no \"}\"");
    const std::string_view name = string_.substr(position_ + 1, end - position_ - 1);
    position_ = end;
    if (name == "[" || name == "]" || name == "{") {
      TakeLiteral(name[0]);
    } else {
      LastPart().pieces.push_back(PieceCalled(name));
    }
  }

  void TakeLiteral(char character) {
    std::vector<Piece>& pieces = LastPart().pieces;
    if (pieces.empty() || pieces.back().kind != Piece::Kind::kLiteral) {
      pieces.push_back({Piece::Kind::kLiteral, {}, nullptr});
    }
    pieces.back().literal += character;
  }

  void BeginPart(bool optional) { components_.back().push_back({optional, {}}); }

  void EndOptionalPart() {
    if (!LastPart().optional) throw std::invalid_argument("a \"]\" has no \"[\"");
    const auto isLiteral = [](const Piece& piece) { return piece.kind == Piece::Kind::kLiteral; };
    if (std::ranges::all_of(LastPart().pieces, isLiteral)) {
      throw std::invalid_argument("there are brackets without a property in them");
    }
  }

  void EndComponent() {
    if (LastPart().optional) {
      throw std::invalid_argument("a \"[\" has no \"]\" in the name of its folder or file");
    }
    const auto isEmpty = [](const Part& part) { return part.pieces.empty(); };
    if (std::ranges::all_of(components_.back(), isEmpty)) {
      throw std::invalid_argument("there is a folder or file without a name in it");
    }
  }

  Part& LastPart() { return components_.back().back(); }

  std::string_view string_;
  std::size_t position_ = 0;
  std::vector<Component> components_;
};

NamePattern::NamePattern(std::string_view string) : components_(Parser(string).Parse()) {}

NamePattern::Piece NamePattern::PieceCalled(std::string_view name) {
  if (name == "folderArtist") return {Piece::Kind::kFolderArtist, {}, nullptr};
  if (name == "number") return {Piece::Kind::kNumber, {}, nullptr};
  if (name == "file") return {Piece::Kind::kFile, {}, nullptr};
  const Property* property = FindProperty(name);
  if (!property) {
    std::string message = "{";
    message.append(name)
        .append("} is no property of tracks; ")
        .append(kWholeManual)
        .append(" lists them");
    throw std::invalid_argument(message);
  }
  return {Piece::Kind::kProperty, {}, property};
}

std::string NamePattern::ValueOf(const Piece& piece, const Track& track,
                                 const TrackNumbers& numbers) {
  switch (piece.kind) {
    case Piece::Kind::kProperty:
      return ValueOfProperty(track, *piece.property, numbers);
    case Piece::Kind::kFolderArtist:
      return Named(FilingArtistOf(track));
    case Piece::Kind::kNumber:
      return numbers.OnAlbum(track);
    case Piece::Kind::kFile:
      return Named(StemOf(track));
    case Piece::Kind::kLiteral:
      break;
  }
  return piece.literal;
}

std::string NamePattern::SubstituteFor(const Piece& piece, const Track& track) {
  const std::string_view key = piece.property ? piece.property->key : "";
  if (key == "artist" || piece.kind == Piece::Kind::kFolderArtist) return "Unknown Artist";
  if (key == "album") return "Unknown Album";
  if (key != "title" && piece.kind != Piece::Kind::kFile) return {};
  const std::string stem = Named(StemOf(track));
  return stem.empty() ? "Untitled" : stem;
}

std::vector<std::string> NamePattern::ComponentsFor(const Track& track,
                                                    const TrackNumbers& numbers) const {
  std::vector<std::string> names;
  for (const Component& component : components_) {
    std::string name;
    for (const Part& part : component) {
      std::string words;
      bool complete = true;
      for (const Piece& piece : part.pieces) {
        std::string value = ValueOf(piece, track, numbers);
        if (value.empty()) {
          complete = false;
          value = SubstituteFor(piece, track);
        }
        words += value;
      }
      if (complete || !part.optional) name += words;
    }
    const bool blank = name.find_first_not_of(' ') == std::string::npos;
    names.push_back(blank ? "Unknown" : name);
  }
  return names;
}

}  // namespace quaylink::cli
