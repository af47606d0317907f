#include <cstdint>
#include <string>
#include <vector>

#include "cli/commands/commands.h"
#include "cli/output/json.h"
#include "cli/output/table.h"
#include "cli/source/reading.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

std::uint64_t LengthOf(const QuaylinkPlaylist& playlist, const std::vector<Track>& tracks) {
  std::uint64_t milliseconds = 0;
  for (std::uint32_t i = 0; i < playlist.trackCount; ++i) {
    milliseconds += tracks[playlist.tracks[i]].lengthMs;
  }
  return milliseconds;
}

std::string PlaylistTable(const Collection& collection) {
  std::vector<Row> rows;
  for (const QuaylinkPlaylist& playlist : collection.Playlists()) {
    rows.push_back({MakePrintable(playlist.name), std::string(PlaylistKindName(playlist.kind)),
                    std::to_string(playlist.trackCount),
                    LengthString(LengthOf(playlist, collection.Tracks()))});
  }
  return Table({{"Name", false}, {"Kind", false}, {"Tracks", true}, {"Length", true}}, rows,
               TableWidth());
}

}  // namespace

int ListPlaylists(const Program& program, const PlaylistsOptions& options) {
  const Collection collection = ReadCollection(program, options.file, options.from);
  const std::size_t count = collection.Playlists().size();
  if (options.json) {
    PrintPlaylistJson(program, collection.Playlists());
  } else {
    if (count > 0) program.Print(PlaylistTable(collection));
    if (!program.quiet) {
      program.Print(std::to_string(count) + (count == 1 ? " playlist\n" : " playlists\n"));
    }
  }
  return TellProblem(program, collection);
}

}  // namespace quaylink::cli
