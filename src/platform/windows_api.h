// The Windows functions that the library calls. On Windows these are the system's own; elsewhere
// the portable layer declares the same functions, in the library's namespace, and implements them
// over a Machine. What the library does with a local path through the C runtime on Windows has a
// name of its own on both: the C runtime's elsewhere would take a drive's path for a file name.
#pragma once

#if defined(_WIN32)

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <io.h>
#include <objbase.h>
#include <shlobj.h>
#include <windows.h>

#include <cstdio>

#include "common/local_file.h"

namespace quaylink {

// As fopen; null when the file cannot be opened.
inline LocalFile OpenLocalFile(const char* path, const char* mode) {
  return LocalFile(std::fopen(path, mode));
}

// False when the file cannot be removed.
inline bool RemoveLocalFile(const char* path) {
  return _unlink(path) == 0;
}

}  // namespace quaylink

#else

#include "platform/portable/windows_functions.h"

#endif
