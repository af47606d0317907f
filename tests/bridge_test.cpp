// Where the bridge finds the phone libraries, which are real ones, and what it leaves behind.
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "mobile/mobile_device_bridge.h"
#include "mobile/work_folder.h"
#include "quaylink/quaylink.h"
#include "support/loaded_library.h"
#include "support/test_machine.h"

namespace quaylink::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr char kBinFolder[] = "C:\\Common\\Apple\\Mobile Device Support\\bin\\";
constexpr char kDeviceSupport[] = "C:\\Common32\\Apple\\Mobile Device Support\\";
constexpr char kApplicationSupport[] = "C:\\Common32\\Apple\\Apple Application Support\\";
constexpr char kWorkFolder[] = "C:\\Documents\\Orvendel_WorkFolder\\";

std::string BytesOf(const std::string& hostPath) {
  std::ifstream file(hostPath, std::ios::binary);
  EXPECT_TRUE(file) << hostPath;
  return {std::istreambuf_iterator<char>(file), {}};
}

class Bridge : public testing::Test {
 protected:
  Bridge() {
    machine_.SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMON, "C:\\Common");
    machine_.SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMONX86, "C:\\Common32");
    machine_.SetSpecialFolder(CSIDL_PERSONAL, "C:\\Documents");
    machine_.AddFolder("C:\\Documents");
    SetEnvironment("STAND_IN_PHONE", "");  // whatever the shell has set
  }
  ~Bridge() override { SetEnvironment("STAND_IN_PHONE", ""); }

  void Install(const std::string& folder, const std::string& name,
               const std::string& from = STAND_IN_LIBRARIES) {
    machine_.WriteFile(folder + name, BytesOf(from + "/" + name));
  }

  TestMachine machine_;
};

TEST_F(Bridge, LoadsTheLibrariesFromTheirOwnFolder) {
  Install(kBinFolder, "CoreFoundation.dll");
  Install(kBinFolder, "iTunesMobileDevice.dll");
  Install(kDeviceSupport, "iTunesMobileDevice.dll");  // not needed
  {
    MobileDeviceBridge bridge;
    EXPECT_TRUE(bridge.LibrariesLoaded());
    EXPECT_FALSE(bridge.libraries.loadedFromWorkFolder);
    EXPECT_TRUE(IsLibraryLoaded(std::string(kBinFolder) + "CoreFoundation.dll"));
    bridge.libraries.entryPoints.ForEach(
        [](PhoneLibrary, const char* name, auto slot) { EXPECT_TRUE(slot) << name; });
    EXPECT_EQ(bridge.Connect(true), 1);
    std::vector<std::string> folders;
    EXPECT_EQ(bridge.ListFolders("/", folders), 1);
    EXPECT_THAT(folders, ElementsAre("/"));
    bridge.Disconnect();
  }
  EXPECT_FALSE(machine_.Exists(kWorkFolder));
  EXPECT_FALSE(IsLibraryLoaded(std::string(kBinFolder) + "CoreFoundation.dll"));
  EXPECT_FALSE(IsLibraryLoaded(std::string(kBinFolder) + "iTunesMobileDevice.dll"));
}

