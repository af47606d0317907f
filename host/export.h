// The export of tracks: copies what is missing, shows how far it is, and tells in the end what
// became of each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/file_names.h"
#include "host/library.h"
#include "host/program.h"

namespace quaylink::host {

class Exporter {
 public:
  Exporter(const Program& program, const Library& library, std::filesystem::path folder, bool json);

  // Takes a track on, to be copied to a path below the folder.
  void Add(const Track& track, const std::string& path);

  // Each of these returns the program's exit status.
  int ShowPlan();
  int Run();

 private:
  // kPending is what a run that ended early leaves.
  enum class Fate { kPending, kCopied, kSkipped, kFailed };

  struct Item {
    Track track;
    std::string path;  // relative, "/" between folders
    Fate fate = Fate::kPending;
    std::string problem;
  };

  std::filesystem::path FileOf(const Item& item) const;
  bool IsFinished(const Item& item) const;
  // False when going on is of no use.
  bool Copy(Item& item);
  void Tell(const Item& item, bool barShown) const;
  void Summarise(bool planned) const;
  std::string Json(bool planned) const;
  std::size_t Count(Fate fate) const;

  const Program& program_;
  const Library& library_;
  std::filesystem::path folder_;
  bool json_;
  std::vector<Item> items_;
  std::uintmax_t copiedBytes_ = 0;
};

}  // namespace quaylink::host
