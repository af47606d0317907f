// What the commands that fill a folder have in common.
#pragma once

#include <filesystem>
#include <functional>
#include <vector>

#include "cli/base/program.h"
#include "cli/export/destination.h"
#include "cli/export/flusher.h"
#include "cli/export/journal.h"
#include "cli/export/plan.h"
#include "cli/export/report.h"
#include "cli/source/source.h"

namespace quaylink::cli {

// A run whose tracks have all been told of.
struct DoneTracks {
  Plan& plan;
  const std::vector<Fate>& fates;
  Destination& destination;
  Journal& journal;
  Flusher& flusher;
  ExportReport& report;
};

// What goes from a source into a folder.
struct FolderJob {
  Source& source;
  std::filesystem::path folder;
  ReportKind kind = ReportKind::kExport;
  std::function<Plan(Destination&, const Journal&)> plan = {};
  // What comes behind the tracks, unless the run has ended early; false when it failed.
  std::function<bool(const DoneTracks&)> complete = [](const DoneTracks&) { return true; };
};

// Each of these gives the program's exit status, or throws a Failure when nothing could begin.
int FillFolder(const Program& program, const FolderJob& job);
// Tells only what would be done.
int ShowFolderPlan(const Program& program, const FolderJob& job);
// Compares what is there with the source.
int VerifyFolder(const Program& program, const FolderJob& job);

// Throws a Failure when a plan needs more room than there is.
void RequireRoom(const std::filesystem::path& folder, const Plan& plan);

// From here on what is under way is finished, and what was made for it removed, before an
// interruption ends the program.
void FinishOnInterrupt(const Program& program);

// Begins to tell of a run. What tells programs is ended by them, too.
void StartReport(const Program& program, ExportReport& report);

// How a run has ended: the program's exit status.
int StatusAfter(const ExportReport& report, const Plan& plan, Stop stop);

}  // namespace quaylink::cli
