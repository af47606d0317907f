// The work of parsing, counted in basic blocks executed: the same on every run and on every
// computer, as time is not.

#include <gtest/gtest.h>

#include <fstream>

#include "collection/collection.h"
#include "interface/device_manager.h"
#include "support/hostile_files.h"

static std::uint64_t blocksExecuted = 0;

// Called at each basic block of the library's parsing code, which is built for it.
extern "C" void __sanitizer_cov_trace_pc() {  // NOLINT(readability-identifier-naming)
  ++blocksExecuted;
}

namespace quaylink::test {
namespace {

struct Work {
  std::uint64_t parsing;
  std::uint64_t opening;  // as a collection
};

Work WorkOf(const std::string& bytes) {
  const std::string path = testing::TempDir() + "/quaylink-linear-" + std::to_string(::getpid());
  std::ofstream(path, std::ios::binary) << bytes;
  DeviceManager manager;
  const std::uint64_t before = blocksExecuted;
  manager.Parse(path.c_str());
  const std::uint64_t between = blocksExecuted;
  Failure failure;
  OpenFile(path.c_str(), {}, failure);
  std::remove(path.c_str());
  return {between - before, blocksExecuted - between};
}

TEST(Linear, TheWorkOfParsingAndOpeningAnyFileGrowsWithItsSize) {
  const auto files = HostileFiles(200 << 10);
  const auto twice = HostileFiles(400 << 10);
  for (std::size_t i = 0; i < files.size(); ++i) {
    SCOPED_TRACE(files[i].name);
    const Work work = WorkOf(files[i].bytes);
    const Work workOfTwice = WorkOf(twice[i].bytes);
    EXPECT_GT(work.parsing, 0u);
    EXPECT_GT(work.opening, 0u);
    // Putting tracks in order takes a little more than twice as long; a quadratic step would take
    // four times.
    EXPECT_LT(workOfTwice.parsing, work.parsing * 23 / 10 + 1000);
    EXPECT_LT(workOfTwice.opening, work.opening * 23 / 10 + 1000);
  }
}

}  // namespace
}  // namespace quaylink::test
