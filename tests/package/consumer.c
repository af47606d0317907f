/* Prints the number of tracks of the database that it is given. */
#include <quaylink/quaylink.h>
#include <stdio.h>

int main(int argc, char** argv) {
  if (argc != 2 || InitializeIPod() == 0) return 1;
  printf("%d\n", (int)ParseITunesDB(argv[1], 0, NULL));
  TerminateIPod();
  return 0;
}
