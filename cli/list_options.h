// The options by which commands choose, order and show tracks, and what arguments are checked for.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "cli/collection/property.h"
#include "cli/collection/track_selection.h"

namespace quaylink::cli {

// Checks of an argument, which give what is wrong with it. One that is there but empty comes from a
// variable that is not set, and means nothing.
std::string RefuseEmpty(const std::string& string);
// Make a path of this computer, or of a device, what the user means by it.
CLI::Validator ReadPath();
CLI::Validator ReadDevicePath();
// Takes decimal digits as numbers are printed, without zeros in front.
std::string RefuseMalformedNumber(const std::string& string);

void AddFilterOptions(CLI::App& command, TrackFilter& filter);
void AddSortOptions(CLI::App& command, const Property*& sort, bool& reverse);
void AddColumnsOption(CLI::App& command, std::vector<const Property*>& columns);

}  // namespace quaylink::cli
