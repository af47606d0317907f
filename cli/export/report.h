// What an export or a pull tells as it goes, and in the end: to people, or to programs as a line of
// JSON for each event.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/base/program.h"
#include "cli/export/plan.h"
#include "cli/output/json_line.h"
#include "cli/output/progress.h"

namespace quaylink::cli {

enum class ReportKind { kExport, kVerification, kPull };

// What became of a track. kPending is what a run that ended early leaves.
enum class Fate { kPending, kCopied, kReplaced, kKept, kMoved, kFailed };
inline constexpr std::size_t kFates = 6;

// What ended a run before its end.
enum class Stop { kNone, kInterrupt, kSource, kDestination };

// Tells programs that a command fails, as its last event. Does nothing where events are not told.
void TellFailure(const Program& program, const std::string& message, int status);

class ExportReport {
 public:
  // Of a run into that folder.
  ExportReport(const Program& program, const std::filesystem::path& folder, const Plan& plan,
               ReportKind kind);

  // Shows the plan, as a dry run does.
  void ShowPlan(int status);

  // A real run: what is to be done, bytes as they come, what became of each track, and the end.
  void Start() { TellStart(false); }
  // Whether somebody follows the two below, which need not be told otherwise. Several tracks may be
  // under way at once.
  bool IsFollowed() const { return isFollowed_; }
  void Begin(const PlannedTrack& track);
  void Progress(const PlannedTrack& track, std::uint64_t bytes);
  void Tell(const PlannedTrack& track, Fate fate, std::uint64_t copiedBytes,
            const std::string& problem);
  // What was told of a track does not hold any more.
  void TellLost(const PlannedTrack& track, Fate toldFate, const std::string& problem);
  void TellPlaylist(const std::string& name, const std::string& problem = {});
  void End(int status, Stop stop);

  std::size_t Count(Fate fate) const { return counts_[static_cast<std::size_t>(fate)]; }
  // Tracks that have not been told of.
  std::size_t Left() const;
  void Complain(const std::string& message);

 private:
  void Print(const std::string& line);
  // For programs.
  const char* NameOf(Fate fate) const;
  std::string FileOf(const std::string& name) const;
  Json JsonOf(const PlannedTrack& track) const;
  void TellStart(bool isDryRun);
  struct UnderWay {
    const PlannedTrack* track;
    std::uint64_t bytes;  // that have come
  };
  std::vector<UnderWay>::iterator FindUnderWay(const PlannedTrack& track);
  void TellProgress(const PlannedTrack& track);
  std::string Summary() const;
  std::string Advice(Stop stop) const;
  void NoteUnnamed() const;

  const Program& program_;
  const std::filesystem::path folder_;
  const Plan& plan_;
  ReportKind kind_;
  bool isFollowed_;
  bool tellsCopies_;
  ProgressBar bar_;
  std::array<std::size_t, kFates> counts_ = {};
  std::uint64_t copiedBytes_ = 0;  // of whole copies
  std::uint64_t bytesBefore_ = 0;  // of those to be fetched: of the tracks that were told of
  std::vector<UnderWay> underWay_;
  Throttle throttle_;
};

}  // namespace quaylink::cli
