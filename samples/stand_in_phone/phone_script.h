// The set-up of a stand-in phone that is loaded as a pair of libraries. The environment variable
// STAND_IN_PHONE names a script file of one instruction a line, which docs/quaylink-sample.1 lists.
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
