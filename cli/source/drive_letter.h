// The letter of a player's drive, which the library tells in the locations of tracks only.
#pragma once

#include <string>
#include <string_view>

namespace quaylink::cli {

// Of the player that the library has found last. Makes a temporary file.
char PlayersDriveLetter();

// A path that a user has named, as the library takes one of that drive: it may begin with the
// drive's letter or with its root ("/Notes/a.txt"). Throws a Failure for a path that lies
// elsewhere.
std::string PathOnDrive(std::string_view path, char letter);

}  // namespace quaylink::cli
