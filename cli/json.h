// What the commands print for other programs: JSON, with a newline at its end.
#pragma once

#include <string>
#include <vector>

#include "cli/export.h"
#include "cli/library.h"
#include "cli/track.h"

namespace quaylink::cli {

std::string StatusJson(DeviceKind kind, bool reachable);
std::string TrackJson(const std::vector<Track>& tracks);
std::string PlaylistJson(const std::vector<QuaylinkPlaylist>& playlists);
// Paths of a phone, made valid UTF-8.
std::string FilesJson(const std::vector<std::string>& files);
std::string ExportJson(const ExportReport& report);

}  // namespace quaylink::cli
