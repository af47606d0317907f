/*
 * A host that loads the library by name and looks the ten functions up, as a scripting language
 * does: loading_host LIBRARY DATABASE TRACK_COUNT
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "host_steps.h"

#if defined(_WIN32)
#include <windows.h>
typedef FARPROC Address;
static void* Load(const char* name) {
  return (void*)LoadLibraryA(name);
}
static Address Find(void* library, const char* name) {
  return GetProcAddress((HMODULE)library, name);
}
static int Unload(void* library) {
  return FreeLibrary((HMODULE)library) != 0;
}
#else
#include <dlfcn.h>
typedef void* Address;
static void* Load(const char* name) {
  return dlopen(name, RTLD_NOW | RTLD_LOCAL);
}
static Address Find(void* library, const char* name) {
  return dlsym(library, name);
}
static int Unload(void* library) {
  return dlclose(library) == 0;
}
#endif

/* Looks up the function of that name; an address has the same bytes whatever it points to. */
#define LOOK_UP(library, entry, name)          \
  do {                                         \
    const Address found = Find(library, name); \
    EXPECT(found != NULL);                     \
    memcpy(&(entry), &found, sizeof(found));   \
  } while (0)

static Library LookUpAll(void* loaded) {
  Library library;
  LOOK_UP(loaded, library.initialize, "InitializeIPod");
  LOOK_UP(loaded, library.terminate, "TerminateIPod");
  LOOK_UP(loaded, library.isConnected, "IsIPodConnected");
  LOOK_UP(loaded, library.connect, "ConnectIPod");
  LOOK_UP(loaded, library.disconnect, "DisconnectIPod");
  LOOK_UP(loaded, library.copyDatabase, "CopyITunesDB");
  LOOK_UP(loaded, library.parse, "ParseITunesDB");
  LOOK_UP(loaded, library.copyTrack, "CopyFileFromIPod");
  LOOK_UP(loaded, library.listFiles, "EnumGenericFileFromIPod");
  LOOK_UP(loaded, library.copyFile, "CopyGenericFileFromIPod");
  return library;
}

static void* LoadOrExit(const char* name) {
  void* loaded = Load(name);
  if (loaded == NULL) {
    fprintf(stderr, "cannot load %s\n", name);
    exit(1);
  }
  return loaded;
}

int main(int argc, char** argv) {
  if (argc != 4) {
    fprintf(stderr, "usage: loading_host LIBRARY DATABASE TRACK_COUNT\n");
    return 2;
  }
  const char* databasePath = argv[2];
  const int32_t trackCount = (int32_t)strtol(argv[3], NULL, 10);

  /* A second load of the library gives the same library, which stays until both are given back. */
  void* loaded = LoadOrExit(argv[1]);
  void* loadedAgain = LoadOrExit(argv[1]);
  Library library = LookUpAll(loaded);
  RunHostSteps(&library, databasePath, trackCount);
  EXPECT(library.initialize() != 0);
  EXPECT(Unload(loadedAgain));
  EXPECT(library.parse(databasePath, 0, NULL) == trackCount);

  /* The manager that still exists does not stop the library from being unloaded, nor is it there
   * again when the library is loaded anew. */
  EXPECT(Unload(loaded));
  loaded = LoadOrExit(argv[1]);
  library = LookUpAll(loaded);
  RunHostSteps(&library, databasePath, trackCount);
  EXPECT(Unload(loaded));
  return failures == 0 ? 0 : 1;
}
