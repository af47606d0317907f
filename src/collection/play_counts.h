// The file "Play Counts": what the player counted since its database was last written.
#pragma once

#include "collection/contents.h"
#include "itunesdb/reader.h"

namespace quaylink {

// Adds it to the tracks, which are in the order of the file still. False, with nothing changed,
// when it is broken or belongs to another database.
bool TakePlayCounts(Reader& reader, Contents& contents);

}  // namespace quaylink
