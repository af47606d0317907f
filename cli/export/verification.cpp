#include "cli/export/verification.h"

#include <string>
#include <system_error>

#include "cli/export/comparison.h"
#include "cli/system/system.h"

namespace quaylink::cli {
namespace {

// What is wrong with a copy; empty when nothing is.
std::string ProblemOf(const Record* record, const std::string& part, Destination& destination) {
  if (!record) return "has not been copied";
  const std::string name = destination.Shown(record->name);
  std::error_code error;
  File copy = destination.OpenFile(record->name, error);
  if (!copy.IsOpen()) return name + ": the copy is missing, or cannot be read";
  File source = destination.Parts().OpenFile(part, error);
  // What is in memory need not be what the disk has.
  copy.Forget();
  const Likeness likeness = source.IsOpen() ? Compare(copy, source) : Likeness::kUnread;
  if (likeness == Likeness::kUnread) return name + ": the copy is missing, or cannot be read";
  if (likeness != Likeness::kSame) return name + ": the copy differs from the file on the device";
  return {};
}

}  // namespace

Stop Verify(Source& source, Destination& destination, const Journal& journal, const Plan& plan,
            ExportReport& report) {
  for (const PlannedTrack& track : plan.tracks) {
    if (InterruptRequested()) return Stop::kInterrupt;
    if (track.action == Action::kNone) {
      report.Tell(track, Fate::kFailed, 0, track.problem);
      continue;
    }
    report.Begin(track);
    const std::string part = destination.NewPart();
    const FetchResult fetched =
        source.Fetch(track.track.location, destination.Parts(), part,
                     [&](std::uint64_t bytes) { report.Progress(track, bytes); });
    if (!fetched.Good() && !source.Answers()) return Stop::kSource;
    const std::string problem =
        fetched.Good() ? ProblemOf(journal.Find(plan.player, track.item), part, destination)
                       : fetched.problem;
    destination.RemovePart(part);
    report.Tell(track, problem.empty() ? Fate::kKept : Fate::kFailed, 0, problem);
    if (fetched.kind == FetchResult::Kind::kFull) return Stop::kDestination;
  }
  return Stop::kNone;
}

}  // namespace quaylink::cli
