// What the commands print for other programs: JSON, with a newline at its end.
#pragma once

#include <string>
#include <vector>

#include "cli/base/program.h"
#include "cli/collection/track.h"

namespace quaylink::cli {

// The kind is "disk" or "phone", and null where no device is attached.
std::string StatusJson(const char* kind, bool reachable);
// These may be long, and are printed piece by piece.
void PrintTrackJson(const Program& program, const std::vector<Track>& tracks);
void PrintPlaylistJson(const Program& program, const std::vector<QuaylinkPlaylist>& playlists);
// Paths of a phone, made valid UTF-8.
std::string FilesJson(const std::vector<std::string>& files);

}  // namespace quaylink::cli
