// What the commands print for other programs: JSON, with a newline at its end.
#pragma once

#include <string>
#include <vector>

#include "cli/export.h"
#include "cli/library.h"
#include "cli/program.h"
#include "cli/track.h"

namespace quaylink::cli {

std::string StatusJson(DeviceKind kind, bool reachable);
// These may be long, and are printed piece by piece.
void PrintTrackJson(const Program& program, const std::vector<Track>& tracks);
void PrintPlaylistJson(const Program& program, const std::vector<QuaylinkPlaylist>& playlists);
// Paths of a phone, made valid UTF-8.
std::string FilesJson(const std::vector<std::string>& files);
std::string ExportJson(const ExportReport& report);

}  // namespace quaylink::cli
