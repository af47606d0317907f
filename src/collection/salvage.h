// Saving what is whole in a database that is not.
#pragma once

#include <cstdint>
#include <span>

#include "collection/contents.h"

namespace quaylink {

// Gives the tracks and playlists that are whole, wherever the lengths and counts around them lead.
// The bytes begin as a database does. Where something is wrong, the next chunk is looked for where
// the stated lengths say that it is, or else further on; nothing that was passed is read again but
// for one item at a time, so that the work grows with the size whatever the bytes are. What a file
// lacks at its end is never looked for elsewhere: a database that is cut gives the beginning of
// what it gave when it was whole. Data sets of unknown types are passed over and no flaw. Throws
// std::bad_alloc.
void Salvage(std::span<const std::uint8_t> bytes, Contents& contents);

}  // namespace quaylink
