#include "itunesdb/stream.h"

#include <algorithm>
#include <cstring>
#include <new>

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

Stream::Stream(std::FILE* file)
    : file_(file), fileWindow_(std::make_unique_for_overwrite<std::uint8_t[]>(kWindowSize)) {
  std::setvbuf(file, nullptr, _IONBF, 0);  // the window is buffer enough
  size_ = LengthOf(file);
  window_ = fileWindow_.get();
}

Stream::Stream(std::span<const std::uint8_t> memory)
    : size_(memory.size()), window_(memory.data()), windowEnd_(memory.size()) {}

std::size_t Stream::ReadAcrossWindows(void* destination, std::size_t size) {
  auto* to = static_cast<std::uint8_t*>(destination);
  std::size_t done = 0;
  while (done < size) {
    const auto bytes = Peek(1);
    if (bytes.empty()) break;
    const auto run =
        static_cast<std::size_t>(std::min<std::uint64_t>(size - done, windowEnd_ - position_));
    std::memcpy(to + done, bytes.data(), run);
    position_ += run;
    done += run;
  }
  return done;
}

// Moves the window so that it begins at the position,
// keeping the bytes that it already holds from there on.
void Stream::FillWindow() {
  if (!file_ || position_ >= size_) return;
  std::size_t kept = 0;
  if (position_ >= windowStart_ && position_ < windowEnd_) {
    kept = static_cast<std::size_t>(windowEnd_ - position_);
    std::memmove(fileWindow_.get(), window_ + (position_ - windowStart_), kept);
  }
  windowStart_ = position_;
  windowEnd_ = position_ + kept;
  if (filePosition_ != windowEnd_) {
    // size_ came from ftell, so the position fits its type
    if (std::fseek(file_, static_cast<long>(windowEnd_), SEEK_SET) != 0) {
      size_ = windowEnd_;
      return;
    }
    filePosition_ = windowEnd_;
  }
  const auto wanted =
      static_cast<std::size_t>(std::min<std::uint64_t>(kWindowSize - kept, size_ - windowEnd_));
  const std::size_t got = std::fread(fileWindow_.get() + kept, 1, wanted, file_);
  filePosition_ += got;
  windowEnd_ += got;
  if (got < wanted) size_ = windowEnd_;
}

// Large memory grows in place or moves without being copied where the system can do that.
void Stream::GrowTo(std::size_t capacity) {
  void* larger = std::realloc(written_.get(), capacity);
  if (!larger) throw std::bad_alloc();
  static_cast<void>(written_.release());  // it is part of the larger memory, or gone
  written_.reset(static_cast<std::uint8_t*>(larger));
  capacity_ = capacity;
}

}  // namespace quaylink
