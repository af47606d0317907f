// The copying of one file to where the user wants it.
#pragma once

#include <string>

#include "cli/base/program.h"
#include "cli/source/file_copy.h"

namespace quaylink::cli {

// To the destination itself, or, when it is a folder, into a new file of that name in it. Returns
// the program's exit status, or throws a Failure.
int CopyOne(const Program& program, const CopyJob& job, const std::string& destination,
            const std::string& nameInFolder);

}  // namespace quaylink::cli
