// The program's commands and what each can be told. Each returns the program's exit status, or
// throws a Failure.
#pragma once

#include <cstdint>
#include <string>

#include "cli/file_names.h"
#include "cli/program.h"
#include "cli/track_selection.h"

namespace quaylink::cli {

struct StatusOptions {
  bool json = false;
};
int ShowStatus(const Program& program, const StatusOptions& options);

struct TracksOptions {
  std::string file;  // empty for the database of the attached device
  bool json = false;
  bool csv = false;
  SortKey sort = SortKey::kIndex;
  bool reverse = false;
  TrackFilter filter;
};
int ListTracks(const Program& program, const TracksOptions& options);

struct ExportOptions {
  std::string destination;
  std::string pattern = std::string(NamePattern::kDefault);
  TrackFilter filter;
  bool dryRun = false;
  bool json = false;
};
int Export(const Program& program, const ExportOptions& options);

struct FilesOptions {
  bool json = false;
};
int ListFiles(const Program& program, const FilesOptions& options);

struct CopyOptions {
  std::uint32_t index = 0;  // for a track
  std::string devicePath;   // for any file
  std::string destination;
};
int CopyTrack(const Program& program, const CopyOptions& options);
int CopyDatabase(const Program& program, const CopyOptions& options);
int Pull(const Program& program, const CopyOptions& options);

}  // namespace quaylink::cli
