#include "cli/export.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/file_copy.h"
#include "cli/json.h"
#include "cli/paths.h"
#include "cli/progress.h"
#include "cli/system.h"

namespace quaylink::cli {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kFinishing =
    "Finishing this copy; press Ctrl-C again to stop at once.\n";

std::string NoFolder(const fs::path& folder, const std::error_code& error) {
  return Shown(folder) + ": the folder cannot be made: " + ReasonOf(error);
}

}  // namespace

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
  // A person who watches the bar needs no line for each track.
  tellsCopies_ =
      !json_ && !program_.quiet && (program_.verbose || !(barShown && IsTerminal(Stream::kOutput)));
  MakeFolder();
  // From here on a copy under way is finished first.
  DeferInterrupts(program_.quiet ? "" : kFinishing);
  {
    ProgressBar bar(report_.items.size(), barShown);
    for (std::size_t i = 0; i < report_.items.size() && !InterruptRequested(); ++i) {
      ExportItem& item = report_.items[i];
      bar.Show(i, NameOf(item.track));
      const bool goesOn = Copy(item);
      if (item.fate == Fate::kFailed || tellsCopies_) bar.Clear();
      Tell(item);
      if (!goesOn) break;
    }
  }
  Summarise();
  if (InterruptRequested() && report_.Count(Fate::kPending) > 0) return kInterrupted;
  return report_.Count(Fate::kFailed) + report_.Count(Fate::kPending) == 0 ? kSuccess : kFailure;
}

// Without it no track could be copied.
void Exporter::MakeFolder() const {
  std::error_code error;
  fs::create_directories(report_.folder, error);
  if (error) throw Failure(NoFolder(report_.folder, error));
  RemovePart(report_.folder / "");
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
    result.problem = NoFolder(file.parent_path(), error);
  } else {
    result = CopyBeside(library_.TrackJob(item.track), file);
  }
  bool goesOn = result.Good();
  if (!goesOn && !result.diskFull && TakesFiles(report_.folder)) {
    // Without its device every copy would fail, on a phone after a wait.
    goesOn = library_.Connect();
    deviceGone_ = !goesOn;
    if (deviceGone_) result.problem = "the device has gone away, or does not answer any more";
  }
  item.problem = result.problem;
  item.fate = result.Good() ? Fate::kCopied : Fate::kFailed;
  if (result.Good()) {
    const std::uintmax_t size = fs::file_size(file, error);
    if (!error) report_.copiedBytes += size;
  }
  return goesOn;
}

void Exporter::Tell(const ExportItem& item) const {
  if (item.fate == Fate::kFailed) program_.Complain(NameOf(item.track) + ": " + item.problem);
  if (!tellsCopies_) return;
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
  const std::string begin = InterruptRequested() && pending > 0 ? "Interrupted."
                            : deviceGone_                       ? "Attach the device again."
                                                                : "What failed is named above.";
  program_.Note(begin + " Run the same command again to copy " +
                (pending > 0 ? "the rest." : "just that."));
}

}  // namespace quaylink::cli
