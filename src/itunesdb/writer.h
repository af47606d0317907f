// Where chunks go: memory that grows as they are written.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

#include "itunesdb/little_endian.h"

namespace quaylink {

class Writer {
 public:
  Writer() = default;
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  // Makes room for `size` more bytes, so that appending them does not have to. Throws
  // std::bad_alloc, as every operation that appends.
  void Reserve(std::size_t size) {
    if (size > capacity_ - size_) GrowFor(size);
  }

  // Appends `size` bytes, which the caller fills before the next operation.
  std::uint8_t* Append(std::size_t size) {
    if (size > capacity_ - size_) GrowFor(size);
    std::uint8_t* appended = bytes_.get() + size_;
    size_ += size;
    return appended;
  }

  void Append(const void* source, std::size_t size) {
    std::uint8_t* appended = Append(size);
    if (size > 0) std::memcpy(appended, source, size);
  }

  void AppendZeros(std::size_t size) {
    std::uint8_t* appended = Append(size);
    if (size > 0) std::memset(appended, 0, size);
  }

  // Fills in a 32-bit word that was appended earlier, `position` bytes from the beginning.
  void Overwrite(std::size_t position, std::uint32_t value) {
    assert(position + sizeof(value) <= size_);
    StoreLittleEndian(bytes_.get() + position, value);
  }

  std::size_t Size() const { return size_; }
  // Everything appended so far, until the next operation.
  std::span<const std::uint8_t> Written() const { return {bytes_.get(), size_}; }

 private:
  struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
  };

  void GrowFor(std::size_t size);

  std::unique_ptr<std::uint8_t, FreeMemory> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace quaylink
