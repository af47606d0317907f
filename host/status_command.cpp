#include <memory>
#include <nlohmann/json.hpp>

#include "host/library.h"
#include "host/program.h"

namespace quaylink::host {
namespace {

int ShowStatus(const Program& program, bool json) {
  Library library(program);
  const DeviceKind kind = library.FindDevice();
  const bool attached = kind != DeviceKind::kNone;
  const bool reachable = attached && library.Connect();
  const char* kindName = kind == DeviceKind::kPhone ? "phone" : "disk";
  if (json) {
    nlohmann::ordered_json status = {{"attached", attached}, {"reachable", reachable}};
    status["kind"] = attached ? nlohmann::ordered_json(kindName) : nlohmann::ordered_json();
    program.Print(status.dump(2) + '\n');
  } else if (kind == DeviceKind::kDisk) {
    program.Print("A player in disk mode is attached; its drive has been found.\n");
  } else if (reachable) {
    program.Print("A phone is attached and answers.\n");
  } else {
    program.Complain(attached ? kNoAnswer : kNoDevice);
  }
  return reachable ? kSuccess : kFailure;
}

}  // namespace

void AddStatusCommand(CLI::App& app, Program& program) {
  auto json = std::make_shared<bool>(false);
  CLI::App* command =
      app.add_subcommand("status", "Tell whether a device is attached and can be reached");
  command->add_flag("--json", *json, "Print a JSON object");
  command->footer(
      "The exit status is 0 when a device can be reached, else 1.\n\n"
      "Examples:\n"
      "  quaylink status\n"
      "  quaylink status -q && quaylink export ~/Music");
  command->callback([&program, json] {
    program.command = [&program, json] { return ShowStatus(program, *json); };
  });
}

}  // namespace quaylink::host
