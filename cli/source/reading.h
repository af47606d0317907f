// The collection that a command works on.
#pragma once

#include <string>

#include "cli/base/program.h"
#include "cli/collection/collection.h"
#include "cli/source/library.h"

namespace quaylink::cli {

// Of a file or pipe, of the standard input ("-"), or, when that is empty, of a folder that holds
// what a player holds, or, when that is empty too, of the attached device.
Collection ReadCollection(const Program& program, const std::string& file, const std::string& from);

// Of the device that is attached.
Collection ReadDeviceCollection(const Library& library);

// Says what is wrong with a collection, and gives the status of a command that worked on it.
int TellProblem(const Program& program, const Collection& collection);

}  // namespace quaylink::cli
