#include "cli/export/report.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "cli/base/paths.h"
#include "cli/system/system.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

// Grows when programs that read the events have to be changed.
constexpr int kEventFormat = 1;

constexpr std::array<const char*, kFates> kFateNames = {"notReached", "copied", "replaced",
                                                        "skipped",    "moved",  "failed"};
// For people, of one width.
constexpr std::array<std::string_view, kFates> kFateWords = {
    "", "copied    ", "replaced  ", "skipped   ", "moved     ", ""};

constexpr const char* kVerified = "verified";

constexpr std::string_view kCommandNames[] = {"export", "verify", "pull"};
constexpr std::string_view kActionNames[] = {"keep", "copy", "replace", "check", "none"};
constexpr std::string_view kStopNames[] = {"", "interrupt", "source", "destination"};

bool ShowsBar(const Program& program) {
  return !program.quiet && IsTerminal(Stream::kError) && !IsDumbTerminal();
}

Json EventOf(const char* name) {
  return {{"event", name}};
}

// Of ASCII alone: some readers of lines end one at each of Unicode's line separators, too, and some
// take what comes from a pipe for another encoding.
std::string LineOf(const Json& event) {
  return event.dump(-1, ' ', true, Json::error_handler_t::replace) + '\n';
}

std::string Counted(std::size_t count, const char* word) {
  return std::to_string(count) + ' ' + word;
}

}  // namespace

void TellFailure(const Program& program, const std::string& message, int status) {
  if (!program.tellsEvents) return;
  Json json = EventOf("end");
  json["format"] = kEventFormat;
  json["status"] = status;
  json["error"] = message;
  // What cannot be told any more is the output's own failure.
  Write(Stream::kOutput, LineOf(json));
}

ExportReport::ExportReport(const Program& program, const std::filesystem::path& folder,
                           const Plan& plan, ReportKind kind)
    : program_(program),
      folder_(folder),
      plan_(plan),
      kind_(kind),
      isFollowed_(program.tellsEvents || ShowsBar(program)),
      // A person who watches the bar needs no line for each track.
      tellsCopies_(!program.tellsEvents && !program.quiet &&
                   (program.verbose || !(ShowsBar(program) && IsTerminal(Stream::kOutput)))),
      bar_(plan.bytes, ShowsBar(program)) {}

void ExportReport::Print(const std::string& line) {
  bar_.Clear();
  program_.Print(line);
}

void ExportReport::Complain(const std::string& message) {
  bar_.Clear();
  program_.Complain(message);
}

const char* ExportReport::NameOf(Fate fate) const {
  const bool verified = kind_ == ReportKind::kVerification && fate == Fate::kKept;
  return verified ? kVerified : kFateNames[static_cast<std::size_t>(fate)];
}

std::string ExportReport::FileOf(const std::string& name) const {
  return Utf8Of((folder_ / PathOf(name)).make_preferred());
}

Json ExportReport::JsonOf(const PlannedTrack& track) const {
  Json json = EventOf("track");
  json["index"] = track.track.index;
  json["name"] = track.title;
  json["artist"] = track.track.artist;
  json["album"] = track.track.album;
  json["title"] = track.track.title;
  json["location"] = track.track.location;
  json["size"] = track.facts.size;
  if (!track.name.empty()) json["file"] = FileOf(track.name);
  if (!track.movesFrom.empty()) json["movesFrom"] = FileOf(track.movesFrom);
  return json;
}

std::size_t ExportReport::Left() const {
  return plan_.tracks.size() - std::accumulate(counts_.begin(), counts_.end(), std::size_t{0});
}

