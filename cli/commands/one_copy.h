// The copying of one file to where the user wants it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "cli/base/program.h"
#include "cli/source/file_copy.h"
#include "cli/source/library.h"

namespace quaylink::cli {

// The path that a copy gets: the destination itself, or, when it is a folder, a new file of that
// name in it. Throws a Failure when that is taken.
std::filesystem::path TargetOf(const std::string& destination, const std::string& nameInFolder);

// These give the program's exit status, or throw a Failure.
int CopyOne(const Program& program, const CopyJob& job, const std::filesystem::path& target);

// A file that is pulled, as it is told to programs and in a dry run.
struct FilePull {
  const Library& library;
  CopyJob job;
  std::string location;  // on the device
  std::uint64_t size;    // 0 where the device does not tell
  std::filesystem::path target;
};
// Tells it to programs as it goes.
int TellPull(const Program& program, const FilePull& pull);
// Tells only what would be done.
int ShowPull(const Program& program, const FilePull& pull);

}  // namespace quaylink::cli
