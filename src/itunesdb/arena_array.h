// Arrays in an arena, each behind a single pointer: most chunks have few or none, and there are
// many chunks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

#include "itunesdb/arena.h"

namespace quaylink {

// A fixed number of plain values, or none at all (which is not the same as an empty array: that one
// exists). One zero value follows the last, so that a string is NUL-terminated. Copies share the
// values.
template <class T>
class ArenaArray {
  static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= alignof(std::uint32_t));

 public:
  ArenaArray() = default;

  // `size` values that the caller fills.
  static ArenaArray WithRoomFor(Arena& arena, std::uint32_t size) {
    ArenaArray result;
    const std::size_t bytes = sizeof(std::uint32_t) + (std::size_t{size} + 1) * sizeof(T);
    result.size_ = static_cast<std::uint32_t*>(arena.Allocate(bytes, alignof(std::uint32_t)));
    *result.size_ = size;
    std::memset(result.data() + size, 0, sizeof(T));
    return result;
  }

  static ArenaArray CopyOf(Arena& arena, std::span<const T> values) {
    ArenaArray result = WithRoomFor(arena, static_cast<std::uint32_t>(values.size()));
    if (!values.empty()) std::memcpy(result.data(), values.data(), values.size_bytes());
    return result;
  }

  explicit operator bool() const { return size_ != nullptr; }
  std::uint32_t size() const { return size_ ? *size_ : 0; }
  T* data() const { return size_ ? reinterpret_cast<T*>(size_ + 1) : nullptr; }
  T* begin() const { return data(); }
  T* end() const { return data() + size(); }
  T& operator[](std::size_t index) const { return data()[index]; }

 private:
  std::uint32_t* size_ = nullptr;  // the values follow it
};

// The children of a chunk, in order. Owns them.
template <class T>
class ChunkList {
 public:
  ChunkList() = default;
  ChunkList(const ChunkList&) = delete;
  ChunkList& operator=(const ChunkList&) = delete;
  ~ChunkList() { DestroyAll(); }

  std::uint32_t size() const { return head_ ? head_->size : 0; }
  bool empty() const { return size() == 0; }
  Owned<T>* begin() const { return head_ ? reinterpret_cast<Owned<T>*>(head_ + 1) : nullptr; }
  Owned<T>* end() const { return begin() + size(); }
  Owned<T>& operator[](std::size_t index) const { return begin()[index]; }

  T& Append(Arena& arena, Owned<T> child) {
    if (size() == Capacity()) Reserve(arena, Capacity() == 0 ? 4 : Capacity() * 2);
    T& appended = *child;
    ::new (static_cast<void*>(end())) Owned<T>(std::move(child));
    ++head_->size;
    return appended;
  }

  // Makes room for `capacity` children in all.
  void Reserve(Arena& arena, std::uint32_t capacity) {
    if (capacity <= Capacity()) return;
    auto* head = static_cast<Head*>(arena.Allocate(Bytes(capacity), alignof(Head)));
    head->size = size();
    head->capacity = capacity;
    auto* places = reinterpret_cast<Owned<T>*>(head + 1);
    for (Owned<T>& child : *this) ::new (static_cast<void*>(places++)) Owned<T>(std::move(child));
    head_ = head;
  }

  // Destroys every child, in order, and forgets the storage.
  void Clear() {
    DestroyAll();
    head_ = nullptr;
  }

 private:
  struct alignas(alignof(void*)) Head {
    std::uint32_t size;
    std::uint32_t capacity;
  };

  static std::size_t Bytes(std::uint32_t capacity) {
    return sizeof(Head) + std::size_t{capacity} * sizeof(Owned<T>);
  }
  std::uint32_t Capacity() const { return head_ ? head_->capacity : 0; }
  void DestroyAll() {
    // The pointers stay as they are, so that nothing is left to do where a child's end does
    // nothing.
    std::destroy(begin(), end());
  }

  Head* head_ = nullptr;  // the owning pointers follow it
};

}  // namespace quaylink