void ExportReport::ShowPlan(int status) {
  TellStart(true);
  for (const PlannedTrack& track : plan_.tracks) {
    if (track.action == Action::kNone) Complain(track.title + ": " + track.problem);
    if (program_.tellsEvents) {
      Json json = JsonOf(track);
      json["action"] = kActionNames[static_cast<std::size_t>(track.action)];
      if (!track.problem.empty()) json["error"] = track.problem;
      Print(LineOf(json));
      continue;
    }
    if (program_.quiet) continue;
    // Others may have written into the journal, where names of copies stand.
    const std::string name = MakePrintable(track.name);
    const std::string movesFrom = MakePrintable(track.movesFrom);
    // A copy that is doubtful is looked at before it is moved.
    if (track.action == Action::kCheck) {
      Print("would check    " + (movesFrom.empty() ? name : movesFrom) + '\n');
    }
    if (!movesFrom.empty()) Print("would move     " + movesFrom + " -> " + name + '\n');
    if (track.action == Action::kCopy) Print("would copy     " + name + '\n');
    if (track.action == Action::kReplace) Print("would replace  " + name + '\n');
    if (track.action == Action::kKeep && movesFrom.empty() && program_.verbose) {
      Print("finished       " + name + '\n');
    }
  }
  if (program_.tellsEvents) {
    Json json = EventOf("end");
    json["planned"] = plan_.tracks.size() - plan_.KeepCount() - plan_.Count(Action::kNone);
    json["skipped"] = plan_.KeepCount();
    json["failed"] = plan_.Count(Action::kNone);
    json["bytes"] = plan_.bytes;
    json["free"] = plan_.free;
    if (plan_.knowsSizes) json["fits"] = plan_.Fits();
    json["status"] = status;
    Print(LineOf(json));
    return;
  }
  if (program_.quiet) return;
  std::string line = Counted(plan_.Count(Action::kCopy), "to copy");
  const auto append = [&line](std::size_t count, const char* word) {
    if (count > 0) line += ", " + Counted(count, word);
  };
  append(plan_.Count(Action::kReplace), "to replace");
  append(plan_.Count(Action::kCheck), "to check");
  append(plan_.MoveCount(), "to move");
  if (plan_.knowsSizes) line += " (" + ShownSize(plan_.bytes) + ')';
  line += ", " + Counted(plan_.KeepCount(), "already there");
  append(plan_.Count(Action::kNone), "without a file on the device");
  Print(line + '\n');
  const std::string fits = plan_.Fits() ? ": enough" : ": not enough";
  Print(ShownSize(plan_.free) + " free in the folder" + (plan_.knowsSizes ? fits : "") + '\n');
  NoteUnnamed();
}

void ExportReport::TellStart(bool isDryRun) {
  if (!program_.tellsEvents) return;
  Json json = EventOf("start");
  json["format"] = kEventFormat;
  json["command"] = kCommandNames[static_cast<std::size_t>(kind_)];
  json["dryRun"] = isDryRun;
  json["folder"] = Utf8Of(folder_);
  json["tracks"] = plan_.tracks.size();
  json["bytes"] = plan_.bytes;
  json["unnamed"] = plan_.unnamed;
  if (!plan_.problem.empty()) json["problem"] = plan_.problem;
  Print(LineOf(json));
}

void ExportReport::Begin(const PlannedTrack& track) {
  underWay_.push_back({&track, 0});
  TellProgress(track);
}

void ExportReport::Progress(const PlannedTrack& track, std::uint64_t bytes) {
  // A file may turn out longer than it was said to be.
  std::uint64_t& sum = FindUnderWay(track)->bytes;
  sum = std::min(sum + bytes, track.facts.size);
  if (!program_.tellsEvents || throttle_.Passes()) TellProgress(track);
}

std::vector<ExportReport::UnderWay>::iterator ExportReport::FindUnderWay(
    const PlannedTrack& track) {
  return std::ranges::find(underWay_, &track, &UnderWay::track);
}

void ExportReport::TellProgress(const PlannedTrack& track) {
  std::uint64_t bytes = bytesBefore_;
  for (const UnderWay& other : underWay_) bytes += other.bytes;
  // A copy that has vanished since the plan was made is fetched without being part of the sum.
  bytes = std::min(bytes, plan_.bytes);
  bar_.Show(bytes, track.title);
  if (!program_.tellsEvents) return;
  Json json = EventOf("progress");
  json["index"] = track.track.index;
  json["name"] = track.title;
  json["bytes"] = bytes;
  json["total"] = plan_.bytes;
  Print(LineOf(json));
}

