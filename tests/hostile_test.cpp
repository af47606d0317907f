// What a broken or wicked database, and want of memory, cost the host: nothing that lasts.

#include <gtest/gtest.h>

#include <fstream>

#include "interface/device_manager.h"
#include "itunesdb/database.h"
#include "quaylink/quaylink.h"
#include "samples/sample_database.h"
#include "support/allocations.h"
#include "support/hostile_files.h"
#include "support/opened_collection.h"
#include "support/same_tree.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

const std::string kPath = "C:\\iTunesDB";

TEST(HostileFile, CostsLessThan24TimesItsSizeAnd1MiB) {
  // Sanitizers change what an arena allocates: there it is enough that nothing is wrong.
  constexpr bool kCountable = std::string_view(QUAYLINK_SANITIZE).empty();
  TestMachine machine;
  double worst = 0;
  double worstOpened = 0;
  for (const HostileFile& file : HostileFiles(kCountable ? 2 << 20 : 64 << 10)) {
    machine.WriteFile(kPath, file.bytes);
    DeviceManager manager;
    const Allocations before = AllocationsSoFar();
    manager.Parse(kPath.c_str());
    const std::uint64_t bytes = AllocationsSoFar().bytes - before.bytes;
    if (kCountable) {
      EXPECT_LT(bytes, 24 * file.bytes.size() + (1 << 20)) << file.name;
    }
    worst = std::max(worst, static_cast<double>(bytes) / static_cast<double>(file.bytes.size()));
    // So does a collection, tolerant of what is wrong.
    const std::string path = machine.LocalPath("hostile");
    std::ofstream(path, std::ios::binary) << file.bytes;
    const Allocations beforeOpening = AllocationsSoFar();
    OpenedCollection::OfFile(path);
    const std::uint64_t opened = AllocationsSoFar().bytes - beforeOpening.bytes;
    if (kCountable) {
      EXPECT_LT(opened, 24 * file.bytes.size() + (1 << 20)) << file.name;
    }
    worstOpened =
        std::max(worstOpened, static_cast<double>(opened) / static_cast<double>(file.bytes.size()));
  }
  RecordProperty("worstRatio", std::to_string(worst));
  RecordProperty("worstRatioOfCollections", std::to_string(worstOpened));
}

TEST(HostileFile, ReadsTheSameThroughAFileAndFromMemoryAndIsWrittenAsASoundOne) {
  TestMachine machine;
  for (const HostileFile& file : HostileFiles(100 << 10)) {
    SCOPED_TRACE(file.name);
    machine.WriteFile(kPath, file.bytes);
    DeviceManager manager;
    DatabaseChunk database;
    EXPECT_EQ(manager.Parse(kPath.c_str()), ReadBytes(database, file.bytes).result >= 0);
    EXPECT_EQ(database.dataSets.size(), theDatabase.dataSets.size());
    const bool soundTypes = std::ranges::all_of(database.dataSets, [](const auto& dataSet) {
      return dataSet->dataSetType >= 1 && dataSet->dataSetType <= 6;
    });
    if (!soundTypes || database.dataSets.size() < database.dataSetCount) continue;
    const std::string written = WrittenBytes(database);
    DatabaseChunk again;
    EXPECT_EQ(ReadBytes(again, written).result, static_cast<std::int32_t>(written.size()));
    EXPECT_TRUE(SameTree(database, again));
    EXPECT_EQ(WrittenBytes(again), written);
  }
}

// A player on E: with one track's file, and the current manager with that track's record.
class OutOfMemory : public testing::Test {
 protected:
  OutOfMemory() {
    machine.AttachDevice(0x1261);
    machine.AddDrive('E');
    machine.AddFolder("E:\\iPod_Control\\Music");
    machine.WriteFile("E:\\earlier", "the sound of the earlier track");
    const std::string track = Track(1, 1, TextObject(2, u":earlier"));
    machine.WriteFile("E:\\iPod_Control\\iTunes\\iTunesDB", TrackDatabase(1, track));
    samples::Library library = samples::MakeLargeLibrary(kTracks);
    library.tracks[0].strings[0].string.append(5000,
                                               u'x');  // beyond what a block of an arena takes
    const auto bytes = samples::WriteDatabase(library);
    machine.WriteFile(kPath, std::string(bytes.begin(), bytes.end()));
    InitializeIPod();
    EXPECT_EQ(IsIPodConnected(), 1);
    EXPECT_EQ(CopyITunesDB("C:\\earlierDB"), 1);
    EXPECT_EQ(ParseITunesDB("C:\\earlierDB", 0, nullptr), 1);
  }
  ~OutOfMemory() override {
    TerminateIPod();
    EXPECT_GT(failures, 0u) << "nothing was tried";
  }

