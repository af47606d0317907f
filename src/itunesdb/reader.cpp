#include "itunesdb/reader.h"

#include <algorithm>

namespace quaylink {

namespace {

constexpr std::size_t kWindowSize = 64 * 1024;

// The file's length, 0 when it cannot be told (a pipe, say).
std::uint64_t LengthOf(std::FILE* file) {
  if (std::fseek(file, 0, SEEK_END) != 0) return 0;
  const long length = std::ftell(file);
  std::rewind(file);
  return length > 0 ? static_cast<std::uint64_t>(length) : 0;
}

}  // namespace

Reader::Reader(std::FILE* file)
    : file_(file), window_(std::make_unique_for_overwrite<std::uint8_t[]>(kWindowSize)) {
  std::setvbuf(file, nullptr, _IONBF, 0);  // the window is buffer enough
  size_ = LengthOf(file);
  next_ = windowEnd_ = window_.get();
}

Reader::Reader(std::span<const std::uint8_t> memory)
    : next_(memory.data()),
      windowEnd_(memory.data() + memory.size()),
      windowEndPosition_(memory.size()),
      size_(memory.size()) {}

std::size_t Reader::ReadAcrossWindows(void* destination, std::size_t size) {
  auto* to = static_cast<std::uint8_t*>(destination);
  std::size_t done = 0;
  while (done < size) {
    const auto bytes = Peek(1);
    if (bytes.empty()) break;
    const std::size_t run = std::min(size - done, InWindow());
    std::memcpy(to + done, bytes.data(), run);
    next_ += run;
    done += run;
  }
  return done;
}

// Leaves an empty window at the new position.
void Reader::SkipBeyondWindow(std::uint64_t distance) {
  windowEndPosition_ = Position() + distance;
  next_ = windowEnd_;
}

// Puts the bytes that the window still holds at its beginning, and as many behind them as fit.
void Reader::FillWindow() {
  if (!file_ || windowEndPosition_ >= size_) return;
  const std::size_t kept = InWindow();
  if (kept > 0) std::memmove(window_.get(), next_, kept);
  next_ = window_.get();
  windowEnd_ = next_ + kept;
  if (filePosition_ != windowEndPosition_) {
    // size_ came from ftell, so the position fits its type
    if (std::fseek(file_, static_cast<long>(windowEndPosition_), SEEK_SET) != 0) {
      size_ = windowEndPosition_;
      return;
    }
    filePosition_ = windowEndPosition_;
  }
  const auto wanted = static_cast<std::size_t>(
      std::min<std::uint64_t>(kWindowSize - kept, size_ - windowEndPosition_));
  const std::size_t got = std::fread(window_.get() + kept, 1, wanted, file_);
  filePosition_ += got;
  windowEnd_ += got;
  windowEndPosition_ += got;
  if (got < wanted) size_ = windowEndPosition_;
}

}  // namespace quaylink
