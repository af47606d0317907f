/* A host in C that is linked against the library: linked_host DATABASE TRACK_COUNT */
#include <stdio.h>
#include <stdlib.h>

#include "host_steps.h"

int main(int argc, char** argv) {
  const Library library = {
      InitializeIPod,          TerminateIPod,
      IsIPodConnected,         ConnectIPod,
      DisconnectIPod,          CopyITunesDB,
      ParseITunesDB,           CopyFileFromIPod,
      EnumGenericFileFromIPod, CopyGenericFileFromIPod,
  };
  if (argc != 3) {
    fprintf(stderr, "usage: linked_host DATABASE TRACK_COUNT\n");
    return 2;
  }
  RunHostSteps(&library, argv[1], (int32_t)strtol(argv[2], NULL, 10));
  return failures == 0 ? 0 : 1;
}
