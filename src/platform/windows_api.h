// The Windows functions that the library calls. On Windows these are the
// system's own; elsewhere the portable layer declares the same functions,
// in the library's namespace, and implements them over a Machine.
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
#include <stdio.h>
#include <windows.h>

#else

#include "platform/portable/windows_functions.h"

#endif
