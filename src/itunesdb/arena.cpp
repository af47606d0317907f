#include "itunesdb/arena.h"

#include <algorithm>
#include <cstdint>

namespace quaylink {

namespace {

// Blocks double from the first size to the last, so that a small database costs little and a large
// one few allocations.
constexpr std::size_t kFirstBlock = 8 * 1024;
constexpr std::size_t kLastBlock = 256 * 1024;
constexpr std::size_t kLargestInBlock = kFirstBlock / 4;

std::size_t BlockSize(std::size_t index) {
  return std::min(kLastBlock, kFirstBlock << std::min<std::size_t>(index, 8));
}

// Under the address sanitizer every allocation stands alone, so that an overrun does not land in a
// neighbour unseen.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kEachApart = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kEachApart = true;
#else
constexpr bool kEachApart = false;
#endif
#else
constexpr bool kEachApart = false;
#endif

}  // namespace

void* Arena::AllocateElsewhere(std::size_t size) {
  if (kEachApart || size > kLargestInBlock) {
    large_.push_back(std::make_unique_for_overwrite<std::byte[]>(size));
    return large_.back().get();
  }
  const std::size_t blockSize = BlockSize(blocksInUse_);
  if (blocksInUse_ == blocks_.size()) {
    blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(blockSize));
  }
  std::byte* block = blocks_[blocksInUse_].get();
  cursor_ = block + size;
  end_ = block + blockSize;
  ++blocksInUse_;
  return block;  // which is aligned for every type
}

void Arena::ShrinkNewest(void* allocation, std::size_t oldSize, std::size_t newSize) {
  std::byte* begin = static_cast<std::byte*>(allocation);
  if (begin + oldSize == cursor_) cursor_ = begin + newSize;
}

void Arena::Rewind() {
  large_.clear();
  blocksInUse_ = 0;
  cursor_ = end_ = nullptr;
}

void Arena::Trim() {
  blocks_.resize(blocksInUse_);
  // Not shrink_to_fit, which needs memory to give memory back.
  if (blocks_.empty()) blocks_ = std::vector<Bytes>();
  if (large_.empty()) large_ = std::vector<Bytes>();
}

}  // namespace quaylink
