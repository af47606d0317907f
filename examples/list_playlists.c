/*
 * Lists the playlists of a music database file with their tracks: list_playlists DATABASE
 *
 * Needs no device. A database that is damaged gives what is whole of it, and a word about that.
 */
#include <quaylink/collection.h>
#include <stdio.h>

static const char* KindOf(const QuaylinkPlaylist* playlist) {
  switch (playlist->kind) {
    case QUAYLINK_MASTER:
      return "everything";
    case QUAYLINK_SMART:
      return "smart";
    case QUAYLINK_PODCASTS:
      return "podcasts";
    default:
      return "playlist";
  }
}

static void ListPlaylists(const QuaylinkCollection* collection) {
  QuaylinkPlaylist playlist = {0};
  playlist.structSize = sizeof(playlist);
  QuaylinkTrack track = {0};
  track.structSize = sizeof(track);
  for (uint32_t i = 0; QuaylinkGetPlaylist(collection, i, &playlist) == QUAYLINK_OK; ++i) {
    printf("%s (%s, %u)\n", playlist.name, KindOf(&playlist), (unsigned)playlist.trackCount);
    for (uint32_t j = 0; j < playlist.trackCount; ++j) {
      if (QuaylinkGetTrack(collection, playlist.tracks[j], &track) != QUAYLINK_OK) continue;
      printf("  %s - %s\n", track.artist, track.title);
    }
  }
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: list_playlists DATABASE\n");
    return 2;
  }
  QuaylinkCollection* collection = NULL;
  QuaylinkError error = {0};
  error.structSize = sizeof(error);
  if (QuaylinkOpenFile(argv[1], NULL, &collection, &error) != QUAYLINK_OK) {
    fprintf(stderr, "%s: %s\n", argv[1], error.message);
    return 1;
  }
  ListPlaylists(collection);
  QuaylinkInfo info = {0};
  info.structSize = sizeof(info);
  const int told = QuaylinkGetInfo(collection, &info) == QUAYLINK_OK;
  if (told && info.damaged) fprintf(stderr, "%s: %s\n", argv[1], info.damage);
  QuaylinkClose(collection);
  return told && !info.damaged ? 0 : 1;
}
