// Sees to it that copies reach the disk, many at a time and beside the copying: to wait for each
// would take longer than to copy them.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "cli/export/destination.h"
#include "cli/export/journal.h"

namespace quaylink::cli {

class Flusher {
 public:
  Flusher(const Destination& destination, Journal& journal);
  ~Flusher();
  Flusher(const Flusher&) = delete;
  Flusher& operator=(const Flusher&) = delete;

  // A copy has got its name: it is put down in the journal. Throws as Journal::Add does.
  void Add(Record record);
  // Waits until all of them are on the disk, and says so in the journal.
  void Finish();
  // What kept copies from the disk. The first so many that were added are there.
  std::error_code Error() const;
  std::size_t DurableCount() const;

 private:
  void Work();

  const Destination& destination_;
  Journal& journal_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> names_;
  std::uint64_t bytes_ = 0;
  bool ends_ = false;
  std::size_t durableCount_ = 0;
  std::error_code error_;
  std::thread thread_;
};

}  // namespace quaylink::cli
