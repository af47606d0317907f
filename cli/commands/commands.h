// The program's commands and what each can be told. Each returns the program's exit status, or
// throws a Failure.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/base/program.h"
#include "cli/collection/property.h"
#include "cli/collection/track_selection.h"
#include "cli/naming/name_pattern.h"

namespace quaylink::cli {

struct StatusOptions {
  bool json = false;
};
int ShowStatus(const Program& program, const StatusOptions& options);

struct TracksOptions {
  std::string file;  // "-" for the standard input; empty for none
  std::string from;  // a folder that holds what a player holds; empty for the attached device
  bool json = false;
  bool csv = false;
  const Property* sort = nullptr;  // null for the order of the collection
  bool reverse = false;
  std::vector<const Property*> columns;  // of the table, besides those that are always there
  TrackFilter filter;
};
int ListTracks(const Program& program, const TracksOptions& options);

struct PlaylistsOptions {
  std::string file;  // these two as in TracksOptions
  std::string from;
  bool json = false;
};
int ListPlaylists(const Program& program, const PlaylistsOptions& options);

struct ExportOptions {
  std::string destination;
  std::string from;  // a folder; empty for the attached device
  std::string pattern = std::string(NamePattern::kDefault);
  TrackFilter filter;
  bool dryRun = false;
  bool verify = false;
  bool rescue = false;
  bool noPlaylists = false;
};
int Export(const Program& program, const ExportOptions& options);

struct FilesOptions {
  bool json = false;
};
int ListFiles(const Program& program, const FilesOptions& options);

struct CopyOptions {
  std::uint32_t index = 0;  // for a track
  std::string destination;
};
int CopyTrack(const Program& program, const CopyOptions& options);
int CopyDatabase(const Program& program, const CopyOptions& options);

struct PullOptions {
  std::string devicePath;
  std::string destination;
  bool dryRun = false;
};
int Pull(const Program& program, const PullOptions& options);

}  // namespace quaylink::cli
