// The program's arguments: every command, option and help text stands here.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/base/program.h"

namespace quaylink::cli {

// Gives the program's exit status, or throws a Failure.
using Command = std::function<int(const Program&)>;

// The command that the arguments ask for, its options taken in; what they say for every command
// goes into `program`. Where they only ask for help, the command prints that. Fails where they are
// wrong.
Command ReadCommandLine(std::vector<std::string> arguments, Program& program);

}  // namespace quaylink::cli
