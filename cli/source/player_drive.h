// What a player's drive holds may have been made to lead elsewhere: a link to a file of this
// computer, a device in the place of a file. Linux' build of the library resolves a drive's paths
// beneath the drive and copies ordinary files only. On Windows the library calls the system, which
// follows whatever it meets, so the program looks first.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quaylink::cli {

// Whether a path, as the library spells it, is one of a drive ("F:\Notes\a.txt"), and the file an
// ordinary one that no link stands before.
bool IsOrdinaryFileOfDrive(const std::string& path);

// The same for the music database of the player that the library finds.
bool IsPlayersDatabaseOrdinary();

// The folders one of which is the drive of the player that the library calls by that letter.
std::vector<std::filesystem::path> DriveCandidates(char letter);

}  // namespace quaylink::cli
