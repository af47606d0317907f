// What the two systems do in different ways with paths in UTF-8.
#pragma once

#include "common/local_file.h"

namespace quaylink {

// Opens the file for reading; null, with errno telling why, when that fails. Throws std::bad_alloc.
LocalFile OpenForReading(const char* utf8Path);

// The same for a file that nobody named but that lies beside one: only where it is an ordinary
// file, so that a pipe in its place does not block.
LocalFile OpenOrdinaryFile(const char* utf8Path);

bool IsPathSeparator(char c);

}  // namespace quaylink
