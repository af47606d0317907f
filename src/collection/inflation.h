// Compressed databases of newer players: the header as it always stands, and behind it one zlib
// stream of all that follows.
#pragma once

#include <cstdint>

#include "itunesdb/reader.h"
#include "itunesdb/writer.h"

namespace quaylink {

enum class Inflation {
  kNotCompressed,
  kInflated,
  kCut,      // what could be inflated is there, and there is no more of the file
  kDamaged,  // what could be inflated is there
  kTooLarge,
};

// Inflates the database that the reader is at the beginning of to what it would be if it were not
// compressed. Throws std::bad_alloc.
Inflation InflateDatabase(Reader& reader, Writer& inflated);

}  // namespace quaylink
