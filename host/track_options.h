// Options that several commands have in common.
#pragma once

#include <CLI/CLI.hpp>

#include "host/track_selection.h"

namespace quaylink::host {

// --artist, --album and --match
void AddFilterOptions(CLI::App& command, TrackFilter& filter);

// --sort and --reverse
void AddSortOptions(CLI::App& command, SortKey& key, bool& reverse);

}  // namespace quaylink::host
