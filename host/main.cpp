// quaylink: the command-line program.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "host/program.h"
#include "host/system.h"

namespace quaylink::host {
namespace {

int Run(std::vector<std::string> arguments) {
  Program program;
  CLI::App app("Takes the music off Apple players and phones.", "quaylink");
  app.set_version_flag("--version", "quaylink " QUAYLINK_VERSION);
  app.add_flag("-q,--quiet", program.quiet, "Print results and errors only");
  app.add_flag("-v,--verbose", program.verbose, "Print more of what is done")->excludes("--quiet");
  // A phone's paths begin with "/", as options do elsewhere on Windows.
  app.allow_windows_style_options(false);
  app.require_subcommand(1);
  app.fallthrough();
  app.footer(
      "Examples:\n"
      "  quaylink status              is a player attached?\n"
      "  quaylink tracks              list its music\n"
      "  quaylink export ~/Music      copy all of it\n\n"
      "'quaylink COMMAND --help' tells more of a command, 'man quaylink' everything.");
  AddStatusCommand(app, program);
  AddTracksCommand(app, program);
  AddExportCommand(app, program);
  AddCopyTrackCommand(app, program);
  AddCopyDatabaseCommand(app, program);
  AddFilesCommand(app, program);
  AddPullCommand(app, program);
  try {
    // The parser takes the arguments last one first.
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
    return program.command();
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kSuccess : kUsage;
  } catch (const Failure& failure) {
    program.Complain(failure.what());
    return failure.Status();
  } catch (const std::bad_alloc&) {
    program.Complain("there is not enough memory");
    return kFailure;
  }
}

}  // namespace
}  // namespace quaylink::host

int main(int argc, char** argv) {
  try {
    quaylink::host::PrepareTerminal();
    quaylink::host::HandleInterrupts();
    return quaylink::host::Run(quaylink::host::Arguments(argc, argv));
  } catch (const std::exception& error) {
    quaylink::host::Write(quaylink::host::Stream::kError,
                          std::string("quaylink: ") + error.what() + '\n');
    return quaylink::host::kFailure;
  }
}
