#include "cli/text/file_kinds.h"

#include <algorithm>
#include <iterator>

#include "cli/text/folding.h"

namespace quaylink::cli {
namespace {

constexpr std::string_view kSoundOrFilm[] = {
    "3g2", "3gp", "aa",  "aac",  "aax", "ac3", "adts", "aif",  "aifc", "aiff", "alac", "amr",
    "asf", "au",  "avi", "caf",  "cda", "dv",  "eac3", "flac", "flv",  "kar",  "m1v",  "m2ts",
    "m2v", "m4a", "m4b", "m4p",  "m4r", "m4v", "mid",  "midi", "mka",  "mkv",  "mov",  "mp2",
    "mp3", "mp4", "mpa", "mpeg", "mpg", "mpv", "mts",  "oga",  "ogg",  "ogv",  "opus", "qt",
    "ra",  "rm",  "snd", "spx",  "ts",  "vob", "wav",  "wave", "webm", "wma",  "wmv",  "wv"};

constexpr std::string_view kPlaylist[] = {"m3u", "m3u8", "pls", "xspf"};

template <class Extensions>
bool Holds(const Extensions& extensions, std::string_view extension) {
  return std::ranges::find(extensions, LowerCase(extension)) != std::end(extensions);
}

}  // namespace

bool IsOfSoundOrFilm(std::string_view extension) {
  return Holds(kSoundOrFilm, extension);
}

bool IsOfPlaylist(std::string_view extension) {
  return Holds(kPlaylist, extension);
}

bool IsMusicFileName(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot != std::string_view::npos && IsOfSoundOrFilm(name.substr(dot + 1));
}

}  // namespace quaylink::cli
