#include "itunesdb/arena.h"

#include <algorithm>
#include <cstdint>

namespace quaylink {

namespace {

// A new block is a quarter as large as all others together, within these bounds: a small database
// costs little, and a large one few allocations, of memory that the system can map in large pages.
constexpr std::size_t kSmallestBlock = 8 * 1024;
constexpr std::size_t kLargestBlock = 4 * 1024 * 1024;
constexpr std::size_t kLargestInBlock = kSmallestBlock / 4;

}  // namespace

void* Arena::AllocateElsewhere(std::size_t size) {
  if (size > kLargestInBlock) {
    large_.push_back(std::make_unique_for_overwrite<std::byte[]>(size));
    return large_.back().get();
  }
  if (blocksInUse_ == blocks_.size()) {
    const std::size_t blockSize = std::clamp(blockBytes_ / 4, kSmallestBlock, kLargestBlock);
    blocks_.push_back({std::make_unique_for_overwrite<std::byte[]>(blockSize), blockSize});
    blockBytes_ += blockSize;
    Poison(blocks_.back().bytes.get(), blockSize);
  }
  const Block& block = blocks_[blocksInUse_++];
  end_ = block.bytes.get() + block.size;
  Advance(block.bytes.get(), size);
  return block.bytes.get();  // which is aligned for every type
}

void Arena::Rewind() {
  large_.clear();
  for (const Block& block : blocks_) Poison(block.bytes.get(), block.size);
  blocksInUse_ = 0;
  cursor_ = end_ = nullptr;
}

void Arena::Trim() {
  for (; blocks_.size() > blocksInUse_; blocks_.pop_back()) blockBytes_ -= blocks_.back().size;
  // Not shrink_to_fit, which needs memory to give memory back.
  if (blocks_.empty()) blocks_ = std::vector<Block>();
  if (large_.empty()) large_ = std::vector<Bytes>();
}

}  // namespace quaylink
