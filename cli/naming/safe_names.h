// Names that Windows and Linux both take, cut to what a system allows. What is cut is the middle:
// names that differ at their end, as those of a work's movements do, stay different.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/naming/file_kinds.h"
#include "cli/system/system.h"

namespace quaylink::cli {

// One component of a path: reserved characters and names replaced, dots and spaces at the ends
// dropped, never empty, and never one that the program keeps for itself: those that begin with a
// dot, and those of unfinished copies (kPartSuffix).
std::string SafeName(std::string_view string, const NameLimits& limits);

// The same for a file of these kinds. There is room left for a number (see TakenNames) and for
// kPartSuffix.
std::string SafeFileName(std::string_view name, FileKinds kinds, const NameLimits& limits);

// The relative path of a file, "/" between its components, the last of which is the file's name.
// Each folder has its share of a path's length, whatever the other components are, so that the
// files of one folder stay together; the file has the rest.
std::string SafePath(const std::vector<std::string>& components, FileKinds kinds,
                     const NameLimits& limits);

}  // namespace quaylink::cli
