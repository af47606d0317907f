// Where chunks come from: the bytes of a database in memory, or in an open file behind a window.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>

namespace quaylink {

// Reads from front to back. It ends where its file or memory ends, or at the first read error. A
// skip may pass the end; nothing can be read there.
//
// It also counts the chunks that failed to read, for the whole database, so that a broken file is
// given up after a constant number of them.
class Reader {
 public:
  // Of a file from its beginning. The file stays the caller's and must outlive the reader. Throws
  // std::bad_alloc when there is no memory for the window.
  explicit Reader(std::FILE* file);
  // Of memory, which stays the caller's and must outlive the reader.
  explicit Reader(std::span<const std::uint8_t> memory);
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  // Reads up to `size` bytes; returns the number read, which is smaller only at the end.
  std::size_t Read(void* destination, std::size_t size) {
    if (size > InWindow()) return ReadAcrossWindows(destination, size);
    if (size > 0) std::memcpy(destination, next_, size);
    next_ += size;
    return size;
  }

  // The next `size` bytes, fewer at the end, without moving on. `size` is at most kLongestPeek. The
  // bytes are valid until the next operation.
  std::span<const std::uint8_t> Peek(std::size_t size) {
    if (size > InWindow()) FillWindow();
    const std::size_t there = InWindow();
    return {next_, there < size ? there : size};
  }

  // Moves on. The new position must fit in 64 bits.
  void Skip(std::uint64_t distance) {
    if (distance <= InWindow()) {
      next_ += distance;
    } else {
      SkipBeyondWindow(distance);
    }
  }

  // In bytes from the beginning.
  std::uint64_t Position() const { return windowEndPosition_ - InWindow(); }
  std::uint64_t Remaining() const {
    const std::uint64_t position = Position();
    return position < size_ ? size_ - position : 0;
  }

  std::uint64_t Size() const { return size_; }
  bool PassedEnd() const { return Position() > size_; }

  void NoteFailedChunk() { ++failedChunks_; }
  int FailedChunks() const { return failedChunks_; }
  // Makes it give up after so many.
  void SetMostFailedChunks(int count) { mostFailedChunks_ = count; }
  // True when there is no point in looking for another chunk.
  bool Exhausted() const { return failedChunks_ >= mostFailedChunks_ || Remaining() == 0; }

  static constexpr std::size_t kLongestPeek = 512;
  static constexpr int kMostFailedChunks = 32;

 private:
  std::size_t InWindow() const { return static_cast<std::size_t>(windowEnd_ - next_); }
  std::size_t ReadAcrossWindows(void* destination, std::size_t size);
  void SkipBeyondWindow(std::uint64_t distance);
  void FillWindow();

  const std::uint8_t* next_ = nullptr;  // the byte at the position, within the window or at its end
  const std::uint8_t* windowEnd_ = nullptr;
  std::uint64_t windowEndPosition_ = 0;
  std::uint64_t size_ = 0;
  std::FILE* file_ = nullptr;
  std::uint64_t filePosition_ = 0;
  std::unique_ptr<std::uint8_t[]> window_;
  int failedChunks_ = 0;
  int mostFailedChunks_ = kMostFailedChunks;
};

}  // namespace quaylink
