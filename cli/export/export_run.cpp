#include "cli/export/export_run.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

#include "cli/base/paths.h"
#include "cli/export/comparison.h"
#include "cli/system/system.h"

namespace quaylink::cli {
namespace {

// Threads that wait for each other at every small file take longer than one alone.
constexpr std::size_t kMostJobs = 32;
constexpr std::uint64_t kEnoughBytes = 1u << 20u;

// Its copy is there, and the plan has counted on room for one such file more.
bool TakesRoomTwice(const PlannedTrack& track) {
  return track.action == Action::kCheck || track.action == Action::kReplace;
}

}  // namespace

ExportRun::ExportRun(Source& source, Destination& destination, Journal& journal, Plan& plan,
                     Flusher& flusher, ExportReport& report)
    : source_(source),
      destination_(destination),
      journal_(journal),
      plan_(plan),
      report_(report),
      flusher_(flusher),
      fates_(plan.tracks.size(), Fate::kPending) {}

void ExportRun::Run() {
  {
    const std::size_t threads = std::min(source_.FetchesAtOnce(), plan_.tracks.size());
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < threads; ++i) {
      others.emplace_back([this] { Work(); });
    }
    Work();
  }
  if (failure_) std::rethrow_exception(failure_);
}

void ExportRun::Work() {
  Lock lock(mutex_);
  try {
    for (std::vector<Job> jobs = TakeJobs(); !jobs.empty(); jobs = TakeJobs()) {
      lock.unlock();
      Lock alone(alone_, std::defer_lock);
      if (TakesRoomTwice(plan_.tracks[jobs.front().index])) alone.lock();
      for (Job& job : jobs) {
        if (InterruptRequested()) break;
        Fetch(job);
      }
      lock.lock();
      for (const Job& job : jobs) Conclude(job.index, Finish(job, lock));
    }
  } catch (...) {
    if (!lock.owns_lock()) lock.lock();
    failure_ = std::current_exception();
    stop_ = Stop::kDestination;
  }
}

std::vector<ExportRun::Job> ExportRun::TakeJobs() {
  const std::size_t most = source_.FetchesAtOnce() > 1 ? kMostJobs : 1;
  std::vector<Job> jobs;
  std::uint64_t bytes = 0;
  while (next_ < plan_.tracks.size() && stop_ == Stop::kNone && jobs.size() < most) {
    if (InterruptRequested()) {
      stop_ = Stop::kInterrupt;
      break;
    }
    PlannedTrack& track = plan_.tracks[next_];
    const bool fits = !TakesRoomTwice(track) && bytes + track.facts.size <= kEnoughBytes;
    if (!jobs.empty() && !fits) break;
    const std::size_t index = next_++;
    if (std::optional<Outcome> outcome = Prepare(track)) {
      Conclude(index, std::move(*outcome));
      continue;
    }
    jobs.push_back({index, destination_.NewPart()});
    bytes += fits ? track.facts.size : kEnoughBytes;
  }
  return jobs;
}

void ExportRun::Fetch(Job& job) {
  const PlannedTrack& track = plan_.tracks[job.index];
  BytesCallback tell;
  // Only for those who look do the threads meet here.
  if (report_.IsFollowed()) {
    tell = [this, &track](std::uint64_t bytes) {
      const Lock lock(mutex_);
      report_.Progress(track, bytes);
    };
    const Lock lock(mutex_);
    report_.Begin(track);
  }
  job.result = source_.Fetch(track.track.location, destination_.Parts(), job.part, tell);
}

std::optional<ExportRun::Outcome> ExportRun::Prepare(PlannedTrack& track) try {
  if (track.action == Action::kNone) return Outcome{Fate::kFailed, track.problem};
  if (track.action == Action::kKeep && track.movesFrom.empty()) return Outcome{Fate::kKept, {}};
  LookAgain(track);
  // What is to be checked moves when it has turned out to be the track's.
  if (track.movesFrom.empty() || track.action == Action::kCheck) return std::nullopt;
  const Outcome outcome = Move(track);
  const bool isDone = outcome.fate == Fate::kFailed || track.action == Action::kKeep;
  return isDone ? std::optional(outcome) : std::nullopt;
} catch (const Failure& failure) {
  return Broken(failure);
}