void ExportReport::TellLost(const PlannedTrack& track, Fate toldFate, const std::string& problem) {
  --counts_[static_cast<std::size_t>(toldFate)];
  Tell(track, Fate::kFailed, 0, problem);
}

void ExportReport::Tell(const PlannedTrack& track, Fate fate, std::uint64_t copiedBytes,
                        const std::string& problem) {
  const auto index = static_cast<std::size_t>(fate);
  ++counts_[index];
  copiedBytes_ += copiedBytes;
  if (const auto underWay = FindUnderWay(track); underWay != underWay_.end()) {
    bytesBefore_ += track.facts.size;
    underWay_.erase(underWay);
  }
  if (fate == Fate::kFailed) Complain(track.title + ": " + problem);
  if (program_.tellsEvents) {
    Json json = JsonOf(track);
    // Of some files only their copies tell it.
    if (!plan_.knowsSizes) json["size"] = copiedBytes;
    json["result"] = NameOf(fate);
    if (!problem.empty()) json["error"] = problem;
    Print(LineOf(json));
  } else if (tellsCopies_ && fate != Fate::kFailed && (fate != Fate::kKept || program_.verbose)) {
    Print(std::string(kFateWords[index]) + MakePrintable(track.name) + '\n');
  }
}

void ExportReport::TellPlaylist(const std::string& name, const std::string& problem) {
  if (!problem.empty()) Complain(problem);
  if (program_.tellsEvents) {
    Json json = EventOf("playlist");
    json["file"] = FileOf(name);
    json["result"] = problem.empty() ? "written" : "failed";
    if (!problem.empty()) json["error"] = problem;
    Print(LineOf(json));
  } else if (tellsCopies_ && problem.empty()) {
    Print("playlist  " + MakePrintable(name) + '\n');
  }
}

std::string ExportReport::Summary() const {
  std::string line;
  const auto append = [&line](std::size_t count, const char* word, bool always) {
    if (count > 0 || always) line += (line.empty() ? "" : ", ") + Counted(count, word);
  };
  if (kind_ == ReportKind::kVerification) {
    append(Count(Fate::kKept), kVerified, true);
  } else {
    append(Count(Fate::kCopied), "copied", true);
    append(Count(Fate::kReplaced), "replaced", false);
    line += " (" + ShownSize(copiedBytes_) + ')';
    append(Count(Fate::kMoved), "moved", false);
    append(Count(Fate::kKept), "already there", true);
  }
  append(Count(Fate::kFailed), "failed", true);
  append(Left(), "not reached", false);
  return line;
}

std::string ExportReport::Advice(Stop stop) const {
  if (stop == Stop::kInterrupt) return "Interrupted. Run the same command again to copy the rest.";
  if (stop == Stop::kSource) return "Attach the device again, and run the same command again.";
  if (Count(Fate::kFailed) > 0) return "What failed is named above.";
  return {};
}

void ExportReport::NoteUnnamed() const {
  if (plan_.unnamed == 0) return;
  program_.Note(Counted(plan_.unnamed,
                        plan_.unnamed == 1
                            ? "music file is not in the database; --rescue exports it, too."
                            : "music files are not in the database; --rescue exports them, too."));
}

void ExportReport::End(int status, Stop stop) {
  bar_.Clear();
  if (program_.tellsEvents) {
    Json json = EventOf("end");
    for (const Fate fate :
         {Fate::kCopied, Fate::kReplaced, Fate::kMoved, Fate::kKept, Fate::kFailed}) {
      json[NameOf(fate)] = Count(fate);
    }
    json[NameOf(Fate::kPending)] = Left();
    json["bytes"] = copiedBytes_;
    if (stop != Stop::kNone) json["stoppedBy"] = kStopNames[static_cast<std::size_t>(stop)];
    json["status"] = status;
    Print(LineOf(json));
    return;
  }
  if (!program_.quiet) program_.Print(Summary() + '\n');
  const std::string advice = Advice(stop);
  if (!advice.empty()) program_.Note(advice);
  NoteUnnamed();
}

}  // namespace quaylink::cli
