/*
 * A host that looks for the player that is attached: detecting_host silent | declaring
 *
 * One that declares in its manifest that it was made for Windows 10 is told its true version there,
 * which the library does not know, and finds no player; one that says nothing finds it.
 */
#include <quaylink/quaylink.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

enum { kSkipped = 77 };

/* The system's true version, and the one that it tells this program. */
static DWORD TrueVersion(void) {
  typedef LONG(WINAPI * Function)(OSVERSIONINFOW*);
  const FARPROC found = GetProcAddress(GetModuleHandleA("ntdll.dll"), "RtlGetVersion");
  OSVERSIONINFOW version = {.dwOSVersionInfoSize = sizeof(version)};
  Function function;
  memcpy(&function, &found, sizeof(function));
  return function(&version) == 0 ? version.dwMajorVersion : 0;
}

static DWORD ToldVersion(void) {
  OSVERSIONINFOA version = {.dwOSVersionInfoSize = sizeof(version)};
  return GetVersionExA(&version) ? version.dwMajorVersion : 0;
}

int main(int argc, char** argv) {
  const int declares = argc == 2 && strcmp(argv[1], "declaring") == 0;
  const DWORD trueVersion = TrueVersion();
  const DWORD toldVersion = ToldVersion();
  printf("Windows %lu, which is told to this program as %lu\n", trueVersion, toldVersion);
  if (declares && trueVersion < 10) {
    puts("This Windows is older than 10, and tells nobody that it is 10.");
    return kSkipped;
  }
  if (toldVersion != (declares ? 10 : 6)) {
    puts("That is another version than this program should be told.");
    return 1;
  }
  if (InitializeIPod() == 0) return 1;
  const int found = IsIPodConnected() != 0;
  TerminateIPod();
  puts(found ? "A player is attached." : "Nothing is attached.");
  return found == !declares ? 0 : 1;
}
