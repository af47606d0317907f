// Names for copied tracks that Windows and Linux both take, and that come out alike in every run.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/track.h"

namespace quaylink::cli {

// One component of a path: reserved characters and names replaced, dots and spaces at the ends
// dropped, never empty, never ending as the name of an unfinished copy does (kPartSuffix).
std::string SafeName(std::string_view string);

// The same for a file's own name, whose extension stays when the name is cut.
std::string SafeFileName(std::string_view name);

// A way of naming tracks such as "{artist}/{album}/{title}": "/" (or "\") parts folders, a word in
// braces stands for a property of the track.
class NamePattern {
 public:
  static constexpr std::string_view kDefault = "{artist}/{album}/{title}";

  // Fails with std::invalid_argument, whose message tells what is wrong with the pattern.
  explicit NamePattern(std::string_view string);

  // The folders of a track's path and, last, its file's name without the extension. Every component
  // is safe.
  std::vector<std::string> ComponentsFor(const Track& track) const;

 private:
  struct Piece {
    enum class Kind { kLiteral, kArtist, kAlbum, kTitle, kIndex, kFile } kind;
    std::string literal;
  };
  static Piece PropertyCalled(std::string_view name);

  std::vector<std::vector<Piece>> components_;
};

// The relative path of each track's copy, "/" between folders: named by the pattern, with the
// extension of the track's file, and numbered where tracks would share a path, or would on a system
// that does not tell upper from lower case. A track's path depends on the tracks before it only.
std::vector<std::string> PathsFor(const std::vector<Track>& tracks, const NamePattern& pattern);

}  // namespace quaylink::cli
