#include "cli/commands/commands.h"
#include "cli/output/json.h"
#include "cli/source/library.h"

namespace quaylink::cli {

namespace {

const char* NameOf(DeviceKind kind) {
  switch (kind) {
    case DeviceKind::kDisk:
      return "disk";
    case DeviceKind::kPhone:
      return "phone";
    default:
      return nullptr;
  }
}

}  // namespace

int ShowStatus(const Program& program, const StatusOptions& options) {
  Library library(program);
  const DeviceKind kind = library.FindDevice();
  const bool reachable = kind != DeviceKind::kNone && library.Connect();
  if (options.json) {
    program.Print(StatusJson(NameOf(kind), reachable));
  } else if (kind == DeviceKind::kDisk) {
    program.Print("A player in disk mode is attached; its drive has been found.\n");
  } else if (reachable) {
    program.Print("A phone is attached and answers.\n");
  }
  if (!reachable) throw Failure(AdviceFor(kind));
  return kSuccess;
}

}  // namespace quaylink::cli
