// The ten exported functions, as a host calls them.

#include <gtest/gtest.h>

#include <cstring>

#include "itunesdb/database.h"
#include "platform/windows_api.h"
#include "quaylink/quaylink.h"
#include "support/database_bytes.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

void QUAYLINK_CALL CountCall(const char* /*devicePath*/, void* context) {
  ++*static_cast<int*>(context);
}

class ExportedFunctions : public testing::Test {
 protected:
  ~ExportedFunctions() override { TerminateIPod(); }

  // A database of that many tracks, as a local file.
  std::string DatabaseOf(std::uint32_t trackCount) {
    std::string tracks;
    for (std::uint32_t id = 1; id <= trackCount; ++id) {
      tracks += Track(id, 2, TextObject(1, u"Title") + TextObject(2, u":file"));
    }
    std::string path = "C:\\" + std::to_string(trackCount) + ".iTunesDB";
    machine.WriteFile(path, TrackDatabase(trackCount, tracks));
    return path;
  }

  TestMachine machine;
};

TEST_F(ExportedFunctions, WithoutAManagerEveryFunctionFailsAndTouchesNothing) {
  const std::string database = DatabaseOf(1);
  machine.AttachDevice(0x1261);
  machine.AddDrive('E');
  machine.AddFolder("E:\\iPod_Control\\Music");
  for (const bool terminated : {false, true}) {
    if (terminated) {
      InitializeIPod();
      TerminateIPod();
    }
    int calls = 0;
    EXPECT_EQ(IsIPodConnected(), 0);
    EXPECT_EQ(ConnectIPod(), 0);
    EXPECT_EQ(DisconnectIPod(), 1);
    EXPECT_EQ(CopyITunesDB("C:\\copy"), 0);
    EXPECT_EQ(ParseITunesDB(database.c_str(), 0, nullptr), 0);
    EXPECT_EQ(CopyFileFromIPod(0, "C:\\copy"), 0);
    EXPECT_EQ(EnumGenericFileFromIPod(1, CountCall, &calls), 0);
    EXPECT_EQ(CopyGenericFileFromIPod(1, database.c_str(), "C:\\copy"), 0);
    TerminateIPod();
    EXPECT_FALSE(machine.Exists("C:\\copy"));
    EXPECT_EQ(calls, 0);
  }
}

TEST_F(ExportedFunctions, ParsingCountsOrCopiesNoMoreThanThereIsRoomFor) {
  ASSERT_NE(InitializeIPod(), 0u);
  const std::string database = DatabaseOf(10);
  std::vector<TrackRecord> buffer(26);
  const struct {
    int32_t maxRecords;
    bool withBuffer;
    int32_t result;
    std::size_t written;
  } cases[] = {{0, true, 10, 0},         {0, false, 10, 0},  {25, false, 10, 0},
               {3, true, 3, 3},          {25, true, 10, 10}, {10, true, 10, 10},
               {-1, true, 0, 0},         {-1, false, 10, 0}, {INT32_MIN, true, 0, 0},
               {INT32_MAX, true, 10, 10}};
  for (const auto& c : cases) {
    std::memset(static_cast<void*>(buffer.data()), 0x55, buffer.size() * sizeof(TrackRecord));
    EXPECT_EQ(ParseITunesDB(database.c_str(), c.maxRecords, c.withBuffer ? buffer.data() : nullptr),
              c.result)
        << c.maxRecords;
    for (std::size_t i = 0; i < buffer.size(); ++i) {
      EXPECT_STREQ(std::string(buffer[i].title, 5).c_str(), i < c.written ? "Title" : "UUUUU");
    }
  }
}

TEST_F(ExportedFunctions, NullArgumentsAreFailures) {
  InitializeIPod();
  EXPECT_EQ(CopyITunesDB(nullptr), 0);
  EXPECT_EQ(ParseITunesDB(nullptr, 0, nullptr), 0);
  EXPECT_EQ(CopyFileFromIPod(0, nullptr), 0);
  EXPECT_EQ(EnumGenericFileFromIPod(0, nullptr, nullptr), 0);
  EXPECT_EQ(CopyGenericFileFromIPod(0, nullptr, "C:\\copy"), 0);
  EXPECT_EQ(CopyGenericFileFromIPod(0, "C:\\copy", nullptr), 0);
}

TEST_F(ExportedFunctions, ASecondManagerBeginsWithoutRecordsAndTheFirstIsGone) {
  InitializeIPod();
  ASSERT_EQ(ParseITunesDB(DatabaseOf(3).c_str(), 0, nullptr), 3);
  ASSERT_NE(InitializeIPod(), 0u);
  EXPECT_EQ(theDatabase.dataSets.size(), 0u);
  EXPECT_EQ(CopyFileFromIPod(0, "C:\\copy"), 0);
  EXPECT_FALSE(machine.Exists("C:\\copy"));
}

TEST_F(ExportedFunctions, TwoParsesInARowLeaveOneCopyAndAFailedOneWhatItRead) {
  InitializeIPod();
  ASSERT_EQ(ParseITunesDB(DatabaseOf(3).c_str(), 0, nullptr), 3);
  ASSERT_EQ(ParseITunesDB(DatabaseOf(4).c_str(), 0, nullptr), 4);
  EXPECT_EQ(theDatabase.dataSets.size(), 1u);
  machine.WriteFile("C:\\bad", Database(2, DataSet(4, ListBytes("mhla", 0, ""))));
  EXPECT_EQ(ParseITunesDB("C:\\bad", 0, nullptr), 0);
  EXPECT_EQ(theDatabase.dataSets.size(), 1u);
  EXPECT_EQ(theDatabase.dataSets[0]->dataSetType, 4u);
  TerminateIPod();
  EXPECT_EQ(theDatabase.dataSets.size(), 0u);
}

TEST_F(ExportedFunctions, OnTheDiskRoadThereIsNothingToList) {
  InitializeIPod();
  int calls = 0;
  EXPECT_EQ(EnumGenericFileFromIPod(1, CountCall, &calls), 0) << "no device";
  EXPECT_EQ(EnumGenericFileFromIPod(0, CountCall, &calls), 1);
  machine.AttachDevice(0x1261);
  machine.AddDrive('E');
  machine.AddFolder("E:\\iPod_Control\\Music");
  EXPECT_EQ(EnumGenericFileFromIPod(1, CountCall, &calls), 1);
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace quaylink::test
