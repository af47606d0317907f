#include "cli/commands/export_steps.h"

#include "cli/base/paths.h"
#include "cli/system/system.h"
#include "cli/text/formats.h"

namespace quaylink::cli {
namespace {

constexpr std::string_view kFinishing =
    "Finishing what is under way; press Ctrl-C again to stop at once.\n";

}  // namespace

void RequireRoom(const Destination& destination, const Plan& plan) {
  if (plan.Fits()) return;
  throw Failure(Shown(destination.Path()) + ": has not enough room: " + ShownSize(plan.room) +
                " are to be copied, " + ShownSize(plan.free) + " are free");
}

void FinishOnInterrupt(const Program& program) {
  DeferInterrupts(program.quiet ? "" : kFinishing);
}

int StatusAfter(const ExportReport& report, const Plan& plan, Stop stop) {
  if (stop == Stop::kInterrupt) return kInterrupted;
  const bool good = report.Left() + report.Count(Fate::kFailed) == 0 && plan.problem.empty();
  return good ? kSuccess : kFailure;
}

}  // namespace quaylink::cli
