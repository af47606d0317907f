// Whether copies are what the device has, byte for byte.
#pragma once

#include "cli/export/destination.h"
#include "cli/export/journal.h"
#include "cli/export/plan.h"
#include "cli/export/report.h"
#include "cli/source/source.h"

namespace quaylink::cli {

// Reads the copy and the source of each track of the plan again, and tells what differs, or what
// came in the way.
Stop Verify(Source& source, Destination& destination, const Journal& journal, const Plan& plan,
            ExportReport& report);

}  // namespace quaylink::cli
