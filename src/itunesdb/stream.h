// The bytes of a database: read through a window of an
// open file or from memory, or written into memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

namespace quaylink {

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};

// Positions are bytes from the beginning. A stream that reads ends where its file or memory ends,
// or at the first read error. Positions beyond the end are allowed; nothing can be read there.
//
// The stream also counts the chunks that failed to read, for the whole database, so that a broken
// file is given up after a constant number of them.
class Stream {
 public:
  // Writes, into memory that the stream owns.
  Stream() = default;
  // Reads the file from its beginning. The file stays the caller's and must outlive the stream.
  // Throws std::bad_alloc when there is no memory for the window.
  explicit Stream(std::FILE* file);
  // Reads memory, which stays the caller's and must outlive the stream.
  explicit Stream(std::span<const std::uint8_t> memory);
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  // Reads up to `size` bytes; returns the number read, which is smaller only at the end.
  std::size_t Read(void* destination, std::size_t size) {
    if (position_ < windowStart_ || position_ + size > windowEnd_) {
      return ReadAcrossWindows(destination, size);
    }
    if (size > 0) std::memcpy(destination, window_ + (position_ - windowStart_), size);
    position_ += size;
    return size;
  }

  // The next `size` bytes, fewer at the end, without moving on. `size` is at most kLongestPeek. The
  // bytes are valid until the next operation.
  std::span<const std::uint8_t> Peek(std::size_t size) {
    if (position_ < windowStart_ || position_ + size > windowEnd_) FillWindow();
    const std::uint64_t available = position_ < windowEnd_ ? windowEnd_ - position_ : 0;
    return {window_ + (available ? position_ - windowStart_ : 0),
            available < size ? static_cast<std::size_t>(available) : size};
  }

  // Writes `size` bytes over what stands at the position, or at the end. Throws std::bad_alloc.
  void Write(const void* source, std::size_t size) {
    if (size > 0) std::memcpy(Claim(size), source, size);
  }

  // Makes room for that many bytes in all, so that writing them does not have to.
  void Reserve(std::size_t capacity) {
    if (capacity > capacity_) GrowTo(capacity);
  }

  // Room for `size` bytes at the position, which the caller fills before the next operation; moves
  // past them. Throws std::bad_alloc.
  std::uint8_t* Claim(std::size_t size) {
    const auto begin = static_cast<std::size_t>(position_);
    if (begin + size > capacity_) GrowTo(std::max(begin + size, capacity_ * 2));
    position_ += size;
    size_ = std::max(size_, position_);
    return written_.get() + begin;
  }

  std::uint64_t Tell() const { return position_; }
  void SkipBy(std::int64_t distance) { position_ += static_cast<std::uint64_t>(distance); }
  void SeekTo(std::uint64_t position) { position_ = position; }
  std::uint64_t Size() const { return size_; }
  std::uint64_t Remaining() const { return position_ < size_ ? size_ - position_ : 0; }

  // Everything written so far.
  std::span<const std::uint8_t> Written() const {
    return {written_.get(), static_cast<std::size_t>(size_)};
  }

  void NoteFailedChunk() { ++failedChunks_; }
  // True when there is no point in looking for another chunk.
  bool Exhausted() const { return failedChunks_ >= kMostFailedChunks || Remaining() == 0; }

  static constexpr std::size_t kLongestPeek = 512;
  static constexpr int kMostFailedChunks = 32;

 private:
  std::size_t ReadAcrossWindows(void* destination, std::size_t size);
  void FillWindow();
  void GrowTo(std::size_t capacity);

  std::uint64_t position_ = 0;
  std::uint64_t size_ = 0;
  const std::uint8_t* window_ = nullptr;  // the bytes from windowStart_ to windowEnd_
  std::uint64_t windowStart_ = 0;
  std::uint64_t windowEnd_ = 0;
  std::FILE* file_ = nullptr;
  std::uint64_t filePosition_ = 0;
  std::unique_ptr<std::uint8_t[]> fileWindow_;
  std::unique_ptr<std::uint8_t, FreeMemory> written_;
  std::size_t capacity_ = 0;
  int failedChunks_ = 0;
};

}  // namespace quaylink
