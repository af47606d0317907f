// quaylink: the command-line program.
#include <exception>
#include <new>
#include <string>

#include "cli/command_line.h"
#include "cli/program.h"
#include "cli/system.h"

namespace quaylink::cli {
namespace {

int Run(int argc, char** argv) {
  Program program;
  try {
    PrepareStreams();
    HandleInterrupts();
    return ReadCommandLine(Arguments(argc, argv), program)(program);
  } catch (const Failure& failure) {
    program.Complain(failure.what());
    return failure.Status();
  } catch (const std::bad_alloc&) {
    program.Complain("there is not enough memory");
  } catch (const std::exception& error) {
    program.Complain(error.what());
  }
  return kFailure;
}

}  // namespace
}  // namespace quaylink::cli

int main(int argc, char** argv) {
  return quaylink::cli::Run(argc, argv);
}
