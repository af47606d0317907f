// A phone's files through the device manager, and its sessions.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>

#include "interface/device_manager.h"
#include "support/allocations.h"
#include "support/attached_phone.h"
#include "support/database_bytes.h"
#include "support/loaded_library.h"

namespace quaylink::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kDatabase =
    TrackDatabase(2, Track(1, 1, TextObject(2, u":iTunes_Control:Music:A.m4a")) +
                         Track(2, 1, TextObject(2, u":iTunes_Control:Music:GONE.m4a")));

class MobileRoad : public testing::Test {
 protected:
  MobileRoad() {
    phone.phone.setUp.files = files;
    manager.bridge = std::move(phone.bridge);
  }
  ~MobileRoad() override { EXPECT_TRUE(manager.CloseSession()); }

  void AddMusic() {
    files->AddFile("/iTunes_Control/iTunes/iTunesDB", kDatabase);
    files->AddFile("/iTunes_Control/Music/A.m4a", std::string(60'000, 'a'));
  }

  AttachedPhone phone;
  TestMachine& machine = phone.machine;
  std::shared_ptr<stand_in::MemoryFiles> files = std::make_shared<stand_in::MemoryFiles>();
  DeviceManager manager;
};

TEST_F(MobileRoad, TheFirstDatabaseListedIsCopiedUnderItsUsualSpelling) {
  const struct {
    std::vector<std::string> paths;
    std::string opened;
  } cases[] = {
      {{"/a", "/iPod_Control/iTunes/iTunesDB"}, "/iPod_Control/iTunes/iTunesDB"},
      {{"/iPod_Control/iTunes/iTunesDB", "/iTunes_Control/iTunes/iTunesDB"},
       "/iPod_Control/iTunes/iTunesDB"},
      {{"/iTunes_Control/iTunes/iTunesDB", "/iPod_Control/iTunes/iTunesDB"},
       "/iTunes_Control/iTunes/iTunesDB"},
      {{"/ITUNES_control/itunes/ITUNESDB"}, "/iTunes_Control/iTunes/iTunesDB"},
      {{"/iTunes_Control/iTunes/iTunesDB2", "/x/iTunes_Control/iTunes/iTunesDB"}, ""},
  };
  for (const auto& c : cases) {
    files = std::make_shared<stand_in::MemoryFiles>();
    for (const std::string& path : c.paths) files->AddFile(path, "the database");
    phone.phone.setUp.files = files;
    phone.phone.ForgetLog();
    machine.WriteFile("C:\\db", "something older");
    EXPECT_EQ(manager.CopyDatabase("C:\\db"), !c.opened.empty());
    EXPECT_EQ(machine.ReadFile("C:\\db"), c.opened.empty() ? "" : "the database");
    EXPECT_FALSE(manager.sessionOpen);
    if (c.opened.empty()) {
      EXPECT_THAT(phone.phone.Log("AFCFileRefOpen"), IsEmpty());
    } else {
      EXPECT_THAT(phone.phone.Log("AFCFileRefOpen"), ElementsAre(HasSubstr('"' + c.opened + '"')));
    }
  }
}

TEST_F(MobileRoad, CopiesOfDatabaseAndTracksLeaveNoSessionOpenNotEvenTheHosts) {
  AddMusic();
  ASSERT_TRUE(manager.OpenSession());
  ASSERT_TRUE(manager.OpenSession());
  EXPECT_EQ(phone.phone.Log("AMDeviceConnect").size(), 1u) << "opened once";
  EXPECT_TRUE(manager.CopyDatabase("C:\\db"));
  EXPECT_FALSE(manager.sessionOpen);
  EXPECT_FALSE(phone.phone.IsSessionOpen());

  ASSERT_TRUE(manager.Parse("C:\\db"));
  ASSERT_TRUE(manager.OpenSession());
  EXPECT_TRUE(manager.CopyTrackFile(0, "C:\\a.m4a"));
  EXPECT_EQ(machine.ReadFile("C:\\a.m4a"), std::string(60'000, 'a'));
  EXPECT_FALSE(manager.sessionOpen);
  EXPECT_FALSE(manager.CopyTrackFile(1, "C:\\gone.m4a"));
  EXPECT_EQ(machine.ReadFile("C:\\gone.m4a"), "");
  EXPECT_FALSE(manager.sessionOpen);
}

TEST_F(MobileRoad, NothingIsAskedOfThePhoneWhenTheDestinationCannotBeCreated) {
  AddMusic();
  ASSERT_TRUE(manager.CopyDatabase("C:\\db"));
  ASSERT_TRUE(manager.Parse("C:\\db"));
  ASSERT_TRUE(manager.OpenSession());
  phone.phone.ForgetLog();
  EXPECT_FALSE(manager.CopyGenericFile(false, "/iTunes_Control/Music/A.m4a", "C:\\no such\\a"));
  EXPECT_FALSE(manager.CopyDatabase("C:\\no such folder\\db"));
  EXPECT_FALSE(manager.CopyTrackFile(0, "C:\\no such folder\\a"));
  EXPECT_FALSE(manager.CopyTrackFile(2, "C:\\out of range"));
  EXPECT_THAT(phone.phone.Log(), IsEmpty());
  EXPECT_FALSE(machine.Exists("C:\\out of range"));
}

TEST_F(MobileRoad, ListingAndAnyFileUseTheHostsSessionUnlessTheyAreToConnect) {
  AddMusic();
  std::vector<std::string> list;
  EXPECT_FALSE(manager.EnumerateFiles(false, list)) << "no session";
  EXPECT_FALSE(manager.CopyGenericFile(false, "/iTunes_Control/Music/A.m4a", "C:\\a"));
  EXPECT_THAT(phone.phone.Log(), IsEmpty());

  ASSERT_TRUE(manager.OpenSession());
  EXPECT_TRUE(manager.EnumerateFiles(false, list));
  EXPECT_THAT(list, ElementsAre("/iTunes_Control/iTunes/iTunesDB", "/iTunes_Control/Music/A.m4a"));
  EXPECT_TRUE(manager.CopyGenericFile(false, "/iTunes_Control/Music/A.m4a", "C:\\a"));
  EXPECT_TRUE(manager.sessionOpen) << "left open";

  EXPECT_TRUE(manager.EnumerateFiles(true, list));
  EXPECT_EQ(list.size(), 2u) << "emptied first";
  EXPECT_FALSE(manager.sessionOpen);
  EXPECT_FALSE(manager.CopyGenericFile(true, "/missing", "C:\\missing"));
  EXPECT_FALSE(manager.sessionOpen);
}

// Whatever fails on the phone, the operation fails and no session it opened stays open; the next
// attempt succeeds.
TEST_F(MobileRoad, AFailureOfThePhoneIsOverWithTheOperation) {
  AddMusic();
  ASSERT_TRUE(manager.CopyDatabase("C:\\db"));
  ASSERT_TRUE(manager.Parse("C:\\db"));
  const struct {
    const char* entryPoint;
    unsigned skip;
  } cases[] = {{"AMDeviceNotificationSubscribe", 0},
               {"AMDeviceConnect", 0},
               {"AMDeviceStartSession", 0},
               {"AMDeviceStartService", 0},
               {"AFCConnectionOpen", 0},
               {"AFCFileInfoOpen", 0},
               {"AFCFileRefOpen", 0},
               {"AFCFileRefRead", 0},
               {"AFCFileRefRead", 1}};
  for (const auto& c : cases) {
    phone.phone.setUp.failures = {{c.entryPoint, {c.skip, 1000}}};
    EXPECT_FALSE(manager.CopyTrackFile(0, "C:\\a.m4a")) << c.entryPoint;
    EXPECT_FALSE(manager.sessionOpen) << c.entryPoint;
    phone.phone.setUp.failures.clear();
    EXPECT_TRUE(manager.CopyTrackFile(0, "C:\\a.m4a")) << c.entryPoint;
  }
  for (const unsigned skip : {0u, 1u, 4u}) {
    phone.phone.setUp.failures = {{"AFCDirectoryOpen", {skip, 1000}}};
    std::vector<std::string> list;
    EXPECT_FALSE(manager.EnumerateFiles(true, list)) << skip;
    EXPECT_FALSE(manager.CopyDatabase("C:\\db")) << skip;
    EXPECT_FALSE(manager.sessionOpen);
  }
}

// A listing may end early without a failure; a copy that succeeds is whole.
TEST_F(MobileRoad, ThePhoneMayBeUnpluggedAtAnyMoment) {
  AddMusic();
  ASSERT_TRUE(manager.CopyDatabase("C:\\db"));
  ASSERT_TRUE(manager.Parse("C:\\db"));
  phone.phone.setUp.garbage = true;
  phone.phone.setUp.comesBack = true;
  std::vector<std::string> list;
  const struct {
    std::function<bool()> succeeds;
    std::function<bool()> isRight;
  } operations[] = {
      {[&] { return manager.EnumerateFiles(true, list); },
       [&] {
         return std::ranges::all_of(list,
                                    [&](auto& path) { return files->Find(path).has_value(); });
       }},
      {[&] { return manager.CopyDatabase("C:\\db"); },
       [&] { return machine.ReadFile("C:\\db") == kDatabase; }},
      {[&] { return manager.CopyTrackFile(0, "C:\\a.m4a"); },
       [&] { return machine.ReadFile("C:\\a.m4a") == std::string(60'000, 'a'); }},
  };
  for (const auto& [succeeds, isRight] : operations) {
    bool wasUnplugged = true;
    // From the first call on that does not wait for the phone.
    for (unsigned calls = 1; wasUnplugged; ++calls) {
      SCOPED_TRACE(calls);
      phone.phone.setUp.unplugAfter = calls;
      if (succeeds()) {
        EXPECT_TRUE(isRight());
      }
      EXPECT_FALSE(manager.sessionOpen);
      EXPECT_FALSE(phone.phone.IsSessionOpen());
      wasUnplugged = !phone.phone.setUp.unplugAfter;
      phone.phone.setUp.unplugAfter.reset();
      ASSERT_TRUE(succeeds()) << "plugged in again";
      ASSERT_TRUE(isRight());
    }
  }
}

TEST_F(MobileRoad, WantOfMemoryLeavesNothingOfThePhoneOpen) {
  AddMusic();
  phone.phone.setUp.paired = false;
  phone.phone.setUp.aroundCalls = SuspendFailures;
  std::vector<std::string> list;
  const std::function<bool()> operations[] = {
      [&] { return manager.CopyDatabase("C:\\db"); },
      [&] { return manager.EnumerateFiles(true, list); },
      [&] { return manager.CopyGenericFile(true, "/iTunes_Control/Music/A.m4a", "C:\\a"); },
  };
  for (const auto& operation : operations) {
    const auto succeeds = [&] {
      try {
        return operation() ? 1 : 0;
      } catch (const std::bad_alloc&) {
        return 0;
      }
    };
    const std::uint64_t failures = FailEachAllocation(succeeds, [&](int result, bool failed) {
      EXPECT_EQ(result == 0, failed);
      EXPECT_FALSE(manager.sessionOpen);
      EXPECT_FALSE(phone.phone.IsSessionOpen());
    });
    EXPECT_GT(failures, 0u);
  }
}

// A host over the exports, and libraries that are really loaded.
class PhoneHost : public testing::Test {
 protected:
  PhoneHost() {
    machine.SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMON, "C:\\Common");
    for (const std::string name : {"CoreFoundation.dll", "iTunesMobileDevice.dll"}) {
      std::ifstream file(STAND_IN_LIBRARIES + ("/" + name), std::ios::binary);
      machine.WriteFile("C:\\Common\\Apple\\Mobile Device Support\\bin\\" + name,
                        std::string(std::istreambuf_iterator<char>(file), {}));
    }
    machine.AttachDevice(0x1290);
    const std::filesystem::path phone = machine.LocalPath("phone");
    std::filesystem::create_directories(phone / "DCIM");
    // The longest path that is listed has 255 bytes, unless those of this computer end before.
    const std::size_t longest =
        std::min(255 - std::strlen("/DCIM/"), FILENAME_MAX - (phone / "DCIM").string().size() - 2);
    for (const std::string& name :
         {std::string("a"), std::string(longest - 1, 'b'), std::string(longest, 'c')}) {
      std::ofstream(phone / "DCIM" / name) << name[0];
    }
    std::ofstream(machine.LocalPath("phone.txt")) << "folder " << phone.string() << "\n";
    SetEnvironment("STAND_IN_PHONE", machine.LocalPath("phone.txt"));
    InitializeIPod();
  }
  ~PhoneHost() override {
    TerminateIPod();
    SetEnvironment("STAND_IN_PHONE", "");
  }

  TestMachine machine;
};

struct Walk {
  int calls = 0;
  int copied = 0;
};

void QUAYLINK_CALL CopyEach(const char* devicePath, void* context) {
  auto& walk = *static_cast<Walk*>(context);
  const std::string copy = "C:\\copy" + std::to_string(walk.calls++);
  walk.copied += CopyGenericFileFromIPod(1, devicePath, copy.c_str());
}

void QUAYLINK_CALL EndOrBeginAnew(const char* /*devicePath*/, void* context) {
  auto& walk = *static_cast<Walk*>(context);
  if (walk.calls++ == 0) {
    TerminateIPod();
  } else {
    InitializeIPod();
  }
}

TEST_F(PhoneHost, TheCallbackMayCopyEachFileThatItIsGivenByItsWholePath) {
  Walk walk;
  EXPECT_EQ(EnumGenericFileFromIPod(1, CopyEach, &walk), 1);
  EXPECT_EQ(walk.calls, 3);
  EXPECT_EQ(walk.copied, 3);
  EXPECT_EQ(machine.ReadFile("C:\\copy2"), "c");
}

TEST_F(PhoneHost, TheWalkGoesOnWhenTheCallbackEndsTheManager) {
  Walk walk;
  EXPECT_EQ(EnumGenericFileFromIPod(1, EndOrBeginAnew, &walk), 1);
  EXPECT_EQ(walk.calls, 3);
}

// As a host calls that takes its booleans for integers: more than one byte is in the argument.
#if defined(__clang__)
__attribute__((no_sanitize("function")))
#endif
int EnumerateWithAWord(unsigned autoConnect, Walk& walk) {
  using WideEnum = QuaylinkBool(QUAYLINK_CALL*)(unsigned, EnumFileCallback, void*);
  const auto enumerate =
      reinterpret_cast<WideEnum>(reinterpret_cast<void*>(&EnumGenericFileFromIPod));
  return enumerate(autoConnect, CopyEach, &walk);
}

TEST_F(PhoneHost, ABooleanArgumentIsItsLowByte) {
  Walk walk;
  EXPECT_EQ(EnumerateWithAWord(0x100, walk), 1) << "false: no detection, and nothing to list";
  EXPECT_EQ(walk.calls, 0);
  EXPECT_EQ(EnumerateWithAWord(0x101, walk), 1);
  EXPECT_EQ(walk.calls, 3);
}

}  // namespace
}  // namespace quaylink::test
