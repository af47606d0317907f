// Whether two files are alike, byte for byte.
#pragma once

#include "cli/system/folder.h"

namespace quaylink::cli {

enum class Likeness {
  kSame,
  kCut,  // the copy has lost its end, or has nothing but zeros there
  kOther,
  kUnread  // one of them could not be read
};

// Reads both from where they stand to their ends.
Likeness Compare(File& copy, File& whole);

}  // namespace quaylink::cli
