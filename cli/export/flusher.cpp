#include "cli/export/flusher.h"

#include <utility>

namespace quaylink::cli {
namespace {

constexpr std::uint64_t kBatch = 256u << 20u;

}  // namespace

Flusher::Flusher(const Destination& destination, Journal& journal)
    : destination_(destination), journal_(journal), thread_([this] { Work(); }) {}

Flusher::~Flusher() {
  Finish();
}

void Flusher::Add(Record record) {
  std::string name = record.name;
  const std::uint64_t bytes = record.copy.size;
  journal_.Add(std::move(record));
  bool enough = false;
  {
    const std::lock_guard lock(mutex_);
    names_.push_back(std::move(name));
    bytes_ += bytes;
    enough = bytes_ >= kBatch;
  }
  if (enough) changed_.notify_one();
}

void Flusher::Finish() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

std::error_code Flusher::Error() const {
  const std::lock_guard lock(mutex_);
  return error_;
}

std::size_t Flusher::DurableCount() const {
  const std::lock_guard lock(mutex_);
  return durableCount_;
}

void Flusher::Work() {
  std::unique_lock lock(mutex_);
  while (!error_) {
    changed_.wait(lock, [this] { return ends_ || bytes_ >= kBatch; });
    if (names_.empty()) return;
    const std::vector<std::string> names = std::exchange(names_, {});
    bytes_ = 0;
    const std::size_t count = durableCount_ + names.size();
    lock.unlock();
    const std::error_code error = destination_.Flush(names);
    if (!error) journal_.MarkDurable(count);
    lock.lock();
    error_ = error;
    if (!error) durableCount_ = count;
  }
}

}  // namespace quaylink::cli
