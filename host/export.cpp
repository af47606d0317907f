#include "host/export.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "host/file_copy.h"
#include "host/paths.h"
#include "host/progress.h"
#include "host/system.h"

namespace quaylink::host {

namespace fs = std::filesystem;

Exporter::Exporter(const Program& program, const Library& library, fs::path folder, bool json)
    : program_(program), library_(library), folder_(std::move(folder)), json_(json) {}

void Exporter::Add(const Track& track, const std::string& path) {
  items_.push_back({track, path, Fate::kPending, {}});
}

int Exporter::ShowPlan() {
  for (Item& item : items_) {
    if (IsFinished(item)) item.fate = Fate::kSkipped;
    if (json_ || program_.quiet) continue;
    if (item.fate == Fate::kPending) program_.Print("would copy  " + item.path + '\n');
    if (item.fate == Fate::kSkipped && program_.verbose)
      program_.Print("finished    " + item.path + '\n');
  }
  Summarise(true);
  return kSuccess;
}

int Exporter::Run() {
  const bool barShown = !program_.quiet && IsTerminal(Stream::kError);
  // From here on a copy under way is finished first.
  DeferInterrupts();
  {
    ProgressBar bar(items_.size(), barShown);
    for (std::size_t i = 0; i < items_.size() && !InterruptRequested(); ++i) {
      Item& item = items_[i];
      bar.Show(i, NameOf(item.track));
      const bool goesOn = Copy(item);
      if (item.fate == Fate::kFailed || !barShown || !IsTerminal(Stream::kOutput)) bar.Clear();
      Tell(item, barShown);
      if (!goesOn) break;
    }
  }
  Summarise(false);
  if (InterruptRequested() && Count(Fate::kPending) > 0) return kInterrupted;
  return Count(Fate::kFailed) + Count(Fate::kPending) == 0 ? kSuccess : kFailure;
}

fs::path Exporter::FileOf(const Item& item) const {
  return (folder_ / PathOf(item.path)).make_preferred();
}

// A copy gets its final name only when it is whole.
bool Exporter::IsFinished(const Item& item) const {
  std::error_code error;
  return fs::is_regular_file(FileOf(item), error);
}

bool Exporter::Copy(Item& item) {
  if (IsFinished(item)) {
    item.fate = Fate::kSkipped;
    return true;
  }
  const fs::path file = FileOf(item);
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
    if (!error) copiedBytes_ += size;
  }
  return !result.diskFull;
}

void Exporter::Tell(const Item& item, bool barShown) const {
  if (item.fate == Fate::kFailed) program_.Complain(NameOf(item.track) + ": " + item.problem);
  // A person who watches the bar needs no line for each track.
  const bool watched = barShown && IsTerminal(Stream::kOutput);
  if (json_ || program_.quiet || (watched && !program_.verbose)) return;
  if (item.fate == Fate::kCopied) program_.Print("copied   " + item.path + '\n');
  if (item.fate == Fate::kSkipped && program_.verbose)
    program_.Print("skipped  " + item.path + '\n');
}

void Exporter::Summarise(bool planned) const {
  if (json_) {
    program_.Print(Json(planned));
    return;
  }
  const std::size_t pending = Count(Fate::kPending);
  const std::size_t failed = Count(Fate::kFailed);
  const std::string skipped = std::to_string(Count(Fate::kSkipped)) + " already there";
  if (planned) {
    if (!program_.quiet) program_.Print(std::to_string(pending) + " to copy, " + skipped + '\n');
    return;
  }
  if (!program_.quiet) {
    program_.Print(std::to_string(Count(Fate::kCopied)) + " copied (" + ShownSize(copiedBytes_) +
                   "), " + skipped + ", " + std::to_string(failed) + " failed" +
                   (pending == 0 ? "" : ", " + std::to_string(pending) + " not reached") + '\n');
  }
  if (pending + failed == 0) return;
  program_.Note(InterruptRequested()
                    ? "Interrupted. Run the same command again to copy the rest."
                    : "What failed is named above. Run the same command again to copy just that.");
}

std::string Exporter::Json(bool planned) const {
  constexpr auto kNameOfFate = [](Fate fate, bool isPlan) {
    switch (fate) {
      case Fate::kCopied:
        return "copied";
      case Fate::kSkipped:
        return "skipped";
      case Fate::kFailed:
        return "failed";
      case Fate::kPending:
        break;
    }
    return isPlan ? "planned" : "not reached";
  };
  nlohmann::ordered_json tracks = nlohmann::ordered_json::array();
  for (const Item& item : items_) {
    nlohmann::ordered_json track = {{"index", item.track.index},
                                    {"artist", item.track.artist},
                                    {"album", item.track.album},
                                    {"title", item.track.title},
                                    {"location", item.track.location},
                                    {"file", Shown(FileOf(item))},
                                    {"result", kNameOfFate(item.fate, planned)}};
    if (!item.problem.empty()) track["error"] = item.problem;
    tracks.push_back(std::move(track));
  }
  const nlohmann::ordered_json report = {
      {"copied", Count(Fate::kCopied)}, {"skipped", Count(Fate::kSkipped)},
      {"failed", Count(Fate::kFailed)}, {planned ? "planned" : "notReached", Count(Fate::kPending)},
      {"bytes", copiedBytes_},          {"tracks", std::move(tracks)}};
  return report.dump(2) + '\n';
}

std::size_t Exporter::Count(Fate fate) const {
  return static_cast<std::size_t>(std::count_if(
      items_.begin(), items_.end(), [&](const Item& item) { return item.fate == fate; }));
}

}  // namespace quaylink::host