ExportRun::Outcome ExportRun::Finish(const Job& job, Lock& lock) try {
  PlannedTrack& track = plan_.tracks[job.index];
  if (!job.result) return {Fate::kPending, {}, 0, Stop::kInterrupt};
  if (!job.result->Good()) return Failed(track.name, *job.result);
  switch (track.action) {
    case Action::kCheck:
      return Settle(track, job.part, lock);
    case Action::kReplace:
      return Place(track, job.part, true, Fate::kReplaced);
    default:
      return Place(track, job.part, false, Fate::kCopied);
  }
} catch (const Failure& failure) {
  return Broken(failure);
}

void ExportRun::Conclude(std::size_t index, Outcome outcome) {
  // What has ended the run is told of one track.
  if (outcome.stop != Stop::kNone && outcome.stop == stop_) outcome.fate = Fate::kPending;
  fates_[index] = outcome.fate;
  if (stop_ == Stop::kNone) stop_ = flusher_.Error() ? Stop::kDestination : outcome.stop;
  outcomes_.emplace(index, std::move(outcome));
  for (auto next = outcomes_.begin(); next != outcomes_.end() && next->first == told_;) {
    const PlannedTrack& track = plan_.tracks[told_++];
    const Outcome& known = next->second;
    if (known.fate != Fate::kPending) {
      report_.Tell(track, known.fate, known.bytes, known.problem);
    }
    next = outcomes_.erase(next);
  }
}

bool ExportRun::IsUntouched(const PlannedTrack& track) const {
  const Entry there = destination_.Look(track.name);
  return there.kind == EntryKind::kMissing ||
         (there.kind == EntryKind::kFile && there.facts == track.copy);
}

void ExportRun::LookAgain(PlannedTrack& track) {
  if (!track.ours || track.action == Action::kCopy) return;
  const bool moves = !track.movesFrom.empty();
  const Entry there = destination_.Look(moves ? track.movesFrom : track.name);
  if (there.kind == EntryKind::kFile && there.facts == track.copy) return;
  // Somebody is working on it.
  if (!moves && there.kind != EntryKind::kMissing) {
    track.name = FreeName(track.wanted, plan_.names, destination_);
  }
  track.movesFrom.clear();
  track.action = Action::kCopy;
}

ExportRun::Outcome ExportRun::Move(PlannedTrack& track) {
  // Of the file that it is a copy of nothing changes.
  Record record = *journal_.Find(plan_.player, track.item);
  record.wanted = track.wanted;
  record.name = track.name;
  journal_.Announce(record);
  if (const std::error_code error = destination_.Move(track.movesFrom, track.name)) {
    journal_.TakeBack();
    track.name = track.movesFrom;
    return {Fate::kFailed,
            destination_.Shown(track.name) + ": cannot be renamed: " + ReasonOf(error)};
  }
  Remember(track, std::move(record));
  return {Fate::kMoved, {}};
}

ExportRun::Outcome ExportRun::Settle(PlannedTrack& track, const std::string& part, Lock& lock) {
  std::error_code error;
  const bool moves = !track.movesFrom.empty();
  File there = destination_.OpenFile(moves ? track.movesFrom : track.name, error);
  File fetched = destination_.Parts().OpenFile(part, error);
  lock.unlock();
  Likeness likeness =
      there.IsOpen() && fetched.IsOpen() ? Compare(there, fetched) : Likeness::kUnread;
  lock.lock();
  // Somebody may have written into it meanwhile.
  if (destination_.Look(moves ? track.movesFrom : track.name).facts != there.FactsWhenOpened()) {
    likeness = Likeness::kOther;
  }
  const FileFacts copy = there.FactsWhenOpened();
  there.Close();
  fetched.Close();
  // What lost its end was this track's copy; anything else is somebody's work.
  const bool isCut = track.ours && likeness == Likeness::kCut;
  track.copy = copy;
  Outcome outcome = {Fate::kKept, {}};
  if (moves && (isCut || likeness == Likeness::kSame)) outcome = Move(track);
  if (likeness == Likeness::kSame || outcome.fate == Fate::kFailed) {
    destination_.RemovePart(part);
    if (outcome.fate != Fate::kFailed) Remember(track, RecordOf(track, copy));
    return outcome;
  }
  if (isCut) return Place(track, part, true, Fate::kReplaced);
  if (!moves) track.name = FreeName(track.wanted, plan_.names, destination_);
  return Place(track, part, false, Fate::kCopied);
}

