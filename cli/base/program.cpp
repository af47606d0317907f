#include "cli/base/program.h"

#include "cli/system/system.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {

void Program::Print(std::string_view lines) const {
  // Other programs get what there is, people without what would steer their terminal.
  const bool written = IsTerminal(Stream::kOutput)
                           ? Write(Stream::kOutput, MakeLinesPrintable(lines))
                           : Write(Stream::kOutput, lines);
  if (!written) {
    throw Failure("the output could not be written; is there space left where it goes?");
  }
}

void Program::Complain(std::string_view message) const {
  const bool coloured = ShowsColours(Stream::kError);
  std::string line = coloured ? "\x1b[1;31mquaylink:\x1b[0m " : "quaylink: ";
  line += MakePrintable(message);
  Write(Stream::kError, line + '\n');
}

void Program::Note(std::string_view message) const {
  if (!quiet) Write(Stream::kError, MakePrintable(message) + '\n');
}

}  // namespace quaylink::cli
