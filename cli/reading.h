// The collection that a command works on.
#pragma once

#include <string>

#include "cli/collection.h"
#include "cli/library.h"
#include "cli/program.h"

namespace quaylink::cli {

// Of a file or pipe, of the standard input ("-"), or of the attached device (empty).
Collection ReadCollection(const Program& program, const std::string& file);

// Of the device that is attached.
Collection ReadDeviceCollection(const Library& library);

// Says what is wrong with a collection, and gives the status of a command that worked on it.
int TellProblem(const Program& program, const Collection& collection);

}  // namespace quaylink::cli
