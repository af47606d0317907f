#include "cli/commands/one_copy.h"

#include <system_error>

#include "cli/base/paths.h"
#include "cli/collection/track.h"
#include "cli/commands/export_steps.h"
#include "cli/export/plan.h"
#include "cli/export/report.h"
#include "cli/source/source.h"
#include "cli/system/system.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

Plan PlanOf(const FilePull& pull) {
  const std::string obstacle = ObstacleAt(pull.target);
  if (!obstacle.empty()) throw Failure(obstacle);
  std::error_code error;
  const std::uintmax_t free = fs::space(FolderOf(pull.target), error).available;
  if (error) throw Failure(Shown(pull.target) + ": cannot be written: " + ReasonOf(error));
  PlannedTrack file;
  file.track.title = file.track.artist = file.track.album = "";
  file.track.location = pull.location.c_str();
  file.title = NameOf(file.track);
  file.action = fs::exists(pull.target, error) ? Action::kReplace : Action::kCopy;
  file.name = Utf8Of(pull.target.filename());
  file.facts.size = pull.size;
  Plan plan;
  plan.tracks.push_back(file);
  plan.bytes = plan.room = pull.size;
  plan.free = free;
  plan.knowsSizes = pull.size > 0;
  return plan;
}

// Copies the only file of a plan; what ended the run early.
Stop Carry(const FilePull& pull, const PlannedTrack& file, ExportReport& report) {
  if (InterruptRequested()) return Stop::kInterrupt;
  report.Begin(file);
  CopyResult result = CopyBeside(pull.job, pull.target);
  if (result.Good()) {
    std::error_code ignored;
    const bool replaced = file.action == Action::kReplace;
    report.Tell(file, replaced ? Fate::kReplaced : Fate::kCopied,
                fs::file_size(pull.target, ignored), {});
    return Stop::kNone;
  }
  const bool isGone = !result.diskFull && !pull.library.Connect();
  if (isGone) result.problem = std::string("the device") + kGone;
  report.Tell(file, Fate::kFailed, 0, result.problem);
  return result.diskFull ? Stop::kDestination : isGone ? Stop::kSource : Stop::kNone;
}

}  // namespace

// Only a file that the user has named is replaced.
fs::path TargetOf(const std::string& destination, const std::string& nameInFolder) {
  fs::path file = PathOf(destination);
  std::error_code error;
  if (!fs::is_directory(file, error)) return file;
  file /= PathOf(nameInFolder);
  if (fs::is_regular_file(file, error)) {
    throw Failure(Shown(file) + ": is there already; name the file itself to replace it");
  }
  return file;
}

int CopyOne(const Program& program, const CopyJob& job, const fs::path& target) {
  const CopyResult result = CopyBeside(job, target);
  if (!result.Good()) throw Failure(result.problem);
  if (!program.quiet) program.Print("copied  " + Shown(target) + '\n');
  return kSuccess;
}

int TellPull(const Program& program, const FilePull& pull) {
  const Plan plan = PlanOf(pull);
  const fs::path folder = FolderOf(pull.target);
  RequireRoom(folder, plan);
  FinishOnInterrupt(program);
  ExportReport report(program, folder, plan, ReportKind::kPull);
  StartReport(program, report);
  const Stop stop = Carry(pull, plan.tracks.front(), report);
  const int status = StatusAfter(report, plan, stop);
  report.End(status, stop);
  return status;
}

int ShowPull(const Program& program, const FilePull& pull) {
  const Plan plan = PlanOf(pull);
  ExportReport(program, FolderOf(pull.target), plan, ReportKind::kPull).ShowPlan(kSuccess);
  return kSuccess;
}

}  // namespace quaylink::cli
