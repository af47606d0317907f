// The music database of an attached device, fetched as any of its files is.
#pragma once

#include "cli/source/library.h"
#include "cli/source/source.h"

namespace quaylink::cli {

// Of the device that was found last: of a phone, or of the player with a drive of that letter.
// Throws a Failure when there is none.
DatabaseFiles FetchDatabase(const Library& library, char driveLetter);

}  // namespace quaylink::cli
