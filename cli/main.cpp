// quaylink: the command-line program.
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "cli/base/program.h"
#include "cli/command_line.h"
#include "cli/export/report.h"
#include "cli/system/own_window.h"
#include "cli/system/system.h"

namespace quaylink::cli {
namespace {

int Fail(const Program& program, const std::string& message, int status = kFailure) {
  program.Complain(message);
  TellFailure(program, message, status);
  return status;
}

int Run(int argc, char** argv) {
  Program program;
  try {
    PrepareStreams();
    HandleInterrupts();
    const std::vector<std::string> arguments = Arguments(argc, argv);
    if (arguments.empty() && ExplainInOwnWindow()) return kSuccess;
    return ReadCommandLine(arguments, program)(program);
  } catch (const Failure& failure) {
    return Fail(program, failure.what(), failure.Status());
  } catch (const std::bad_alloc&) {
    return Fail(program, "there is not enough memory");
  } catch (const std::exception& error) {
    return Fail(program, error.what());
  }
}

}  // namespace
}  // namespace quaylink::cli

int main(int argc, char** argv) {
  return quaylink::cli::Run(argc, argv);
}
