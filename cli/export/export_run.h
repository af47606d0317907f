// The carrying out of a plan.
#pragma once

#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "cli/export/destination.h"
#include "cli/export/flusher.h"
#include "cli/export/journal.h"
#include "cli/export/plan.h"
#include "cli/export/report.h"
#include "cli/source/source.h"

namespace quaylink::cli {

class ExportRun {
 public:
  ExportRun(Source& source, Destination& destination, Journal& journal, Plan& plan,
            Flusher& flusher, ExportReport& report);

  // Does what the plan says, track by track, until all are done, Ctrl-C was pressed, the source is
  // gone or the disk is full. Fetches several files at once where the source can do that; tells of
  // the tracks in the plan's order.
  void Run();
  // Waits until the copies are on the disk, and tells of those that did not get there.
  void Finish();

  // What became of each track of the plan.
  const std::vector<Fate>& Fates() const { return fates_; }
  Stop StoppedBy() const { return stop_; }

 private:
  struct Outcome {
    Fate fate = Fate::kFailed;
    std::string problem;
    std::uint64_t bytes = 0;  // copied
    Stop stop = Stop::kNone;
  };

  // What one of the threads does.
  void Work();
  // These hold the lock, but while they read files.
  using Lock = std::unique_lock<std::mutex>;
  Outcome Export(PlannedTrack& track, Lock& lock);
  // Looks once more at what is to be renamed or replaced: the plan may have been made hours ago.
  void LookAgain(PlannedTrack& track);
  // Gives the copy its new name, as it is.
  Outcome Move(PlannedTrack& track);
  Outcome Copy(PlannedTrack& track, Lock& lock);
  // What becomes of a copy when a file stands at its name.
  Outcome Settle(PlannedTrack& track, const std::string& part, Lock& lock);
  Outcome Place(PlannedTrack& track, const std::string& part, bool replaces, Fate fate);
  Outcome Failed(const std::string& name, const FetchResult& result);
  Outcome Refused(const std::string& name, const std::error_code& error);
  Record RecordOf(const PlannedTrack& track, const FileFacts& copy) const;
  void Remember(const PlannedTrack& track, Record record);
  void TellOutcomes();

  std::mutex mutex_;  // guards all that follows; the source, and what is open, guard themselves
  Source& source_;
  Destination& destination_;
  Journal& journal_;
  Plan& plan_;
  ExportReport& report_;
  Flusher& flusher_;
  std::vector<Fate> fates_;
  std::vector<std::size_t> remembered_;      // tracks of the plan, in the order of the journal
  std::size_t next_ = 0;                     // of the plan, to be taken on
  std::size_t told_ = 0;                     // so many have been told of
  std::map<std::size_t, Outcome> outcomes_;  // of others
  Stop stop_ = Stop::kNone;
  std::exception_ptr failure_;  // of a thread
};

}  // namespace quaylink::cli
