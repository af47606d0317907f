#include "host_steps.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int failures = 0;

void Expect(int met, const char* expectation) {
  if (!met) {
    fprintf(stderr, "not met: %s\n", expectation);
    ++failures;
  }
}

static void QUAYLINK_CALL CountFile(const char* devicePath, void* context) {
  (void)devicePath;
  ++*(int*)context;
}

/* Parses into a buffer of one record more than asked for, whose bytes must stay as they were. */
static void ParseSome(const Library* library, const char* databasePath, int32_t wanted,
                      int32_t expected) {
  const size_t room = wanted > 0 ? (size_t)wanted : 0;
  TrackRecord untouched;
  TrackRecord* records = malloc((room + 1) * sizeof(TrackRecord));
  if (records == NULL) abort();
  memset(&untouched, 0x5A, sizeof(untouched));
  memset(records, 0x5A, (room + 1) * sizeof(TrackRecord));
  EXPECT(library->parse(databasePath, wanted, records) == expected);
  EXPECT(memcmp(&records[expected], &untouched, sizeof(untouched)) == 0);
  for (int32_t i = 0; i < expected; ++i) {
    EXPECT(strncmp(records[i].location, "/iPod_Control/Music/", 20) == 0);
    EXPECT(memchr(records[i].title, '\0', sizeof(records[i].title)) != NULL);
  }
  free(records);
}

void RunHostSteps(const Library* library, const char* databasePath, int32_t trackCount) {
  int files = 0;
  library->terminate();
  EXPECT(library->parse(databasePath, 0, NULL) == 0);
  EXPECT(library->initialize() != 0);
  EXPECT(library->isConnected() == 0);
  EXPECT(library->connect() == 0);
  EXPECT(library->copyDatabase("copy-without-a-device") == 0);
  EXPECT(library->copyFile(0, "a-file-that-is-not-there", "copy-without-a-device") == 0);
  EXPECT(library->parse("a-file-that-is-not-there", 0, NULL) == 0);
  EXPECT(library->copyTrack(0, "copy-without-a-device") == 0);
  EXPECT(library->parse(databasePath, 5, NULL) == trackCount);
  ParseSome(library, databasePath, trackCount, trackCount);
  ParseSome(library, databasePath, trackCount + 3, trackCount);
  ParseSome(library, databasePath, 1, 1);
  ParseSome(library, databasePath, -1, 0);
  EXPECT(library->copyTrack((uint32_t)trackCount, "copy-without-a-device") == 0);
  EXPECT(library->listFiles(1, CountFile, &files) == 0);
  EXPECT(library->listFiles(0, CountFile, &files) == 1);
  EXPECT(files == 0);
  EXPECT(library->disconnect() == 1);
  library->terminate();
  EXPECT(library->parse(databasePath, 0, NULL) == 0);
}
