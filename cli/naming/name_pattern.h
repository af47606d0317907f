// Ways of naming tracks, such as "{folderArtist}/{album}/[{number} ]{title}": "/" (or "\") parts
// folders, a word in braces stands for a property of the track, and what stands in brackets
// vanishes when a property in it is missing. "{[}", "{]}" and "{{}" stand for those characters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/collection/property.h"
#include "cli/collection/track.h"
#include "cli/naming/track_numbers.h"

namespace quaylink::cli {

class NamePattern {
 public:
  static constexpr std::string_view kDefault = "{folderArtist}/{album}/[{number} ]{title}";

  // Fails with std::invalid_argument, whose message tells what is wrong with the pattern.
  explicit NamePattern(std::string_view string);

  // The names of the track's folders and, last, that of its file without extension: what the
  // properties say, which need not be safe.
  std::vector<std::string> ComponentsFor(const Track& track, const TrackNumbers& numbers) const;

 private:
  struct Piece {
    enum class Kind { kLiteral, kProperty, kFolderArtist, kNumber, kFile } kind;
    std::string literal;
    const Property* property = nullptr;
  };
  struct Part {
    bool optional = false;
    std::vector<Piece> pieces;
  };
  using Component = std::vector<Part>;

  class Parser;

  static Piece PieceCalled(std::string_view name);
  // Empty where it is missing.
  static std::string ValueOf(const Piece& piece, const Track& track, const TrackNumbers& numbers);
  // What stands outside brackets for one that is missing.
  static std::string SubstituteFor(const Piece& piece, const Track& track);

  std::vector<Component> components_;
};

}  // namespace quaylink::cli
