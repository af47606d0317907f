// Memory for the chunks of one database: handed out front to back from large blocks and given up
// all at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "common/poison.h"

namespace quaylink {

class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  // Memory that lasts until the next Rewind. The alignment is a power of two, at most that of
  // std::max_align_t. Throws std::bad_alloc when there is none.
  void* Allocate(std::size_t size, std::size_t alignment) {
    const std::size_t padding = (0 - reinterpret_cast<std::uintptr_t>(cursor_)) & (alignment - 1);
    const auto room = static_cast<std::size_t>(end_ - cursor_);
    if (room < padding || room - padding < size) return AllocateElsewhere(size);
    std::byte* result = cursor_ + padding;
    Advance(result, size);
    return result;
  }

  // Gives up everything that was handed out. The common blocks stay for what is allocated next.
  void Rewind();

  // Returns the blocks that hold nothing to the system.
  void Trim();

 private:
  using Bytes = std::unique_ptr<std::byte[]>;

  // Between two allocations, so that an overrun of one does not land in the next unseen.
  static constexpr std::size_t kGap = kPoisons ? 8 : 0;

  // When the block in use is too small.
  void* AllocateElsewhere(std::size_t size);

  // Hands out `size` bytes at the beginning of what is left of the block.
  void Advance(std::byte* result, std::size_t size) {
    Unpoison(result, size);
    cursor_ = static_cast<std::size_t>(end_ - result) - size < kGap ? end_ : result + size + kGap;
  }

  struct Block {
    Bytes bytes;
    std::size_t size;
  };

  std::vector<Block> blocks_;
  std::vector<Bytes> large_;     // one for each allocation that would fill much of a block
  std::size_t blocksInUse_ = 0;  // the last of them is being filled
  std::size_t blockBytes_ = 0;   // of all blocks
  std::byte* cursor_ = nullptr;
  std::byte* end_ = nullptr;
};

// Ends the life of an object in an arena, whose memory goes with the arena.
struct DestroyInPlace {
  template <class T>
  void operator()(T* object) const {
    std::destroy_at(object);
  }
};

// An owning pointer to an object in an arena.
template <class T>
using Owned = std::unique_ptr<T, DestroyInPlace>;

template <class T, class... Arguments>
Owned<T> MakeOwned(Arena& arena, Arguments&&... arguments) {
  void* memory = arena.Allocate(sizeof(T), alignof(T));
  return Owned<T>(::new (memory) T(std::forward<Arguments>(arguments)...));
}

}  // namespace quaylink
