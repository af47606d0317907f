// What the extension of a file's name tells of its contents.
#pragma once

#include <string_view>

namespace quaylink::cli {

// Extensions without their dot, in any letter case.
bool IsOfSoundOrFilm(std::string_view extension);
bool IsOfPlaylist(std::string_view extension);

// Whether a name has the extension of sound or film.
bool IsMusicFileName(std::string_view name);

}  // namespace quaylink::cli
