// What the commands that fill a folder have in common.
#pragma once

#include <string>

#include "cli/base/program.h"
#include "cli/export/destination.h"
#include "cli/export/plan.h"
#include "cli/export/report.h"

namespace quaylink::cli {

// Throws a Failure when a plan needs more room than there is.
void RequireRoom(const Destination& destination, const Plan& plan);

// From here on what is under way is finished, and what was made for it removed, before an
// interruption ends the program.
void FinishOnInterrupt(const Program& program);

// How a run has ended: the program's exit status, and what the user should do next, or nothing.
int StatusAfter(const ExportReport& report, const Plan& plan, Stop stop);

}  // namespace quaylink::cli
