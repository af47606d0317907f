#include "host/export.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/file_copy.h"
#include "host/json.h"
#include "host/paths.h"
#include "host/progress.h"
#include "host/system.h"

namespace quaylink::host {

namespace fs = std::filesystem;

fs::path ExportReport::FileOf(const ExportItem& item) const {
  return (folder / PathOf(item.path)).make_preferred();
}

std::size_t ExportReport::Count(Fate fate) const {
  return static_cast<std::size_t>(std::ranges::count(items, fate, &ExportItem::fate));
}

Exporter::Exporter(const Program& program, const Library& library, fs::path folder, bool json)
    : program_(program), library_(library), json_(json) {
  report_.folder = std::move(folder);
}

void Exporter::Add(const Track& track, const std::string& path) {
  report_.items.push_back({track, path, Fate::kPending, {}});
}

int Exporter::ShowPlan() {
  report_.planned = true;
  for (ExportItem& item : report_.items) {
    if (IsFinished(item)) item.fate = Fate::kSkipped;
    if (json_ || program_.quiet) continue;
    if (item.fate == Fate::kPending) program_.Print("would copy  " + item.path + '\n');
    if (item.fate == Fate::kSkipped && program_.verbose)
      program_.Print("finished    " + item.path + '\n');
  }
  Summarise();
  return kSuccess;
}

int Exporter::Run() {
  const bool barShown = !program_.quiet && IsTerminal(Stream::kError);
  // From here on a copy under way is finished first.
  DeferInterrupts();
  {
    ProgressBar bar(report_.items.size(), barShown);
    for (std::size_t i = 0; i < report_.items.size() && !InterruptRequested(); ++i) {
      ExportItem& item = report_.items[i];
      bar.Show(i, NameOf(item.track));
      const bool goesOn = Copy(item);
      if (item.fate == Fate::kFailed || !barShown || !IsTerminal(Stream::kOutput)) bar.Clear();
      Tell(item, barShown);
      if (!goesOn) break;
    }
  }
  Summarise();
  if (InterruptRequested() && report_.Count(Fate::kPending) > 0) return kInterrupted;
  return report_.Count(Fate::kFailed) + report_.Count(Fate::kPending) == 0 ? kSuccess : kFailure;
}

// A copy gets its final name only when it is whole.
bool Exporter::IsFinished(const ExportItem& item) const {
  std::error_code error;
  return fs::is_regular_file(report_.FileOf(item), error);
}

bool Exporter::Copy(ExportItem& item) {
  if (IsFinished(item)) {
    item.fate = Fate::kSkipped;
    return true;
  }
  const fs::path file = report_.FileOf(item);
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  CopyResult result;
  if (error) {
    result.problem = Shown(file.parent_path()) + ": the folder cannot be made: " + error.message();
  } else {
    result = CopyBeside(library_.TrackJob(item.track), file);
  }
  item.problem = result.problem;
  item.fate = result.Good() ? Fate::kCopied : Fate::kFailed;
  if (result.Good()) {
    const std::uintmax_t size = fs::file_size(file, error);
    if (!error) report_.copiedBytes += size;
  }
  return !result.diskFull;
}

void Exporter::Tell(const ExportItem& item, bool barShown) const {
  if (item.fate == Fate::kFailed) program_.Complain(NameOf(item.track) + ": " + item.problem);
  // A person who watches the bar needs no line for each track.
  const bool watched = barShown && IsTerminal(Stream::kOutput);
  if (json_ || program_.quiet || (watched && !program_.verbose)) return;
  if (item.fate == Fate::kCopied) program_.Print("copied   " + item.path + '\n');
  if (item.fate == Fate::kSkipped && program_.verbose)
    program_.Print("skipped  " + item.path + '\n');
}

void Exporter::Summarise() const {
  if (json_) {
    program_.Print(ExportJson(report_));
    return;
  }
  const std::size_t pending = report_.Count(Fate::kPending);
  const std::size_t failed = report_.Count(Fate::kFailed);
  const std::string skipped = std::to_string(report_.Count(Fate::kSkipped)) + " already there";
  if (report_.planned) {
    if (!program_.quiet) program_.Print(std::to_string(pending) + " to copy, " + skipped + '\n');
    return;
  }
  if (!program_.quiet) {
    program_.Print(std::to_string(report_.Count(Fate::kCopied)) + " copied (" +
                   ShownSize(report_.copiedBytes) + "), " + skipped + ", " +
                   std::to_string(failed) + " failed" +
                   (pending == 0 ? "" : ", " + std::to_string(pending) + " not reached") + '\n');
  }
  if (pending + failed == 0) return;
  program_.Note(InterruptRequested()
                    ? "Interrupted. Run the same command again to copy the rest."
                    : "What failed is named above. Run the same command again to copy just that.");
}

}  // namespace quaylink::host
