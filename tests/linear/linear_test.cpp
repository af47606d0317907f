// The work of parsing, counted in basic blocks executed: the same on every run and on every
// computer, as time is not.

#include <gtest/gtest.h>

#include <fstream>

#include "interface/device_manager.h"
#include "support/hostile_files.h"

static std::uint64_t blocksExecuted = 0;

// Called at each basic block of the library's parsing code, which is built for it.
extern "C" void __sanitizer_cov_trace_pc() {  // NOLINT(readability-identifier-naming)
  ++blocksExecuted;
}

namespace quaylink::test {
namespace {

std::uint64_t WorkToParse(const std::string& bytes) {
  const std::string path = testing::TempDir() + "/quaylink-linear-" + std::to_string(::getpid());
  std::ofstream(path, std::ios::binary) << bytes;
  DeviceManager manager;
  const std::uint64_t before = blocksExecuted;
  manager.Parse(path.c_str());
  const std::uint64_t work = blocksExecuted - before;
  std::remove(path.c_str());
  return work;
}

TEST(Linear, TheWorkOfParsingAnyFileGrowsWithItsSize) {
  const auto files = HostileFiles(200 << 10);
  const auto twice = HostileFiles(400 << 10);
  for (std::size_t i = 0; i < files.size(); ++i) {
    const std::uint64_t work = WorkToParse(files[i].bytes);
    EXPECT_GT(work, 0u);
    // Putting tracks in order takes a little more than twice as long; a quadratic step would take
    // four times.
    EXPECT_LT(WorkToParse(twice[i].bytes), work * 23 / 10 + 1000) << files[i].name;
  }
}

}  // namespace
}  // namespace quaylink::test
