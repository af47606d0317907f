#include "cli/export/journal.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/base/paths.h"
#include "cli/base/program.h"

namespace quaylink::cli {
namespace {

constexpr char kName[] = ".quaylink-journal";
constexpr int kFormat = 1;
// No export makes one of this size.
constexpr std::uint64_t kLargest = 256u << 20u;

Json JsonOf(const Record& record) {
  Json json;
  json["player"] = record.player;
  json["item"] = record.item;
  json["location"] = record.location;
  json["size"] = record.source.size;
  json["time"] = record.source.time;
  json["wanted"] = record.wanted;
  json["name"] = record.name;
  json["copySize"] = record.copy.size;
  json["copyTime"] = record.copy.time;
  return json;
}

std::string LineOf(const Record& record) {
  return JsonLine(JsonOf(record));
}

// Of the copy in the line before.
std::string TakenBackLine() {
  return JsonLine({{"placed", false}});
}

// Lines of copies are counted from the journal's first.
std::string DurableLine(std::size_t from, std::size_t end) {
  return JsonLine({{"durable", end}, {"from", from}});
}

Record RecordOf(const Json& json) {
  Record record;
  record.player = json.at("player").get<std::string>();
  record.item = json.at("item").get<std::string>();
  record.location = json.at("location").get<std::string>();
  record.source = {json.at("size").get<std::uint64_t>(), json.at("time").get<std::int64_t>()};
  record.wanted = json.at("wanted").get<std::string>();
  record.name = json.at("name").get<std::string>();
  record.copy = {json.at("copySize").get<std::uint64_t>(), json.at("copyTime").get<std::int64_t>()};
  return record;
}

std::string KeyOf(const std::string& player, const std::string& item) {
  return player + '\n' + item;
}

// Whoever may write into the destination may have written the journal. No copy's name begins with a
// dot, as ".." does, and the journal's own.
bool IsNameOfCopy(std::string_view name) {
  while (true) {
    const std::size_t slash = name.find('/');
    const std::string_view component = name.substr(0, slash);
    if (component.empty() || component.front() == '.') return false;
    if (component.find_first_of(std::string_view("\\:\0", 3)) != std::string_view::npos) {
      return false;
    }
    if (slash == std::string_view::npos) return true;
    name.remove_prefix(slash + 1);
  }
}

}  // namespace

std::string DistinctItems::Add(std::string item) {
  const std::size_t count = ++counts_[item];
  return count == 1 ? item : item + ' ' + std::to_string(count);
}

Journal::Journal(Destination& destination) : destination_(destination) {
  // What no export can have made is no journal.
  const Entry there = destination.Look(kName);
  if (there.kind == EntryKind::kMissing || there.facts.size > kLargest) return;
  std::error_code error;
  File file = destination.OpenFile(kName, error);
  if (error == std::errc::too_many_symbolic_link_levels || error == std::errc::not_supported)
    return;
  std::string bytes(static_cast<std::size_t>(file.FactsWhenOpened().size), '\0');
  if (!error) bytes.resize(file.Read(bytes, error));
  if (error) throw NotRead(ReasonOf(error));
  Read(bytes);
}

void Journal::Read(const std::string& bytes) {
  std::size_t begin = 0;
  for (std::size_t end = bytes.find('\n'); end != std::string::npos;
       begin = end + 1, end = bytes.find('\n', begin)) {
    const Json json = Json::parse(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                                  bytes.begin() + static_cast<std::ptrdiff_t>(end), nullptr, false);
    if (!json.is_object()) continue;
    try {
      ReadLine(json);
    } catch (const Json::exception&) {
      continue;
    }
  }
  // The run that announced it may have been killed before or after the copy got its name.
  if (announced_ && !WasPlaced(*announced_)) announced_.reset();
  KeepAnnounced();
}

bool Journal::WasPlaced(const Record& record) const {
  if (!IsNameOfCopy(record.name)) return false;
  const Entry there = destination_.Look(record.name);
  if (there.kind != EntryKind::kFile) return false;
  // One that was renamed may have been cut before.
  const Record* earlier = Find(record.player, record.item);
  const bool renamed = earlier && destination_.Look(earlier->name).kind == EntryKind::kMissing;
  return renamed || there.facts == record.copy;
}

void Journal::ReadLine(const Json& json) {
  if (json.contains("journal")) {
    if (json.at("format").get<int>() > kFormat) throw NotRead("a newer edition has written it");
  } else if (json.contains("durable")) {
    const auto end = json["durable"].get<std::size_t>();
    // Another one may have been announced meanwhile.
    if (end > kept_.size()) KeepAnnounced();
    const auto stop = std::min(end, kept_.size());
    for (auto i = json.at("from").get<std::size_t>(); i < stop; ++i) kept_[i].durable = true;
  } else if (json.contains("item")) {
    Record record = RecordOf(json);
    KeepAnnounced();
    announced_ = std::move(record);
  } else if (json.contains("placed")) {
    announced_.reset();
  }
}

void Journal::KeepAnnounced() {
  if (announced_) Keep(std::move(*announced_));
  announced_.reset();
}

void Journal::Keep(Record record) {
  kept_.push_back(std::move(record));
  const Record& kept = kept_.back();
  if (IsNameOfCopy(kept.name)) records_[KeyOf(kept.player, kept.item)] = &kept;
}

const Record* Journal::Find(const std::string& player, const std::string& item) const {
  const auto found = records_.find(KeyOf(player, item));
  return found == records_.end() ? nullptr : found->second;
}

// What is superseded is left out of the new file.
void Journal::Begin() {
  const std::string part = destination_.NewPart();
  std::error_code error;
  file_ = destination_.Parts().MakeFile(part, error);
  std::string bytes = JsonLine({{"journal", "quaylink"}, {"format", kFormat}});
  std::size_t count = 0;
  std::size_t durableFrom = 0;
  for (const bool durable : {false, true}) {
    durableFrom = count;
    for (const Record& record : kept_) {
      const auto known = records_.find(KeyOf(record.player, record.item));
      if (record.durable != durable || known == records_.end() || known->second != &record)
        continue;
      bytes += LineOf(record);
      ++count;
    }
  }
  bytes += DurableLine(durableFrom, count);
  linesBefore_ = count;
  if (!error) error = file_.Write(bytes);
  if (!error) error = file_.Flush();
  if (!error) error = destination_.Place(part, kName, true);
  broken_ = error;
}

void Journal::Announce(const Record& record) {
  const std::lock_guard lock(mutex_);
  Append(LineOf(record));
  announced_ = record;
}

void Journal::TakeBack() {
  const std::lock_guard lock(mutex_);
  announced_.reset();
  Append(TakenBackLine());
}

void Journal::Add(Record record) {
  const std::lock_guard lock(mutex_);
  if (announced_ != record) Append(LineOf(record));
  announced_.reset();
  Keep(std::move(record));
  added_.push_back(&kept_.back());
}

void Journal::Append(const std::string& line) {
  if (!file_.IsOpen() && !broken_) Begin();
  // Behind a line that was cut no other would be understood.
  if (!broken_) broken_ = file_.Write(line);
  if (broken_) throw NotWritten(broken_);
}

void Journal::MarkDurable(std::size_t count) {
  const std::lock_guard lock(mutex_);
  if (!broken_) broken_ = file_.Write(DurableLine(linesBefore_, linesBefore_ + count));
  if (broken_) return;
  for (std::size_t i = 0; i < count; ++i) added_[i]->durable = true;
}

void Journal::Flush() {
  const std::lock_guard lock(mutex_);
  if (file_.IsOpen()) file_.Flush();
}

Failure Journal::NotRead(const std::string& reason) const {
  return Failure(destination_.Shown(kName) +
                 ": what was copied here before cannot be read: " + reason);
}

Failure Journal::NotWritten(const std::error_code& error) const {
  return Failure(destination_.Shown(kName) + ": cannot be written: " + ReasonOf(error));
}

}  // namespace quaylink::cli
