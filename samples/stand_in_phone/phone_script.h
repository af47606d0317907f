// The set-up of a stand-in phone that is loaded as a pair of libraries. The environment variable
// STAND_IN_PHONE names a script file of one instruction a line:
//
//   folder PATH             serve this folder of the computer as the phone's file system
//   identifier NAME         the phone's identifier; "none" for no string at all
//   announce WHEN           "at-once": before the subscribe call returns; "never"; or a number of
//                           milliseconds, after which another thread announces the phone
//   second-phone            another phone is announced when the file connection opens
//   unpaired                the phone does not know this computer yet
//   pairing-records PATH    where pairing leaves a record
//   fail NAME [N]           the N-th call of that entry point fails (the first when N is left out)
//   fail-from NAME N        the N-th call and all later ones fail
//   garbage                 failing calls write garbage to their outputs
//   read-at-most N          no read of a file gives more bytes
//   unplug-after N          the phone is gone after so many calls: all later ones fail
//   replug-after N          the same, but the next subscriber finds it there again; the device
//                           record from before has become stale
//   size NUMBER PATH        the phone states this size for that file
//   log PATH                add every call and complaint to this file
//
// Empty lines and lines that begin with "#" are passed over. Relative paths start at the script's
// folder. Without a script the phone is announced at once and has an empty file system.
#pragma once

#include <filesystem>
#include <istream>

#include "stand_in_phone/stand_in_phone.h"

namespace quaylink::stand_in {

// Throws std::runtime_error on a line that is no instruction.
PhoneSetUp ReadScript(std::istream& script, const std::filesystem::path& folder);

// A script that cannot be read is reported on the standard error output and ends the program.
PhoneSetUp SetUpFromEnvironment();

}  // namespace quaylink::stand_in