TEST_F(Bridge, GathersTheLibrariesInTheWorkFolderWhenTheirOwnIsIncomplete) {
  Install(kBinFolder, "CoreFoundation.dll");
  Install(kApplicationSupport, "CoreFoundation.dll");
  Install(kDeviceSupport, "iTunesMobileDevice.dll");
  const struct {
    std::string folder;
    std::vector<std::string> names;
  } sources[] = {
      {kApplicationSupport,
       {"ASL.dll", "CFNetwork.dll", "Foundation.dll", "icudt40.dll", "icuin40.dll", "icuuc40.dll",
        "libtidy.dll", "libxml2.dll", "objc.dll", "pthreadVC2.dll", "SQLite3.dll",
        "Foundation.resources\\1", "Foundation.resources\\a\\b\\c\\2",
        "CoreFoundation.resources\\3"}},
      {kDeviceSupport,
       {"DeviceLink.dll", "AppleMobileBackup.exe", "AppleMobileBackup_main.dll", "libeay32.dll",
        "MobileDevice.dll", "ssleay32.dll", "AppleMobileBackup.resources\\c\\d"}},
      {GetApplicationFolder() + "\\", {"zlib1.dll", "OrvendelHelper.exe"}},
  };
  for (const auto& [folder, names] : sources) {
    for (const std::string& name : names) machine_.WriteFile(folder + name, "new " + name);
  }
  machine_.AddFolder(std::string(kApplicationSupport) + "Foundation.resources\\a\\empty");
  machine_.WriteFile(std::string(kApplicationSupport) + "Other.resources\\4", "no part of it");
  for (const char* name : {"ASL.dll", "kept", "Foundation.resources\\1"}) {
    machine_.WriteFile(std::string(kWorkFolder) + name, "from an earlier run");
  }
  {
    MobileDeviceBridge bridge;
    EXPECT_TRUE(bridge.LibrariesLoaded());
    EXPECT_TRUE(bridge.libraries.loadedFromWorkFolder);
    EXPECT_TRUE(IsLibraryLoaded(std::string(kWorkFolder) + "iTunesMobileDevice.dll"));
    EXPECT_EQ(bridge.Connect(true), 1);
    bridge.Disconnect();
  }
  for (const auto& [folder, names] : sources) {
    for (const std::string& name : names) {
      EXPECT_EQ(machine_.ReadFile(kWorkFolder + name), "new " + name);
    }
  }
  // "CFNetwork.resources" does not exist, and becomes an empty folder.
  for (const char* path : {"CFNetwork.resources", "Foundation.resources\\a\\empty", "kept"}) {
    EXPECT_TRUE(machine_.Exists(std::string(kWorkFolder) + path)) << path;
  }
  EXPECT_FALSE(machine_.Exists(std::string(kWorkFolder) + "Other.resources"));
  EXPECT_FALSE(IsLibraryLoaded(std::string(kWorkFolder) + "iTunesMobileDevice.dll"));
  EXPECT_TRUE(IsLibraryLoaded(std::string(kWorkFolder) + "CoreFoundation.dll"));
}

