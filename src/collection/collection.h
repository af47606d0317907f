// An open collection, and how it comes to be.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "collection/contents.h"
#include "quaylink/collection.h"

namespace quaylink {

// Why something could not be opened.
struct Failure {
  QuaylinkResult code = QUAYLINK_OK;
  std::uint64_t offset = QUAYLINK_NO_OFFSET;
  std::string message;
};

// Gives up to so many of the next bytes: how many, 0 at the end, a negative number on failure.
using ReadBytes = std::function<std::int64_t(void* buffer, std::uint32_t size)>;

// How to read: the public options, with everything filled in.
struct OpenOptions {
  bool strict = false;
  bool playCountsBeside = true;
  const char* playCountsPath = nullptr;
  std::span<const std::uint8_t> playCountsBytes;  // with no address where there are none
};

}  // namespace quaylink

// The public handle's struct.
struct QuaylinkCollection {
  std::unique_ptr<quaylink::Contents> contents;
  bool compressed = false;
  QuaylinkPlayCountsState playCounts = QUAYLINK_PLAY_COUNTS_NONE;
  std::string damage;  // for people
};

namespace quaylink {

using CollectionPointer = std::unique_ptr<QuaylinkCollection>;

// Each returns a collection, or null with the failure told. All throw std::bad_alloc, and
// std::length_error where more memory than there can be is needed.
CollectionPointer OpenFile(const char* path, const OpenOptions& options, Failure& failure);
CollectionPointer OpenMemory(std::span<const std::uint8_t> bytes, const OpenOptions& options,
                             Failure& failure);
CollectionPointer OpenStream(const ReadBytes& read, const OpenOptions& options, Failure& failure);

}  // namespace quaylink
