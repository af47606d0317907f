#include "itunesdb/writer.h"

#include <algorithm>
#include <limits>
#include <new>

namespace quaylink {

// Large memory grows in place or moves without being copied where the system can do that.
void Writer::GrowFor(std::size_t size) {
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
  if (size > kMost - size_) throw std::bad_alloc();
  const std::size_t capacity = std::max(size_ + size, capacity_ <= kMost / 2 ? capacity_ * 2 : 0);
  void* larger = std::realloc(bytes_.get(), capacity);
  if (!larger) throw std::bad_alloc();
  static_cast<void>(bytes_.release());  // it is part of the larger memory, or gone
  bytes_.reset(static_cast<std::uint8_t*>(larger));
  capacity_ = capacity;
}

}  // namespace quaylink
