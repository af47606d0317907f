/* Prints the number of tracks of the database that it is given, by way of a collection. */
#include <quaylink/collection.h>
#include <stdio.h>

int main(int argc, char** argv) {
  QuaylinkCollection* collection = NULL;
  QuaylinkInfo info = {0};
  info.structSize = sizeof(info);
  if (argc != 2 || QuaylinkOpenFile(argv[1], NULL, &collection, NULL) != QUAYLINK_OK) return 1;
  if (QuaylinkGetInfo(collection, &info) != QUAYLINK_OK) return 1;
  printf("%u\n", (unsigned)info.trackCount);
  QuaylinkClose(collection);
  return 0;
}
