/*
 * Lists the tracks of a music database file, one a line: list_tracks DATABASE
 *
 * Needs no device. Each line is artist, title, album and location, separated by tabs.
 */
#include <quaylink/quaylink.h>
#include <stdio.h>
#include <stdlib.h>

static int ListTracks(const char* databasePath) {
  int32_t count = ParseITunesDB(databasePath, 0, NULL);
  if (count == 0) {
    fprintf(stderr, "%s: no music database, or one without tracks\n", databasePath);
    return 1;
  }
  TrackRecord* records = calloc((size_t)count, sizeof(TrackRecord));
  if (records == NULL) {
    fprintf(stderr, "not enough memory for %d tracks\n", (int)count);
    return 1;
  }
  /* The file is parsed again, and may have changed: this count is the one that holds. */
  count = ParseITunesDB(databasePath, count, records);
  for (int32_t i = 0; i < count; ++i) {
    const TrackRecord* track = &records[i];
    printf("%s\t%s\t%s\t%s\n", track->artist, track->title, track->album, track->location);
  }
  free(records);
  return 0;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: list_tracks DATABASE\n");
    return 2;
  }
  if (InitializeIPod() == 0) {
    fprintf(stderr, "not enough memory\n");
    return 1;
  }
  const int status = ListTracks(argv[1]);
  TerminateIPod();
  return status;
}
