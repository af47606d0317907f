// Writes a database for the hosts: write_database FILE TRACK_COUNT
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "samples/sample_database.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto trackCount = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
  const std::vector<std::uint8_t> bytes =
      quaylink::samples::WriteDatabase(quaylink::samples::MakeLargeLibrary(trackCount));
  std::FILE* file = std::fopen(argv[1], "wb");
  if (!file) return 1;
  const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && isWritten ? 0 : 1;
}
