// What a destination remembers of the exports into it: a line of JSON for each finished copy.
//
// A copy is announced before it gets its name, because a run may be killed between that and the
// line that would tell of it. What was announced last counts when the copy stands there.
//
// The file is written anew by each run that adds to it, beside the old one, and takes its place
// whole; lines are then appended one by one. A run that is killed loses no finished line. After a
// line that says so, all copies before it have reached the disk; those behind are looked at once
// more by the next run, because a computer that was switched off may have lost their bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

#include "cli/base/program.h"
#include "cli/export/destination.h"
#include "cli/output/json_line.h"
#include "cli/system/folder.h"

namespace quaylink::cli {

// One finished copy.
struct Record {
  std::string player;    // what the player is known by
  std::string item;      // what the track, or playlist, is known by on that player
  std::string location;  // where the file is on the device
  FileFacts source;      // of the file there
  std::string wanted;    // the name that the copy was to have
  std::string name;      // the one that it has, because the other was taken
  FileFacts copy;        // of the copy
  bool durable = false;  // it is on the disk

  friend bool operator==(const Record&, const Record&) = default;
};

// Tells apart items that are alike: all but the first get a number.
class DistinctItems {
 public:
  std::string Add(std::string item);

 private:
  std::unordered_map<std::string, std::size_t> counts_;
};

class Journal {
 public:
  // Reads what is there. Lines that cannot be understood, such as one that was cut, are not known.
  // Throws a Failure when the file cannot be read: the one that would take its place would know
  // none of the copies.
  explicit Journal(Destination& destination);

  // What is known of an item; null when nothing is.
  const Record* Find(const std::string& player, const std::string& item) const;
  // All records, each item's last one only.
  template <class Visit>
  void ForEach(Visit visit) const {
    for (const auto& [key, record] : records_) visit(*record);
  }

  // Says that a copy is about to get its name. Throws as Add does.
  void Announce(const Record& record);
  // Says that it has it. Throws a Failure when the line cannot be written.
  void Add(Record record);
  // Says that the first so many records that were added have reached the disk. Any thread may call
  // this. Where it cannot be written, the next run looks at them once more.
  void MarkDurable(std::size_t count);
  // Waits until the journal is on the disk.
  void Flush();

 private:
  void Read(const std::string& bytes);
  void ReadLine(const Json& json);
  bool WasPlaced(const Record& record) const;
  void Keep(Record record);
  void Begin();
  void Append(const std::string& line);
  Failure NotRead(const std::string& reason) const;
  Failure NotWritten(const std::error_code& error) const;

  Destination& destination_;
  std::mutex mutex_;
  std::deque<Record> kept_;  // stays where it is
  std::unordered_map<std::string, const Record*> records_;
  std::vector<Record*> added_;
  std::optional<Record> announced_;  // and not known to have got its name
  std::size_t linesBefore_ = 0;      // records that this run has found
  File file_;
  std::error_code broken_;  // why it takes no more lines
};

}  // namespace quaylink::cli
