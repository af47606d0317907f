#include "itunesdb/writer.h"

#include <algorithm>
#include <limits>
#include <new>

namespace quaylink {

void Writer::GrowFor(std::size_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - size_) throw std::bad_alloc();
  const bool canDouble = capacity_ <= std::numeric_limits<std::size_t>::max() / 2;
  GrowTo(std::max(size_ + size, canDouble ? capacity_ * 2 : 0));
}

// Large memory grows in place or moves without being copied where the system can do that.
void Writer::GrowTo(std::size_t capacity) {
  void* larger = std::realloc(bytes_.get(), capacity);
  if (!larger) throw std::bad_alloc();
  static_cast<void>(bytes_.release());  // it is part of the larger memory, or gone
  bytes_.reset(static_cast<std::uint8_t*>(larger));
  capacity_ = capacity;
}

}  // namespace quaylink
