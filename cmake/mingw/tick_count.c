/*
 * The compiler's thread library counts milliseconds with GetTickCount64, which Windows XP does not
 * have, and nothing else in the library or the program needs a newer Windows. So the linker finds
 * this function instead, under the name by which an imported one is called.
 */
#include <windows.h>

static ULONGLONG WINAPI MillisecondsSinceStart(void) {
  LARGE_INTEGER frequency;
  LARGE_INTEGER count;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&count);
  const ULONGLONG whole = (ULONGLONG)(count.QuadPart / frequency.QuadPart);
  const ULONGLONG rest = (ULONGLONG)(count.QuadPart % frequency.QuadPart);
  return whole * 1000 + rest * 1000 / (ULONGLONG)frequency.QuadPart;
}

extern ULONGLONG(WINAPI* const importedGetTickCount64)(void) __asm__("__imp__GetTickCount64@0");
ULONGLONG(WINAPI* const importedGetTickCount64)(void) = MillisecondsSinceStart;
