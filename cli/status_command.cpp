#include "cli/commands.h"
#include "cli/json.h"
#include "cli/library.h"

namespace quaylink::cli {

int ShowStatus(const Program& program, const StatusOptions& options) {
  Library library(program);
  const DeviceKind kind = library.FindDevice();
  const bool reachable = kind != DeviceKind::kNone && library.Connect();
  if (options.json) {
    program.Print(StatusJson(kind, reachable));
  } else if (kind == DeviceKind::kDisk) {
    program.Print("A player in disk mode is attached; its drive has been found.\n");
  } else if (reachable) {
    program.Print("A phone is attached and answers.\n");
  }
  if (!reachable) throw Failure(AdviceFor(kind));
  return kSuccess;
}

}  // namespace quaylink::cli