  template <class Operation, class Check>
  void FailEachAllocation(Operation operation, Check check) {
    failures += test::FailEachAllocation(operation, check);
  }

  static constexpr std::int32_t kTracks = 30;
  std::uint64_t failures = 0;  // of an allocation
  TestMachine machine;
};

TEST_F(OutOfMemory, AParseFailsAndLeavesTheEarlierRecordsAndNothingElse) {
  const auto expectEarlierRecord = [this] {
    EXPECT_EQ(CopyFileFromIPod(0, "C:\\copy"), 1);
    EXPECT_EQ(machine.ReadFile("C:\\copy"), "the sound of the earlier track");
  };
  FailEachAllocation([] { return ParseITunesDB(kPath.c_str(), 0, nullptr); },
                     [&](std::int32_t result, bool failed) {
                       EXPECT_EQ(result, failed ? 0 : kTracks);
                       if (failed) expectEarlierRecord();
                     });
}

TEST_F(OutOfMemory, AFailedParseHoldsNothingThatWasNotHeldBefore) {
  const auto parse = [] { return ParseITunesDB(kPath.c_str(), 0, nullptr); };
  ParseITunesDB("C:\\earlierDB", 0, nullptr);
  const Allocations before = AllocationsSoFar();
  FailEachAllocation(parse, [&](std::int32_t, bool failed) {
    if (failed) {
      EXPECT_LE(AllocationsSoFar().live, before.live);
    }
  });
  TerminateIPod();
  const std::int64_t live = AllocationsSoFar().live;
  InitializeIPod();
  FailEachAllocation(parse, [](std::int32_t, bool) {});
  TerminateIPod();
  EXPECT_EQ(AllocationsSoFar().live, live);
}

TEST_F(OutOfMemory, ACollectionIsNotOpenedAndLeavesNothing) {
  samples::Library library = samples::MakeLargeLibrary(kTracks);
  std::ranges::reverse(library.playlists[0].trackIds);
  const std::string sound = BytesOf(samples::WriteDatabase(library));
  const std::string cut = sound.substr(0, sound.size() - 100);
  const std::string compressed = BytesOf(samples::Compress(AsBytes(sound)));
  const std::int64_t live = AllocationsSoFar().live;
  for (const std::string& bytes : {sound, cut, compressed}) {
    FailEachAllocation([&] { return OpenedCollection(bytes).result; },
                       [&](std::int32_t result, bool failed) {
                         EXPECT_EQ(result, failed ? QUAYLINK_NO_MEMORY : QUAYLINK_OK);
                       });
  }
  EXPECT_EQ(AllocationsSoFar().live, live);
}

TEST_F(OutOfMemory, EveryExportReportsItAndLetsNoExceptionOut) {
  const auto failsOrSucceeds = [](std::int32_t result, bool failed) {
    EXPECT_EQ(result, failed ? 0 : 1);
  };
  FailEachAllocation([] { return IsIPodConnected(); }, failsOrSucceeds);
  FailEachAllocation([] { return ConnectIPod(); }, failsOrSucceeds);
  FailEachAllocation([] { return CopyITunesDB("C:\\copy"); }, failsOrSucceeds);
  FailEachAllocation([] { return CopyFileFromIPod(0, "C:\\copy"); }, failsOrSucceeds);
  FailEachAllocation([] { return CopyGenericFileFromIPod(1, "E:\\earlier", "C:\\copy"); },
                     failsOrSucceeds);
  FailEachAllocation([] { return InitializeIPod() != 0 ? 1 : 0; }, failsOrSucceeds);
  const EnumFileCallback noCall = [](const char*, void*) { ADD_FAILURE() << "no phone"; };
  FailEachAllocation([=] { return EnumGenericFileFromIPod(1, noCall, nullptr); }, failsOrSucceeds);
}

}  // namespace
}  // namespace quaylink::test
