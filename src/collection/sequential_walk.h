// Reading a database in the way in which DatabaseChunk reads it: every chunk where the one before
// ends.
#pragma once

#include "collection/contents.h"
#include "itunesdb/reader.h"

namespace quaylink {

enum class WalkResult {
  kNoDatabase,  // it does not begin with the tag of one
  kRefused,     // DatabaseChunk's result is negative; there is a flaw then
  kAccepted,
};

// Reads the database, with the reader at its beginning. Gives the tracks that DatabaseChunk would
// have, in the order of the file, even those that are not whole, and the playlists that are whole.
// With `untilFlaw` it ends at the first flaw with what it has until then. Throws std::bad_alloc.
WalkResult WalkSequentially(Reader& reader, bool untilFlaw, Contents& contents);

}  // namespace quaylink
