// The export of tracks: copies what is missing, shows how far it is, and tells in the end what
// became of each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/library.h"
#include "cli/program.h"
#include "cli/track.h"

namespace quaylink::cli {

// What became of a track. kPending is what a run that ended early leaves.
enum class Fate { kPending, kCopied, kSkipped, kFailed };

struct ExportItem {
  Track track;
  std::string path;  // below the folder, "/" between its parts
  Fate fate = Fate::kPending;
  std::string problem;
};

struct ExportReport {
  bool planned = false;  // nothing was to be copied
  std::filesystem::path folder;
  std::vector<ExportItem> items;
  std::uintmax_t copiedBytes = 0;

  std::filesystem::path FileOf(const ExportItem& item) const;
  std::size_t Count(Fate fate) const;
};

class Exporter {
 public:
  Exporter(const Program& program, const Library& library, std::filesystem::path folder, bool json);

  // Takes a track on, to be copied to a path below the folder. Its collection must outlive this.
  void Add(const Track& track, const std::string& path);

  // Each of these returns the program's exit status.
  int ShowPlan();
  int Run();

 private:
  void MakeFolder() const;
  bool IsFinished(const ExportItem& item) const;
  // False when going on is of no use.
  bool Copy(ExportItem& item);
  void Tell(const ExportItem& item) const;
  void Summarise() const;

  const Program& program_;
  const Library& library_;
  bool json_;
  bool tellsCopies_ = false;
  bool deviceGone_ = false;
  ExportReport report_;
};

}  // namespace quaylink::cli
