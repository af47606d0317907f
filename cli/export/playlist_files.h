// A collection's playlists as files that other players read.
#pragma once

#include <string>
#include <vector>

#include "cli/collection/collection.h"
#include "cli/export/destination.h"
#include "cli/export/flusher.h"
#include "cli/export/journal.h"
#include "cli/export/plan.h"
#include "cli/export/report.h"
#include "cli/system/system.h"

namespace quaylink::cli {

struct PlaylistExport {
  const Collection& collection;
  std::vector<std::string> copies;  // of each track of the collection; empty where it has none
  std::vector<std::string> names;   // of the lists that are wanted; all when there is none
  NameLimits limits;
};

// Writes "Playlists/NAME.m3u8" for each list but the master one. Tracks without a copy are left
// out. False when one could not be written.
bool ExportPlaylists(const PlaylistExport& playlists, Plan& plan, Destination& destination,
                     Journal& journal, Flusher& flusher, ExportReport& report);

}  // namespace quaylink::cli