TEST_F(Bridge, TriesTheSecondLibraryAndTheWorkFolderAlsoWhenOnlyTheFirstCannotBeLoaded) {
  // A host that has a CoreFoundation.dll of its own: with it the other library can be loaded.
  Install("C:\\Host\\", "CoreFoundation.dll");
  const LoadedModule hosts(
      LoadLibraryExA("C:\\Host\\CoreFoundation.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  Install(kBinFolder, "iTunesMobileDevice.dll");
  {
    const MobileDeviceBridge bridge;
    EXPECT_FALSE(bridge.LibrariesLoaded());
    EXPECT_TRUE(IsLibraryLoaded(std::string(kBinFolder) + "iTunesMobileDevice.dll"));
  }
  EXPECT_FALSE(IsLibraryLoaded(std::string(kBinFolder) + "iTunesMobileDevice.dll"));
  Install(kApplicationSupport, "CoreFoundation.dll");
  Install(kDeviceSupport, "iTunesMobileDevice.dll");
  const MobileDeviceBridge bridge;
  EXPECT_TRUE(bridge.LibrariesLoaded());
  EXPECT_TRUE(bridge.libraries.loadedFromWorkFolder);
}

// The library that stays loaded cannot be copied again, and must not be damaged.
TEST_F(Bridge, UsesTheWorkFolderAgainInTheSameProcess) {
  Install(kApplicationSupport, "CoreFoundation.dll");
  Install(kDeviceSupport, "iTunesMobileDevice.dll");
  machine_.AttachDevice(0x1290);
  for (int round = 0; round < 2; ++round) {
    InitializeIPod();
    EXPECT_EQ(ConnectIPod(), 1);
    TerminateIPod();
    EXPECT_TRUE(IsLibraryLoaded(std::string(kWorkFolder) + "CoreFoundation.dll"));
  }
  EXPECT_FALSE(CopyFileA((std::string(kDeviceSupport) + "iTunesMobileDevice.dll").c_str(),
                         (std::string(kWorkFolder) + "CoreFoundation.dll").c_str(), 0));
}

// The common files of 32-bit programs are everyone's where there is but one folder of them.
TEST_F(Bridge, StaysWithoutLibrariesWhenTheWorkFolderHasNoneThatLoads) {
  machine_.SetSpecialFolder(CSIDL_PROGRAM_FILES_COMMONX86, "");
  machine_.WriteFile("C:\\Common\\Apple\\Mobile Device Support\\iTunesMobileDevice.dll",
                     "no library");
  const MobileDeviceBridge bridge;
  EXPECT_FALSE(bridge.LibrariesLoaded());
  EXPECT_TRUE(bridge.libraries.loadedFromWorkFolder);
  EXPECT_TRUE(machine_.Exists(kWorkFolder));
}

TEST_F(Bridge, FailsEveryOperationWithoutLibraries) {
  Install(kBinFolder, "CoreFoundation.dll");
  MobileDeviceBridge bridge;
  EXPECT_FALSE(bridge.LibrariesLoaded());
  EXPECT_FALSE(bridge.libraries.loadedFromWorkFolder);
  EXPECT_EQ(bridge.Connect(true), 0);
  EXPECT_EQ(bridge.Disconnect(), 1);
  std::vector<std::string> paths;
  EXPECT_EQ(bridge.ListFolders("/", paths), 0);
  EXPECT_EQ(bridge.ListFiles({"/"}, paths), 0);
  EXPECT_EQ(bridge.CopyDeviceFile(machine_.LocalPath("copy"), "/file"), 0);
  EXPECT_FALSE(machine_.Exists(machine_.LocalPath("copy")));
}

#if defined(STAND_IN_NEEDING_LIBRARIES)  // where the loader looks beside a library by itself
TEST_F(Bridge, FindsWhatALibraryNeedsBesideItInTheWorkFolder) {
  Install(kApplicationSupport, "CoreFoundation.dll");
  Install(kDeviceSupport, "iTunesMobileDevice.dll", STAND_IN_NEEDING_LIBRARIES);
  Install(kDeviceSupport, "MobileDevice.dll", STAND_IN_NEEDING_LIBRARIES);
  EXPECT_TRUE(MobileDeviceBridge().LibrariesLoaded());
}
#endif

TEST_F(Bridge, LeavesTheSlotOfAMissingEntryPointEmpty) {
  Install(kBinFolder, "CoreFoundation.dll");
  Install(kBinFolder, "iTunesMobileDevice.dll", STAND_IN_LACKING_LIBRARIES);
  MobileDeviceBridge bridge;
  EXPECT_EQ(bridge.libraries.entryPoints.afcFileRefRead, nullptr);
  EXPECT_NE(bridge.libraries.entryPoints.afcFileRefClose, nullptr);
  EXPECT_EQ(bridge.Connect(true), 1);
  EXPECT_EQ(bridge.CopyDeviceFile(machine_.LocalPath("copy"), "/file"), 0);
  bridge.Disconnect();
}

TEST_F(Bridge, ReadsAPhoneThatAScriptDescribes) {
  Install(kBinFolder, "CoreFoundation.dll");
  Install(kBinFolder, "iTunesMobileDevice.dll");
  // All beside the script, so that its paths can be relative.
  machine_.WriteFile(machine_.LocalPath("phone/DCIM/100/photo"), "a photo");
  machine_.WriteFile(machine_.LocalPath("script"),
                     "# a phone\nfolder phone\nannounce 20\nunpaired\nlog calls\n"
                     "garbage\nread-at-most 4\nfail AFCFileRefOpen\nsize 3 /DCIM/100/photo\n");
  SetEnvironment("STAND_IN_PHONE", machine_.LocalPath("script"));
  {
    MobileDeviceBridge bridge;
    EXPECT_EQ(bridge.Connect(true), 1);
    std::vector<std::string> folders;
    std::vector<std::string> files;
    EXPECT_EQ(bridge.ListFolders("/", folders), 1);
    EXPECT_EQ(bridge.ListFiles(folders, files), 1);
    EXPECT_THAT(files, ElementsAre("/DCIM/100/photo"));
    EXPECT_EQ(bridge.CopyDeviceFile(machine_.LocalPath("copy"), files.at(0)), 0);
    EXPECT_EQ(bridge.CopyDeviceFile(machine_.LocalPath("copy"), "/dcim/100/PHOTO"), 1);
    EXPECT_EQ(machine_.ReadFile(machine_.LocalPath("copy")), "a photo");
    EXPECT_EQ(bridge.CopyDeviceFile(machine_.LocalPath("copy"), files.at(0)), 1);
    EXPECT_EQ(machine_.ReadFile(machine_.LocalPath("copy")), "a p");
    bridge.Disconnect();
  }
  const std::string calls = machine_.ReadFile(machine_.LocalPath("calls"));
  EXPECT_THAT(calls,
              HasSubstr("CFAllocatorGetDefault()\nCFStringCreateWithCString(\"com.apple.afc\")\n"
                        "AMDeviceStartService(device, \"com.apple.afc\")\n"));
  EXPECT_THAT(calls, HasSubstr("AMDevicePair(device)"));
  EXPECT_THAT(calls, Not(HasSubstr("complaint")));
}

}  // namespace
}  // namespace quaylink::test
