// The tracks of a collection with all their properties.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "collection/string_pool.h"
#include "itunesdb/tracks.h"
#include "quaylink/collection.h"

namespace quaylink {

class TrackTable {
 public:
  // Where a track stands in its list in the file, from 0, when that cannot be told.
  static constexpr std::uint32_t kUnknownPlace = UINT32_MAX;

  struct Row {
    QuaylinkTrack track;
    std::uint32_t placeInFile;
  };

  void Reserve(std::size_t count) { rows_.reserve(count); }
  // Adds the track that the item describes; the item may go then.
  void Add(const TrackItemChunk& item, std::uint32_t placeInFile);
  // Orders them by id, ascending. Of several with one id the first one added stays.
  void Sort();

  std::uint32_t size() const { return static_cast<std::uint32_t>(rows_.size()); }
  const QuaylinkTrack& operator[](std::size_t index) const { return rows_[index].track; }
  std::vector<Row>& Rows() { return rows_; }

  // The index of the track with that id in the sorted table. `guess` is looked at first.
  std::optional<std::uint32_t> IndexOf(std::uint32_t id, std::uint32_t guess) const;

 private:
  StringPool strings_;
  std::vector<Row> rows_;
};

}  // namespace quaylink
