// The letter of a player's drive, which the library tells in the locations of tracks only.
#pragma once

namespace quaylink::cli {

// Of the player that the library has found last. Makes a temporary file.
char PlayersDriveLetter();

}  // namespace quaylink::cli