ExportRun::Outcome ExportRun::Place(PlannedTrack& track, const std::string& part, bool replaces,
                                    Fate fate) {
  const FileFacts copy = destination_.Parts().Look(part).facts;
  // Fetching takes its time, in which somebody may have begun to work on what is to be replaced.
  if (replaces && !IsUntouched(track)) {
    track.name = FreeName(track.wanted, plan_.names, destination_);
    replaces = false;
    fate = Fate::kCopied;
  }
  Record record = RecordOf(track, copy);
  journal_.Announce(record);
  std::error_code error = destination_.Place(part, track.name, replaces);
  if (error == std::errc::file_exists) {
    // Somebody was quicker.
    journal_.TakeBack();
    track.name = FreeName(track.wanted, plan_.names, destination_);
    record.name = track.name;
    journal_.Announce(record);
    error = destination_.Place(part, track.name, false);
  }
  if (error) {
    journal_.TakeBack();
    destination_.RemovePart(part);
    return Refused(track.name, error);
  }
  Remember(track, std::move(record));
  if (copy.size == 0) report_.Complain(track.title + ": its file on the device is empty");
  return {fate, {}, copy.size};
}

// The journal takes no more.
ExportRun::Outcome ExportRun::Broken(const Failure& failure) {
  return {Fate::kFailed, failure.what(), 0, Stop::kDestination};
}

ExportRun::Outcome ExportRun::Failed(const std::string& name, const FetchResult& result) {
  const bool isOurs =
      result.kind == FetchResult::Kind::kRefused || result.kind == FetchResult::Kind::kFull;
  const bool isFull = result.kind == FetchResult::Kind::kFull;
  Outcome outcome = {Fate::kFailed, result.problem, 0, isFull ? Stop::kDestination : Stop::kNone};
  if (isOurs) outcome.problem = destination_.Shown(name) + ": " + result.problem;
  // Without its source every copy would fail, on a phone after a wait.
  if (!isOurs && !source_.Answers()) {
    outcome = {Fate::kFailed, source_.Name() + kGone, 0, Stop::kSource};
  }
  return outcome;
}

ExportRun::Outcome ExportRun::Refused(const std::string& name, const std::error_code& error) {
  return Failed(name, NotTaken(error));
}

Record ExportRun::RecordOf(const PlannedTrack& track, const FileFacts& copy) const {
  Record record;
  record.player = plan_.player;
  record.item = track.item;
  record.location = LocationOf(track.track);
  record.source = track.facts;
  record.wanted = track.wanted;
  record.name = track.name;
  record.copy = copy;
  return record;
}

void ExportRun::Remember(const PlannedTrack& track, Record record) {
  flusher_.Add(std::move(record));
  remembered_.push_back(static_cast<std::size_t>(&track - plan_.tracks.data()));
}

void ExportRun::WaitForDisk() {
  flusher_.Finish();
  journal_.Flush();
  const std::error_code error = flusher_.Error();
  if (!error) return;
  stop_ = Stop::kDestination;
  // Where the disk did not take what it was given, a copy may look whole and not be.
  bool tellsAny = false;
  for (std::size_t i = flusher_.DurableCount(); i < remembered_.size(); ++i) {
    const PlannedTrack& track = plan_.tracks[remembered_[i]];
    if (fates_[remembered_[i]] == Fate::kFailed) continue;
    tellsAny = true;
    report_.TellLost(
        track, fates_[remembered_[i]],
        destination_.Shown(track.name) + ": may not have reached the disk: " + ReasonOf(error));
    fates_[remembered_[i]] = Fate::kFailed;
  }
  if (!tellsAny) {
    report_.Complain(Shown(destination_.Path()) +
                     ": may not have reached the disk: " + ReasonOf(error));
  }
}

}  // namespace quaylink::cli
