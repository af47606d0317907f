#include "cli/commands/export_steps.h"

#include "cli/base/paths.h"
#include "cli/export/export_run.h"
#include "cli/export/verification.h"
#include "cli/system/system.h"
#include "cli/text/formats.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFinishing =
    "Finishing what is under way; press Ctrl-C again to stop at once.\n";

// What is copied to the player itself would be lost with it.
void RequireOtherDrive(const FolderJob& job) {
  std::error_code error;
  fs::path path = fs::absolute(job.folder, error);
  while (!fs::exists(path, error) && path != path.parent_path()) path = path.parent_path();
  const Folder folder = Folder::Open(path, error);
  if (folder.IsOpen() && job.source.Holds(folder)) {
    throw Failure(Shown(job.folder) + ": is on the player itself; choose another");
  }
}

}  // namespace

int FillFolder(const Program& program, const FolderJob& job) {
  RequireOtherDrive(job);
  FinishOnInterrupt(program);
  Destination destination(job.folder, Destination::Use::kWrite);
  const std::string obstacle = job.source.ObstacleIn(destination.Parts());
  if (!obstacle.empty()) throw Failure(Shown(job.folder) + ": " + obstacle);
  Journal journal(destination);
  Plan plan = job.plan(destination, journal);
  RequireRoom(job.folder, plan);
  ExportReport report(program, job.folder, plan, job.kind);
  StartReport(program, report);
  Flusher flusher(destination, journal);
  ExportRun run(job.source, destination, journal, plan, flusher, report);
  run.Run();
  const bool completed =
      report.Left() > 0 || job.complete({plan, run.Fates(), destination, journal, flusher, report});
  run.WaitForDisk();
  int status = StatusAfter(report, plan, run.StoppedBy());
  if (!completed) status = kFailure;
  report.End(status, run.StoppedBy());
  return status;
}

int ShowFolderPlan(const Program& program, const FolderJob& job) {
  RequireOtherDrive(job);
  Destination destination(job.folder, Destination::Use::kLook);
  const Journal journal(destination);
  const Plan plan = job.plan(destination, journal);
  const int status = plan.problem.empty() ? kSuccess : kFailure;
  ExportReport(program, job.folder, plan, job.kind).ShowPlan(status);
  return status;
}

int VerifyFolder(const Program& program, const FolderJob& job) {
  DeferInterrupts("");
  Destination destination(job.folder, Destination::Use::kWrite);
  const Journal journal(destination);
  Plan plan = job.plan(destination, journal);
  plan.bytes = 0;
  for (const PlannedTrack& track : plan.tracks) plan.bytes += track.facts.size;
  ExportReport report(program, job.folder, plan, ReportKind::kVerification);
  StartReport(program, report);
  const Stop stop = Verify(job.source, destination, journal, plan, report);
  const int status = StatusAfter(report, plan, stop);
  report.End(status, stop);
  return status;
}

void RequireRoom(const std::filesystem::path& folder, const Plan& plan) {
  if (plan.Fits()) return;
  throw Failure(Shown(folder) + ": has not enough room: " + ShownSize(plan.room) +
                " are to be copied, " + ShownSize(plan.free) + " are free");
}

void FinishOnInterrupt(const Program& program) {
  DeferInterrupts(program.quiet ? "" : kFinishing);
}

void StartReport(const Program& program, ExportReport& report) {
  if (program.tellsEvents) InterruptWhenInputEnds();
  report.Start();
}

int StatusAfter(const ExportReport& report, const Plan& plan, Stop stop) {
  if (stop == Stop::kInterrupt) return kInterrupted;
  const bool good = stop == Stop::kNone && report.Left() + report.Count(Fate::kFailed) == 0 &&
                    plan.problem.empty();
  return good ? kSuccess : kFailure;
}

}  // namespace quaylink::cli
