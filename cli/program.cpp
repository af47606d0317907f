#include "cli/program.h"

#include "cli/system.h"

namespace quaylink::cli {

void Program::Print(std::string_view string) const {
  if (!Write(Stream::kOutput, string)) {
    throw Failure("the output could not be written; is there space left where it goes?");
  }
}

void Program::Complain(std::string_view message) const {
  const bool coloured = ShowsColours(Stream::kError);
  std::string line = coloured ? "\x1b[1;31mquaylink:\x1b[0m " : "quaylink: ";
  line += message;
  Write(Stream::kError, line + '\n');
}

void Program::Note(std::string_view message) const {
  if (!quiet) Write(Stream::kError, std::string(message) + '\n');
}

}  // namespace quaylink::cli
