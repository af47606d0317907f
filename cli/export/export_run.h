// The carrying out of a plan.
#pragma once

#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
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
  void WaitForDisk();

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

  // A file to be fetched, or that was.
  struct Job {
    std::size_t index;  // of its track in the plan
    std::string part;
    std::optional<FetchResult> result = {};  // nothing when there was no time for it any more
  };

  // What one of the threads does.
  void Work();
  void Fetch(Job& job);
  // Everything below is done by who holds the lock.
  using Lock = std::unique_lock<std::mutex>;
  // Takes on tracks until there are files to be fetched, of small ones so many that it is worth
  // the while.
  std::vector<Job> TakeJobs();
  // What becomes of a track without its file; nothing when that has to be fetched.
  std::optional<Outcome> Prepare(PlannedTrack& track);
  // What becomes of it with the file.
  Outcome Finish(const Job& job, Lock& lock);
  void Conclude(std::size_t index, Outcome outcome);
  // Looks once more at what is to be renamed or replaced: the plan may have been made hours ago.
  void LookAgain(PlannedTrack& track);
  // Whether what stands at its name is what the plan has found there.
  bool IsUntouched(const PlannedTrack& track) const;
  // Gives the copy its new name, as it is.
  Outcome Move(PlannedTrack& track);
  // What becomes of a copy when a file stands at its name. Gives the lock up while it compares.
  Outcome Settle(PlannedTrack& track, const std::string& part, Lock& lock);
  Outcome Place(PlannedTrack& track, const std::string& part, bool replaces, Fate fate);
  static Outcome Broken(const Failure& failure);
  Outcome Failed(const std::string& name, const FetchResult& result);
  Outcome Refused(const std::string& name, const std::error_code& error);
  Record RecordOf(const PlannedTrack& track, const FileFacts& copy) const;
  void Remember(const PlannedTrack& track, Record record);

  std::mutex mutex_;  // guards all that follows; the source, and what is open, guard themselves
  std::mutex alone_;  // held by who fetches a file whose copy is there; taken before the other one
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
